# SPDX-License-Identifier: Apache-2.0
"""Checks that let a script go on after a failure, and the exit status at its end."""
import os
import subprocess
import sys

failures = []


def expect(what, found, wanted):
    if found != wanted:
        failures.append(f"{what}:\n  found  {found}\n  wanted {wanted}")


def run(*words, **more):
    return subprocess.run(words, capture_output=True, text=True, timeout=120, **more)


def report():
    for failure in failures:
        print(f"{os.path.basename(sys.argv[0])}: {failure}")
    sys.exit(1 if failures else 0)
