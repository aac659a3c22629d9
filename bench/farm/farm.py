#!/usr/bin/env python3
"""Shards on simulated boards beside each other: how much time they save, and what power cuts do to results.

    bench/farm/farm.py [--boards N] [--seeds N] [--build DIR]

Prints the time of one board and of N for a selection that mostly waits. Then runs a selection with the given
number of seeds, each with one or two boards killed at random moments and resumed, and compares all verdicts.
"""
import argparse
import json
import os
import random
import subprocess
import sys
import tempfile
import threading
import time

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..')
WAITING = ['VpqExtModule/1*', 'VpqExtModule/8?', 'VpqExtModule/9?']
KILLED = ['UTVpqModule', 'CRlinkModule', 'UTVfeHdmiModule']


class Board:
    """A simulated board with a power switch."""

    def __init__(self, directory, build):
        self.directory, self.build = directory, build

    def power(self, what):
        options = ['--bin', self.build] if what == 'on' else []
        subprocess.run([os.path.join(SOURCE, 'sim/board/board-power'), self.directory, what, *options], check=True)

    def run(self, *words):
        """Runs cvntester; returns its exit status, which is different after a power cut."""
        return subprocess.run([os.path.join(SOURCE, 'sim/board/board-login'), self.directory, '--', 'cvntester',
                               *words, '--color', 'never'], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode

    def path(self, name):
        return os.path.join(self.directory, 'root/data', name)



def side_by_side(boards, task):
    threads = [threading.Thread(target=task, args=(i, board)) for i, board in enumerate(boards, 1)]
    begin = time.monotonic()
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return time.monotonic() - begin


def arguments(selection, name, *more):
    return ['--run', *selection, '--no-operator', '--results', f'/data/{name}', '--json', f'/data/{name}.json', *more]


def measure(boards):
    one = side_by_side(boards[:1], lambda _, board: board.run(*arguments(WAITING, 'one')))
    for board in boards[1:]:
        subprocess.run(['cp', '-r', boards[0].path('one'), board.path('one')], check=True)
    count = len(boards)
    many = side_by_side(boards, lambda i, board: board.run(*arguments(
        WAITING, 'many', '--shard', f'{i}/{count}', '--shard-times', '/data/one')))
    print(f'one board {one:.1f} s, {count} boards {many:.1f} s, ratio {many / one:.2f}, bar 0.35'
          f'{"" if many <= 0.35 * one else " MISSED"}')
    return many <= 0.35 * one


def verdicts_of(path):
    found = {}
    with open(path, encoding='utf-8') as file:
        for line in file:
            event = json.loads(line)
            if event['event'] == 'test-end':
                found.setdefault(event['test'], []).append((event['verdict'], event['message']))
    return found


def run_to_the_end(board, name, words, cut):
    """Starts a run, with a power cut after `cut` seconds if given, and resumes it afterwards."""
    if cut is None:
        board.run(*words)
        return 0
    timer = threading.Timer(cut, board.power, ['off'])
    timer.start()
    board.run(*words)
    timer.join()
    board.power('on')
    if not os.path.exists(board.path(f'{name}/journal')):
        return 1 + run_to_the_end(board, name, words, None)
    board.run('--resume', f'/data/{name}')
    return 1


def retry(board, name, other):
    """Repeats, on another board, the tests in which a board went down. Returns their results."""
    subprocess.run(['cp', '-r', board.path(name), other.path(f'{name}-suspects')], check=True)
    other.run('--retry-from', f'/data/{name}-suspects', '--no-operator', '--json', f'/data/{name}-retry.json')
    results = verdicts_of(other.path(f'{name}-retry.json'))
    for left in (f'{name}-suspects', f'{name}-retry.json'):
        subprocess.run(['rm', '-rf', other.path(left)], check=True)
    return results


def kill(boards, seeds, expected, seconds):
    wrong = 0
    for seed in range(1, seeds + 1):
        chance = random.Random(seed)
        name = f'kill-{seed}'
        victims = chance.sample(range(1, len(boards) + 1), chance.choice([1, 2]))
        cuts = {i: chance.uniform(0, seconds / len(boards)) for i in victims}
        side_by_side(boards, lambda i, board, n=name, c=cuts: run_to_the_end(
            board, n, arguments(KILLED, n, '--shard', f'{i}/{len(boards)}'), c.get(i)))
        found = {}
        for board in boards:
            for test, results in verdicts_of(board.path(f'{name}.json')).items():
                found.setdefault(test, []).extend(results)
        once = all(len(results) == 1 for results in found.values())
        cut_off = {test for test, results in found.items() if any('interrupted' in text for _, text in results)}
        again = {}
        for victim in victims:
            again.update(retry(boards[victim - 1], name, boards[victim % len(boards)]))
        found.update(again)
        same = {test: results[-1][0] for test, results in found.items()} == {
            test: results[-1][0] for test, results in expected.items()}
        good = once and same and set(again) == cut_off and len(cut_off) <= len(victims)
        wrong += not good
        print(f'seed {seed}: boards {sorted(victims)} killed, {len(found)} tests, tried again: '
              f'{sorted(cut_off) or "none"}{"" if good else " WRONG"}', flush=True)
    print(f'{seeds - wrong} of {seeds} seeds: all verdicts as on one board, each test reported once')
    return wrong == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n', maxsplit=1)[0])
    parser.add_argument('--boards', type=int, default=4)
    parser.add_argument('--seeds', type=int, default=20)
    parser.add_argument('--build', default=os.path.join(SOURCE, 'build/release'))
    given = parser.parse_args()
    with tempfile.TemporaryDirectory() as directory:
        boards = [Board(os.path.join(directory, f'board-{i}'), os.path.abspath(given.build))
                  for i in range(1, given.boards + 1)]
        try:
            for board in boards:
                board.power('on')
                os.makedirs(os.path.join(board.directory, 'root/tmp/var/log'), exist_ok=True)
            good = measure(boards)
            seconds = side_by_side(boards[:1], lambda _, board: board.run(*arguments(KILLED, 'whole')))
            good = kill(boards, given.seeds, verdicts_of(boards[0].path('whole.json')), seconds) and good
        finally:
            for board in boards:
                board.power('off')
    return 0 if good else 1


if __name__ == '__main__':
    sys.exit(main())
