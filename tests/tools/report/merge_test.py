"""Merged parts of runs and compared runs: every combination of results."""
import os
import re
import tempfile
import unittest

import result_files
from cvnresults import compare, directory, runs
from cvnresults.runs import Result


class Runs(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.directory = holder.name
        self.made = 0

    def part(self, tests, results, **more):
        self.made += 1
        return result_files.make(os.path.join(self.directory, f'p{self.made}'), tests.split(), results, **more)

    def load(self, *paths, **more):
        return runs.load(paths, **more)


class Merging(Runs):
    def test_the_verdict_of_all_attempts_is_never_better_than_the_last(self):
        for verdicts, expected in [
                ('', 'NOT RUN'), ('SKIPPED', 'SKIPPED'), ('PASS', 'PASS'), ('PASS PASS', 'PASS'), ('SKIPPED PASS', 'PASS'),
                ('PASS SKIPPED', 'PASS'), ('FAIL PASS', 'FLAKY'), ('ERROR PASS PASS', 'FLAKY'), ('BLOCKED PASS', 'FLAKY'),
                ('PASS FAIL', 'FAIL'), ('FAIL PASS BLOCKED', 'FAIL'), ('BLOCKED ERROR', 'ERROR'), ('FAIL SKIPPED', 'FAIL'),
                ('FAIL PASS SKIPPED', 'FLAKY')]:
            attempts = [directory.Attempt(None, 1, 'A/1', verdict, 'why ' + verdict, 0) for verdict in verdicts.split()]
            verdict, message = runs.judged(attempts)
            self.assertEqual(verdict, expected, verdicts)
            if expected == 'FLAKY':
                self.assertRegex(message, r'^passed in attempt (2 of 2|3 of 3) after (FAIL|ERROR|BLOCKED): why \2$')
            else:
                self.assertEqual(message, 'why ' + expected if verdicts else '', verdicts)

    def test_shards_rounds_and_retries_form_one_run_with_one_result_per_test(self):
        night = {'run': 'night'}
        shards = [self.part('A/1 A/2', ['A/1 PASS', 'A/2 FAIL why', 'A/1@2 FAIL later', 'A/2@2 FAIL why'],
                            labels=night | {'shard': '1/3'}, status=1),
                  self.part('B/1', ['B/1 FAIL once'], labels=night | {'shard': '3/3', 'board': 'other'}, status=1)]
        retry = self.part('B/1', ['B/1 PASS'], at='2026-11-01T23:00:00Z', labels=night)
        elsewhere = self.part('A/1', ['A/1 PASS'], at='2026-10-31T20:00:00Z', labels=night, build='b0')
        run, before = self.load(retry, elsewhere, *shards)
        self.assertEqual({test: result.verdict for test, result in run.results.items()},
                         {'A/1': 'FAIL', 'A/2': 'FAIL', 'B/1': 'FLAKY'})
        self.assertEqual([attempt.verdict for attempt in run.results['B/1'].attempts], ['FAIL', 'PASS'])
        self.assertEqual([attempt.id for attempt in run.results['A/1'].attempts], ['A/1', 'A/1@2'])
        self.assertEqual((run.fact('board'), run.notes, run.exit_status), ('lab, other', ['shard 2/3 is missing'], 99))
        self.assertEqual((before.fact('build'), before.exit_status), ('b0', 0))
        self.assertEqual(run.verdict_in_words(), '3 of 3 tests that ran did not pass: 2 failed, 1 flaky.')
        merged, = self.load(*shards, retry, elsewhere, merge=True)
        self.assertEqual(len(merged.parts), 4)
        with self.assertRaisesRegex(directory.Problem, 'same directory as'):
            self.load(retry, retry + '/.')

    def test_the_exit_status_covers_all_parts(self):
        for results, status, retried, expected in [
                (['A/1 PASS', 'A/2 PASS'], 0, (), 0), (['A/1 PASS', 'A/2 SKIPPED no operator'], 0, (), 0),
                (['A/1 SKIPPED x', 'A/2 SKIPPED x'], 77, (), 77), (['A/1 PASS', 'A/2 BLOCKED'], 1, (), 1),
                (['A/1 PASS'], 99, (), 99), (['A/1 PASS', 'A/2 PASS'], 99, (), 99),
                (['A/1 PASS', 'A/2 FAIL'], 1, ['A/2 PASS'], 1), (['A/1 PASS'], 99, ['A/1 PASS', 'A/2 PASS'], 0),
                (['A/1 PASS'], 99, ['A/1 PASS'], 99)]:
            parts = [self.part('A/1 A/2', results, status=status)]
            if retried:
                parts.append(self.part('A/1 A/2', retried, at='2026-11-02T20:00:00Z'))
            run, = self.load(*parts, merge=True)
            self.assertEqual(run.exit_status, expected, (results, retried))

    def test_tests_that_did_not_run_have_a_reason(self):
        run, = self.load(self.part('A/1 A/2 A/3', ['A/1 PASS', 'A/2'], ends={'A/2': {'message': 'the run was interrupted'}},
                                   status=99))
        self.assertEqual([(result.verdict, result.message) for result in run.results.values()],
                         [('PASS', ''), ('ERROR', 'the run was interrupted'),
                          ('NOT RUN', 'the run was interrupted before this test')])
        self.assertIn('2 of 3 executions are in the journal', run.notes[0])
        old, = self.load(self.part('A/1 A/2', ['A/1 PASS'], at=None))
        self.assertEqual((old.results['A/2'].verdict, old.fact('board'), old.exit_status), ('NOT RUN', '', 99))


def outcome(text):
    """'FAIL 2.5' as the result of a test; None for '-'."""
    if text == '-':
        return None
    verdict, seconds = re.fullmatch(r'(\D+?) ?([\d.]*)', text).groups()
    attempts = [directory.Attempt(None, 1, 'A/1', verdict, '', float(seconds or 1))]
    return Result('A/1', directory.Name('A'), verdict, '', attempts)


class Comparing(Runs):
    def test_every_pair_of_results_is_classified(self):
        ran = ('PASS', 'FAIL', 'ERROR', 'BLOCKED', 'FLAKY')
        expected = {}
        for before in (*ran, 'SKIPPED', 'NOT RUN'):
            for after in ('SKIPPED', 'NOT RUN', 'FLAKY', 'PASS'):
                expected[before, after] = None
            for after in ('FAIL', 'ERROR'):
                expected[before, after] = 'newly failing'
            expected[before, 'BLOCKED'] = 'newly blocked'
            expected['-', before] = 'new'
            expected[before, '-'] = 'disappeared'
        for before in ('FAIL', 'ERROR'):
            expected.update({(before, 'FAIL'): 'still failing', (before, 'ERROR'): 'still failing', (before, 'PASS'): 'fixed'})
        expected.update({('BLOCKED', 'BLOCKED'): 'still blocked', ('BLOCKED', 'PASS'): 'fixed',
                         ('PASS 1.0', 'PASS 1.5'): 'slower by half', ('PASS 1.0', 'PASS 1.49'): None,
                         ('PASS 0.1', 'PASS 0.19'): None, ('PASS 0.1', 'PASS 0.2'): 'slower by half',
                         ('FAIL 1.0', 'FAIL 9.0'): 'still failing', ('SKIPPED 0.0', 'PASS 9.0'): None})
        for (before, after), kind in expected.items():
            self.assertEqual(compare.class_of(outcome(before), outcome(after)), kind, (before, after))

    def three_runs(self):
        return self.load(
            self.part('A/1 A/2 A/3', ['A/1 PASS', 'A/2 FAIL', 'A/3 PASS'], at='2026-11-01T20:00:00Z', board='x'),
            self.part('A/1 A/2 A/3', ['A/1 PASS', 'A/2 SKIPPED', 'A/3 PASS'], at='2026-11-02T20:00:00Z', build='b2'),
            self.part('A/1 A/2 A/4', ['A/1 FAIL', 'A/2 ERROR', 'A/4 FAIL'], at='2026-11-03T20:00:00Z'))

    def test_runs_are_ordered_by_time_and_compared(self):
        newest, middle, oldest = self.three_runs()
        changes = compare.compare(middle, newest)
        self.assertEqual({kind: [change.id for change in each] for kind, each in changes.items() if each},
                         {'newly failing': ['A/1', 'A/2'], 'new': ['A/4'], 'disappeared': ['A/3']})
        self.assertEqual(compare.differing_lists(middle, newest),
                         'p3 and p2 have different tests: 1 only in the first, 1 only in the second')
        self.assertEqual(compare.differing_lists(oldest, middle), '')
        other, = self.load(self.part('Z/1', ['Z/1 PASS']))
        self.assertIsNone(compare.compare(other, newest))
        self.assertIn('no test in common', compare.differing_lists(other, newest))

    def test_tests_are_unstable_only_on_equal_builds(self):
        found = self.three_runs()
        self.assertEqual({test: [result.verdict for _, result in each] for test, each in compare.unstable(found).items()},
                         {'A/1': ['FAIL', 'PASS', 'PASS'], 'A/2': ['ERROR', 'FAIL']})
        for run in found:
            for part in run.parts:
                part.build = ''
        self.assertEqual(compare.unstable(found), {}, 'nothing is known of the builds')
        flaky = self.load(self.part('A/1', ['A/1 FAIL', 'A/1@2 PASS']))
        self.assertEqual(list(compare.unstable(flaky)), ['A/1'])

    def test_the_first_failing_run_and_the_suspected_board_or_build(self):
        found = self.three_runs()
        self.assertEqual([getattr(compare.since(test, found), 'name', None) for test in ('A/1', 'A/2', 'A/3', 'A/4')],
                         ['p3', 'p1', None, 'p3'])
        self.assertEqual(compare.board_or_build('A/1', found), 'Look at the board: passed with the same build on x (p1).')
        self.assertEqual(compare.board_or_build('A/1', found[:2]), 'Look at the build: passed on the same board with b2 (p2).')
        self.assertEqual(compare.board_or_build('A/2', found), '')
        again = self.part('A/1', ['A/1 PASS'])
        self.assertEqual(compare.board_or_build('A/1', [found[0], *self.load(again)]),
                         'Passed on the same board with the same build (p4).')


if __name__ == '__main__':
    unittest.main()
