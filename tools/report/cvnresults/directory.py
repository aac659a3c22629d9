"""Reads one result directory: the journal, the record next to it, and the files of each test.

The journal decides what was run and what came out of it. The record (results.jsonl) adds names,
times, board, build, answers and findings; directories without one are read as well.
"""
import dataclasses
import fcntl
import functools
import json
import math
import os
import re
import stat

from .texts import clean_line, decoded, plural

VERDICTS = ('PASS', 'FAIL', 'ERROR', 'BLOCKED', 'SKIPPED')
JOURNAL_FORMAT = 1
RECORD_FORMAT = 1
LARGEST_JOURNAL = 64 << 20  # what cvntester resumes
CUT_OFF = 'the run was cut off in this test'

_TITLE = re.compile(rb'cvntester journal (\d{1,9})')
_ESCAPE = re.compile(rb'\\(n|r|t|e|\\|x[0-9a-f]{2})')
_MEANINGS = {b'n': b'\n', b'r': b'\r', b't': b'\t', b'e': b'\x1b', b'\\': b'\\'}
_STRAY_BACKSLASH = re.compile(rb'(?:[^\\]|\\(?:[nrte\\]|x[0-9a-f]{2}))*')
_ROUND = re.compile(r'(.+)@([1-9]\d{0,8})')


class Problem(Exception):
    """Why something cannot be read or written, in one line."""


@dataclasses.dataclass
class Attempt:
    """One execution of one test."""
    part: 'Part'
    number: int  # position in the run, from 1
    id: str  # with the round: 'VscModule/31@2'
    verdict: str
    message: str
    seconds: float
    ended: bool = False  # False: the run was interrupted during it
    prompts: int = 0
    at: str = ''  # when it began
    typed: list = dataclasses.field(default_factory=list)  # (position, length) of answers in the log
    findings: list = dataclasses.field(default_factory=list)  # JSON objects

    def file(self, extension):
        """Name of the log, trace or evidence, relative to the result directory."""
        return f'logs/{self.number:04}-{self.id.replace("/", ".")}.{extension}'


@dataclasses.dataclass
class Name:
    """Module, name and description of a test."""
    module: str
    name: str = ''
    description: str = ''


@dataclasses.dataclass
class Part:
    """The content of one result directory."""
    path: str
    words: list = dataclasses.field(default_factory=list)  # command line
    tests: list = dataclasses.field(default_factory=list)  # ids of the selection
    attempts: list = dataclasses.field(default_factory=list)
    names: dict = dataclasses.field(default_factory=dict)  # of tests, by id
    labels: dict = dataclasses.field(default_factory=dict)
    version: str = ''
    build: str = ''
    board: str = ''
    started: str = ''
    ended: str = ''
    status: int | None = None  # exit status of the harness
    planned: int | None = None  # tests in all rounds
    running: bool = False
    resumed: int = 0  # number of times
    modified: float = 0  # of the journal, seconds since the epoch
    why_not_run: dict = dataclasses.field(default_factory=dict)  # reasons by id
    notes: list = dataclasses.field(default_factory=list)

    @property
    def name(self):
        """For display."""
        return clean_line(os.path.basename(self.real))

    def fact(self, name):
        """'board', 'build' or 'version': the operator's label, otherwise the value found by the harness."""
        return self.labels.get(name) or getattr(self, name)

    def base(self, test_id):
        """The test of which `test_id` may be a round."""
        found = _ROUND.fullmatch(test_id)
        return found[1] if found and test_id not in self.selected else test_id

    @functools.cached_property
    def selected(self):
        return set(self.tests)

    @functools.cached_property
    def real(self):
        """The path with links resolved."""
        return os.path.realpath(self.path)


def read(path):
    """Reads the result directory `path`. Raises Problem if it is not one."""
    part = Part(path)
    journal = os.path.join(path, 'journal')
    if not os.path.isdir(path):
        raise Problem(f'{path}: not a directory')
    if not os.path.lexists(journal):
        raise Problem(f'{path}: not a result directory (no journal){_hint(path)}')
    data = read_file(journal, LARGEST_JOURNAL + 1)
    if len(data) > LARGEST_JOURNAL:
        raise Problem(f'{journal}: is larger than 64 MiB')
    part.modified = os.stat(journal).st_mtime
    part.running = _is_locked(journal)
    _read_journal(part, journal, data)
    if part.running and part.attempts and not part.attempts[-1].ended:
        part.attempts.pop()  # still running
    record = os.path.join(path, 'results.jsonl')
    if os.path.lexists(record):
        _read_record(part, record)
    return part


def read_file(path, limit=None):
    """Content of a regular file, at most `limit` bytes. Raises Problem."""
    try:
        with open_regular(path) as file:
            return file.read(limit)
    except (OSError, ValueError) as error:
        raise Problem(f'{path}: {getattr(error, "strerror", None) or error}') from error


def open_regular(path):
    """Opens a file for reading; does not block on a pipe or a device. Raises OSError."""
    file = open(os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC), 'rb')
    if not stat.S_ISREG(os.fstat(file.fileno()).st_mode):
        file.close()
        raise OSError(0, 'not a regular file')
    return file


def _hint(path):
    """A hint if the directory contains result directories."""
    try:
        inside = next((entry.path for entry in sorted(os.scandir(path), key=lambda entry: entry.name)
                       if os.path.isfile(os.path.join(entry.path, 'journal'))), None)
    except OSError:
        return ''
    return f'; {inside} is one' if inside else ''


def _is_locked(path):
    """Whether a run has the journal locked, which means that it has not ended."""
    with open_regular(path) as file:
        try:
            fcntl.flock(file, fcntl.LOCK_SH | fcntl.LOCK_NB)
        except BlockingIOError:
            return True
        except OSError:
            return False  # a file system without locks
        return False


def _unescaped(field):
    """Text of a journal's field; None if it has an unknown escape sequence."""
    if b'\\' in field:
        if not _STRAY_BACKSLASH.fullmatch(field):
            return None
        field = _ESCAPE.sub(lambda found: _MEANINGS.get(found[1]) or bytes([int(found[1][1:], 16)]), field)
    return decoded(field)


def _read_journal(part, journal, data):
    lines = data[:data.rfind(b'\n') + 1].split(b'\n')[:-1]  # the last line may be truncated
    title = _TITLE.fullmatch(lines[0]) if lines else None
    if not lines and b'cvntester journal 1\n'.startswith(data):
        raise Problem(f'{journal}: truncated before the first test')
    if not title:
        raise Problem(f'{journal}: not a cvntester journal')
    if int(title[1]) > JOURNAL_FORMAT:
        raise Problem(f'{journal}: has format {int(title[1])}, which is newer than this cvnreport')
    whole = False
    for number, line in enumerate(lines[1:], 2):
        fields = [_unescaped(field) for field in line.split(b'\t')]
        if None in fields:
            raise Problem(f'{journal}:{number}: malformed journal line')
        if fields[0] == 'tests' and len(fields) == 2:
            whole = fields[1] == str(len(part.tests))
        elif not _take_line(part, fields):
            raise Problem(f'{journal}:{number}: malformed journal line')
    if not whole:
        raise Problem(f'{journal}: truncated before the first test')


def _take_line(part, fields):
    kind, *values = fields
    if kind == 'end':
        return bool(part.attempts) and _take_end(part.attempts[-1], values)
    if len(values) != 1:
        return False
    value = values[0]
    if kind == 'word':
        part.words.append(clean_line(value))
    elif kind == 'test':
        part.tests.append(clean_line(value))
    elif kind == 'start':
        part.attempts.append(Attempt(part, len(part.attempts) + 1, clean_line(value), 'ERROR', CUT_OFF, 0))
    elif kind == 'suspect':
        return bool(part.attempts) and part.attempts[-1].id == clean_line(value)
    else:
        return kind == 'directory'
    return True


def _take_end(attempt, values):
    if len(values) != 5 or clean_line(values[0]) != attempt.id or values[1] not in VERDICTS:
        return False
    seconds = _seconds(values[3])
    if seconds is None:
        return False
    attempt.verdict, attempt.message, attempt.seconds = values[1], clean_line(values[4]), seconds
    attempt.ended = True
    return True


def _seconds(value):
    try:
        seconds = float(value)
    except (TypeError, ValueError, OverflowError):
        return None
    return seconds if math.isfinite(seconds) and 0 <= seconds < 1e9 else None


class _Record:
    """Processes the lines of a record one by one."""

    def __init__(self, part):
        self.part = part
        self.findings = []
        self.unread = 0

    def take(self, line):
        try:
            event = json.loads(decoded(line), parse_constant=lambda _: None)
        except (ValueError, RecursionError):
            event = None
        kind = event.get('event') if isinstance(event, dict) else None
        if not isinstance(kind, str):
            self.unread += bool(line.strip())
        elif kind in self.TAKERS:
            self.TAKERS[kind](self, event)
        else:
            self.findings.append(event)

    def run_start(self, event):
        part = self.part
        if isinstance(event.get('format'), int) and event['format'] > RECORD_FORMAT:
            raise Problem(f'{part.path}/results.jsonl: has format {event["format"]}, '
                          'which is newer than this cvnreport')
        part.resumed += event.get('resumed') is True
        part.status, part.ended = None, ''
        part.started = part.started or text_of(event, 'at')
        for name in ('version', 'build', 'board'):
            setattr(part, name, text_of(event, name))
        part.planned = _count(event.get('tests'))
        labels = event.get('labels')
        if isinstance(labels, dict):
            part.labels = {clean_line(name): clean_line(value)
                           for name, value in labels.items() if isinstance(value, str)}

    def test_listed(self, event):
        self.part.names[text_of(event, 'test')] = Name(
            *(text_of(event, name) for name in ('module', 'name', 'description')))

    def test_start(self, event):
        self.findings = []
        attempt = self.attempt_of(event)
        if attempt:
            attempt.at = text_of(event, 'at')

    def test_end(self, event):
        attempt = self.attempt_of(event)
        if not attempt:  # left out by an interrupted run
            self.part.why_not_run[text_of(event, 'test')] = text_of(event, 'message')
            return
        attempt.prompts = _count(event.get('prompts')) or 0
        attempt.typed = [tuple(each) for each in _list(event.get('typed')) if _is_place(each)]
        attempt.findings = self.findings
        if not attempt.ended and text_of(event, 'message'):
            attempt.message = text_of(event, 'message')
        self.findings = []

    def run_end(self, event):
        rounds = _count(event.get('skipped_rounds'))
        if rounds:
            self.part.notes.append(f'{plural(rounds, "round")} of the run did not begin')

    def run_exit(self, event):
        self.part.status = _count(event.get('status'))
        self.part.ended = text_of(event, 'at')

    def attempt_of(self, event):
        number = _count(event.get('number')) or 0
        if not 1 <= number <= len(self.part.attempts):
            return None
        attempt = self.part.attempts[number - 1]
        return attempt if attempt.id == text_of(event, 'test') else None

    TAKERS = {'run-start': run_start, 'test-listed': test_listed, 'test-start': test_start,
              'test-end': test_end, 'run-end': run_end, 'run-exit': run_exit}


def _read_record(part, path):
    record = _Record(part)
    try:
        with open_regular(path) as file:
            for line in file:
                record.take(line)
    except OSError as error:
        raise Problem(f'{path}: {error.strerror}') from error
    if record.unread:
        part.notes.append(f'results.jsonl has {plural(record.unread, "line")} that cannot be read')


def text_of(event, name):
    """A member of a JSON object as clean text on one line; empty if it is not a string."""
    value = event.get(name)
    return clean_line(value) if isinstance(value, str) else ''


def number_of(event, name):
    """A member of a JSON object as a finite number; None if it is not one."""
    value = event.get(name)
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        return None
    return value if abs(value) < 1e15 else None  # excludes infinity, too


def _count(value):
    return value if isinstance(value, int) and not isinstance(value, bool) and 0 <= value < 1 << 53 else None


def _list(value):
    return value if isinstance(value, list) else []


def _is_place(value):
    return isinstance(value, list) and len(value) == 2 and None not in map(_count, value)


def inside(part, name):
    """Path of the file `name` in a result directory; None if it points outside."""
    try:
        path = os.path.realpath(os.path.join(part.real, name))
    except (OSError, ValueError):
        return None
    return path if path.startswith(part.real + os.sep) else None


def evidence(attempt):
    """Names of an attempt's evidence files, relative to the result directory, sorted."""
    directory = attempt.file('evidence')
    path = inside(attempt.part, directory)
    try:
        return sorted(os.path.join(directory, name) for name in os.listdir(path)) if path else []
    except OSError:
        return []

