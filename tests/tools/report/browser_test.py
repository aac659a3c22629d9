"""The page in headless Chromium, as users see it: with and without scripts, in light, dark and narrow
windows, and printed; names and output of tests are shown as text only."""
import base64
import importlib.util
import math
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from PIL import Image

import result_files

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'support'))
if not shutil.which('chromium') or not importlib.util.find_spec('websocket'):
    print('browser_test.py: Skipped\nchromium or python3-websocket cannot be had here')
    sys.exit(77)
from browser import Browser  # noqa: E402

EVIL = '"><script>hacked=1</script><img src=x onerror=hacked=1></script><!--'
LOG = (b'\x1b[31m' + EVIL.encode() + b'\xff\x00\xe2\x80\xae </pre>\n' b'which port?\n0\n')
FINDINGS = [
    {'event': 'frame-event', 'case': EVIL, 'stage': EVIL, 'kind': 'dropped', 'first': 300, 'last_possible': 302, 'count': 1,
     'time': 'lost', 'cause': None, 'id': 1},
    {'event': 'frame-event', 'stage': 'VO', 'kind': 'dropped', 'first': 300, 'count': 1, 'cause': 1, 'id': 2},
    {'event': 'stage-pacing', 'stage': 'VO', 'rate': 59.94, 'worst_ms': 50, 'uneven': EVIL, 'drift_ppm': math.inf},
    *({'event': 'sync-mark', 'flash_pts': (1 << 32) - 90000 + 90000 * second & 0xffffffff, 'ms': ms, 'least_ms': -30,
       'most_ms': 20, 'passed': ms < 21} for second, ms in enumerate((0, 20, 45, math.inf)))]
TESTS = ['A/1', 'A/2', 'A/10', 'B/1', 'B/2', 'C/1', 'C/2']
RESULTS = [('A/1', 'FAIL', EVIL, 1.5), ('A/2', 'PASS', '', 2.5), ('A/10', 'ERROR', 'crashed', 0.5),
           ('B/1', 'BLOCKED', "no answer to 'x'", 9.0), ('B/2', 'SKIPPED', 'needs an operator', 0.0), ('C/1', 'FAIL', '', 0.1)]
FAILING = ['A/1', 'A/10', 'B/1', 'C/1']


def shown_rows(browser):
    return browser.value("""[...document.querySelectorAll('#table tbody tr[id]')].filter((row) => row.checkVisibility())
        .map((row) => row.cells[1].textContent)""")


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        cls.addClassCleanup(holder.cleanup)
        cls.directory = holder.name
        names = {'A/1': EVIL}
        runs = [result_files.make(os.path.join(holder.name, 'before'), TESTS, [(test, 'PASS', '', 1.0) for test in TESTS],
                                  names=names),
                result_files.make(os.path.join(holder.name, 'night <i>'), TESTS, RESULTS, at='2026-11-02T20:00:00Z', status=99,
                                  names=names, logs={'A/1': LOG, 'C/1': b'K2V NG : -3\n'}, extra={'A/1': FINDINGS},
                                  ends={'A/1': {'typed': [[LOG.index(b'0\n'), 2]]}}, labels={'board': EVIL})]
        evidence = os.path.join(runs[1], 'logs', '0001-A.1.evidence')
        os.mkdir(evidence)
        for name in ('reference.png', 'capture.png', 'difference.png'):
            Image.new('RGB', (960, 540), 'navy').save(os.path.join(evidence, name))
        cls.file = os.path.join(holder.name, 'page.html')
        subprocess.run([os.path.join(result_files.REPORT, 'cvnreport'), *runs, '-o', cls.file], check=True)
        cls.browser = Browser(holder.name)
        cls.addClassCleanup(cls.browser.close)
        cls.browser.call('Network.enable')

    def setUp(self):
        self.browser.errors.clear()
        self.browser.requests.clear()
        self.browser.look(1200, 900, 'light')
        self.browser.open('file://' + self.file)

    def tearDown(self):
        self.assertEqual(self.browser.errors, [])

    def count(self, selector):
        return self.browser.value(f'document.querySelectorAll({selector!r}).length')

    def text_of(self, selector):
        return self.browser.value(f'document.querySelector({selector!r}).textContent')

    def test_output_of_tests_is_shown_as_text(self):
        self.assertEqual(self.browser.value('typeof hacked'), 'undefined')
        self.assertEqual([self.count(tag) for tag in ('script', 'img', 'main i', 'pre script')], [1, 3, 0, 0])
        self.assertEqual(self.text_of('#r1 td.less bdi'), EVIL)
        printed = self.text_of('#t1 pre')
        self.assertEqual(printed, EVIL + '\ufffd⟨U+0000⟩⟨U+202E⟩ </pre>\nwhich port?\n0\n')
        self.assertEqual((self.text_of('#t1 mark'), self.text_of('#t1 kbd')), ('which port?\n', '0\n'))
        self.assertEqual(self.text_of('#r6 td.reason bdi'), 'K2V NG : -3')
        self.assertEqual([url for url in self.browser.requests if not url.startswith(('file:///', 'data:image/'))], [])

    def test_the_counts_match_the_journal(self):
        totals = self.browser.value("""Object.fromEntries([...document.querySelectorAll('#summary tbody tr')].map(
            (row) => [row.cells[0].textContent, Number(row.cells[1].textContent)]))""")
        self.assertEqual(totals, {'FAIL': 2, 'ERROR': 1, 'BLOCKED': 1, 'NOT RUN': 1, 'SKIPPED': 1, 'PASS': 1, 'all': 7})
        self.assertEqual(self.browser.value("""[...document.querySelectorAll('#table tr[id] td:first-child')].map(
            (cell) => cell.textContent)"""), ['FAIL', 'PASS', 'ERROR', 'BLOCKED', 'SKIPPED', 'FAIL', 'NOT RUN'])
        self.assertEqual(self.text_of('.words strong'),
                         '4 of 5 tests that ran did not pass: 2 failed, 1 went wrong, 1 blocked; '
                         '1 more should have run and did not.')

    def test_filter_and_sort(self):
        def do(line):
            self.browser.value(line)
            return shown_rows(self.browser)

        self.assertEqual(do('document.getElementById("filter-text").focus()'), TESTS)
        self.browser.call('Input.insertText', text='c/ NAME')
        self.assertEqual(shown_rows(self.browser), ['C/1', 'C/2'])
        self.assertEqual(self.text_of('#shown'), '2 of 7 tests shown')
        self.assertEqual(self.count('tr.module:not([hidden])'), 1)
        change = '.dispatchEvent(new Event("input", {bubbles: true}))'
        self.assertEqual(do(f'filter = document.getElementById("filter-text"); filter.value = ""; filter{change}'), TESTS)
        self.assertEqual(do('document.querySelector("input[value=FAIL]").click()'), ['A/2', 'A/10', 'B/1', 'B/2', 'C/2'])
        self.assertEqual(do(f'select = document.querySelector("select"); select.value = "A"; select{change}'), ['A/2', 'A/10'])
        do(f'select.value = ""; select{change}')
        header = 'document.querySelectorAll("#table thead button")[{}].click()'
        self.assertEqual(do(header.format(4)), ['B/2', 'C/2', 'A/10', 'A/2', 'B/1'])
        self.assertEqual(do(header.format(4)), ['B/1', 'A/2', 'A/10', 'C/2', 'B/2'])
        self.assertEqual(self.count('th[aria-sort=descending]'), 1)
        self.assertEqual(do(header.format(1)), ['A/2', 'A/10', 'B/1', 'B/2', 'C/2'])
        self.assertEqual(do(header.format(0)), ['A/10', 'B/1', 'C/2', 'B/2', 'A/2'])
        do(header.format(0))
        self.assertEqual(do(header.format(0)), ['A/2', 'A/10', 'B/1', 'B/2', 'C/2'])
        self.assertEqual(self.count('tr.module:not([hidden])'), 3)
        self.assertEqual(self.browser.value("""(document.querySelector('a[href="#t2"]').click(),
            document.getElementById('t2').parentElement.open)"""), True)

    def test_the_page_is_complete_without_scripts(self):
        self.browser.call('Emulation.setScriptExecutionDisabled', value=True)
        self.addCleanup(self.browser.call, 'Emulation.setScriptExecutionDisabled', value=False)
        self.browser.open('about:blank')
        self.browser.open('file://' + self.file + '#t2')
        self.assertEqual(shown_rows(self.browser), TESTS)
        self.assertEqual(self.count('tr.module'), 3)
        self.assertFalse(self.browser.value("document.getElementById('filter').checkVisibility()"))
        self.assertTrue(self.browser.value("document.getElementById('t2').parentElement.open"), 'the link opens it')

    def test_the_page_fits_narrow_and_dark_windows(self):
        colours = set()
        for scheme, width in (('light', 1200), ('dark', 1200), ('light', 360), ('dark', 360)):
            self.browser.look(width, 800, scheme)
            self.assertLessEqual(self.browser.value('document.documentElement.scrollWidth'), width)
            colours.add(self.browser.value('getComputedStyle(document.body).backgroundColor'))
            for name in ('pass', 'fail', 'error', 'blocked', 'flaky', 'skipped'):
                contrast = self.browser.value(CONTRAST.replace('NAME', name))
                self.assertGreaterEqual(contrast, 4.5, (scheme, name))
        self.assertEqual(len(colours), 2)

    def test_pictures_are_side_by_side(self):
        tops = self.browser.value("[...document.querySelectorAll('#t1 figure')].map((one) => one.offsetTop)")
        self.assertEqual((len(tops), len(set(tops))), (3, 1))
        self.browser.look(360, 800, 'light')
        tops = self.browser.value("[...document.querySelectorAll('#t1 figure')].map((one) => one.offsetTop)")
        self.assertEqual(len(set(tops)), 3)

    def test_headings_tables_and_links_are_accessible(self):
        levels = self.browser.value("[...document.querySelectorAll('h1,h2,h3,h4,h5')].map((one) => Number(one.tagName[1]))")
        self.assertEqual((levels.count(1), levels[0]), (1, 1))
        self.assertTrue(all(after - before <= 1 for before, after in zip(levels, levels[1:])), levels)
        self.assertEqual(self.count('th:not([scope])'), 0)
        self.assertEqual(self.browser.value("""[...document.querySelectorAll('table')].filter((table) =>
            !table.caption && !table.closest('[role=region][aria-labelledby]')).length"""), 0)
        ids = self.browser.value("[...document.querySelectorAll('[id]')].map((one) => one.id)")
        self.assertEqual(len(ids), len(set(ids)))
        broken = self.browser.value("""[...document.querySelectorAll('a[href^="#"]')].filter((link) =>
            !document.getElementById(link.hash.slice(1))).length""")
        self.assertEqual(broken, 0)
        tidied = subprocess.run(['tidy', '-q', '-e', self.file], capture_output=True, encoding='utf-8', check=False)
        self.assertEqual((tidied.returncode, tidied.stdout + tidied.stderr), (0, ''))

    def test_the_chart_shows_the_marks_at_their_positions(self):
        self.assertEqual([self.count('#t1 .chart ' + mark) for mark in ('.in', '.out', '.band')], [2, 1, 1])
        band, marks = self.browser.value("""(() => { const box = (one) => one.getBBox(); return [
            (({y, height}) => [y, y + height])(box(document.querySelector('#t1 .band'))),
            [...document.querySelectorAll('#t1 .in')].map((one) => [+one.getAttribute('cx'), +one.getAttribute('cy')])]})()""")
        self.assertTrue(all(band[0] - 0.1 <= y <= band[1] for _, y in marks), (band, marks))
        self.assertLess(marks[0][0], marks[1][0], 'the time stamps wrap around')
        cause = self.browser.value("""[...document.querySelector('#t1 table').rows[1].cells].map(
            (cell) => cell.textContent)""")
        self.assertEqual(cause, [EVIL, 'dropped', '300 to 302', '1', 'time lost', 'VO'])

    def test_the_printed_page_contains_all_failing_tests(self):
        pdf = os.path.join(self.directory, 'page.pdf')
        with open(pdf, 'wb') as file:
            file.write(base64.b64decode(self.browser.call('Page.printToPDF')['data']))
        text = subprocess.run(['pdftotext', '-layout', pdf, '-'], capture_output=True, encoding='utf-8', check=True).stdout
        details = text[text.index('Tests in detail'):]
        for test in FAILING:
            self.assertRegex(details, rf'(FAIL|ERROR|BLOCKED) {test} ', test)
        self.assertIn('K2V NG : -3', details)


# The contrast of a verdict's text with its background, as defined by accessibility guidelines.
CONTRAST = """(() => {
  const probe = document.body.appendChild(document.createElement('span'));
  probe.className = 'v mark-NAME';
  const light = (colour) => colour.match(/[\\d.]+/g).slice(0, 3).map((part) => part / 255)
    .map((part) => part <= 0.03928 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
    .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);
  const levels = [getComputedStyle(probe).color, getComputedStyle(document.body).backgroundColor].map(light)
    .sort((a, b) => b - a);
  probe.remove();
  return (levels[0] + 0.05) / (levels[1] + 0.05);
})()"""


if __name__ == '__main__':
    unittest.main()
