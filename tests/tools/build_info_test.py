"""Build information: the fingerprint of the HAL's headers, and the commit."""
import os
import re
import subprocess
import unittest

from in_directory import InDirectory

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..')
FINGERPRINT = os.path.join(SOURCE, 'hal/interface/WriteFingerprint.cmake')
COMMIT = os.path.join(SOURCE, 'cmake/WriteCommit.cmake')
HEADER = '''// Gains.
#pragma once
#include <stdint.h>
typedef struct {
  uint32_t gain[4];  // red first; then green
  uint32_t offset;
} K2V_GAIN_T;
int K2V_SetGain(K2V_GAIN_T gain);
'''


class BuildInfo(InDirectory):
    def write(self, name, text):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), 'w', encoding='utf-8') as file:
            file.write(text)

    def written(self, script, **definitions):
        """The text between quotes in the last line written by the script."""
        output = self.path('output.cpp')
        subprocess.run(['cmake', *(f'-D{name}={value}' for name, value in definitions.items()), f'-DOUTPUT={output}',
                        '-P', script], check=True)
        with open(output, encoding='utf-8') as file:
            return re.findall(r'"([^"]*)"', file.read())[-1]

    def fingerprint(self, *headers, system='', compiler='g++'):
        """Fingerprint of headers that are included in this order."""
        self.write('system/stdint.h', 'typedef unsigned uint32_t;\n' + system)
        for number, header in enumerate(headers):
            self.write(f'{number}.h', header)
        self.write('all.cpp', ''.join(f'#include "{number}.h"\n' for number in range(len(headers))))
        text = self.path('all.ii')
        subprocess.run([compiler, '-E', '-nostdinc', '-isystem', self.path('system'), self.path('all.cpp'), '-o', text],
                       check=True)
        return self.written(FINGERPRINT, TEXT=text)

    def test_the_fingerprint_depends_only_on_the_declarations(self):
        declared = self.fingerprint(HEADER)
        self.assertRegex(declared, '^[0-9a-f]{12}$')
        same = {
            'assertions': [HEADER + 'static_assert(sizeof(K2V_GAIN_T) == 20, "five words");\n'],
            'comments': [HEADER.replace('red first; then green', 'green [second')],
            'formatting': [HEADER.replace('\n', '\n\n').replace('  ', '\t').replace('[4]', '[ 4 ]')],
            'files': [HEADER[:HEADER.index('int K2V')], HEADER[HEADER.index('int K2V'):]],
        }
        for what, headers in same.items():
            self.assertEqual(self.fingerprint(*headers), declared, what)
        self.assertEqual(self.fingerprint(HEADER, system='typedef long long int64_t;'), declared)
        self.assertEqual(self.fingerprint(HEADER, compiler='clang++'), declared)
        others = {
            'order': HEADER.replace('  uint32_t offset;\n', '').replace('{\n', '{\n  uint32_t offset;\n'),
            'count': HEADER.replace('[4]', '[5]'),
            'name': HEADER.replace('offset', 'shift'),
            'argument': HEADER.replace('K2V_SetGain(', 'K2V_SetGain(uint32_t id, '),
            'words': HEADER.replace('uint32_t offset', 'uint32_toffset'),
        }
        for what, header in others.items():
            self.assertNotEqual(self.fingerprint(header), declared, what)
        self.assertEqual(self.fingerprint('#include <stdint.h>\n', system='int K2V_SetGain(int gain);'), 'unknown')

    def git(self, *arguments):
        return subprocess.run(['git', '-c', 'user.name=t', '-c', 'user.email=t@t', '-C', self.path('tree'), *arguments],
                              check=True, capture_output=True).stdout

    def commit(self, directory='tree'):
        return self.written(COMMIT, SOURCE=self.path(directory), GIT='git')

    def test_the_commit_comes_from_the_repository_or_the_archive(self):
        with open(os.path.join(SOURCE, 'cmake/commit.txt'), encoding='utf-8') as file:
            self.write('tree/cmake/commit.txt', file.read())
        with open(os.path.join(SOURCE, '.gitattributes'), encoding='utf-8') as file:
            self.write('tree/.gitattributes', file.read())
        self.assertEqual(self.commit(), 'unknown')
        self.git('init', '-q')
        self.git('add', '.')
        self.git('commit', '-q', '-m', 'First')
        head = self.git('rev-parse', 'HEAD').decode()[:12]
        self.assertEqual(self.commit(), head)
        os.mkdir(self.path('archive'))
        subprocess.run(['tar', '-x', '-C', self.path('archive')], input=self.git('archive', 'HEAD'), check=True)
        self.assertEqual(self.commit('archive'), head)
        self.write('tree/.gitattributes', '')
        self.assertEqual(self.commit(), head + '-dirty')


if __name__ == '__main__':
    unittest.main()
