# SPDX-License-Identifier: Apache-2.0
"""Configurations and sessions of the data path, and what must not disturb it."""
import os
import resource
import struct
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from switchd import (CONFIGURE, PROGRAM, WAIT, Process, Stream, compiled, expect, frame, port, run_cases,  # noqa: E402
                     switch, text)

DROPPED_BUSY = 21 + 11  # of shared.h


def sessions():
    with Process() as path:
        path.configure(switch(port(1), port(2), port(3)))
        one, two = path.client(1), path.client(2)
        watch_in, watch_out = path.session("watch", "", "vm1", "in"), path.session("watch", "sw1", "port2", "out")
        for each in watch_in, watch_out:
            expect("watching", each.answer(), b"ok")
        one.send(frame(2, 1))
        for name, each in {"receiver": two, "in": watch_in, "out": watch_out}.items():
            expect(name, each.next(), frame(2, 1))
        one.send(b"")  # ends a session
        expect("end", one.answer(), b"")
        for words, problem in {
            ("attach", "sw1", "port9"): b"switch sw1 has no port or client port9",
            ("attach", "", "port9"): b"no switch has a port or client port9",
            ("enter", "vm1"): b"no client of this host is attached to a network namespace; attach one first",
            ("attach",): b"the request is none of attach, watch and enter",
            ("x" * 100_000,): b"the request is none of attach, watch and enter",
        }.items():
            refused = path.session(*words)
            expect(words, refused.answer(), problem)
            expect("closed", refused.answer(), b"")
        # A port that is removed takes its sessions along.
        path.configure(switch(port(1), port(3)))
        expect("removed", two.answer(), b"")


def two_switches():
    with Process() as path:
        path.configure(switch(port(1)), switch({**port(2), "id": "port1"}, number=2, name="sw2"))
        expect("ambiguous", path.session("attach", "", "port1").answer(),
               b"port port1 is on the switches sw1 and sw2; name one with --switch")
        expect("named", path.session("attach", "sw2", "port1").answer(), b"ok")


def malformed_configuration():
    with Process() as path:
        path.configure(switch(port(1), port(2)))
        for bad in b"", b"\0" * 8, b"x" * 1000, os.urandom(5000):
            path.send(CONFIGURE, text(bad))
        path.send(CONFIGURE, b"\xff" * 4)
        path.send(999, text("x"))
        one, two = path.client(1), path.client(2)
        one.send(frame(2, 1))
        expect("old configuration", two.next(), frame(2, 1))
        path.configure(switch(port(1), port(2)))
        expect("logged", path.logged().count("is malformed and was not applied"), 4)


def changed_port():
    with Process() as path:
        path.configure(switch(port(1), port(2), port(3)))
        two, three = path.client(2), path.client(3)
        path.generation += 1
        changed = {"generation": path.generation, "changed_ports": [{"portset": 1, "policy": port(3, blocked=True)},
                                                                    {"portset": 77, "policy": port(9)}]}
        path.send(CONFIGURE, text(compiled(changed)))
        path.wait_in_force()
        path.client(1).send(frame(None, 1))
        expect("unchanged port", two.next(), frame(None, 1))
        expect("blocked port", three.next(), None)


def slow_clients():
    """Clients that do not read lose frames, and delay neither others nor the kernel."""
    with Process() as path:
        path.configure(switch(port(1), port(2), port(3), port(4)),
                       attachments=[{"port": 4, "kind": "Stream", "path": "vm4.socket"}])
        one, _, three = path.client(1), path.client(2), path.client(3)
        _lazy = Stream(path.directory / "vm4.socket")
        path.wait_carrier(4, (True, ""))
        began = time.monotonic()
        for i in range(3000):
            one.send(frame(None, 1, struct.pack("<I", i) + b"x" * 1000))
            expect("reader", three.next()[14:18], struct.pack("<I", i))
        path.configure(switch(port(1), port(2), port(3), port(4)))
        if time.monotonic() - began > 20:
            raise AssertionError("slow clients delay others")
        for slow in 2, 4:
            if path.counter(slow, DROPPED_BUSY) == 0:
                raise AssertionError(f"port{slow} lost no frames")
        expect("reader lost", path.counter(3, DROPPED_BUSY), 0)


def lazy_kernel():
    """A kernel that does not read delays no frames, and finds the current state when it reads again."""
    with Process() as path:
        learning = {"learning": {"enabled": True, "limit": 100000}}
        path.configure(switch(port(1, **learning), port(2)))
        one, two = path.client(1), path.client(2)
        for i in range(20000):
            one.send(b"\xff" * 6 + struct.pack(">HI", 0x0600, i) + b"\x88\xb5" + b"x" * 46)
            if i % 100 == 99:
                for _ in range(100):
                    two.next()
        deadline = time.monotonic() + WAIT
        while len(path.learnt) < 20000 and path.receive(deadline):
            pass
        expect("learnt", len(path.learnt), 20000)


def many_sessions():
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, 4096), hard))
    with Process() as path:
        path.configure(switch(*[port(n) for n in range(1, 11)]))
        clients = [path.client(i % 10 + 1) for i in range(1000)]
        clients[0].send(frame(None, 1))
        expect("received", sum(each.next() == frame(None, 1) for each in clients[1:1000:10]), 100)
        for each in clients:
            each.close()
        expect("afterwards", path.session("attach", "sw1", "port1").answer(), b"ok")
    with Process("small", limit=40) as path:
        path.configure(switch(port(1)))
        sessions = [path.session("attach", "sw1", "port1") for _ in range(60)]
        expect("no descriptors", sessions[-1].answer(), b"the data path has no more descriptors; end some sessions")
        for each in sessions:
            each.close()
        path.configure(switch(port(1)))
        expect("afterwards", path.session("attach", "sw1", "port1").answer(), b"ok")
    resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))


def kernel_ends():
    """The data path refuses a start without the kernel, and memory in which it could not count."""
    expect("without a kernel", subprocess.run([PROGRAM], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                              check=False).returncode, 2)
    small = os.memfd_create("small")
    path = Process(memory=small, memory_size=4096)
    expect("small memory", path.process.wait(WAIT), 1)
    expect("logged", path.logged(), "warning data path: the memory of the counters cannot be used: it is absent or "
                                    "shorter than its slots\n")


run_cases(sessions, two_switches, malformed_configuration, changed_port, slow_clients, lazy_kernel, many_sessions,
          kernel_ends)
