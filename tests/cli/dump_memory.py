#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""dump_memory.py: whatever memory qvs dump has, it prints the whole text, or says that it is incomplete, or fails."""
import json
import os
import pathlib
import resource
import subprocess
import sys

PORTS = 2000
PROPERTY = {"scope": "port", "key": "com.example.note", "text": 200 * "x"}

if "QVS_HOST_SOCKET" not in os.environ:
    if os.environ["QVS_SANITIZED"]:
        sys.exit(77)  # a sanitizer reserves more address space than there can be
    ports = [f"p{i}" for i in range(PORTS)]
    lab = {"switches": [{"alias": "sw1", "maxPorts": PORTS, "ports": ports,
                         "properties": [{**PROPERTY, "port": port} for port in ports]}]}
    pathlib.Path("lab.json").write_text(json.dumps(lab))
    os.execv(os.environ["QVS_BIN"] + "/qvs-host", ["qvs-host", "run", "--lab", "lab.json", "--", __file__])


def dump(limit=resource.RLIM_INFINITY):
    return subprocess.run(["qvs", "dump"], capture_output=True, text=True,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))


whole = dump()
assert whole.returncode == 0 and whole.stderr == "" and whole.stdout.count("\tport ") == PORTS, whole.stderr
incomplete = 0
for limit in range(10 << 20, 18 << 20, 512 << 10):
    result = dump(limit)
    said = "qvs: the dump is incomplete: memory ran out" in result.stderr
    assert said or result.returncode != 0 or (result.stdout == whole.stdout and result.stderr == ""), limit
    assert not (said and result.stdout == whole.stdout), limit
    incomplete += said
assert incomplete > 0
