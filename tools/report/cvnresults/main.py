"""The command line of cvnreport."""
import argparse
import os
import stat
import sys
import tempfile

from cvntool.commandline import USAGE, Parser

from . import VERSION
from .compare import differing_lists
from .directory import Problem
from .machine import as_json, junit
from .page import EMBEDDED, render
from .runs import load
from .texts import clean_line

CANNOT_WRITE = 99
EPILOG = '''Exit status: 0 success, 2 usage error or unreadable directory, 99 a file cannot be written; with
--exit-status that of the newest run: 0 all tests passed, 1 a test did not pass, 77 no test ran, 99 the run is
incomplete or the harness failed. Files are written completely or not at all.'''


def parser():
    """All options; help and man page are generated from them."""
    options = Parser(prog='cvnreport', summary='one page from one or many runs', version=VERSION, epilog=EPILOG,
                     description='Reports the results of one or many runs of cvntester: as one HTML page for '
                                 'people, as JUnit XML or JSON for programs.')
    options.add_argument('directory', metavar='DIR', nargs='+', help='result directory of a run (cvntester --results)')
    options.add_argument('-o', '--output', metavar='FILE', help='write an HTML page of all runs')
    options.add_argument('--junit', metavar='FILE', help='write JUnit XML of the newest run; - means standard output')
    options.add_argument('--json', metavar='FILE',
                         help='write all runs and what changed as JSON; - means standard output')
    options.add_argument('--exit-status', action='store_true', help='exit with the status of the newest run')
    options.add_argument('--merge', action='store_true',
                         help='treat all directories as parts of one run; by default only those with the same '
                              'label "run" and the same build')
    options.add_argument('--embed', metavar='MB', type=_megabytes, default=EMBEDDED,
                         help=f'size of the logs and pictures embedded in the page (default {EMBEDDED:g}); the '
                              'others are linked')
    return options


def _megabytes(text):
    value = float(text)
    if not 0 <= value <= 10000:
        raise argparse.ArgumentTypeError(f"invalid value '{text}': expected megabytes from 0 to 10000")
    return value


def _refuse(status, problem):
    print(f'cvnreport: {clean_line(problem)}', file=sys.stderr)
    return status


class Files:
    """Files that appear complete and together: they are first written next to their destinations."""

    def __init__(self):
        self.waiting = []  # (temporary name, destination)

    def add(self, path, data):
        """Writes a temporary file. Raises Problem if it cannot be written."""
        directory = os.path.dirname(os.path.abspath(path))
        try:
            if path == '-':
                with open(os.dup(1), 'wb') as output:
                    output.write(data)
                return
            if os.path.exists(path) and not stat.S_ISREG(os.stat(path).st_mode):
                raise Problem(f'{path}: not a regular file')
            descriptor, name = tempfile.mkstemp(prefix='.cvnreport-', dir=directory)
            self.waiting.append((name, os.path.realpath(path)))
            with open(descriptor, 'wb') as file:
                file.write(data)
                os.fchmod(descriptor, 0o666 & ~_umask())
                os.fsync(descriptor)
        except OSError as error:
            raise Problem(f'cannot write {path}: {error.strerror}') from error

    def appear(self):
        """Moves all files to their destinations. Raises Problem."""
        while self.waiting:
            name, path = self.waiting[-1]
            try:
                os.replace(name, path)
            except OSError as error:
                raise Problem(f'cannot write {path}: {error.strerror}') from error
            self.waiting.pop()

    def forget(self):
        """Removes the files that have not been moved."""
        for name, _ in self.waiting:
            os.unlink(name)


def _umask():
    mask = os.umask(0)
    os.umask(mask)
    return mask


def _write(arguments, runs):
    made = []
    if arguments.output:
        directory = os.path.dirname(os.path.abspath(arguments.output))
        made.append((arguments.output, render(runs, directory, arguments.embed).encode()))
    if arguments.junit:
        made.append((arguments.junit, junit(runs[0])))
    if arguments.json:
        made.append((arguments.json, as_json(runs)))
    files = Files()
    try:
        for path, data in made:
            files.add(path, data)
        files.appear()
    finally:
        files.forget()


def main(words=None):
    """Executes the command line `words` and returns the exit status."""
    arguments = parser().parse_args(words)
    outputs = [path for path in (arguments.output, arguments.junit, arguments.json) if path]
    if not outputs and not arguments.exit_status:
        return _refuse(USAGE, 'nothing to do; use -o, --junit, --json or --exit-status')
    if len({path if path == '-' else os.path.realpath(path) for path in outputs}) < len(outputs):
        return _refuse(USAGE, 'two outputs are the same file')
    try:
        runs = load(arguments.directory, arguments.merge)
    except Problem as problem:
        return _refuse(USAGE, str(problem))
    for older, newer in zip(runs[1:2], runs):
        if differing_lists(older, newer):
            _refuse(0, differing_lists(older, newer))
    try:
        _write(arguments, runs)
    except Problem as problem:
        return _refuse(CANNOT_WRITE, str(problem))
    return runs[0].exit_status if arguments.exit_status else 0
