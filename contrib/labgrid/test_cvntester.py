"""Runs a selection of cvntester on a board through labgrid.

    CVN_SELECTION='UTVpqModule VscModule/3*' pytest --lg-env environment.yaml test_cvntester.py

Every test of the board that did not pass is named; the JUnit file of the board lands in the working
directory.
"""

import json
import os
import shlex

import pytest

NOTHING_RAN = 77
REMOTE = "/tmp/cvntester-results"


@pytest.fixture(scope="session")
def ssh(target):
    driver = target.get_driver("SSHDriver")
    driver.run_check("mkdir -p /tmp/var/log")
    return driver


def run_selection(ssh, patterns, options):
    """Runs the patterns and returns the exit status with the events of the JSON lines."""
    quoted = " ".join(shlex.quote(word) for word in patterns + options)
    ssh.run_check(f"rm -rf {REMOTE} && mkdir {REMOTE}")
    _, _, status = ssh.run(
        f"cvntester --run {quoted} --results {REMOTE}/run --junit {REMOTE}/junit.xml"
        f" --json {REMOTE}/events.json",
        timeout=float(os.environ.get("CVN_TIMEOUT", "36000")),
    )
    lines = ssh.run_check(f"cat {REMOTE}/events.json")
    return status, [json.loads(line) for line in lines if line]


def test_selection(ssh):
    patterns = os.environ.get("CVN_SELECTION", "UTVpqModule").split()
    options = os.environ.get("CVN_OPTIONS", "--no-operator").split()
    status, events = run_selection(ssh, patterns, options)
    if status == NOTHING_RAN:
        pytest.skip("nothing ran: every selected test needs an operator or has no function")
    assert status in (0, 1), f"the harness failed with status {status}"
    ssh.get(f"{REMOTE}/junit.xml", "cvntester-junit.xml")
    wrong = [
        f"{event['verdict']} {event['test']} {event['message']}"
        for event in events
        if event["event"] == "test-end" and event["verdict"] not in ("PASS", "SKIPPED")
    ]
    assert not wrong, "\n".join(wrong)
    assert status == 0
