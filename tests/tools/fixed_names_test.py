"""Tests create files only in their own directory: other tests, and other checkouts, run at the same time."""
import os
import re
import unittest

TESTS = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..')
# Calls that create or replace a file with a fixed path in the temporary directories. A path on the simulated board is
# wrapped in OnBoard().
MAKES_FIXED = re.compile(r'\b(?:ofstream|fopen|open|creat|mkdir|mkdtemp|mkstemp|rename|symlink|remove_all|WriteFile|'
                         r'create_director(?:y|ies)|copy_file|copy)\b[^;\n]*\(?"/(?:tmp|var/tmp|dev/shm)/(?!cross_module)')
NAMED_BY_PROCESS = re.compile(r'"[^" ]*" \+ std::to_string\(getpid\(\)\)')
ALLOWED = ('OnBoard(', 'Put(')


def fixed_names(text):
    return [line.strip() for line in text.splitlines()
            if not any(word in line for word in ALLOWED)
            and (MAKES_FIXED.search(line) or NAMED_BY_PROCESS.search(line))]


class FixedNames(unittest.TestCase):
    def test_no_test_creates_a_file_with_a_fixed_name(self):
        found, files = {}, 0
        for folder, _, names in os.walk(TESTS):
            for name in names:
                if not name.endswith(('.cpp', '.h')) or os.path.basename(folder) == 'fuzz':
                    continue
                files += 1
                path = os.path.join(folder, name)
                with open(path, encoding='utf-8') as file:
                    lines = fixed_names(file.read())
                if lines:
                    found[os.path.relpath(path, TESTS)] = lines
        self.assertGreater(files, 60)
        self.assertEqual(found, {})

    def test_fixed_names_are_detected(self):
        for line in ('std::string path = testing::TempDir() + "answers" + std::to_string(getpid());',
                     'std::ofstream("/tmp/answers") << text;', 'fs::create_directories("/tmp/record/home");',
                     'mkdtemp(name = "/dev/shm/x-XXXXXX");'):
            self.assertEqual(fixed_names(line), [line])
        for line in ('std::ofstream(OnBoard("/tmp/enableDebugMode"));', 'EXPECT_EQ(path, "/tmp/usb/x");',
                     'std::ofstream("/tmp/cross_module/isPcb");'):
            self.assertEqual(fixed_names(line), [])


if __name__ == '__main__':
    unittest.main()
