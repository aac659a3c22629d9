"""cvnreport as a program: its files, its exit statuses, and how other programs read its files."""
import json
import os
import re
import subprocess
import tempfile
import unittest

import junitparser
from PIL import Image

import result_files

CVNREPORT = os.path.join(result_files.REPORT, 'cvnreport')


class Command(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.directory = holder.name
        self.page = os.path.join(holder.name, 'page.html')

    def make(self, name, tests, results, **more):
        return result_files.make(os.path.join(self.directory, name), tests.split(), results, **more)

    def run_it(self, *words):
        return subprocess.run([CVNREPORT, *words], capture_output=True, encoding='utf-8', check=False)

    def text(self, *words):
        """The page for these directories."""
        done = self.run_it(*words, '-o', self.page)
        self.assertEqual((done.returncode, done.stderr), (0, ''))
        with open(self.page, encoding='utf-8') as file:
            return file.read()

    def assert_in(self, part, text):
        """Like assertIn, for texts that are too long to print."""
        self.assertTrue(part in text, part)

    def test_errors_are_one_line_and_write_no_file(self):
        good = self.make('good', 'A/1', ['A/1 FAIL'])
        other = self.make('other', 'Z/1', ['Z/1 PASS'])
        with open(self.page, 'w', encoding='utf-8') as file:
            file.write('as it was')
        new = os.path.join(self.directory, 'new.xml')
        cases = [
            ((good,), 2, 'nothing to do; use -o, --junit, --json or --exit-status'),
            (('-o', self.page), 2, 'the following arguments are required: DIR'),
            ((good, '--junk'), 2, 'unrecognized arguments: --junk'),
            ((good, '-o', self.page, '--embed', '-1'), 2, "invalid value '-1': expected megabytes"),
            ((good, '-o', self.page, '--junit', self.page), 2, 'two outputs are the same file'),
            ((good, self.directory, '-o', self.page), 2, 'not a result directory'),
            ((good + '/journal', '-o', self.page), 2, 'not a directory'),
            ((good, '-o', '/nowhere/page.html', '--junit', new), 99, ': No such file'),
            ((good, '--junit', new, '--json', '/nowhere/out.json'), 99, ': No such file'),
            ((good, '--junit', new, '-o', good), 99, 'not a regular file'),
            ((good, '--junit', new, '-o', good + '/journal/page'), 99, ': Not a directory'),
        ]
        before = sorted(os.listdir(self.directory))
        for words, status, problem in cases:
            done = self.run_it(*words)
            self.assertEqual((done.returncode, done.stdout, done.stderr.count('\n')), (status, '', 1), (words, done.stderr))
            self.assertTrue(done.stderr.startswith('cvnreport: '), done.stderr)
            self.assertIn(problem, done.stderr)
            self.assertEqual(sorted(os.listdir(self.directory)), before)
        with open(self.page, encoding='utf-8') as file:
            self.assertEqual(file.read(), 'as it was')
        with open('/dev/full', 'wb') as full:
            lost = subprocess.run([CVNREPORT, good, '--json', '-'], stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual((lost.returncode, lost.stderr), (99, b'cvnreport: cannot write -: No space left on device\n'))
        different = self.run_it(good, other, '-o', self.page, '--exit-status')
        self.assertEqual((different.returncode, different.stderr.count('\n')), (1, 1))
        self.assertIn('have no test in common', different.stderr)

    def test_the_man_page_has_every_option_of_the_help(self):
        page, usage = self.run_it('--document').stdout, self.run_it('--help').stdout
        options = set(re.findall(r'(?<=  )--?[a-z][a-z-]*', usage))
        self.assertGreater(len(options), 6)
        self.assertEqual([each for each in options if each.replace('-', '\\-') not in page], [])

    def test_other_programs_read_the_same_results(self):
        night = {'run': 'night'}
        parts = [self.make('one', 'A/1 A/2', ['A/1 FAIL ]]>&"', 'A/2 PASS'], labels=night, status=1),
                 self.make('two', 'B/1 B/2 B/3', ['B/1 FAIL', 'B/2 SKIPPED no operator'], labels=night, status=99),
                 self.make('three', 'C/1', ['C/1 BLOCKED no answer'], labels=night, status=1),
                 self.make('again', 'B/1', ['B/1 PASS'], labels=night, at='2026-11-02T20:00:00Z')]
        xml, read = (os.path.join(self.directory, name) for name in ('out.xml', 'out.json'))
        done = self.run_it(*parts, '--junit', xml, '--json', read, '--exit-status')
        self.assertEqual((done.returncode, done.stderr), (99, ''))
        cases = {case.name.split()[0]: [(type(each).__name__, each.type, each.message) for each in case.result]
                 for suite in junitparser.JUnitXml.fromfile(xml) for case in suite}
        self.assertEqual(cases, {
            'A/1': [('Failure', 'FAIL', ']]>&"')], 'A/2': [],
            'B/1': [('Failure', 'FLAKY', 'passed in attempt 2 of 2 after FAIL')],
            'B/2': [('Skipped', None, 'no operator')],
            'B/3': [('Skipped', None, 'not run: the run was interrupted before this test')],
            'C/1': [('Error', 'BLOCKED', 'no answer')]})
        whole = junitparser.JUnitXml.fromfile(xml)
        self.assertEqual((whole.tests, whole.failures, whole.errors, whole.skipped), (6, 2, 1, 2))
        with open(read, encoding='utf-8') as file:
            run, = json.load(file)['runs']
        self.assertEqual({verdict: count for verdict, count in run['totals'].items() if count},
                         {'FAIL': 1, 'BLOCKED': 1, 'FLAKY': 1, 'NOT RUN': 1, 'SKIPPED': 1, 'PASS': 1})
        self.assertEqual([attempt['verdict'] for test in run['tests'] if test['test'] == 'B/1'
                          for attempt in test['attempts']], ['FAIL', 'PASS'])

    def test_long_logs_are_shortened_in_the_middle_to_fit_the_budget(self):
        lines = [f'line {number} <b>\n'.encode() for number in range(40000)]
        tests = [f'A/{number}' for number in range(30)]
        made = self.make('long', ' '.join(tests), [f'{test} PASS' for test in tests[:-1]] + [tests[-1] + ' FAIL'],
                         logs={test: b''.join(lines) for test in tests},
                         ends={tests[-1]: {'typed': [[0, 6], [len(b''.join(lines)) - 14, 13]]}})
        text = self.text(made)
        self.assertLess(len(text), 4_000_000)
        failed = text[text.index('<div id="t30">'):]
        for part in ('<kbd>line 0</kbd> &lt;b&gt;\nline 1 &lt;b&gt;\n',
                     f'left out here; all {len(b"".join(lines))} bytes are in <a href="./long/logs/0030-A.29.log">',
                     '<kbd>ine 39999 &lt;b&gt;</kbd>'):
            self.assert_in(part, failed)
        small = self.run_it(made, '-o', self.page, '--embed', '0')
        self.assertEqual(small.returncode, 0)
        self.assertLess(os.path.getsize(self.page), 120_000)

    def test_pictures_are_in_order_and_broken_ones_are_marked(self):
        made = self.make('seen', 'A/1 B/1', ['A/1 PASS', 'B/1 FAIL eyes: no'])
        evidence = os.path.join(made, 'logs', '0002-B.1.evidence')
        os.mkdir(evidence)
        for name in ('capture.png', 'difference.png', 'reference.png'):
            Image.new('RGB', (1280, 720), 'red').save(os.path.join(evidence, name))
        with open(os.path.join(evidence, 'x<i>.png'), 'wb') as file:
            file.write(b'\x89PNG\r\n\x1a\n nothing')
        with open(os.path.join(evidence, 'strip.svg'), 'w', encoding='utf-8') as file:
            file.write('<svg xmlns="http://www.w3.org/2000/svg"><script>alert(1)</script></svg>')
        text = self.text(made)
        order = [text.index(name) for name in ('alt="reference.png of B/1"', 'alt="capture.png of B/1"',
                                               'alt="difference.png of B/1"', 'alt="strip.svg of B/1"')]
        self.assertEqual(order, sorted(order))
        self.assert_in('0002-B.1.evidence/capture.png">', text)
        self.assert_in(', 1280x720', text)
        self.assert_in('x&lt;i&gt;.png</bdi></a>: cannot be shown', text)
        self.assertFalse('alert(1)' in text)

    def test_running_and_resumed_runs_are_marked(self):
        made = self.make('night', 'A/1 A/2', ['A/1 PASS', 'A/2'])
        with open(os.path.join(made, 'results.jsonl'), 'a', encoding='utf-8') as file:
            file.write('{"event": "test-e\n{"event": "run-start", "format": 1, "resumed": true, "tests": 2}\n')
        lock = subprocess.Popen(['flock', os.path.join(made, 'journal'), 'sh', '-c', 'echo held; read end'],
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        lock.stdout.readline()
        text = self.text(made)
        lock.communicate(b'\n', timeout=60)
        self.assert_in('night: the run has not ended yet', text)
        self.assert_in('The only test that ran passed; 1 more should have run', text)
        self.assert_in('night: the run was interrupted and resumed', text)
        self.assert_in('night: results.jsonl has 1 line that cannot be read', text)
        self.assert_in('1 of 2 tests that ran did not pass: 1 went wrong.', self.text(made))

    def test_run_script_shows_the_last_run_on_the_board(self):
        def shown():
            script = os.path.join(result_files.REPORT, '..', '..', 'run.sh')
            return subprocess.run([script, '--board', self.directory, '--report'], capture_output=True, encoding='utf-8',
                                  check=False, env={'PATH': os.environ['PATH']})
        none = shown()
        self.assertEqual((none.returncode, none.stdout), (2, ''))
        self.assertIn('no results in', none.stderr)
        for name, age in (('last', 0), ('first', 1000)):
            made = self.make('root/data/' + name, 'A/1', ['A/1 FAIL why'])
            os.utime(os.path.join(made, 'journal'), (2e9 - age, 2e9 - age))
        os.makedirs(os.path.join(self.directory, 'root/var'))
        with open(os.path.join(self.directory, 'root/var/journal'), 'wb') as file:
            file.write(b'\0\1 of somebody else')
        page = os.path.join(self.directory, 'report.html')
        self.assertEqual(shown().stdout, f'Report: {page}\n')
        with open(page, encoding='utf-8') as file:
            self.assert_in('<h1>Test report: <bdi>last</bdi>', file.read())

    def test_the_same_directories_give_the_same_bytes(self):
        made = self.make('night', 'A/1', ['A/1 PASS'])
        first = self.text(made)
        self.assertTrue(self.text(made) == first)


if __name__ == '__main__':
    unittest.main()
