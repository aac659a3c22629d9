"""tools/halcheck on libraries built from the HAL's headers with one fault each."""
import os
import re
import shutil
import subprocess
import unittest

from in_directory import InDirectory

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..')
HALCHECK = os.path.join(SOURCE, 'tools/halcheck/cvnhalcheck')
PROGRAM = os.environ['CVN_PROGRAM']
CXX = 'g++'
FUNCTION = re.compile(r'(?<=[;{}])(\s*(?!typedef\b)[A-Za-z_][\w \t*]*\bK2V_\w+\s*\([^;{}]*\))\s*;')
STATIC_ASSERT = re.compile(r'static_assert\((?:[^()]|\([^()]*\))*\);')
ARM, ARM64 = 'arm-linux-gnueabihf-', 'aarch64-linux-gnu-'
FITS, DIFFERS, USAGE, UNCHECKED = 0, 1, 2, 77


def run(*command, **options):
    """Output of the command; an error if it fails."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f'{command}: {done.stdout}')
    return done.stdout


def declarations(compiler):
    """The HAL's headers preprocessed into one text, for that compiler's target."""
    text = run(compiler, '-E', '-P', '-x', 'c++', '-I', os.path.join(SOURCE, 'hal/include'),
               os.path.join(SOURCE, 'hal/interface/Text.cpp'))
    return STATIC_ASSERT.sub('', text)


class Workshop(InDirectory):
    def library(self, text, *flags, prefix='', compiler=CXX, link=()):
        """A HAL library that defines every function declared in `text` with an empty body."""
        source, library = self.path('hal.cpp'), self.path('libcvn_k2vhal.so')
        if 'RLink::Create' not in text:
            text += '\nRLink* RLink::Create() { __builtin_trap(); }\n'
        text = FUNCTION.sub(r'\1 { __builtin_trap(); }', text)
        with open(source, 'w', encoding='utf-8') as file:
            file.write(text + '\nvoid cvn_use(RLink* link) { link->CloseSession(nullptr); }\n')
        whole = '-fstandalone-debug' if compiler == 'clang++' else '-femit-class-debug-always'
        run(prefix + compiler, '-shared', '-fPIC', '-nostdlib', '-std=c++20', '-w', '-g', '-fno-eliminate-unused-debug-types',
            whole, *flags, source, *link, '-o', library, cwd=self.directory)
        return library

    def check(self, *arguments, program=PROGRAM):
        done = subprocess.run([HALCHECK, *arguments[:1], program, *arguments[1:]], capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr


def change(old, new):
    """A fault: replaces the first match of `old` in the headers by `new`."""
    def edit(text):
        changed = re.sub(old, new, text, count=1, flags=re.DOTALL)
        assert changed != text, f'{old} is not in the headers'
        return changed
    return edit


NOTHING = 'class RLink { public: static RLink* Create(); int CloseSession(void*); };'
SAME = change(r'\Z', '\n')
RECT = r'uint16_t x;\s*uint16_t y;'
# The faults, and the lines that must be reported for them.
FAULTS = (
    ('missing function', change(r'int K2V_RHAL_GAL_Init\(void\);', ''), ['missing: K2V_RHAL_GAL_Init']),
    ('hidden function', change(r'(int K2V_RHAL_GAL_Init)', r'__attribute__((visibility("hidden"))) \1'),
     ['missing: K2V_RHAL_GAL_Init']),
    ('missing function of a class', change(r'\Z', '\nextern int x; // RLink::Create\n'), ['missing: RLink::Create()']),
    ('missing virtual function', change(r'virtual int SendAsync\(.*?;', ''),
     ['differs: RLink::Create()', 'RLink::SendAsync(RLNK_HOST_SESSION*, RLNK_CMD_PARAMS*) is no virtual function',
      'RLNK_BUFFER_DIR) is virtual function 6, the harness calls 7']),
    ('destructor no longer virtual', change(r'virtual (~RLink)', r'\1'),
     ['RLink::OpenSession(unsigned int, RLNK_HOST_SESSION*) is virtual function 0, the harness calls 2']),
    ('virtual functions swapped', change(r'(virtual int ReleaseBuffer\(.*?;)(\s*)(virtual int QueryBufferFreeSize\(.*?;)', r'\3\2\1'),
     ['RLink::ReleaseBuffer(RLNK_HOST_SESSION*, RLNK_BUFFER*) is virtual function 9, the harness calls 8']),
    ('argument of a virtual function', change(r'(AllocateBuffer\(RLNK_HOST_SESSION\* session, )uint32_t', r'\1unsigned long'),
     ['RLink::AllocateBuffer(RLNK_HOST_SESSION*, unsigned int, RLNK_BUFFER_DIR) is no virtual function']),
    ('record grown', change(RECT, 'uint16_t x; uint16_t y; uint32_t z;'),
     ['differs: K2V_RHAL_VSC_SetOutputRegion', 'record K2V_VIDEO_RECT_T: size 12, the harness has 8',
      'field w at byte 8, the harness has it at byte 4', 'field z at byte 4 is unknown to the harness']),
    ('fields swapped', change(RECT, 'uint16_t y; uint16_t x;'),
     ['record K2V_VIDEO_RECT_T: field x at byte 2, the harness has it at byte 0']),
    ('field of another type', change(r'uint16_t scan_type;\s*uint16_t reserved;', 'uint16_t scan_type; uint8_t reserved;'),
     ['differs: K2V_RHAL_VFE_VBY1RX_GetTimingInfo', 'field reserved: unsigned of 1 byte, the harness has unsigned of 2 bytes']),
    ('unsigned field', change(r'int8_t nRedOffset;', 'uint8_t nRedOffset;'),
     ['field nRedOffset: unsigned of 1 byte, the harness has signed of 1 byte']),
    ('record aligned', change(r'typedef struct \{(\s*' + RECT + ')', r'typedef struct __attribute__((aligned(8))) {\1'),
     ['record K2V_VIDEO_RECT_T: alignment 8, the harness has 2']),
    ('enumerator shifted', change(r'K2V_HDCP2_STATE_FAILED = 5', 'K2V_HDCP2_STATE_FAILED = 6'),
     ['enumerator K2V_HDCP2_STATE_FAILED is 6, the harness has 5']),
    ('argument widened', change(r'(K2V_RHAL_VFE_VBY1RX_Connect\()uint8_t', r'\1uint32_t'),
     ['differs: K2V_RHAL_VFE_VBY1RX_Connect', 'argument 1: unsigned of 4 bytes, the harness has unsigned of 1 byte']),
    ('argument added', change(r'(K2V_RHAL_GAL_OSDSPLIT\(uint32_t enable)', r'\1, uint32_t plane'),
     ['differs: K2V_RHAL_GAL_OSDSPLIT', '2 arguments, the harness passes 1']),
    ('result narrowed', change(r'uint64_t (K2V_RHAL_DEVICE_Get_Clock_Value)', r'uint32_t \1'),
     ['differs: K2V_RHAL_DEVICE_Get_Clock_Value', 'result: unsigned of 4 bytes, the harness has unsigned of 8 bytes']),
    ('argument of a callback', change(r'(K2V_THERMAL_CALLBACK\)\()int', r'\1long'),
     ['argument 1: argument 1: signed of 8 bytes, the harness has signed of 4 bytes']),
)


class Planted(Workshop):
    def test_only_the_fault_is_reported(self):
        headers = declarations(CXX)
        for fault, edit, said in FAULTS:
            with self.subTest(fault):
                status, text = self.check(self.library(edit(headers)))
                self.assertEqual(status, DIFFERS, text)
                for line in said:
                    self.assertIn(line, text)
                self.assertLess(text.count('differs: ') + text.count('missing: '), 40, text)

    def test_all_missing_functions_are_reported(self):
        status, text = self.check(self.library(NOTHING))
        self.assertEqual(status, DIFFERS)
        self.assertIn('354 missing', text)
        self.assertIn('missing: K2V_RHAL_VSC_SetOutputRegion', text)


class Fitting(Workshop):
    def test_the_same_interface_fits_with_any_debug_format(self):
        headers = declarations(CXX)
        for compiler, flags in (('g++', ()), ('g++', ('-gdwarf-4', '-O2')), ('g++', ('-gz=zlib',)),
                                ('clang++', ()), ('clang++', ('-gdwarf-2',))):
            with self.subTest(compiler, flags=flags):
                status, text = self.check(self.library(headers, *flags, compiler=compiler))
                self.assertEqual((status, text.count('differs')), (FITS, 0), text)

    def test_a_field_may_have_another_name(self):
        status, text = self.check(self.library(change(r'uint8_t nContrast;', 'uint8_t contrast;')(declarations(CXX))))
        self.assertEqual(status, FITS, text)


class Stripped(Workshop):
    def test_layouts_without_debug_information_are_not_accepted(self):
        headers = declarations(CXX)
        ways = (
            ('debug', (), ('strip', '--strip-debug')),
            ('all', (), ('strip', '--strip-all')),
            ('not generated', ('-g0',), None),
            ('lines only', ('-g1', '-feliminate-unused-debug-types'), None),
            ('in another file', ('-gsplit-dwarf',), None),
            ('damaged', (), ('objcopy', '--update-section', f'.debug_abbrev={self.path("noise")}')),
            ('one section', (), ('objcopy', '--remove-section', '.debug_abbrev')),
        )
        with open(self.path('noise'), 'wb') as file:
            file.write(b'\xff' * 4000)
        for way, flags, command in ways:
            with self.subTest(way):
                library = self.library(headers, *flags)
                if command:
                    run(*command, library)
                status, text = self.check(library)
                self.assertEqual(status, UNCHECKED, text)
                self.assertIn('not checked', text)

    def test_symbols_are_found_without_section_headers(self):
        for edit, expected in ((SAME, UNCHECKED), (FAULTS[0][1], DIFFERS)):
            library = self.library(edit(declarations(CXX)))
            with open(library, 'r+b') as file:
                file.seek(40)  # e_shoff
                file.write(bytes(8))
                file.seek(60)  # e_shnum, e_shstrndx
                file.write(bytes(4))
            self.assertEqual(self.check(library)[0], expected)

    def test_the_debug_file_is_used(self):
        library = self.library(FAULTS[6][1](declarations(CXX)))
        debug = self.path('hal.debug')
        run('objcopy', '--only-keep-debug', library, debug)
        run('strip', library)
        self.assertEqual(self.check(library)[0], UNCHECKED)
        self.assertEqual(self.check(library, '--debug-file', debug)[0], DIFFERS)
        run('objcopy', f'--add-gnu-debuglink={debug}', library)
        self.assertEqual(self.check(library)[0], DIFFERS)
        os.remove(debug)
        self.assertEqual(self.check(library)[0], UNCHECKED)


class OtherKinds(Workshop):
    def program(self, prefix, library):
        """A program that calls the HAL; only its file format matters."""
        source, program = self.path('program.c'), self.path('program')
        with open(source, 'w', encoding='utf-8') as file:
            file.write('int K2V_RHAL_GAL_Init(void); int main(void) { return K2V_RHAL_GAL_Init(); }\n')
        run(prefix + 'gcc', source, library, '-o', program)
        return program

    def need(self, prefix):
        if not shutil.which(prefix + 'g++'):
            self.skipTest(f'{prefix}g++ is not installed')

    def test_another_machine_differs(self):
        self.need(ARM64)
        status, text = self.check(self.library(declarations(ARM64 + 'g++'), prefix=ARM64))
        self.assertEqual(status, DIFFERS)
        self.assertIn('machine\n    AArch64, the harness has x64', text)

    def test_another_class_differs(self):
        status, text = self.check(self.library(NOTHING, '-m32'))
        self.assertEqual(status, DIFFERS)
        self.assertIn('class\n    32 bits, the harness has 64 bits', text)

    def test_another_float_abi_differs(self):
        self.need(ARM)
        headers = declarations(ARM + 'g++')
        program = self.program(ARM, self.library(headers, prefix=ARM))
        self.assertEqual(self.check(self.path('libcvn_k2vhal.so'), program=program)[0], UNCHECKED)
        status, text = self.check(self.library(headers, '-mfloat-abi=soft', prefix=ARM), program=program)
        self.assertEqual(status, DIFFERS)
        self.assertIn('float ABI\n    soft, the harness has hard', text)

    def test_another_c_library_differs(self):
        for soname, said in (('libc.so', 'C library\n    bionic or musl, the harness has glibc'),
                             ('ld-linux-other.so.9', 'interpreter\n    ld-linux-other.so.9, the harness has ld-linux')):
            stand_in = self.path('stand_in.so')
            run(CXX, '-shared', '-nostdlib', '-x', 'c', '/dev/null', f'-Wl,-soname,{soname}', '-o', stand_in)
            status, text = self.check(self.library(declarations(CXX), link=('-Wl,--no-as-needed', stand_in)))
            self.assertEqual(status, DIFFERS)
            self.assertIn(said, text)

    def newer_libc(self):
        """A library that needs a C library version that does not exist."""
        script, newer = self.path('versions'), self.path('newer.so')
        with open(script, 'w', encoding='utf-8') as file:
            file.write('GLIBC_2.99 { cvn_newer; };\n')
        with open(self.path('newer.c'), 'w', encoding='utf-8') as file:
            file.write('void cvn_newer(void) {}\n')
        run('gcc', '-shared', '-nostdlib', self.path('newer.c'), '-Wl,-soname,libc.so.6', f'-Wl,--version-script={script}',
            '-o', newer)
        text = declarations(CXX) + '\nextern "C" void cvn_newer(); void cvn_call() { cvn_newer(); }\n'
        return self.library(text, link=(newer,))

    def test_a_newer_c_library_differs(self):
        status, text = self.check(self.newer_libc())
        self.assertEqual(status, DIFFERS)
        self.assertRegex(text, r'differs: libc.so.6\n    \S*libcvn_k2vhal.so needs GLIBC_2.99 of /')

    def test_libraries_missing_from_the_boards_root_are_reported(self):
        library, root = self.library(declarations(CXX)), self.path('root')
        os.makedirs(os.path.join(root, 'lib'))
        status, text = self.check(library, '--root', root)
        self.assertEqual(status, DIFFERS)
        self.assertIn(f'missing: libstdc++.so.6\n    {PROGRAM} needs it; it is not below {root}', text)
        self.assertEqual(self.check(library, '--root', '/')[0], FITS)


class Misused(Workshop):
    def test_usage_errors_are_not_a_verdict(self):
        text = self.path('text')
        with open(text, 'w', encoding='utf-8') as file:
            file.write('no library')
        with open(PROGRAM, 'rb') as file, open(self.path('cut'), 'wb') as cut:
            cut.write(file.read(3000))
        for arguments, said in (((), 'required'), ((text, PROGRAM), 'no ELF file'), ((self.path('absent'), PROGRAM), 'No such file'),
                                ((self.path('cut'), PROGRAM), 'damaged'), ((PROGRAM, '/bin/true'), 'calls no function'),
                                ((PROGRAM, PROGRAM, '--root', text), 'no directory'),
                                ((PROGRAM, PROGRAM, '--debug-file', self.path('absent')), 'no such file')):
            with self.subTest(arguments):
                done = subprocess.run([HALCHECK, *arguments], capture_output=True, text=True, check=False)
                self.assertEqual((done.returncode, done.stdout), (USAGE, ''), done.stderr)
                self.assertIn(said, done.stderr)
                self.assertEqual(done.stderr.count('\n'), 1)


if __name__ == '__main__':
    unittest.main()
