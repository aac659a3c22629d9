"""record/generate.py on small headers: an error names everything that lacks an annotation."""
import os
import subprocess
import sys
import tempfile
import unittest

GENERATE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'record', 'generate.py')
LINK = '''#pragma once
class RLink { public: static RLink* Create(); virtual ~RLink() = default; };
'''
ANNOTATIONS = 'RLink::Create return=object\n'


class Generate(unittest.TestCase):
    def run_on(self, declarations, annotations, compiler=('g++',)):
        with tempfile.TemporaryDirectory() as directory:
            headers = os.path.join(directory, 'headers')
            os.mkdir(headers)
            for name, text in (('rlink.h', LINK), ('hal.h', '#pragma once\nextern "C" {\n' +
                                                   declarations + '\n}\n')):
                with open(os.path.join(headers, name), 'w', encoding='utf-8') as file:
                    file.write(text)
            table = os.path.join(directory, 'annotations.txt')
            with open(table, 'w', encoding='utf-8') as file:
                file.write(ANNOTATIONS + annotations)
            texts = os.path.join(directory, 'texts.txt')
            with open(texts, 'w', encoding='utf-8') as file:
                file.write('# nothing\n')
            done = subprocess.run([sys.executable, GENERATE, '--headers', headers, '--annotations',
                                   table, '--texts', texts, '--output', os.path.join(directory, 'out'),
                                   *(f'--compiler={word}' for word in compiler)],
                                  capture_output=True, text=True, check=False)
            if done.returncode != 0:
                return done.stderr
            with open(os.path.join(directory, 'out', 'Descriptions.inc'), encoding='utf-8') as file:
                return file.read()

    def test_missing_and_wrong_annotations_are_reported(self):
        rows = (
            ('int K2V_Set(const int* value);', '', 'K2V_Set, parameter value: a pointer without'),
            ('struct R { char* text; }; int K2V_Get(struct R* r);', 'K2V_Get r=out\n',
             'record R, field text: a pointer without'),
            ('typedef void (*CB)(int); int K2V_Notify(CB cb);', '',
             'K2V_Notify, parameter cb: a callback without'),
            ('const int* K2V_Find(void);', '', 'K2V_Find: its result is a pointer without'),
            ('int K2V_Set(double value);', '', 'K2V_Set, parameter value: nothing is known of its type'),
            ('int K2V_Set(const int* value);', 'K2V_Set value=out\n', 'the HAL cannot write to it'),
            ('int K2V_Get(int* value);', 'K2V_Get value=in\n', 'the HAL can write to it'),
            ('int K2V_Set(int* value);', 'K2V_Set value=sideways\n', 'no kind of annotation: sideways'),
            ('int K2V_Set(int value);', 'K2V_Gone value=in\n', 'annotations without a function: K2V_Gone'),
        )
        for declarations, annotations, expected in rows:
            with self.subTest(declarations=declarations):
                self.assertIn(expected, self.run_on(declarations, annotations))

    def test_sizes_and_directions_are_described(self):
        described = self.run_on(
            'typedef struct { short a; struct { unsigned char b[3]; } c[2]; } R;\n'
            'int K2V_Do(unsigned n, const R* in, R* out, const char* data);',
            'K2V_Do in=in out=out data=in[n]\n')
        self.assertIn('"record R_c|u8[3] b\\n"', described)
        self.assertIn('"record R|i16 a|R_c[2] c\\n"', described)
        self.assertIn('"call K2V_Do|val i32|val u32 n|in R in|out R out|inb char data\\n"', described)

    def test_numbers_have_the_sizes_of_the_target(self):
        declaration = 'typedef struct { unsigned long n; } R; int K2V_Do(long a, const R* r);'
        for compiler, size in ((('g++',), 64), (('g++', '-m32'), 32)):
            with self.subTest(compiler=compiler):
                described = self.run_on(declaration, 'K2V_Do r=in\n', compiler)
                self.assertIn(f'"record R|u{size} n\\n"', described)
                self.assertIn(f'"call K2V_Do|val i32|val i{size} a|in R r\\n"', described)


if __name__ == '__main__':
    unittest.main()
