#!/usr/bin/env python3
"""Submits cvntester to a LAVA lab, a job a shard, and brings the results back as one JUnit file.

    lab.py [--shards N] [--options OPTIONS] [--junit FILE] PATTERN...

LAVA_URL and LAVA_TOKEN select the server. Exit status: 0 all jobs are complete and all tests passed, 1 not.
"""
import argparse
import io
import json
import os
import re
import sys
import tarfile
import time
import urllib.error
import urllib.request
import xml.etree.ElementTree as ET

HERE = os.path.dirname(os.path.abspath(__file__))
LIMIT_S = 600
LOOK_S = 0.3
RUN = 'run'  # the test case that reports whether a run was completed


class Lab:
    """A LAVA server's REST interface."""

    def __init__(self, url, token):
        self.base = url.rstrip('/') + '/api/v0.2/'
        self.headers = {'Authorization': f'Token {token}', 'Content-Type': 'application/json'}

    def call(self, path, data=None, method=None):
        body = None if data is None else json.dumps(data).encode()
        request = urllib.request.Request(self.base + path, body, self.headers, method=method)
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                text = answer.read()
        except urllib.error.HTTPError as error:
            sys.exit(f'lab.py: {path}: {error}: {error.read().decode(errors="replace")[:500]}')
        except urllib.error.URLError as error:
            sys.exit(f'lab.py: {self.base}: {error.reason}')
        return json.loads(text) if text else None

    def submit(self, definition):
        return self.call('jobs/', {'definition': definition})['job_ids'][0]

    def job(self, number):
        return self.call(f'jobs/{number}/')

    def cancel(self, number):
        self.call(f'jobs/{number}/cancel/')

    def wait(self, number, states=('Finished',)):
        """The job, once it has reached one of the states."""
        end = time.monotonic() + LIMIT_S
        while time.monotonic() < end:
            job = self.job(number)
            if job['state'] in states:
                return job
            time.sleep(LOOK_S)
        return sys.exit(f'lab.py: job {number} is {job["state"]} after {LIMIT_S} s')

    def error(self, number):
        """Why a job is incomplete, such as "Infrastructure: Connection closed"; empty if it is complete."""
        for test in self.results(number):
            found = re.search(r'error_msg: (.*)\n(?:.*\n)*?error_type: (\w+)', test['metadata'] or '')
            if test['name'] == 'job' and found:
                return f'{found.group(2)}: {found.group(1)}'
        return ''

    def tests(self, number):
        """The test cases of a job without LAVA's own steps, as (name, result) in order."""
        own = {suite['id'] for suite in self.call(f'jobs/{number}/suites/')['results'] if suite['name'] == 'lava'}
        return [(test['name'], test['result']) for test in self.results(number) if test['suite'] not in own]

    def results(self, number):
        results, path = [], f'jobs/{number}/tests/?limit=1000'
        while path:
            page = self.call(path)
            results += page['results']
            path = page['next'].split('/api/v0.2/')[1] if page['next'] else None
        return results


def archive(directory):
    """Packs the test definition for the worker to fetch; returns the archive's path."""
    path = os.path.join(directory, 'cvntester-lava.tar.gz')
    with tarfile.open(path, 'w:gz') as tar:
        tar.add(os.path.join(HERE, 'cvntester.yaml'), 'cvntester.yaml')
    return path


def job_text(name, selection, options, tags='', directory=None):
    with open(os.path.join(HERE, 'simulated-job.yaml'), encoding='utf-8') as file:
        text = file.read()
    packed = archive(directory or os.environ['CVN_LAB'])
    return text.format(name=name, selection=selection, options=options, tags=tags, archive=packed)


def job_line(job, error=''):
    return (f'{job["id"]:>3}  {job["state"]:9} {job["health"]:10} {job["actual_device"] or "-":8} '
            f'{job["description"]}{"  " + error if error else ""}')


def junit(jobs, tests):
    """One JUnit document for all jobs, with one suite per job."""
    root = ET.Element('testsuites', name='cvntester')
    for job in jobs:
        cases = [(name, result) for name, result in tests[job['id']] if name != RUN]
        suite = ET.SubElement(root, 'testsuite', name=job['description'], hostname=job['actual_device'] or '',
                              tests=str(len(cases)),
                              failures=str(sum(result == 'fail' for _, result in cases)),
                              errors=str(sum(result == 'unknown' for _, result in cases)),
                              skipped=str(sum(result == 'skip' for _, result in cases)))
        for name, result in cases:
            case = ET.SubElement(suite, 'testcase', classname=name.split('.')[0], name=name)
            if result != 'pass':
                ET.SubElement(case, {'fail': 'failure', 'skip': 'skipped'}.get(result, 'error'))
    return ET.ElementTree(root)


def is_good(job, tests):
    return job['health'] == 'Complete' and (RUN, 'pass') in tests and all(
        result in ('pass', 'skip') for _, result in tests)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n', maxsplit=1)[0])
    parser.add_argument('patterns', nargs='+', metavar='PATTERN')
    parser.add_argument('--shards', type=int, default=1)
    parser.add_argument('--options', default='--no-operator')
    parser.add_argument('--junit')
    given = parser.parse_args()
    lab = Lab(os.environ['LAVA_URL'], os.environ['LAVA_TOKEN'])
    selection = ' '.join(given.patterns)
    numbers = [lab.submit(job_text(f'{selection} {part}/{given.shards}', selection,
                                   f'{given.options} --shard {part}/{given.shards}'))
               for part in range(1, given.shards + 1)]
    jobs = [lab.wait(number) for number in numbers]
    tests = {number: lab.tests(number) for number in numbers}
    for job in jobs:
        print(job_line(job, lab.error(job['id'])))
    if given.junit:
        text = io.BytesIO()
        junit(jobs, tests).write(text, encoding='utf-8', xml_declaration=True)
        with open(given.junit, 'wb') as file:
            file.write(text.getvalue())
    return 0 if all(is_good(job, tests[job['id']]) for job in jobs) else 1


if __name__ == '__main__':
    sys.exit(main())
