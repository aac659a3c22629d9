"""Runs on two boards behind SSH (contrib/labgrid/lab.sh): the labgrid case in contrib, as a user runs it."""
import os
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ET

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..')
CASE = os.path.join(SOURCE, 'contrib/labgrid/test_cvntester.py')
LAB = os.environ['CVN_LAB']


class Labgrid(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = directory.name

    def start(self, board, selection, **settings):
        """Starts the case on a board; its JUnit file is written to a directory named after the board."""
        directory = os.path.join(self.directory, f'board-{board}')
        os.makedirs(directory, exist_ok=True)
        environment = dict(os.environ, CVN_SELECTION=selection, **settings)
        # labgrid comes from Debian, and so does its interpreter.
        return subprocess.Popen(['/usr/bin/python3', '-m', 'pytest', '-q', '-p', 'no:cacheprovider', '--lg-env',
                                 os.path.join(LAB, f'board-{board}.yaml'), CASE], cwd=directory, env=environment,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def run_case(self, board, selection, **settings):
        process = self.start(board, selection, **settings)
        output = process.communicate()[0]
        return process.returncode, output

    def board(self, number, *command):
        return subprocess.run([os.path.join(SOURCE, 'sim/board/board-login'), os.path.join(LAB, f'board-{number}'),
                               '--', *command], check=True, capture_output=True, text=True).stdout

    def use_hal(self, number):
        """The simulated HAL exists after a program has used it."""
        self.board(number, 'cvntester', '--run', 'UTVpqModule/1', '--color', 'never')

    def test_two_boards_run_one_shard_each_in_parallel(self):
        cases = [self.start(n, 'UTVpqModule', CVN_OPTIONS=f'--no-operator --shard {n}/2') for n in (1, 2)]
        for case in cases:
            output = case.communicate()[0]
            self.assertEqual(case.returncode, 0, output)
        names = []
        for number in (1, 2):
            tree = ET.parse(os.path.join(self.directory, f'board-{number}', 'cvntester-junit.xml'))
            names += [case.get('name').split()[0] for case in tree.iter('testcase')]
        listed = self.board(1, 'cvntester', '--list', 'UTVpqModule', '--format', 'tsv').splitlines()[1:]
        self.assertEqual(sorted(names), sorted(line.split('\t')[0] for line in listed))

    def test_a_failing_test_is_reported(self):
        self.use_hal(1)
        self.board(1, 'cvnsim', 'misbehave', 'K2V_RHAL_VPQ_SetNR', 'segv')
        status, output = self.run_case(1, 'UTVpqModule/1?')
        self.assertEqual(status, 1)
        self.assertIn('ERROR UTVpqModule/19 killed by signal 11 SIGSEGV', output)

    def test_nothing_to_run_is_skipped_and_an_unknown_pattern_fails(self):
        status, output = self.run_case(1, 'VscModule/30')
        self.assertEqual(status, 0, output)
        self.assertIn('1 skipped', output)
        status, output = self.run_case(1, 'NoSuchModule')
        self.assertEqual(status, 1)
        self.assertIn("'NoSuchModule' matches no test", output)

    def test_power_cycle_through_labgrid_resets_the_board(self):
        self.use_hal(2)
        self.board(2, 'cvnsim', 'unplug', '0')
        self.assertIn('port 0: no cable', self.board(2, 'cvnsim', 'state'))
        status, output = self.run_case(2, 'UTVpqModule/1', CVN_POWER='cycle')
        self.assertEqual(status, 0, output)
        self.assertIn('port 0: 3840x2160', self.board(2, 'cvnsim', 'state'))


if __name__ == '__main__':
    unittest.main()
