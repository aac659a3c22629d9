#!/usr/bin/env python3
"""Puts single faults into a copy of the sources, one at a time, and looks whether the unit tests see them.

Each test is first run once to find out which lines it runs; a fault is tried with the tests that run near it.

A fault is one changed operator or constant, a dropped statement, two swapped arguments or a field that two
rows of a table exchange. The checkout itself is only read: the copy and its build are in build/mutate. The
tests of a faulty program run in a sandbox, where they cannot kill or overwrite anything else.

usage: mutate.py [--source DIR] [--seed NUMBER] [--jobs NUMBER] [--folder FOLDER]... COUNT
"""
import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pickle
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

FOLDERS = ('muro', 'sim/hal')
SUFFIXES = ('.cpp', '.h', '.def')
MEMORY_LIMIT = 4 << 30
LEAST_LIMIT_S = 10
KEPT_OUTPUT = 1 << 16
# Coverage names one line of a multi-line statement: how near to the fault a test must run a line.
LINES_BEFORE, LINES_BEHIND = 6, 3

# One change: text[start:end] becomes `new`.
Fault = collections.namedtuple('Fault', 'kind path start end new')


# ---- Faults in a text ------------------------------------------------------------------------------------

def code_of(text):
    """The text with comments, the contents of literals and preprocessor lines blanked out."""
    token = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|'
                       r'^[ \t]*#(?:[^\n\\]|\\.)*', re.S | re.M)

    def blank(match):
        found = match.group()
        inside = found[0] in '"\'' and len(found) > 1
        blanks = re.sub(r'[^\n]', '_' if inside else ' ', found)
        return found[0] + blanks[1:-1] + found[-1] if inside else blanks

    # A digit separator does not begin a character literal.
    return token.sub(blank, re.sub(r"(?<=\d)'(?=\d)", '_', text))


OPERATORS = [
    (r' (==) ', '!='), (r' (!=) ', '=='), (r' (<) ', '<='), (r' (<=) ', '<'), (r' (>) ', '>='), (r' (>=) ', '>'),
    (r' (&&) ', '||'), (r' (\|\|) ', '&&'), (r' (\+) ', '-'), (r'[\w)\]] (-) ', '+'), (r' (/) ', '*'),
    (r' (%) ', '/'), (r' (\+=) ', '-='), (r' (-=) ', '+='), (r'(\+\+)', '--'), (r'(?<!-)(--)(?!-)', '++'),
    (r'[\w)\]] (&) ', '|'), (r' (\|) ', '&'), (r' (<<) \d', '>>'), (r' (>>) \d', '<<'), (r'(?<=[\s(])(!)(?=[\w(])', ''),
]
CONSTANT = re.compile(r'(?<![\w.])(0x[0-9a-fA-F]+|\d[\d_]*|true|false)(?=[uUlL]*\b)(?![\w.])')
STATEMENT = re.compile(r'^[ ]{2,}((?:if \([^;{}\n]*\) )?)((?:\+\+|--)?[A-Za-z_][\w:]*(?:(?:\.|->|::)\w+|\[[^\]\n]*\])*'
                       r'(?:\([^;{}\n]*\)| [-+*/|&]?= [^;{}\n]*|\+\+|--)|break|continue|return(?: [^;{}\n]+)?);$', re.M)
ARGUMENTS = re.compile(r'[(,] ?([\w.>\-:]+), ([\w.>\-:]+)(?=[,)])')


def operators(code):
    for pattern, new in OPERATORS:
        for match in re.finditer(pattern, code):
            yield match.start(1), match.end(1), new


def constants(code):
    for match in CONSTANT.finditer(code):
        old = match.group(1)
        if old in ('true', 'false'):
            new = 'false' if old == 'true' else 'true'
        elif old.startswith('0x'):
            new = hex(int(old, 16) ^ 1)
        else:
            new = str(int(old.replace('_', ''), 8 if re.fullmatch('0[0-7]+', old) else 10) + 1)
        if re.search(r'\bchar \w+\[$', code[:match.start()][-80:]):
            continue  # a larger buffer is equivalent
        yield match.start(1), match.end(1), new


def ends_switch(code, match):
    """Whether a `break` is the last statement of a switch, judged by its indentation: dropping it is equivalent."""
    closing = re.match(r'\n( *)}', code[match.end():])
    return match.group(2) == 'break' and closing and len(closing.group(1)) == match.start(2) - 5 - code.rfind(
        '\n', 0, match.start(2))


def statements(code):
    for match in STATEMENT.finditer(code):
        if match.group(2).startswith('return') and not match.group(1):
            continue  # the rest is not a function, or is equivalent
        if not ends_switch(code, match):
            yield match.start(2), match.end(2), ''


def arguments(code, text):
    for match in ARGUMENTS.finditer(code):
        first, second = (text[match.start(i):match.end(i)] for i in (1, 2))
        if first != second and not (first + second).isdigit() and not first.startswith('0x'):
            yield match.start(1), match.end(2), second + text[match.end(1):match.start(2)] + first


def groups(code, opening, closing):
    """Positions (start, end, parent) of all balanced groups; the parent is the start of the enclosing group."""
    open_groups = []
    for match in re.finditer('[' + re.escape(opening + closing) + ']', code):
        if match.group() == opening:
            open_groups.append(match.start())
        elif open_groups:
            start = open_groups.pop()
            yield start, match.end(), open_groups[-1] if open_groups else None


def fields(code, start, end):
    """Positions of the fields of a group, which are separated by commas."""
    depth, begin, places = 0, start + 1, []
    for at in range(start + 1, end):
        letter = code[at]
        if (letter == ',' and depth == 0) or at == end - 1:
            places.append((begin, at))
            begin = at + 1
        depth += (letter in '([{') - (letter in ')]}')
    return places


def table_rows(code, path):
    """Adjacent rows: brace groups of one initialiser, or macros at the start of a line."""
    if path.endswith('.def'):
        rows = [(start, end) for start, end, parent in groups(code, '(', ')')
                if parent is None and re.search(r'^\w+$', code[code.rfind('\n', 0, start) + 1:start])]
        return zip(rows, rows[1:])
    by_parent = collections.defaultdict(list)
    for start, end, parent in groups(code, '{', '}'):
        if parent is not None:
            by_parent[parent].append((start, end))
    return [(one, two) for rows in by_parent.values() for one, two in zip(rows, rows[1:])
            if not code[one[1]:two[0]].strip(', \n')]


def exchanged_fields(code, text, path):
    for one, two in table_rows(code, path):
        places = list(zip(fields(code, *one), fields(code, *two)))
        if len(fields(code, *one)) != len(fields(code, *two)):
            continue
        for (a, b), (c, d) in places:
            if text[a:b].strip() != text[c:d].strip() and '"' not in text[a:b] + text[c:d]:
                yield a, d, text[c:d] + text[b:c] + text[a:b]


def faults_of(path, text):
    code = code_of(text)
    finders = {'operator': operators(code), 'constant': constants(code), 'dropped statement': statements(code),
               'swapped arguments': arguments(code, text), 'table row': exchanged_fields(code, text, path)}
    for kind, places in finders.items():
        for start, end, new in places:
            if 'static_assert' not in code[code.rfind('\n', 0, start) + 1:start]:
                yield Fault(kind, path, start, end, new)


def draw(faults, seed):
    """All faults in random order, with every kind equally often."""
    chance = random.Random(seed)
    by_kind = collections.defaultdict(list)
    for fault in faults:
        by_kind[fault.kind].append(fault)
    for kind in by_kind.values():
        chance.shuffle(kind)
    while by_kind:
        kind = chance.choice(sorted(by_kind))
        yield by_kind[kind].pop()
        if not by_kind[kind]:
            del by_kind[kind]


def described(fault, text):
    line = text.count('\n', 0, fault.start) + 1
    begin, end = text.rfind('\n', 0, fault.start) + 1, text.find('\n', fault.end)
    shown = [' '.join(part.split()) for part in
             (text[begin:end], text[begin:fault.start] + fault.new + text[fault.end:end])]
    return f'{fault.path}:{line}: {fault.kind}\n  - {shown[0]}\n  + {shown[1]}'


# ---- The copy and its build ------------------------------------------------------------------------------

def bytes_of(path):
    with open(path, 'rb') as file:
        return file.read()


def copy_tree(source, copy):
    """Updates `copy` to the checkout's current files. Unchanged files keep their time stamps."""
    listed = subprocess.run(['git', '-C', source, 'ls-files', '-coz', '--exclude-standard'], check=True,
                            capture_output=True, text=True).stdout.split('\0')
    wanted = {name for name in listed if name and os.path.isfile(os.path.join(source, name))}
    for name in wanted:
        old, new = os.path.join(source, name), os.path.join(copy, name)
        if not os.path.isfile(new) or bytes_of(old) != bytes_of(new):
            os.makedirs(os.path.dirname(new), exist_ok=True)
            shutil.copy(old, new)
    for folder, _, files in os.walk(copy):
        for name in files:
            path = os.path.join(folder, name)
            if os.path.relpath(path, copy) not in wanted:
                os.remove(path)


class Copy:
    """A copy of the checkout with one fault at a time, its build and its tests."""

    def __init__(self, source, jobs):
        self.home = os.path.join(source, 'build', 'mutate')
        self.tree, self.build_tree = os.path.join(self.home, 'source'), os.path.join(self.home, 'build')
        self.cover = os.path.join(self.home, 'cover')
        self.jobs = jobs
        copy_tree(source, self.tree)
        cover = os.path.join(self.home, 'cover.o')
        self.must(['gcc', '-c', '-fPIC', '-O2', '-o', cover,
                   os.path.join(os.path.dirname(os.path.abspath(__file__)), 'cover.c')])
        linked = f'-fuse-ld=gold {cover}'
        self.must(['cmake', '-S', self.tree, '-B', self.build_tree, '--preset', 'mutate',
                   '-DCMAKE_CXX_FLAGS=-O0 -g1 -w -fsanitize-coverage=trace-pc',
                   f'-DCMAKE_EXE_LINKER_FLAGS={linked}', f'-DCMAKE_SHARED_LINKER_FLAGS={linked}'], cwd=self.tree)
        self.must(['ninja', '-C', self.build_tree])
        self.tests = self.unit_tests()
        programs = {os.path.relpath(test['command'][0], self.build_tree) for test in self.tests}
        self.build_command = ['ninja', '-C', self.build_tree,
                              *sorted(name for name in programs if not name.startswith('..'))]
        self.must(self.build_command)

    def must(self, command, **options):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
        if done.returncode != 0:
            sys.exit(f'{done.stdout}mutate.py: {command[0]} failed, see above')
        return done.stdout

    def unit_tests(self):
        listing = json.loads(self.must(['ctest', '--test-dir', self.build_tree, '-L', 'unit', '-LE', 'long',
                                        '--show-only=json-v1']))
        tests = []
        for test in listing['tests']:
            properties = {entry['name']: entry['value'] for entry in test['properties']}
            tests.append({'name': test['name'], 'command': test['command'],
                          'directory': properties.get('WORKING_DIRECTORY', self.build_tree),
                          'environment': properties.get('ENVIRONMENT', [])})
        return tests

    def builds(self):
        return subprocess.run(self.build_command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              check=False).returncode == 0

    def digest(self):
        digest = hashlib.sha256(json.dumps([test['name'] for test in self.tests]).encode())
        for folder, folders, files in os.walk(self.tree):
            folders.sort()
            for name in sorted(files):
                path = os.path.join(folder, name)
                digest.update(path.encode() + bytes_of(path))
        return digest.hexdigest()

    def cover_file(self, test):
        return os.path.join(self.cover, re.sub(r'[^\w.]', '_', test['name']))

    def lines_run(self, tests):
        """The tests that run each line of the sources: {path: {line: {test, ...}}}."""
        places = {}  # {module: {offset: {test, ...}}}
        for test in tests:
            try:
                with open(self.cover_file(test), encoding='utf-8') as file:
                    lines = set(file)
            except FileNotFoundError:
                continue
            for line in lines:
                module, offset = line.rstrip().rsplit('+', 1)
                places.setdefault(module, {}).setdefault(offset, set()).add(test['name'])
        found = {}
        for module, offsets in places.items():
            if not module.startswith(self.build_tree):  # installed by a test, and deleted since
                module = os.path.join(self.build_tree, 'bin', os.path.basename(module))
            if not os.path.exists(module):
                continue
            listed = self.must(['addr2line', '-e', module], input='\n'.join(offsets) + '\n').splitlines()
            for place, names in zip(listed, offsets.values()):
                path, line = place.split(' ')[0].rsplit(':', 1)
                # Paths shortened by -ffile-prefix-map appear to be in the build tree.
                path = re.sub(f'^({re.escape(self.tree)}|{re.escape(self.build_tree)})/', '', path)
                if not path.startswith('/') and line.isdigit():
                    lines = found.setdefault(path, {})
                    lines.setdefault(int(line), set()).update(names)
        return found

    def run_tests(self, tests, stop=True):
        """Runs tests in a sandbox. Returns the seconds each took, the first that failed, if any, and its output."""
        scripts = os.path.dirname(os.path.abspath(__file__))  # may be below /tmp, too
        sandbox = ['bwrap', '--die-with-parent', '--unshare-pid', '--ro-bind', '/', '/', '--dev', '/dev', '--proc',
                   '/proc', '--tmpfs', '/tmp', '--ro-bind', scripts, scripts, '--bind', self.home, self.home]
        plan = json.dumps({'tests': tests, 'jobs': self.jobs, 'stop': stop})
        done = subprocess.run([*sandbox, sys.executable, os.path.abspath(__file__), '--inside'], input=plan,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
        if done.returncode != 0:
            sys.exit('mutate.py: bwrap makes no sandbox here')
        result = json.loads(done.stdout)
        return result['seconds'], result['failed'], result['printed']

    def with_fault(self, fault, text, task):
        """Calls `task` while the copy contains the fault."""
        path = os.path.join(self.tree, fault.path)
        try:
            with open(path, 'w', encoding='utf-8') as file:
                file.write(text[:fault.start] + fault.new + text[fault.end:])
            return task()
        finally:
            with open(path, 'w', encoding='utf-8') as file:
                file.write(text)


# ---- Tests inside the sandbox ----------------------------------------------------------------------------

def run_one(test):
    """Runs one test in a session of its own. Returns (seconds, passed, the end of its output)."""
    begin = time.monotonic()
    environment = dict(os.environ, **dict(entry.split('=', 1) for entry in test['environment']))
    if test.get('cover'):
        environment['CVN_COVER'] = test['cover']
    output = tempfile.TemporaryFile()
    process = subprocess.Popen(
        test['command'], cwd=test['directory'], env=environment, stdin=subprocess.DEVNULL,
        stdout=output, stderr=subprocess.STDOUT, start_new_session=True,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT)))
    try:
        passed = process.wait(test['limit']) == 0
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        passed = False
    seconds = time.monotonic() - begin
    with output:
        output.seek(max(0, output.seek(0, os.SEEK_END) - KEPT_OUTPUT))
        return seconds, passed, output.read().decode(errors='replace')


def run_inside():
    plan = json.load(sys.stdin)
    seconds, failed, printed = {}, None, ''
    pending = iter(plan['tests'])
    with concurrent.futures.ThreadPoolExecutor(plan['jobs']) as pool:
        running = {}
        while True:
            while len(running) < plan['jobs'] and not (failed and plan['stop']):
                test = next(pending, None)
                if test is None:
                    break
                running[pool.submit(run_one, test)] = test['name']
            if not running:
                break
            done, _ = concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                name = running.pop(future)
                seconds[name], passed, output = future.result()
                if not passed and failed is None:
                    failed, printed = name, output
            if failed and plan['stop']:
                break
        json.dump({'seconds': seconds, 'failed': failed, 'printed': printed}, sys.stdout)
        sys.stdout.flush()
        os._exit(0)  # processes that are still running end with the sandbox


# ---- The campaign ----------------------------------------------------------------------------------------

def words_of(name):
    """The words of a path or a test's name, in lower case."""
    return {word.lower() for word in re.findall(r'[A-Z]+(?![a-z])|[A-Z]?[a-z]+|\d+', name) if len(word) > 2}


class Order:
    """Sorts tests so that a fault is found as soon as possible: first those that found faults near it, then those
    whose names share words with its path, then fast ones."""

    def __init__(self, tests, seconds, lines):
        self.tests = [dict(test, limit=max(LEAST_LIMIT_S, 5 * seconds[test['name']])) for test in tests]
        self.seconds = seconds
        self.lines = lines
        self.found = collections.Counter()
        self.words = {test['name']: words_of(test['name'] + '/' + os.path.basename(test['command'][0]))
                      for test in tests}

    def note(self, test, path):
        for folder in (path, os.path.dirname(path)):
            self.found[test, folder] += 1

    def runners_of(self, path, line):
        """Names of the tests that may find a fault in a line, of those that run lines near it, and of those that
        run the line itself. Lines without code, such as rows of a table, count as run by all tests that run any
        line of the file, and those of included files as run by all tests. No test finds a fault in a file that none runs."""
        lines = self.lines.get(path, {})
        exactly = lines.get(line, set())
        around = set().union(*(lines.get(line + i, set()) for i in range(-LINES_BEFORE, LINES_BEHIND + 1)))
        if exactly:
            return around, around, exactly
        everybody = {test['name'] for test in self.tests}
        return set().union(*lines.values()) if path.endswith('.cpp') else everybody, around, exactly

    def of(self, path, line):
        near = words_of(path)
        runners, around, exactly = self.runners_of(path, line)

        def rank(test):
            name = test['name']
            return (name not in exactly, name not in around, -self.found[name, path], -self.found[name, os.path.dirname(path)],
                    -len(near & self.words[name]), self.seconds[name])
        return sorted((test for test in self.tests if test['name'] in runners), key=rank)


def baseline(copy):
    """How long each test takes without a fault, and which lines it runs. All tests must pass. The results of an
    earlier campaign with the same sources are reused."""
    digest, kept = copy.digest(), os.path.join(copy.home, 'baseline')
    try:
        with open(kept, 'rb') as file:
            known, found = pickle.load(file)
        if known == digest:
            return found
    except (OSError, EOFError, pickle.UnpicklingError):
        pass
    shutil.rmtree(copy.cover, ignore_errors=True)
    os.mkdir(copy.cover)
    tests = [dict(test, limit=300, cover=copy.cover_file(test)) for test in copy.tests]
    seconds, failed, printed = copy.run_tests(tests)
    if failed:
        sys.exit(f'{printed}mutate.py: {failed} fails without any fault, see above')
    found = seconds, copy.lines_run(tests)
    with open(kept, 'wb') as file:
        pickle.dump((digest, found), file)
    return found


def texts_of(tree, folders):
    texts = {}
    for folder in folders:
        for place, _, files in os.walk(os.path.join(tree, folder)):
            for name in sorted(files):
                if name.endswith(SUFFIXES):
                    path = os.path.join(place, name)
                    with open(path, encoding='utf-8') as file:
                        texts[os.path.relpath(path, tree)] = file.read()
    return dict(sorted(texts.items()))


def print_rates(results):
    seen, total = collections.Counter(), collections.Counter()
    for fault, test in results:
        folder = os.path.dirname(fault.path)
        total[folder] += 1
        seen[folder] += test is not None
    width = max(map(len, total), default=0)
    print('\nSeen by folder')
    for folder in sorted(total):
        print(f'  {folder:{width}}  {seen[folder]:3} of {total[folder]:3}')


def try_faults(copy, texts, faults, count):
    """Tries faults until `count` have compiled. Yields each with the test that found it, None, or 'build'."""
    order = Order(copy.tests, *baseline(copy))
    tried, begin = 0, time.monotonic()
    for fault in faults:
        if tried == count:
            return

        def judged(fault=fault):
            line = texts[fault.path].count('\n', 0, fault.start) + 1
            return copy.run_tests(order.of(fault.path, line))[1] if copy.builds() else 'build'
        test = copy.with_fault(fault, texts[fault.path], judged)
        if test not in (None, 'build'):
            order.note(test, fault.path)
        tried += test != 'build'
        yield fault, test
        if test != 'build' and (sys.stderr.isatty() or tried % 10 == 0):
            print(f'{tried} of {count} faults after {time.monotonic() - begin:.0f} s', file=sys.stderr, flush=True)


def campaign(copy, folders, count, seed):
    """Tries faults and prints the results; if interrupted, the results so far."""
    texts = texts_of(copy.tree, folders)
    faults = draw([fault for path, text in texts.items() for fault in faults_of(path, text)], seed)
    results, unbuilt = [], 0
    try:
        for fault, test in try_faults(copy, texts, faults, count):
            if test == 'build':
                unbuilt += 1
                continue
            results.append((fault, test))
            if test is None:
                print(described(fault, texts[fault.path]), flush=True)
    except KeyboardInterrupt:
        print(f'interrupted, {count - len(results)} faults were not tried')
    print_rates(results)
    seen = sum(test is not None for _, test in results)
    print(f'Faults: {len(results)} (seed {seed}), {seen} seen, {len(results) - seen} not seen, '
          f'{100 * seen / max(1, len(results)):.1f} %; {unbuilt} more did not compile')


def main():
    if sys.argv[1:] == ['--inside']:
        return run_inside()
    parser = argparse.ArgumentParser(description=__doc__.split('\n', maxsplit=1)[0])
    parser.add_argument('count', type=int)
    parser.add_argument('--source', default='.')
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--jobs', type=int, default=os.cpu_count())
    parser.add_argument('--folder', action='append', help=f'instead of {" and ".join(FOLDERS)}')
    given = parser.parse_args()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    copy = Copy(os.path.abspath(given.source), given.jobs)
    return campaign(copy, given.folder or FOLDERS, given.count, given.seed)


if __name__ == '__main__':
    try:
        main()
    except KeyboardInterrupt:
        sys.exit('mutate.py: interrupted')
