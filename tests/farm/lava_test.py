"""Runs in a LAVA lab (contrib/lava/lab.sh): parallel shards, crashes, power cuts, other jobs.

Jobs are submitted as a user submits the ones in contrib/lava.
"""
import collections
import json
import os
import subprocess
import sys
import time
import unittest

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..')
sys.path.insert(0, os.path.join(SOURCE, 'contrib', 'lava'))
import lab  # noqa: E402

LAB = os.environ['CVN_LAB']
BUILD = os.path.join(LAB, 'build')
LIMIT_S = 120


def expected(*patterns):
    """The results of an unattended run of a selection on a healthy board, by the names of the tests in LAVA."""
    text = subprocess.run([os.path.join(BUILD, 'bin', 'cvntester'), '--list', *patterns, '--format', 'json'],
                          check=True, capture_output=True, text=True).stdout
    return {test['test'].replace('/', '.'): 'skip' if test['prompts'] or test['judge'] == 'operator' else 'pass'
            for test in json.loads(text)}


def power(board, *words):
    subprocess.run([os.path.join(SOURCE, 'sim/board/board-power'), os.path.join(LAB, board), *words], check=True)


def switch_on(board, scenario):
    """Power-cycles a board with the given scenario lines."""
    path = os.path.join(LAB, f'scenario-{board}')
    with open(path, 'w', encoding='utf-8') as file:
        file.write(f'plug 0 3840x2160p60 hdr\n{scenario}\n')
    power(board, 'cycle', '--bin', BUILD, '--scenario', path)


class Jobs(unittest.TestCase):
    def setUp(self):
        self.lab = lab.Lab(os.environ['LAVA_URL'], os.environ['LAVA_TOKEN'])

    def submit(self, selection, options='--no-operator', board=''):
        return self.lab.submit(lab.job_text(self.id().split('.')[-1], selection, options, board))

    def finished(self, number):
        """The finished job, and how often each test has which result."""
        job = self.lab.wait(number)
        print(lab.job_line(job, self.lab.error(number)))
        return job, collections.Counter(self.lab.tests(number))

    def wait_for(self, board, stands):
        """Waits until the text is in the journal of the board's run."""
        journal = os.path.join(LAB, board, 'root/data/cvntester-results/journal')
        end = time.monotonic() + LIMIT_S
        while time.monotonic() < end:
            try:
                with open(journal, encoding='utf-8') as file:
                    if stands in file.read():
                        return
            except FileNotFoundError:
                pass
            time.sleep(0.02)
        self.fail(f'no {stands!r} in the journal of {board} after {LIMIT_S} s')

    def test_shards_run_in_parallel_and_cover_the_selection(self):
        numbers = [self.submit('UTVpqModule CRlinkModule', f'--no-operator --shard {part}/2') for part in (1, 2)]
        found, boards = collections.Counter(), set()
        for number in numbers:
            job, results = self.finished(number)
            self.assertEqual(job['health'], 'Complete')
            self.assertEqual(results.pop((lab.RUN, 'pass')), 1)
            boards.add(job['actual_device'])
            found += results
        self.assertEqual(found, collections.Counter(expected('UTVpqModule', 'CRlinkModule').items()))
        self.assertEqual(len(boards), 2)

    def test_only_the_crashing_test_fails(self):
        switch_on('board-3', 'misbehave K2V_RHAL_VPQ_SetNR segv')
        job, results = self.finished(self.submit('UTVpqModule', board='board-3'))
        self.assertEqual(job['health'], 'Complete')
        self.assertEqual(results, collections.Counter(
            {**expected('UTVpqModule'), 'UTVpqModule.19': 'fail', lab.RUN: 'pass'}.items()))

    def test_a_run_cut_by_a_power_failure_is_resumed_by_the_next_job(self):
        # The power fails in the middle of a test of the second round.
        switch_on('board-1', 'misbehave K2V_RHAL_VPQ_SetGamut hang --at 5')
        options = '--no-operator --repeat 3'
        first = self.submit('UTVpqModule', options, 'board-1')
        self.wait_for('board-1', 'start\tUTVpqModule/204@2\n')
        power('board-1', 'off')
        job, cut = self.finished(first)
        self.assertEqual((job['health'], self.lab.error(first)), ('Incomplete', 'Infrastructure: Connection closed'))
        self.assertEqual(set(result for _, result in cut), {'pass'})

        job, results = self.finished(self.submit('UTVpqModule', options, 'board-1'))
        self.assertEqual(job['health'], 'Complete')
        self.assertEqual(results.pop((lab.RUN, 'pass')), 1)
        names = list(expected('UTVpqModule'))
        self.assertEqual(collections.Counter(name for name, _ in results.elements()),
                         collections.Counter(names + [f'{name}_{n}' for n in (2, 3) for name in names]))
        self.assertEqual([result for result in results.elements() if result[1] != 'pass'],
                         [('UTVpqModule.204_2', 'fail')])

    def test_a_cancelled_job_leaves_no_state_for_another_selection(self):
        number = self.submit('UTVpqModule', '--no-operator --repeat 9', 'board-2')
        self.wait_for('board-2', 'end\tUTVpqModule/100\t')
        self.lab.cancel(number)
        self.assertEqual(self.finished(number)[0]['health'], 'Canceled')
        job, results = self.finished(self.submit('CRlinkModule', board='board-2'))
        self.assertEqual(job['health'], 'Complete')
        self.assertEqual(results, collections.Counter(
            {**expected('CRlinkModule'), lab.RUN: 'pass'}.items()))


if __name__ == '__main__':
    unittest.main()
