# SPDX-License-Identifier: Apache-2.0
"""Calls of the C library fail inside the daemon, one after the other, and sockets take and give a few bytes at a time.

  trouble.py [EVERY]   fails each EVERYth call (7); 1 fails every one

A change that was acknowledged is there afterwards, one that was refused is not, and the daemon ends by no signal. One
whose connection ended may be either.
"""
import collections
import errno
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time

from hostile import PROP_GET, PROP_SET, SWITCH_ADD, Client, number, qvs_host, text

PING = 2
START = 20  # seconds
DAEMON = pathlib.Path(os.environ["QVS_BIN"], "../libexec/qvs/qvs-hostd").resolve()
# The call, its error, and how many of these calls one is tried of.
FAILURES = [("write", errno.EIO, 1), ("write", errno.ENOSPC, 1), ("read", errno.EIO, 1), ("truncate", errno.EIO, 1),
            ("sync", errno.EIO, 1), ("alloc", errno.ENOMEM, 12)]
# Property and value; a later row replaces the value of an earlier one.
CHANGES = [("a", b"1"), ("b", b"2" * 300), ("c", b"3" * 200_000), ("a", b"4" * 5_000), ("d", b""), ("c", b"5")]
SESSION = """
qvs switch create sw --id '73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00' && qvs port add sw p1 p2 p3
qvs port vlan set sw p1 --id 7; qvs prop set sw long "$(seq 20000 | tr '\\n' ' ')"; qvs prop get sw long | cksum
qvs uplink set sw u1 u2; qvs uplink list sw --json; qvs port list sw --json; qvs switch info sw --json
qvs-host status | grep switches; qvs dump sw | cksum; qvs export | cut -c 1-80; qvs switch show none; /bin/treesh -e ls /net
"""


def place(key):
    return b"\0" + text("sw") + text("") + text(key)


def started(state, **more):
    """A daemon that serves, or its process, which has ended, and what it said."""
    process = subprocess.Popen([DAEMON, "--state", state], stderr=subprocess.PIPE, env=os.environ | more)
    end = time.monotonic() + START
    while process.poll() is None and time.monotonic() < end:
        try:
            # The socket is there before the daemon has read the database.
            client = Client(state)
            client.call(PING)
            return process, client
        except (OSError, EOFError):
            time.sleep(0.002)
    assert process.poll() is not None, "the daemon neither serves nor ends"
    return process, None


def ended(process):
    if process.poll() is None:
        process.terminate()
    said = process.communicate(timeout=20)[1]
    assert process.returncode >= 0 or process.returncode == -signal.SIGTERM, (process.returncode, said)
    return said


def change(client, wanted):
    """Makes the changes. The values that each property may have from then on are put into `wanted`."""
    for key, value in CHANGES:
        try:
            answer = client.call(PROP_SET, place(key) + text(value) + number(16))
            wanted[key] = {value} if answer == number(0) else wanted[key]
        except (EOFError, ConnectionError):
            wanted[key] = wanted[key] | {value}
            client = Client("state")


def require(client, wanted, what):
    for key, values in wanted.items():
        answer = client.call(PROP_GET, place(key))
        found = answer[8:] if answer[:4] == number(0) else None
        assert found in values, (what, key, found and found[:20], [value and value[:20] for value in values])


def failing(call, error, step, whole):
    """One failure. Returns whether there was a call to fail, and what came of it."""
    what = f"{call} {error} {step}"
    shutil.rmtree("state", ignore_errors=True)
    shutil.copytree("template", "state", ignore=shutil.ignore_patterns("socket"))
    pathlib.Path("struck").unlink(missing_ok=True)
    wanted = collections.defaultdict(lambda: {None}, {"before": {b"0"}})
    process, client = started("state", LD_PRELOAD=os.environ["QVS_TROUBLE_LIBRARY"], QVS_TROUBLE=what,
                              QVS_STRUCK=os.path.abspath("struck"))
    result = "served"
    if client is None:
        result = "not started"
    else:
        change(client, wanted)
        if whole:
            # A failure that is over leaves a daemon that serves.
            require(Client("state"), wanted, what)
    said = ended(process)
    assert client or said.startswith(b"qvs-hostd: "), (what, said)
    process, client = started("state")
    assert client, (what, process.communicate())
    require(client, wanted, what)
    ended(process)
    return os.path.exists("struck"), result


def failures(every):
    process, client = started("state")
    assert client.call(SWITCH_ADD, text("sw") + text("vswitch") + number(8) + number(105)) == number(0)
    assert client.call(PROP_SET, place("before") + text(b"0") + number(16)) == number(0)
    # What it has written last stands in the log of the database.
    process.kill()
    process.communicate()
    os.rename("state", "template")
    for call, error, rarer in FAILURES:
        # A daemon that gets no memory from then on answers nobody.
        for more in ("",) if call == "alloc" else ("", "+"):
            tried, stride = collections.Counter(), every * rarer
            step = stride if every > 1 else 1
            while True:
                struck, result = failing(call, error, f"{step}{more}", not more)
                if not struck:
                    break
                tried[result] += 1
                step += stride
            print(f"{call} {errno.errorcode[error]}{more and ' from then on'}: {sum(tried.values())} failures, {dict(tried)}", flush=True)


def pieces():
    """A session over sockets that take and give a few bytes at a time says the same."""
    said = []
    for name, more in ("plain", {}), ("short", {"LD_PRELOAD": os.environ["QVS_TROUBLE_LIBRARY"], "QVS_TROUBLE": "short"}):
        result = qvs_host("run", "--state", name, "--", "sh", "-c", SESSION, env=os.environ | more)
        assert not result.returncode, result
        said.append((result.stdout.replace(name, ""), result.stderr.replace(name, "")))
    assert said[0][0].count("\n") > 40, said[0]
    assert said[0] == said[1], said


if __name__ == "__main__":
    pieces()
    failures(int(sys.argv[1]) if len(sys.argv) > 1 else 7)
