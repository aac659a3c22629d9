"""The command line of cvnhalcheck."""
import os
import platform
import shutil
import sys

from cvntool.commandline import Parser

from . import check, dwarf
from .binary import Unreadable, read_binary
from .model import Interface

VERSION = '1.0.0'
EPILOG = '''Exit status: 0 the program can run on the library, 1 it cannot, 2 wrong usage or a file that cannot be read,
77 nothing against it was found, but layouts were not checked, or not all: the library has no debugging information for
them.'''
MACHINES = {'x64': 'x86_64', 'ARM': 'armv7l', 'AArch64': 'aarch64', 'x86': 'i686'}
COUNTED = {check.FITS: 'fit', check.DIFFERS: 'differ', check.MISSING: 'missing', check.UNCHECKED: 'not checked'}
STATUSES = {check.FITS: 0, check.DIFFERS: 1, check.MISSING: 1, check.UNCHECKED: 77}


def parser():
    """All options; help and man page are generated from them."""
    options = Parser(prog='cvnhalcheck', summary='whether a build of cvntester fits a HAL library', epilog=EPILOG,
                     description='Checks whether this build of cvntester can run on that HAL library: file formats, '
                                 'functions, versions of the C and C++ libraries, and from debugging information the '
                                 'layouts of records, enumerators and types of arguments.', version=VERSION)
    options.add_argument('library', metavar='LIBRARY', help="the board's HAL library")
    options.add_argument('program', metavar='PROGRAM', nargs='?',
                         help='the program; without it the cvntester that the shell finds')
    options.add_argument('--debug-file', metavar='FILE',
                         help="file with the library's debugging information; without it the library itself, or what "
                              'its build ID or debug link names')
    options.add_argument('--root', metavar='DIR',
                         help="the board's root file system: all libraries needed have to be there, in the versions "
                              'needed. Without it those of C and C++ are looked for on this machine when it is of the '
                              "library's kind")
    options.add_argument('--verbose', action='store_true', help='print functions that fit, too')
    return options


def main():
    options = parser()
    arguments = options.parse_args()
    program_path = arguments.program or shutil.which('cvntester')
    if program_path is None:
        options.error('no cvntester in the search path; name the program')
    for directory in filter(None, [arguments.root]):
        if not os.path.isdir(directory):
            options.error(f'{directory}: no directory')
    if arguments.debug_file and not os.path.isfile(arguments.debug_file):
        options.error(f'{arguments.debug_file}: no such file')
    try:
        library, program = read_binary(arguments.library), read_binary(program_path)
    except Unreadable as error:
        options.error(str(error))
    if not any(check.HAL_SYMBOL.match(name) for name in program.undefined):
        options.error(f'{program_path} calls no function of the HAL')
    return _report(arguments, library, program)


def _report(arguments, library, program):
    print(f'{library.path} for {program.path}')
    findings, functions = check.check_format(library, program), []
    if all(finding.verdict == check.FITS for finding in findings):
        findings += _versions(arguments, library, program)
        theirs = check.describe(dwarf.described_by_library, library.path, arguments.debug_file)
        ours = check.describe(dwarf.described_by_program, program.path)
        functions = check.check_functions(library, program, theirs, ours)
        undescribed = [str(interface) for interface in (theirs, ours) if not isinstance(interface, Interface)]
        findings += [] if undescribed else check.check_enumerators(theirs, ours)
        print(''.join(f'layouts not checked: {reason}\n' for reason in undescribed), end='')
    _show(arguments, findings + functions)
    if functions:
        counts = {said: sum(finding.verdict == verdict for finding in functions) for verdict, said in COUNTED.items()}
        print(f'{len(functions)} functions: ' + ', '.join(f'{count} {said}' for said, count in counts.items() if count))
    return _conclude({STATUSES[finding.verdict] for finding in findings + functions})


def _show(arguments, findings):
    shown = [finding for finding in findings if arguments.verbose or finding.verdict in (check.DIFFERS, check.MISSING)]
    unchecked = [finding for finding in findings if finding.verdict == check.UNCHECKED]
    # A list of everything would only say that nothing was checked.
    shown += [finding for finding in unchecked if finding.lines and finding not in shown]
    for finding in shown:
        print(f'{finding.verdict}: {finding.what}')
        for line in finding.lines:
            print(f'    {line}')


def _versions(arguments, library, program):
    needed = check.needed_versions([library, program])
    root = arguments.root
    if root is None and MACHINES.get(library.machine) == platform.machine():
        root = '/'
    if root is None:
        print(f'the board has to have {", ".join(needed)}: not checked without --root')
        return []
    return check.check_versions([library, program], root, arguments.root is not None)


def _conclude(statuses):
    status = 1 if 1 in statuses else max(statuses)
    print({0: 'The program can run on this library.', 1: 'The program cannot run on this library.',
           77: 'Nothing against it was found, but layouts were not checked.'}[status])
    sys.stdout.flush()
    return status
