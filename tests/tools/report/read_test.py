"""Result directories as they come from boards: truncated, damaged, hostile."""
import json
import os
import tempfile
import unittest

from hypothesis import HealthCheck, configuration, given, settings, strategies

import result_files
from cvnresults import directory, runs, texts
from cvnresults.directory import Problem


# Hypothesis stores its own tables.
TABLES = tempfile.TemporaryDirectory()
configuration.set_hypothesis_home_dir(TABLES.name)


class TemporaryDirectory(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.path = os.path.join(holder.name, 'run')

    def put(self, name, data):
        with open(os.path.join(self.path, name), 'wb') as file:
            file.write(data)

    def get(self, name):
        with open(os.path.join(self.path, name), 'rb') as file:
            return file.read()


class Journal(TemporaryDirectory):
    def test_a_truncated_journal_gives_its_complete_results_or_a_one_line_error(self):
        result_files.make(self.path, ['A/1', 'A/2'], ['A/1 FAIL a\tmessage\n', 'A/2 PASS'])
        whole = self.get('journal')
        head = whole.index(b'start\t')
        ends = [whole.index(b'\n', whole.index(end)) for end in (b'end\tA/1', b'end\tA/2')]
        for cut in range(len(whole) + 1):
            self.put('journal', whole[:cut])
            if cut < head:
                with self.assertRaisesRegex(Problem, 'journal: truncated before the first test$'):
                    directory.read(self.path)
                continue
            run = runs.load([self.path])[0]
            verdicts = [result.verdict for result in run.results.values()]
            started = [whole.index(b'\n', whole.index(start)) for start in (b'start\tA/1', b'start\tA/2')]
            expected = [verdict if cut > end else 'ERROR' if cut > start else 'NOT RUN'
                        for start, end, verdict in zip(started, ends, ('FAIL', 'PASS'))]
            self.assertEqual(verdicts, expected, cut)
            self.assertEqual(run.exit_status, 1 if cut == len(whole) or 'NOT RUN' not in expected else 99)

    def test_invalid_result_directories_are_rejected_with_the_reason(self):
        whole = result_files.journal(['A/1'], [('A/1', 'PASS', '', 1)]).encode()
        cases = [
            (b'', 'truncated before the first test'),
            (b'nothing\n', 'journal: not a cvntester journal'),
            (whole.replace(b'journal 1', b'journal 2'), 'has format 2, which is newer than this cvnreport'),
            (whole + b'what\n', r'journal:9: malformed journal line'),
            (whole + b'start\tA\\q\n', r'journal:9: malformed journal line'),
            (whole.replace(b'end\tA/1\tPASS', b'end\tA/1\tGOOD'), 'journal:8: malformed journal line'),
            (whole.replace(b'end\tA/1\tPASS', b'end\tA/2\tPASS'), 'journal:8: malformed journal line'),
            (whole.replace(b'1.000', b'nan'), 'journal:8: malformed journal line'),
        ]
        os.makedirs(self.path)
        with self.assertRaisesRegex(Problem, r'not a result directory \(no journal\)$'):
            directory.read(self.path)
        with self.assertRaisesRegex(Problem, f'; {self.path} is one$'):
            self.put('journal', b'')
            directory.read(os.path.dirname(self.path))
        for data, problem in cases:
            self.put('journal', data)
            with self.assertRaisesRegex(Problem, problem):
                directory.read(self.path)
        self.put('journal', whole)
        self.put('results.jsonl', b'{"event": "run-start", "format": 2}\n')
        with self.assertRaisesRegex(Problem, 'results.jsonl: has format 2'):
            directory.read(self.path)
        os.unlink(os.path.join(self.path, 'journal'))
        os.mkfifo(os.path.join(self.path, 'journal'))
        with self.assertRaisesRegex(Problem, 'not a regular file'):
            directory.read(self.path)

    def test_links_out_of_the_directory_are_not_followed(self):
        part = directory.read(result_files.make(self.path, ['A/1'], ['A/1 PASS']))
        os.symlink('/etc', os.path.join(self.path, 'logs', '0001-A.1.evidence'))
        self.assertEqual(directory.evidence(part.attempts[0]), [])
        self.assertIsNone(directory.inside(part, '../../etc/passwd'))
        self.assertIsNone(directory.inside(part, 'logs/\0'))
        self.assertIsNotNone(directory.inside(part, part.attempts[0].file('log')))


JSON = strategies.recursive(
    strategies.none() | strategies.booleans() | strategies.integers() | strategies.floats() |
    strategies.text(max_size=9) | strategies.sampled_from(['A/1', 'A/1@2', '2026-11-01T20:00:00Z']),
    lambda inner: strategies.lists(inner, max_size=3) | strategies.dictionaries(strategies.text(max_size=5), inner, max_size=3),
    max_leaves=6)
EVENT = strategies.fixed_dictionaries(
    {'event': strategies.sampled_from(['run-start', 'test-listed', 'test-start', 'test-end', 'run-end', 'run-exit',
                                       'frame-event', 'sync-mark', 'stage-pacing']) | JSON},
    optional={name: JSON for name in ('number', 'test', 'at', 'typed', 'labels', 'tests', 'format', 'status', 'pts', 'ms',
                                      'flash_pts', 'cause', 'id', 'columns', 'rate', 'stage', 'message', 'name')})
FIELD = strategies.sampled_from([b'start', b'end', b'test', b'tests', b'word', b'A/1', b'A/1@2', b'PASS', b'1', b'0.5', b'',
                                 b'\\x', b'\\x00', b'\xff']) | strategies.binary(max_size=6)
LINES = strategies.lists(strategies.lists(FIELD, min_size=1, max_size=6).map(b'\t'.join), max_size=6).map(b'\n'.join)


class Fuzz(TemporaryDirectory):
    """For any content of the files, the result is a page or a one-line error."""

    @settings(max_examples=int(os.environ.get('CVN_EXAMPLES', 150)), derandomize='CVN_EXAMPLES' not in os.environ,
              deadline=None, suppress_health_check=list(HealthCheck), database=None)
    @given(strategies.just(b'') | LINES, strategies.lists(EVENT, max_size=8), strategies.binary(max_size=30),
           strategies.binary(max_size=60),
           strategies.lists(strategies.tuples(strategies.integers(0, 150), strategies.binary(max_size=2)), max_size=2))
    def test_a_directory_is_shown_or_rejected_in_one_line(self, lines, events, record_end, log, changes):
        from cvnresults.machine import as_json, junit
        from cvnresults.page import render
        with tempfile.TemporaryDirectory() as name:
            self.path = os.path.join(name, 'run')
            result_files.make(self.path, ['A/1', 'A/2'], ['A/1 FAIL why', 'A/2 PASS'], logs={'A/1': log})
            journal = self.get('journal') + lines
            for at, new in changes:
                journal = journal[:at] + new + journal[at + 1:]
            self.put('journal', journal)
            self.put('results.jsonl', b''.join(json.dumps(event).encode() + b'\n' for event in events) + record_end)
            try:
                found = runs.load([self.path])
            except Problem as problem:
                self.assertNotIn('\n', texts.clean_line(str(problem)))
                return
            for data in (render(found, name).encode(), junit(found[0]), as_json(found)):
                data.decode()


class Texts(unittest.TestCase):
    def test_control_characters_of_a_test_have_no_effect(self):
        cases = [('a\x1b[31mred\x1b[0m', 'ared'), ('\x1b]0;title\x07x', 'x'), ('a\r\nb', 'a\nb'), ('\x00', '⟨U+0000⟩'),
                 ('\u202eevil', '⟨U+202E⟩evil'), ('\ud800', '⟨U+D800⟩'), ('\x1b', ''), ('\u2066\ufeff', '⟨U+2066⟩⟨U+FEFF⟩'),
                 ('caf\u00e9 \u0645\u0631', 'caf\u00e9 \u0645\u0631'), ('\u0085', '⟨U+0085⟩')]
        for text, expected in cases:
            self.assertEqual(texts.clean(text), expected, ascii(text))
        self.assertEqual(texts.decoded(b'a\xffb'), 'a\ufffdb')

    def test_prompts_and_answers_are_separated_from_other_output(self):
        data = b'one\nwhich port?\n0\ntwo=\x1b[1m7\nend'
        self.assertEqual(texts.segments(data, [(16, 2), (26, 2), (27, 1), (99, 5)]), [
            ('out', 'one\n'), ('prompt', 'which port?\n'), ('in', '0\n'), ('prompt', 'two='), ('in', '7\n'), ('out', 'end')])


if __name__ == '__main__':
    unittest.main()
