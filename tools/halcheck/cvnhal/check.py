"""The checks of a HAL library against a program, from the file formats to the layouts of records."""
import glob
import os
import re
import subprocess
from dataclasses import dataclass, field

from .binary import Unreadable, version_definitions
from .compare import Comparison, enumerators
from .dwarf import NotDescribed
from .model import Interface

FITS, DIFFERS, MISSING, UNCHECKED = 'fits', 'differs', 'missing', 'not checked'

HAL_SYMBOL = re.compile('K2V_|_ZN5RLink')
SYMBOL_IN_LINE = re.compile(r'\{(\w+)\}')
C_LIBRARIES = {'libc.so.6': 'glibc', 'libc.so': 'bionic or musl'}
LOADER = re.compile(r'ld-.*\.so|ld-.*\.so\.\d+|ld\.so\.\d+|linker(64)?')
RUNTIME = re.compile(r'(libc|libm|libdl|libpthread|librt|libstdc\+\+|libgcc_s)\.so(\.\d+)?')
LIBRARY_DIRECTORIES = ('lib', 'usr/lib', 'lib64', 'usr/lib64', 'lib/*-linux-*', 'usr/lib/*-linux-*', 'usr/local/lib',
                       'opt/*/lib', 'vendor/lib', 'vendor/lib64', 'system/lib', 'system/lib64')


@dataclass
class Finding:
    """Outcome of one check: `what` is the subject, such as a function; `lines` give the reasons for the verdict."""
    what: str
    verdict: str
    lines: list = field(default_factory=list)


def demangled(names):
    """Maps symbols to their C++ spelling; without c++filt they are unchanged."""
    names = list(names)
    try:
        done = subprocess.run(['c++filt'], input='\n'.join(names), capture_output=True, text=True, check=True)
        return dict(zip(names, done.stdout.split('\n')))
    except (OSError, subprocess.CalledProcessError):
        return {name: name for name in names}


def check_format(library, program):
    """Class, byte order, machine, float ABI, loader and kind of C library."""
    pairs = [('class', f'{library.bits} bits', f'{program.bits} bits'), ('byte order', library.order, program.order),
             ('machine', library.machine, program.machine)]
    if library.float_abi and program.float_abi:
        pairs.append(('float ABI', library.float_abi, program.float_abi))
    loader = next((name for name in library.needed if LOADER.fullmatch(name)), '')
    if loader and program.interpreter:
        pairs.append(('interpreter', loader, os.path.basename(program.interpreter)))
    families = [[C_LIBRARIES[name] for name in side.needed if name in C_LIBRARIES] for side in (library, program)]
    if all(families):
        pairs.append(('C library', families[0][0], families[1][0]))
    return [Finding(what, FITS if theirs == ours else DIFFERS,
                    [] if theirs == ours else [f'{theirs}, the harness has {ours}']) for what, theirs, ours in pairs]


def check_versions(binaries, root, complete):
    """Whether the libraries below `root` have the versions that are needed. `complete`: all libraries that are
    needed must be there, not only those of C and C++."""
    findings = []
    provided = {os.path.basename(binary.path) for binary in binaries} | {binary.soname for binary in binaries}
    for binary in binaries:
        beside = os.path.dirname(os.path.abspath(binary.path))
        for name in sorted({*binary.needed, *binary.versions} - provided):
            if not complete and not RUNTIME.fullmatch(name):
                continue
            file = _find(name, root, beside, binary)
            lacking = ([version for version in binary.versions.get(name, []) if version not in version_definitions(file)]
                       if file else [])
            if lacking:
                findings.append(Finding(name, DIFFERS, [f'{binary.path} needs {", ".join(sorted(lacking))} of {file}']))
            elif not file and complete:
                findings.append(Finding(name, MISSING, [f'{binary.path} needs it; it is not below {root}']))
    return findings


def _find(name, root, beside, binary):
    """The library with that name, for the right machine; None if there is none."""
    directories = [beside, *(path for part in LIBRARY_DIRECTORIES for path in sorted(glob.glob(os.path.join(root, part))))]
    for directory in directories:
        path = os.path.join(directory, name)
        try:
            with open(path, 'rb') as file:
                head = file.read(20)
            with open(binary.path, 'rb') as file:
                own = file.read(20)
        except OSError:
            continue
        if (head[4:6], head[18:20]) == (own[4:6], own[18:20]):
            return path
    return None


def needed_versions(binaries):
    """The newest version of each family that is needed, such as GLIBC_2.34."""
    newest = {}
    for binary in binaries:
        for version in (version for versions in binary.versions.values() for version in versions):
            family, _, number = version.partition('_')
            key = tuple(int(part) for part in re.findall(r'\d+', number))
            newest[family] = max(newest.get(family, ((), '')), (key, version))
    return [version for _, (key, version) in sorted(newest.items()) if key]


def check_functions(library, program, theirs, ours):
    """One finding per function that the program needs. `theirs` and `ours` are interfaces or a `NotDescribed`."""
    needed = sorted(name for name in program.undefined if HAL_SYMBOL.match(name))
    names = demangled(needed)
    comparison = Comparison()
    findings = []
    for symbol in needed:
        verdict, lines = UNCHECKED, []
        if symbol not in library.defined:
            verdict, lines = MISSING, ['the library does not have it']
        elif isinstance(theirs, Interface) and isinstance(ours, Interface):
            verdict, lines = _compare(comparison, theirs.functions.get(symbol), ours.functions.get(symbol))
        findings.append(Finding(names[symbol], verdict, lines))
    for finding in findings:
        finding.lines = _written(finding.lines)
    return findings


def check_enumerators(theirs, ours):
    """Compared separately, because values without a named type belong to no function."""
    lines = enumerators(theirs.enumerators, ours.enumerators)
    return [Finding('enumerators', DIFFERS, lines)] if lines else []


def _compare(comparison, theirs, ours):
    if theirs is None or ours is None:
        return UNCHECKED, ['no debugging information in the ' + ('library' if theirs is None else 'program')]
    lines = comparison.functions(theirs, ours)
    return (DIFFERS if lines else FITS), lines


def _written(lines):
    """The lines with symbols in braces replaced by their C++ spelling."""
    names = demangled({symbol for line in lines for symbol in SYMBOL_IN_LINE.findall(line)})
    return [SYMBOL_IN_LINE.sub(lambda match: names[match[1]], line) for line in lines]


def describe(reader, *arguments):
    """An interface, or the exception that says why there is none."""
    try:
        return reader(*arguments)
    except (NotDescribed, Unreadable) as error:
        return error
