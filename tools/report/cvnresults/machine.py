"""The merged results for other programs: JUnit XML and JSON."""
import json
import xml.etree.ElementTree as ElementTree

from .compare import compare, unstable
from .texts import clean


def junit(run):
    """The run as JUnit XML (bytes): one case per test, one suite per module."""
    suites = {}
    for result in run.results.values():
        suites.setdefault(result.name.module, []).append(result)
    root = ElementTree.Element('testsuites', name='cvntester', **_counts(run.results.values()))
    for module, results in suites.items():
        suite = ElementTree.SubElement(root, 'testsuite', name=module, **_counts(results))
        for result in results:
            _case(suite, result)
    ElementTree.indent(root)
    return ElementTree.tostring(root, encoding='utf-8', xml_declaration=True) + b'\n'


# Verdicts in JUnit. Tests that did not run are skipped, and the exit status says that they are
# missing.
_ELEMENTS = {'FAIL': 'failure', 'FLAKY': 'failure', 'ERROR': 'error', 'BLOCKED': 'error',
             'SKIPPED': 'skipped', 'NOT RUN': 'skipped'}


def _counts(results):
    elements = [_ELEMENTS.get(result.verdict) for result in results]
    return {'tests': str(len(elements)), 'failures': str(elements.count('failure')),
            'errors': str(elements.count('error')), 'skipped': str(elements.count('skipped')),
            'time': f'{sum(result.seconds for result in results):.3f}'}


def _case(suite, result):
    name = ' '.join(part for part in (result.id, result.name.name) if part)
    if result.name.description.strip():
        name += f' ({result.name.description.strip()})'
    case = ElementTree.SubElement(suite, 'testcase', classname=result.name.module, name=name,
                                  time=f'{result.seconds:.3f}')
    properties = [(f'attempt.{number}', ': '.join(filter(None, (attempt.verdict, attempt.message))))
                  for number, attempt in enumerate(result.attempts, 1)] if len(result.attempts) > 1 else []
    if result.verdict == 'PASS' and result.message:
        properties.append(('message', result.message))
    if properties:
        parent = ElementTree.SubElement(case, 'properties')
        for key, value in properties:
            ElementTree.SubElement(parent, 'property', name=key, value=value)
    element = _ELEMENTS.get(result.verdict)
    if element == 'skipped':
        reason = f'not run: {result.message}' if result.verdict == 'NOT RUN' else result.message
        ElementTree.SubElement(case, element, message=reason)
    elif element:
        ElementTree.SubElement(case, element, message=result.message, type=result.verdict)


def as_json(runs):
    """All runs, newest first, and what changed, as JSON (bytes)."""
    changes = compare(runs[1], runs[0]) if len(runs) > 1 else None
    document = {
        'format': 1,
        'runs': [_run(run) for run in runs],
        'changes': changes and {kind: [change.id for change in each] for kind, each in changes.items()},
        'unstable': list(unstable(runs)),
    }
    return json.dumps(document, indent=1, ensure_ascii=False).encode() + b'\n'


def _run(run):
    return {
        'name': run.name, 'exit_status': run.exit_status, 'verdict': run.verdict_in_words(),
        'board': run.fact('board'), 'build': run.fact('build'), 'version': run.fact('version'),
        'started': run.started or None, 'ended': run.ended or None, 'notes': run.notes,
        'directories': [{'path': clean(part.path), 'status': part.status, 'labels': part.labels} for part in run.parts],
        'totals': run.totals,
        'tests': [_test(result) for result in run.results.values()],
    }


def _test(result):
    return {
        'test': result.id, 'module': result.name.module, 'name': result.name.name,
        'description': result.name.description, 'verdict': result.verdict, 'message': result.message,
        'seconds': result.seconds,
        'attempts': [{'verdict': attempt.verdict, 'message': attempt.message, 'seconds': attempt.seconds,
                      'at': attempt.at or None, 'directory': clean(attempt.part.path), 'id': attempt.id}
                     for attempt in result.attempts],
    }
