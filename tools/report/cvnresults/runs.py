"""Runs and their results: the parts of a run are merged, with one result per test."""
import collections
import dataclasses
import datetime
import os
import re

from .directory import Name, Problem, read
from .texts import plural

ALL_PASSED, SOME_FAILED, NOTHING_RAN, HARNESS_FAILED = 0, 1, 77, 99

# All verdicts of a test, worst first. FLAKY: it first did not pass, then it did.
VERDICTS = ('FAIL', 'ERROR', 'BLOCKED', 'FLAKY', 'NOT RUN', 'SKIPPED', 'PASS')
BAD = ('FAIL', 'ERROR', 'BLOCKED')
RAN = ('FAIL', 'ERROR', 'BLOCKED', 'FLAKY', 'PASS')

_SHARD = re.compile(r'([1-9]\d{0,4})/([1-9]\d{0,4})')


@dataclasses.dataclass
class Result:
    """The result of a test in a run."""
    id: str
    name: Name
    verdict: str
    message: str
    attempts: list  # all of them, oldest first

    @property
    def seconds(self):
        """Duration of the last execution."""
        return self.attempts[-1].seconds if self.attempts else 0.0

    @property
    def shown(self):
        """The attempt that determines the verdict: the last one with the worst verdict."""
        matching = [attempt for attempt in self.attempts if attempt.verdict == self.verdict]
        return (matching or self.attempts or [None])[-1]


@dataclasses.dataclass
class Run:
    """One run, of one or more result directories."""
    name: str
    parts: list
    results: dict  # by id, in the order of the lists
    notes: list

    def fact(self, name):
        """'board', 'build' or 'version' as given by the parts; several values are separated by commas."""
        return ', '.join(dict.fromkeys(filter(None, (part.fact(name) for part in self.parts))))

    @property
    def started(self):
        return min((part.started for part in self.parts if part.started), default='')

    @property
    def ended(self):
        return max((part.ended for part in self.parts if part.ended), default='')

    @property
    def seconds(self):
        """Time spent in tests."""
        return sum(attempt.seconds for result in self.results.values() for attempt in result.attempts)

    @property
    def totals(self):
        """Number of tests by verdict."""
        counts = collections.Counter(result.verdict for result in self.results.values())
        return {verdict: counts[verdict] for verdict in VERDICTS}

    @property
    def ran(self):
        return sum(count for verdict, count in self.totals.items() if verdict in RAN)

    @property
    def exit_status(self):
        """Same as cvntester's: 99 if a result is missing or the harness failed."""
        totals = self.totals
        if (totals['NOT RUN'] or missing_shards(self.parts) or
                any(part.running or _has_failed(part, self.parts) for part in self.parts)):
            return HARNESS_FAILED
        if totals['PASS'] != self.ran:
            return SOME_FAILED
        return ALL_PASSED if self.ran else NOTHING_RAN

    @property
    def order(self):
        """Sort key: the start time, or the modification time of the journal if that is unknown."""
        modified = min(part.modified for part in self.parts)
        return self.started or datetime.datetime.fromtimestamp(modified, datetime.UTC).strftime('%Y-%m-%dT%H:%M:%SZ')

    def verdict_in_words(self):
        """The result of the run in one sentence."""
        totals = self.totals
        wrong = [f'{totals[verdict]} {word}' for verdict, word in
                 (('FAIL', 'failed'), ('ERROR', 'went wrong'), ('BLOCKED', 'blocked'), ('FLAKY', 'flaky'))
                 if totals[verdict]]
        if not self.ran:
            text = 'No test was run'
        elif wrong:
            bad = sum(totals[verdict] for verdict in (*BAD, 'FLAKY'))
            text = f'{bad} of {plural(self.ran, "test")} that ran did not pass: {", ".join(wrong)}'
            if self.ran == 1:
                text = 'The only test that ran did not pass'
        else:
            text = 'The only test that ran passed' if self.ran == 1 else f'All {self.ran} tests that ran passed'
        if totals['NOT RUN']:
            text += f'; {totals["NOT RUN"]} more should have run and did not'
        return text + '.'


def _has_failed(part, parts):
    """Whether a part ended with 99 and no later one ran all its tests."""
    if part.status != HARNESS_FAILED:
        return False
    later = set()
    for other in parts[parts.index(part) + 1:]:
        later.update(other.base(attempt.id) for attempt in other.attempts if attempt.verdict != 'SKIPPED')
    return not set(part.tests) <= later


def missing_shards(parts):
    """Missing shards of the run, such as ['3/3']. Empty if the parts have no shard labels."""
    found = [_SHARD.fullmatch(part.labels.get('shard', '')) for part in parts]
    pairs = {(int(match[1]), int(match[2])) for match in found if match}
    if not pairs:
        return []
    count = max(total for _, total in pairs)
    there = {number for number, _ in pairs}
    return [f'{number}/{count}' for number in range(1, count + 1) if number not in there]


def load(paths, merge=False):
    """The runs in result directories, newest first. Directories with the same label "run" and build
    are parts of one run; with `merge`, all are. Raises Problem."""
    parts_of = collections.defaultdict(list)
    seen = {}
    for path in paths:
        real = os.path.realpath(path)
        if real in seen:
            raise Problem(f'{path}: same directory as {seen[real]}')
        seen[real] = path
        part = read(path)
        parts_of[_key(part, real, merge)].append(part)
    return sorted((merged(parts) for parts in parts_of.values()), key=lambda run: run.order, reverse=True)


def _key(part, path, merge):
    if merge:
        return ()
    name = part.labels.get('run')
    return (name, part.fact('build')) if name else path


def merged(parts):
    """Merges parts into one run."""
    parts = sorted(parts, key=lambda part: part.started or '')
    attempts = collections.defaultdict(list)
    names, why, results = {}, {}, {}
    for part in parts:
        names.update(part.names)
        why.update(part.why_not_run)
        for test in part.tests:
            attempts[test]  # adds the test even if it was not run
        for attempt in part.attempts:
            attempts[part.base(attempt.id)].append(attempt)
    for test, tried in attempts.items():
        name = names.get(test) or Name(test.split('/')[0])
        verdict, message = judged(tried)
        if verdict == 'NOT RUN':
            message = why.get(test) or ('the run has not ended yet' if any(part.running for part in parts)
                                        else 'the run was interrupted before this test')
        results[test] = Result(test, name, verdict, message, tried)
    label = parts[0].labels.get('run')
    name = label or ' + '.join(part.name for part in parts)
    return Run(name, parts, results, _notes(parts))


def judged(attempts):
    """Verdict and message of a test with these attempts, oldest first."""
    ran = [attempt for attempt in attempts if attempt.verdict != 'SKIPPED']
    if not ran:
        return ('SKIPPED', attempts[-1].message) if attempts else ('NOT RUN', '')
    bad = [attempt for attempt in ran if attempt.verdict != 'PASS']
    if not bad:
        return 'PASS', ran[-1].message
    worst = min(bad, key=lambda attempt: VERDICTS.index(attempt.verdict))
    if ran[-1].verdict != 'PASS':
        return worst.verdict, worst.message
    message = f'passed in attempt {len(ran)} of {len(ran)} after {worst.verdict}'
    return 'FLAKY', message + (f': {worst.message}' if worst.message else '')


def _notes(parts):
    notes = []
    for part in parts:
        where = part.name
        if part.running:
            notes.append(f'{where}: the run has not ended yet')
        elif part.planned and part.planned > len(part.attempts):
            notes.append(f'{where}: {len(part.attempts)} of {part.planned} executions are in the journal')
        if part.resumed:
            notes.append(f'{where}: the run was interrupted and resumed'
                         + (f' {part.resumed} times' if part.resumed > 1 else ''))
        notes.extend(f'{where}: {note}' for note in part.notes)
    notes.extend(f'shard {shard} is missing' for shard in missing_shards(parts))
    return notes
