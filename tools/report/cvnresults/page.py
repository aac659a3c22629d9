"""The page: one self-contained HTML file."""
import dataclasses
import functools
import os
import re

import jinja2
from markupsafe import Markup

from . import VERSION
from .compare import CLASSES, board_or_build, compare, differing_lists, since, unstable
from .embed import Pictures, TextBudget, link, load_text, size_of, texts_of
from .playback import MOST_ROWS, playback
from .runs import BAD, VERDICTS
from .texts import clean, duration, plural

MEGABYTE = 1_000_000
EMBEDDED = 3.0  # megabytes of texts and pictures
TEXT_SHARE = 0.6  # of that; the rest is for pictures
MOST_LISTED = 200  # tests that did not pass, at the top
MOST_ATTEMPTS = 3  # of one test that are shown in full
STATUS_WORDS = {
    0: 'All that ran passed.',
    1: 'Something failed, went wrong, was blocked or passed only when it was tried again.',
    77: 'Nothing ran.',
    99: 'The run is not complete, or the harness or its surroundings failed.',
}
_LETTERS = {'PASS': 'P', 'FAIL': 'F', 'ERROR': 'E', 'BLOCKED': 'B', 'FLAKY': 'L', 'SKIPPED': 'S', 'NOT RUN': 'N'}
_LONGEST_TITLE = 100
REASON_BYTES = 16000  # of a log that are searched for the reason
LONGEST_REASON = 200
_REASON = re.compile(r'\bNG\b|\bFAIL|\bERROR|\bResult *: *-?[1-9]', re.IGNORECASE)


@dataclasses.dataclass
class Shown:
    """An attempt with everything that the page shows of it."""
    number: int
    verdict: str
    log: object = None
    calls: object = None
    reports: list = dataclasses.field(default_factory=list)
    pictures: list = dataclasses.field(default_factory=list)
    playback: object = None


@dataclasses.dataclass
class Details:
    """What the page shows of one test in addition to its result."""
    open: bool
    attempts: list
    since: str
    hint: str


def css(verdict):
    """Style-sheet class of a verdict."""
    return verdict.lower().replace(' ', '-')


def when(time):
    """A time such as 2026-11-22T02:40:00Z in readable form."""
    return time.replace('T', ' ').replace('Z', ' UTC') if time else 'unknown'


def own(text):
    """Text of a test, isolated so that its writing direction does not affect the rest."""
    return Markup('<bdi>{}</bdi>').format(text) if text else ''


def counts(results):
    """'35 tests, 2 FAIL'."""
    found = [result.verdict for result in results]
    parts = [f'{found.count(verdict)} {verdict}' for verdict in VERDICTS if verdict in found and verdict != 'PASS']
    return ', '.join([plural(len(found), 'test'), *parts])


def modules_of(run):
    """Results by module; modules are in the order of their first tests."""
    modules = {}
    for result in run.results.values():
        modules.setdefault(result.name.module, []).append(result)
    return modules


class _Page:
    def __init__(self, runs, directory, embedded):
        self.runs = runs
        self.run = runs[0]
        self.directory = directory
        room = int(embedded * MEGABYTE)
        self.pictures = Pictures(int(room * (1 - TEXT_SHARE)), directory)
        self.shown = {test: self._attempts(result) for test, result in self.run.results.items()}
        self.budget = TextBudget(int(room * TEXT_SHARE))
        for result in self.run.results.values():
            for attempt in self.shown[result.id]:
                for name in self._texts(attempt):
                    self.budget.plan(size_of(attempt.part, name) or 0, result.verdict in (*BAD, 'FLAKY'))
        self.budget.decide()
        # Pictures of tests that did not pass come first, as long as there is space.
        self.pictures_of = {}
        for result in sorted(self.run.results.values(), key=lambda result: VERDICTS.index(result.verdict)):
            for attempt in self.shown[result.id]:
                self.pictures_of[id(attempt)] = self.pictures.of(attempt)

    @staticmethod
    def _attempts(result):
        """The most informative attempts: the last ones that did not pass, and the last one."""
        ran = [attempt for attempt in result.attempts if attempt.verdict != 'SKIPPED']
        chosen = [attempt for attempt in ran if attempt.verdict != 'PASS'][-MOST_ATTEMPTS + 1:]
        if ran and ran[-1] not in chosen:
            chosen.append(ran[-1])
        return chosen

    @staticmethod
    def _texts(attempt):
        return [attempt.file('log'), attempt.file('trace'), *texts_of(attempt)]

    def details(self, result):
        matters = result.verdict in (*BAD, 'FLAKY')
        return Details(matters, [self._show(result, attempt, matters) for attempt in self.shown[result.id]],
                       self.since(result.id), self.hint(result.id))

    def _show(self, result, attempt, matters):
        limit = self.budget.limits[matters]
        log, calls, *reports = (
            (name, load_text(attempt.part, name, attempt.typed if name.endswith('.log') else (), limit, self.directory))
            for name in self._texts(attempt))
        return Shown(next(n for n, each in enumerate(result.attempts, 1) if each is attempt), attempt.verdict, log[1],
                     calls[1], [(clean(os.path.basename(name)), text) for name, text in reports if text],
                     self.pictures_of[id(attempt)], playback(attempt.findings))

    def since(self, test):
        """Since when a test has failed, if there are several runs."""
        first = since(test, self.runs) if len(self.runs) > 1 else None
        if not first:
            return ''
        if first is self.run:
            return 'Fails since this run.'
        return f'Fails since {first.name} ({when(first.started)}).'

    def hint(self, test):
        """Whether the board or the build is the likely cause, if the runs show it."""
        return board_or_build(test, self.runs) if test in self.run.results else ''

    def history(self, test):
        """One mark per run, newest first."""
        return Markup(' ').join(self._mark(run, run.results.get(test)) for run in self.runs)

    @staticmethod
    def _mark(run, result):
        if not result:
            return '·'
        letter = _LETTERS[result.verdict]
        if result.verdict == 'PASS':
            return letter
        title = f'{result.verdict} in {run.name}: {result.message}'[:_LONGEST_TITLE]
        return Markup('<b class="mark-{}" title="{}">{}</b>').format(css(result.verdict), title, letter)

    @functools.cache
    def printed(self, test):
        """For a test that failed without a message: the last line it printed about the failure."""
        result = self.run.results.get(test)
        if not result or result.message or result.verdict not in BAD:
            return ''
        attempt = result.shown
        text = load_text(attempt.part, attempt.file('log'), (), REASON_BYTES, self.directory)
        lines = [line for _, part in text.parts for line in part.splitlines()] if text else []
        return next((line.strip()[:LONGEST_REASON] for line in reversed(lines) if _REASON.search(line)), '')

    def failed(self):
        """Results of tests that did not pass, the worst verdicts first."""
        found = [result for result in self.run.results.values() if result.verdict in (*BAD, 'FLAKY')]
        return sorted(found, key=lambda result: VERDICTS.index(result.verdict))

    def not_run(self):
        """Tests that did not run, as [((verdict, reason), results)]."""
        groups = {}
        for result in self.run.results.values():
            if result.verdict in ('SKIPPED', 'NOT RUN'):
                groups.setdefault((result.verdict, result.message), []).append(result)
        return sorted(groups.items(), key=lambda group: (VERDICTS.index(group[0][0]), -len(group[1])))

    def notes(self):
        notes = list(self.run.notes)
        if len(self.runs) > 1:
            notes.append(differing_lists(self.runs[1], self.runs[0]))
        return [note for note in notes if note]


@functools.cache
def _environment():
    environment = jinja2.Environment(loader=jinja2.PackageLoader('cvnresults'), autoescape=True,
                                     undefined=jinja2.StrictUndefined)
    environment.filters.update(css=css, when=when, duration=duration, plural=plural, counts=counts, own=own, shown=clean)
    environment.globals.update(
        verdicts=VERDICTS, status_words=STATUS_WORDS, classes=CLASSES, most_rows=MOST_ROWS, most_listed=MOST_LISTED,
        version=VERSION,
        **{name: Markup(environment.loader.get_source(environment, file)[0])
           for name, file in (('style', 'style.css'), ('script', 'script.js'))})
    return environment


def render(runs, directory, embedded=EMBEDDED):
    """The page of `runs` (newest first) as text, for a file in `directory`. At most about
    `embedded` megabytes of it are texts and pictures of tests."""
    page = _Page(runs, directory, embedded)
    several = len(runs) > 1
    return _environment().get_template('page.html').render(
        page=page, run=page.run, runs=runs, words=page.run.verdict_in_words(), modules=modules_of(page.run),
        index={test: number for number, test in enumerate(page.run.results, 1)},
        compared=compare(runs[1], runs[0]) if several else None, unstable=unstable(runs) if several else {},
        link_to=lambda path: link(path, directory))

