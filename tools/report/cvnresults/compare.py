"""What changed between runs."""
import dataclasses

from .runs import BAD, RAN

FAILED = ('FAIL', 'ERROR')
SLOWER_FACTOR = 1.5
SLOWER_LEAST_S = 0.1  # smaller differences are noise

# Changes of a test from one run to the next, in the order in which people read them.
CLASSES = {
    'newly failing': 'failed or went wrong, and did not in the run before',
    'still failing': 'failed or went wrong in both runs',
    'newly blocked': 'nobody answered a prompt, and in the run before it was not so',
    'still blocked': 'blocked in both runs',
    'fixed': 'passed, and in the run before it failed, went wrong or was blocked',
    'new': 'not in the list of the run before',
    'disappeared': 'not in the list of this run',
    'slower by half': 'passed in both runs, and took at least half as long again (and 0.1 s more)',
}


def class_of(before, after):
    """The class of a test with these results (None: not in the run's list); None if nothing notable
    happened. A test that was skipped or not run is never a regression."""
    if before is None or after is None:
        return 'new' if before is None else 'disappeared'
    if after.verdict in FAILED:
        return 'still failing' if before.verdict in FAILED else 'newly failing'
    if after.verdict == 'BLOCKED':
        return 'still blocked' if before.verdict == 'BLOCKED' else 'newly blocked'
    if after.verdict != 'PASS':
        return None
    if before.verdict in BAD:
        return 'fixed'
    is_slower = (before.verdict == 'PASS' and after.seconds >= SLOWER_FACTOR * before.seconds and
                 after.seconds - before.seconds >= SLOWER_LEAST_S)
    return 'slower by half' if is_slower else None


@dataclasses.dataclass
class Change:
    """The change of one test."""
    id: str
    before: object  # Result or None
    after: object

    @property
    def name(self):
        return (self.after or self.before).name


def compare(older, newer):
    """Lists of changes by class, all classes in their order. None if the runs have no test in
    common, so that there is nothing to compare."""
    if not older.results.keys() & newer.results.keys():
        return None
    changes = {kind: [] for kind in CLASSES}
    for test in dict.fromkeys([*newer.results, *older.results]):
        before, after = older.results.get(test), newer.results.get(test)
        kind = class_of(before, after)
        if kind:
            changes[kind].append(Change(test, before, after))
    return changes


def differing_lists(older, newer):
    """One line if the runs have different tests; otherwise empty."""
    gone, come = older.results.keys() - newer.results.keys(), newer.results.keys() - older.results.keys()
    if not gone and not come:
        return ''
    if len(come) == len(newer.results):
        return f'{newer.name} and {older.name} have no test in common and are not compared'
    return f'{newer.name} and {older.name} have different tests: {len(come)} only in the first, {len(gone)} only in the second'


def unstable(runs):
    """Tests with different verdicts on the same build, as {id: [(run, result), …]}, newest first."""
    found = {}
    for test in dict.fromkeys(test for run in runs for test in run.results):
        ran = [(run, run.results[test]) for run in runs if test in run.results and run.results[test].verdict in RAN]
        verdicts = {}
        for run, result in ran:
            verdicts.setdefault(run.fact('build') or id(run), set()).add(result.verdict)
        if any(len(each) > 1 or 'FLAKY' in each for each in verdicts.values()):
            found[test] = ran
    return found


def since(test, runs):
    """The first run of the unbroken series of failures that ends in the newest run `runs[0]`; None
    if the test does not fail there. Runs without the test do not break the series."""
    first = None
    for run in runs:
        result = run.results.get(test)
        if result is None or result.verdict not in RAN:
            continue
        if result.verdict not in BAD:
            break
        first = run
    return first if test in runs[0].results and runs[0].results[test].verdict in BAD else None


def board_or_build(test, runs):
    """One sentence on which other run passed a test that fails in the newest run, and what differs there;
    empty if no run shows it."""
    newest, *others = runs
    board, build = newest.fact('board'), newest.fact('build')
    if not board or not build or newest.results[test].verdict not in BAD:
        return ''
    passed = [run for run in others if test in run.results and run.results[test].verdict == 'PASS']
    for run in passed:
        if run.fact('build') == build and run.fact('board') not in ('', board):
            return f'Look at the board: passed with the same build on {run.fact("board")} ({run.name}).'
    for run in passed:
        if run.fact('board') == board and run.fact('build') not in ('', build):
            return f'Look at the build: passed on the same board with {run.fact("build")} ({run.name}).'
    same = [run for run in passed if run.fact('board') == board and run.fact('build') == build]
    return f'Passed on the same board with the same build ({same[0].name}).' if same else ''
