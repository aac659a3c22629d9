"""Runs a selection of cvntester on a board through labgrid.

    CVN_SELECTION='UTVpqModule VscModule/3*' pytest --lg-env environment.yaml test_cvntester.py

CVN_SELECTION   patterns, separated by blanks
CVN_OPTIONS     further options of --run, such as "--no-operator --shard 1/2"
CVN_POWER=cycle first switches the board off and on
CVN_TIMEOUT     time limit for the entire run in seconds

Every test that did not pass is listed; the JUnit file of the board is stored in the working directory.
"""

import json
import os
import shlex
import time

import pytest

NOTHING_RAN = 77
REMOTE = "/tmp/cvntester-results"


@pytest.fixture(scope="session")
def ssh(target):
    if os.environ.get("CVN_POWER") == "cycle":
        target.get_driver("PowerProtocol").cycle()
    driver = target.get_driver("SSHDriver")
    for wait in (0.5, 1, 2, 4, 8, 16, 0):  # until the board accepts the first login
        if driver.run("mkdir -p /tmp/var/log")[2] == 0:
            return driver
        time.sleep(wait)
    return pytest.fail("login on the board failed")


def run_selection(ssh, patterns, options):
    """Runs the patterns. Returns the exit status and the end of the output."""
    quoted = " ".join(shlex.quote(word) for word in patterns + options)
    ssh.run_check(f"rm -rf {REMOTE} && mkdir {REMOTE}")
    printed, errors, status = ssh.run(
        f"cvntester --run {quoted} --results {REMOTE}/run --junit {REMOTE}/junit.xml"
        f" --json {REMOTE}/events.json",
        timeout=float(os.environ.get("CVN_TIMEOUT", "36000")),
    )
    return status, "\n".join((printed + errors)[-20:])


def read_events(ssh):
    return [json.loads(line) for line in ssh.run_check(f"cat {REMOTE}/events.json") if line]


def test_selection(ssh):
    patterns = os.environ.get("CVN_SELECTION", "UTVpqModule").split()
    options = os.environ.get("CVN_OPTIONS", "--no-operator").split()
    status, printed = run_selection(ssh, patterns, options)
    if status == NOTHING_RAN:
        pytest.skip("nothing ran: every selected test needs an operator or has no function")
    assert status in (0, 1), f"the harness ended with status {status}:\n{printed}"
    with open("cvntester-junit.xml", "w", encoding="utf-8") as file:
        file.write("\n".join(ssh.run_check(f"cat {REMOTE}/junit.xml")))
    wrong = [
        f"{event['verdict']} {event['test']} {event['message']}"
        for event in read_events(ssh)
        if event["event"] == "test-end" and event["verdict"] not in ("PASS", "SKIPPED")
    ]
    assert not wrong, "\n".join(wrong)
    assert status == 0, printed
