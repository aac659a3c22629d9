"""mutate.py on single lines, and on a small project of which only half is tested."""
import hashlib
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

SCRIPTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'scripts')
sys.path.insert(0, SCRIPTS)
import mutate  # noqa: E402

PROJECT = {
    'CMakePresets.json': '{"version": 6, "configurePresets": [{"name": "mutate", "generator": "Ninja"}]}',
    'CMakeLists.txt': '''cmake_minimum_required(VERSION 3.25)
project(small CXX)
enable_testing()
add_executable(small_test test.cpp muro/seen.cpp muro/unseen.cpp)
add_test(NAME Small COMMAND small_test)
add_test(NAME Script COMMAND true)
set_tests_properties(Small Script PROPERTIES LABELS unit)
''',
    '.gitignore': 'build/\n',
    'muro/seen.cpp': 'int Seen(int a, int b) {\n  return a < b && a != 3;  // a < b\n}\n',
    'muro/unseen.cpp': 'int Unseen(int a) {\n  return a + 1;\n}\n',
    'test.cpp': '''int Seen(int, int);
int main() {
  const bool right = Seen(1, 2) && !Seen(2, 2) && !Seen(3, 4) && Seen(4, 5) && Seen(2, 4) && !Seen(5, 4);
  return right ? 0 : 1;
}
''',
}


def faults(text, path='a.cpp'):
    """All faulty texts, by kind."""
    found = {}
    for fault in mutate.faults_of(path, text):
        found.setdefault(fault.kind, []).append(text[:fault.start] + fault.new + text[fault.end:])
    return found


class Faults(unittest.TestCase):
    def test_every_kind_of_fault_is_generated(self):
        cases = [
            ('operator', 'a.cpp', 'x = a < b;', 'x = a <= b;'),
            ('operator', 'a.cpp', 'if (!a && b) f();', 'if (!a || b) f();'),
            ('constant', 'a.cpp', 'int k = 41;', 'int k = 42;'),
            ('constant', 'a.cpp', 'bool k = true;', 'bool k = false;'),
            ('dropped statement', 'a.cpp', 'void f() {\n  g(1);\n}', 'void f() {\n  ;\n}'),
            ('dropped statement', 'a.cpp', 'void f() {\n  if (a) return;\n  g();\n}', 'void f() {\n  if (a) ;\n  g();\n}'),
            ('swapped arguments', 'a.cpp', 'f(a, b);', 'f(b, a);'),
            ('table row', 'a.cpp', 'T t[] = {\n  {1, f},\n  {2, g},\n};', 'T t[] = {\n  {1, g},\n  {2, f},\n};'),
            ('table row', 'a.def', 'ROW(a, f)\nROW(b, g)\n', 'ROW(a, g)\nROW(b, f)\n'),
        ]
        for kind, path, text, faulty in cases:
            with self.subTest(text):
                self.assertIn(faulty.replace(' ', ''), [each.replace(' ', '') for each in faults(text, path)[kind]])

    def test_comments_strings_and_directives_are_not_changed(self):
        self.assertEqual(faults('// a < 1\n/* f(a, b) */\n#if 1 < 2\nconst char* t = "1 < 2\\" + 3";\nchar c = \'<\';\n'), {})

    def test_equivalent_changes_are_not_faults(self):
        self.assertEqual(faults('char words[96];'), {})
        self.assertIn('constant', faults('int words[96];'))
        self.assertEqual(faults('  switch (a) {\n    case b:\n      break;\n  }\n'), {})
        self.assertIn('dropped statement', faults('  for (;;) {\n    break;\n  }\n'))


class Campaign(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        for name, text in PROJECT.items():
            path = os.path.join(self.directory.name, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, 'w', encoding='utf-8') as file:
                file.write(text)
        subprocess.run(['git', 'init', '-q', self.directory.name], check=True)

    def start(self):
        return subprocess.Popen([sys.executable, os.path.join(SCRIPTS, 'mutate.py'), '99', '--source', self.directory.name],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, start_new_session=True)

    def tree(self):
        digests = {}
        for folder, folders, files in os.walk(self.directory.name):
            folders[:] = [name for name in folders if name not in ('build', '.git')]
            for name in files:
                path = os.path.join(folder, name)
                digests[path] = hashlib.sha256(mutate.bytes_of(path)).hexdigest(), os.stat(path).st_mtime_ns
        return digests

    def test_only_untested_code_has_survivors_and_the_tree_is_unchanged(self):
        before = self.tree()
        output, _ = self.start().communicate(timeout=150)
        self.assertEqual(self.tree(), before)
        survivors = [line for line in output.splitlines() if line.startswith('muro/') and ': ' in line]
        self.assertTrue(survivors, output)
        self.assertTrue(all(line.startswith('muro/unseen.cpp:2: ') for line in survivors), output)
        self.assertIn('- return a + 1;\n  + return a - 1;', output)
        self.assertRegex(output, r'Faults: \d+ \(seed 1\), [4-9] seen, 2 not seen')

    def test_a_killed_run_leaves_the_tree_unchanged_for_the_next_one(self):
        before = self.tree()
        copied = os.path.join(self.directory.name, 'build/mutate/source/muro/seen.cpp')
        run = self.start()
        while run.poll() is None and not (os.path.exists(copied) and mutate.bytes_of(copied).decode() !=
                                          PROJECT['muro/seen.cpp']):
            time.sleep(0.001)  # until a fault has been applied
        os.killpg(run.pid, signal.SIGKILL)
        run.communicate()
        self.assertEqual(self.tree(), before)
        mutate.copy_tree(self.directory.name, os.path.join(self.directory.name, 'build/mutate/source'))
        self.assertEqual(mutate.bytes_of(copied).decode(), PROJECT['muro/seen.cpp'])


if __name__ == '__main__':
    unittest.main()
