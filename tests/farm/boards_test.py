"""Two simulated boards in parallel: shards, an unhealthy board, a retry, one combined report.

CVN_BUILD is the build tree. Without a sandbox for boards (no bubblewrap) the tests are skipped.
"""
import glob
import json
import os
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ET

import yaml

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..')
BUILD = os.environ['CVN_BUILD']
TOOLS = os.path.join(SOURCE, 'sim/board')
SELECTION = ['UTVpqModule/20?', 'CRlinkModule/?']


class Board:
    def __init__(self, directory):
        self.directory = directory
        self.power('on', '--bin', BUILD)
        os.makedirs(os.path.join(directory, 'root/tmp/var/log'), exist_ok=True)

    def power(self, *words):
        subprocess.run([os.path.join(TOOLS, 'board-power'), self.directory, *words], check=True)

    def start(self, *words):
        return subprocess.Popen([os.path.join(TOOLS, 'board-login'), self.directory, '--', *words],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def run(self, *words):
        process = self.start(*words)
        output = process.communicate()[0]
        return process.returncode, output

    def path(self, name):
        return os.path.join(self.directory, 'root/data', name)


def run_words(name, *more):
    return ['cvntester', '--run', *SELECTION, '--no-operator', '--results', f'/data/{name}', '--label', f'run={name}',
            '--color', 'never', *more]


class TwoBoards(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = directory.name
        self.boards = []
        for number in (1, 2):
            self.boards.append(Board(os.path.join(self.directory, f'board-{number}')))
            self.addCleanup(self.boards[-1].power, 'off')

    def merged(self, *directories):
        """Exit status of cvnreport for result directories, and the results by test."""
        junit = os.path.join(self.directory, 'all.xml')
        done = subprocess.run([os.path.join(SOURCE, 'tools/report/cvnreport'), *directories, '--junit', junit,
                               '--exit-status'], capture_output=True, text=True, check=False)
        found = {}
        for case in ET.parse(junit).iter('testcase'):
            wrong = [child.get('type') or child.tag for child in case if child.tag in ('failure', 'error', 'skipped')]
            found.setdefault(case.get('name').split()[0], []).append(wrong[0] if wrong else 'PASS')
        return done.returncode, found, done.stderr

    def test_shards_form_one_run_and_an_unhealthy_board_ends_only_its_own_shard(self):
        one, two = self.boards
        listed = one.run('cvntester', '--list', *SELECTION, '--format', 'json')[1]
        everything = {test['test'] for test in json.loads(listed)}

        runs = [board.start(*run_words('night', '--shard', f'{number}/2')) for number, board in enumerate((one, two), 1)]
        for run in runs:
            output = run.communicate()[0]
            self.assertEqual(run.returncode, 0, output)
        status, found, said = self.merged(one.path('night'), two.path('night'))
        self.assertEqual((status, set(found), said), (0, everything, ''))
        self.assertTrue(all(results == ['PASS'] for results in found.values()), found)
        self.assertEqual(self.merged(one.path('night'))[0], 99, 'a shard is missing')

        # In the second run a test crashes on its board, which is unhealthy afterwards.
        crashing = 'UTVpqModule/201'
        in_first = crashing in one.run('cvntester', '--list', *SELECTION, '--shard', '1/2', '--format', 'tsv')[1]
        sick, well = (one, two) if in_first else (two, one)
        sick.run('cvnsim', 'misbehave', 'K2V_RHAL_VPQ_SetGammaLUT', 'segv')
        runs = [board.start(*run_words('second', '--shard', f'{number}/2', '--health', f'test "$CVN_TEST" != {crashing}'))
                for number, board in enumerate((one, two), 1)]
        outputs = [run.communicate()[0] for run in runs]
        statuses = dict(zip((one, two), (run.returncode for run in runs)))
        self.assertEqual((statuses[sick], statuses[well]), (99, 0), outputs)

        # The suspect is retried on the other board; the unhealthy board's run is resumed after it recovers.
        subprocess.run(['cp', '-r', sick.path('second'), well.path('suspect')], check=True)
        status, output = well.run('cvntester', '--retry-from', '/data/suspect', '--results', '/data/retry', '--label',
                                  'run=second', '--color', 'never')
        self.assertEqual(status, 0, output)
        self.assertIn('1 listed = 1 run', output)
        status, output = sick.run('cvntester', '--resume', '/data/second', '--color', 'never')
        self.assertEqual(status, 1, output)
        status, found, said = self.merged(one.path('second'), two.path('second'), well.path('retry'))
        self.assertEqual((status, set(found)), (1, everything), said)
        self.assertEqual({test: results for test, results in found.items() if results != ['PASS']},
                         {crashing: ['FLAKY']})


class Recipes(unittest.TestCase):
    def test_recipes_for_build_servers_and_labs_are_valid_yaml(self):
        files = glob.glob(os.path.join(SOURCE, 'contrib/*/*.y*ml'))
        self.assertGreaterEqual(len(files), 5)
        for path in files:
            with open(path, encoding='utf-8') as file:
                text = file.read()
            if os.path.basename(path) == 'simulated-job.yaml':
                text = text.format(name='n', selection='s', options='o', tags='', archive='a')
            self.assertIsInstance(yaml.safe_load(text), dict, path)


def can_be_entered():
    with tempfile.TemporaryDirectory() as directory:
        probe = subprocess.run([os.path.join(TOOLS, 'board-run'), '--board', directory, '--bin', BUILD, '--probe'],
                               capture_output=True, text=True, check=False)
        return probe.stdout.strip() == 'bwrap'


if __name__ == '__main__':
    if not can_be_entered():
        print('Skipped: boards run in no namespaces here')
        sys.exit(77)
    unittest.main()
