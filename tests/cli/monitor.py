#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""monitor.py: qvs monitor prints each change of what it watches, outlives the host, and ends with a signal or its reader."""
import json
import os
import re
import select
import signal
import subprocess
import sys

sys.dont_write_bytecode = True
from checks import expect, failures, report  # noqa: E402

PATIENCE = 20


def host(*words):
    subprocess.run(["qvs-host", *words, "--state", "state"], check=True, stdout=subprocess.DEVNULL)


def on_host(*words):
    return ["qvs-host", "run", "--state", "state", "--", *words]


def qvs(*words):
    subprocess.run(on_host("qvs", *words), check=True, stdout=subprocess.DEVNULL)


class Monitor:
    def __init__(self, *words):
        # exec: signals are for qvs, not for the launcher.
        self.process = subprocess.Popen(on_host("sh", "-c", 'echo $$; exec qvs monitor --interval 0.05 "$@"', "sh", *words),
                                        stdout=subprocess.PIPE, bufsize=0)
        self.rest = b""
        self.pid = int(self.line())

    def line(self):
        while b"\n" not in self.rest:
            if not select.select([self.process.stdout], [], [], PATIENCE)[0]:
                raise TimeoutError(f"no line came; failures so far: {failures}")
            piece = os.read(self.process.stdout.fileno(), 65536)
            if not piece:
                sys.exit(f"monitor: it ended; failures so far: {failures}")
            self.rest += piece
        line, self.rest = self.rest.split(b"\n", 1)
        return line.decode()

    def record(self):
        """Returns a line of JSON as "change path before after", after a look at its time."""
        record = json.loads(self.line())
        if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z", record.pop("time")):
            failures.append("the time is malformed")
        expect("members", list(record), ["path", "change", "before", "after"])
        return " ".join(str(record[key]) for key in ("change", "path", "before", "after"))

    def end(self, number):
        os.kill(self.pid, number)
        return self.process.wait(PATIENCE)


def main():
    os.environ.pop("QVS_HOST_SOCKET", None)
    host("start")
    qvs("switch", "create", "sw1", "--uplinks", "1", "--ports", "1")
    qvs("switch", "create", "sw2")
    one, everything = Monitor("--json", "sw1"), Monitor()
    expect("start", one.record(), "watching None None None")
    expect("start", everything.line()[24:], " watching 2 switches")

    port, uplink = "switches.sw1.ports.port0", "switches.sw1.ports.uplink0"
    steps = [
        ("port add sw2 other", [], ["+ switches.sw2.ports.other", "+ switches.sw2.ports.other.connectId: 1",
                                    "+ switches.sw2.ports.other.blocked: off", "+ switches.sw2.ports.other.vlan: {}"]),
        ("port vlan set sw1 port0 --id 10", [f"changed {port}.vlan {{}} {{id: 10}}"],
         [f"~ {port}.vlan: {{}} -> {{id: 10}}"]),
        ("prop set sw1 com.example.key --hex 00ff --host",
         ["added switches.sw1.host.properties.com.example.key None {class: 16, value: AP8=}"],
         ["+ switches.sw1.host.properties.com.example.key: {class: 16, value: AP8=}"]),
        ("uplink down sw1 uplink0", [f"changed {uplink}.link up down"], [f"~ {uplink}.link: up -> down"]),
    ]
    for command, records, lines in steps:
        qvs(*command.split())
        expect(command, [one.record() for _ in records], records)
        expect(command, [everything.line()[24:] for _ in lines], [" " + line for line in lines])

    host("stop")
    expect("host", one.record(), "gone None None None")
    expect("host", everything.line()[24:], " the host is gone: No connection")
    host("start")
    expect("host", one.record(), "back None None None")
    expect("host", everything.line()[24:], " the host is back")
    qvs("switch", "destroy", "sw1")
    expect("after the restart", one.record(), "removed switches.sw1 None None")
    expect("after the restart", everything.line()[24:], " - switches.sw1")
    expect("SIGTERM", one.end(signal.SIGTERM), 0)
    expect("SIGINT", everything.end(signal.SIGINT), 0)

    # A reader that goes away ends it although nothing changes.
    unread = Monitor()
    unread.line()
    unread.process.stdout.close()
    expect("closed pipe", unread.process.wait(PATIENCE), 128 + signal.SIGPIPE)

    report()


try:
    main()
finally:
    host("stop")
