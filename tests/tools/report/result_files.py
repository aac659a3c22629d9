"""Result directories for tests, as cvntester writes them."""
import json
import os
import sys

sys.dont_write_bytecode = True
REPORT = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', '..', 'tools', 'report')
sys.path.insert(0, REPORT)


def escaped(text):
    """A field of a journal."""
    for character, letter in (('\\', '\\'), ('\n', 'n'), ('\t', 't'), ('\r', 'r'), ('\x1b', 'e')):
        text = text.replace(character, '\\' + letter)
    return text


def journal(tests, results, words=('--run', '*')):
    """Text of a journal; `results` are (id, verdict, message, seconds); (id,) is a test that was cut off."""
    lines = ['cvntester journal 1', 'directory\t/', *('word\t' + word for word in words),
             *('test\t' + escaped(test) for test in tests), f'tests\t{len(tests)}']
    for test, *end in results:
        lines.append('start\t' + escaped(test))
        if end:
            lines.append('\t'.join(('end', escaped(test), end[0], '0', f'{end[2]:.3f}', escaped(end[1]))))
    return '\n'.join(lines) + '\n'


def result(text, default_seconds=1.0):
    """'A/1 FAIL why' as a row of `journal`; 'A/1' is a test that was cut off."""
    test, *rest = text.split(' ', 2)
    return (test, rest[0], rest[1] if len(rest) > 1 else '', default_seconds) if rest else (test,)


def make(path, tests, results, *, at='2026-11-01T20:00:00Z', status=0, labels=None, build='b1', board='lab',
         names=None, logs=None, ends=None, extra=()):
    """Creates a result directory and returns its path. `ends` contains additional members of the test-end
lines by id, `extra` contains findings by id; without `at` there is no record."""
    rows = [result(each) if isinstance(each, str) else each for each in results]
    os.makedirs(os.path.join(path, 'logs'))
    with open(os.path.join(path, 'journal'), 'w', encoding='utf-8', errors='surrogateescape', newline='') as file:
        file.write(journal(tests, rows))
    for number, row in enumerate(rows, 1):
        name = f'{number:04}-{row[0].replace("/", ".")}.log'
        with open(os.path.join(path, 'logs', name), 'wb') as file:
            file.write((logs or {}).get(row[0], b'nothing to see\n'))
    if at:
        record = [{'event': 'run-start', 'format': 1, 'version': '1.0.0', 'build': build, 'board': board, 'at': at,
                   'resumed': False, 'labels': labels or {}, 'tests': len(tests)}]
        record += [{'event': 'test-listed', 'test': test, 'module': test.split('/')[0],
                    'name': (names or {}).get(test, 'name of ' + test), 'description': 'does'} for test in tests]
        for number, row in enumerate(rows, 1):
            record.append({'event': 'test-start', 'number': number, 'test': row[0], 'at': at})
            record += dict(extra).get(row[0], [])
            record.append({'event': 'test-end', 'number': number, 'test': row[0], 'prompts': 0, 'typed': [],
                           **(ends or {}).get(row[0], {})})
        record.append({'event': 'run-exit', 'status': status, 'at': at.replace('T20', 'T21')})
        with open(os.path.join(path, 'results.jsonl'), 'w', encoding='utf-8') as file:
            file.writelines(json.dumps(event).replace('Infinity', '1e999') + '\n' for event in record)
    return path
