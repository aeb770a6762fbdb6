#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""trust: users of a store with the permissions of docs/fleet.md, a host that was taken over, documents that were changed
in the store, a host that refuses to go back, a disk that was full, and requests that arrive late."""
import contextlib
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from links import Links  # noqa: E402
from members import Fleet, until  # noqa: E402

PREFIX = "/qvs/v1"
DOCUMENT = "switches:\n  sw1:\n    uplinks: [uplink0]\n    ports:\n      web:\n        vlan: {id: %d}\n"
# What an agent may write; a may coordinate, and b may not.
WRITES = {"a": ["status/a", "hosts/a", "head", "coordinator", "results/"], "b": ["status/b", "hosts/b"],
          "c": ["status/c", "hosts/c"], "d": ["status/d", "hosts/d"]}
CHECKS = {"a": "test -e stuck && qvs export | grep -q 'vlan: {id: 10}' && exit 1; exit 0",
          "b": "qvs export | grep -q 'vlan: {id: 20}' && sleep 0.5 && exit 1; exit 0"}


def vlan(member):
    return json.loads(member.qvs("port", "vlan", "get", "sw1", "web", "--json") or "{}").get("id")


def put(fleet, user, key, value="x"):
    return fleet.store.control("--user", f"{user}:{user}", "put", f"{PREFIX}/{key}", value).stderr


def secure(fleet):
    os.mkdir("private", 0o700)
    users = {"operator": [""], **WRITES}
    commands = ["user add root:root", "user grant-role root root"]
    for user, keys in users.items():
        pathlib.Path(f"private/{user}").write_text(user + "\n")
        commands += [f"user add {user}:{user}", f"role add {user}", f"user grant-role {user} {user}",
                     f"role grant-permission {user} read {PREFIX}/ --prefix"]
        for key in keys:
            whole = " --prefix" if key.endswith("/") or not key else ""
            commands.append(f"role grant-permission {user} readwrite {PREFIX}/{key}{whole}")
    for words in commands + ["auth enable"]:
        done = fleet.store.control(*words.split())
        assert done.returncode == 0, (words, done.stderr)
    pathlib.Path("fleet.yaml").write_text(json.dumps(
        {"endpoints": fleet.store.urls, "user": "operator", "passwordFile": "private/operator"}))
    for user, check in CHECKS.items():
        fleet.add(user, user=user, passwordFile=f"{os.getcwd()}/private/{user}", coordinate=user == "a",
                  check=["sh", "-c", check])
    until(lambda: len(fleet.hosts()) == 2, "the hosts register")


def permissions(fleet):
    done = fleet.apply(DOCUMENT % 10, "--canary", "1")
    assert (done.returncode, [vlan(one) for one in fleet.members]) == (0, [10, 10]), done.stderr
    keys = ["head", "coordinator", "results/1", "revisions/000000000001", "documents/x", "plans/x/a", "drained/a",
            "status/a", "status/b", "hosts/a", "hosts/b"]
    for user in CHECKS:
        for key in keys:
            if not key.startswith(tuple(WRITES[user])):
                error = put(fleet, user, key)
                assert "permission denied" in error, (user, key, error)


def host_that_was_taken_over(fleet):
    a, b = fleet.members
    b.kill()
    until(lambda: fleet.hosts()["b"]["state"] == "away", "b is away")
    assert put(fleet, "b", "status/b", '{"revision":"x"}') == put(fleet, "b", "hosts/b", "x") == ""
    host = fleet.hosts()["b"]
    assert (host["state"], host["problem"]) == (
        "failing", "the store has a status that cannot be read: the member revision is no number in its bounds"), host
    done = fleet.apply(DOCUMENT % 11, "--max-unavailable", "1")
    assert (done.returncode, vlan(a)) == (0, 11), done.stderr
    assert "qvs-fleet: warning: host b: the store has a host that cannot be read: it is not a JSON object\n" in done.stderr
    b.start()
    until(lambda: fleet.hosts()["b"]["state"] == "up" and vlan(b) == 11, "b is back")


def documents_that_were_changed(fleet):
    digest = hashlib.sha256(b"switches: {}\n").hexdigest()
    invalid = "switches: {sw1: {mtu: 5}}\n"
    for text, named, problem in (
            ("switches: {sw1: {}}\n", digest, f"the document {digest} was changed in the store"),
            (invalid, hashlib.sha256(invalid.encode()).hexdigest(), "all:1:23: switches.sw1.mtu: 5 is below 1280")):
        status = fleet.json("status")
        number = status["revision"] + 1
        revision = {"revision": number, "documents": [{"kind": "switch", "name": "all", "digest": named}], "waves": 1}
        put(fleet, "operator", f"documents/{named}", text)
        put(fleet, "operator", f"revisions/{number:012}", json.dumps(revision))
        put(fleet, "operator", "head", json.dumps({"revision": number, "base": status["base"], "state": "running"}))
        until(lambda: fleet.json("status")["state"] == "stopped", "the rollout is stopped")
        found = fleet.json("status")["reason"], [vlan(one) for one in fleet.members]
        assert found in ((f"{name}: fetch: {problem}", [11, 11]) for name in "ab"), found
        diff = fleet.run("diff")
        assert (diff.returncode, diff.stderr) == (1, f"qvs-fleet: {problem}\n"), diff


def host_that_refuses_to_go_back(fleet):
    a, b = fleet.members
    assert fleet.apply(DOCUMENT % 10).returncode == 0
    pathlib.Path("stuck").touch()
    # b refuses the VLAN 20, and then a refuses the way back: nobody waits for it, and its status tells why.
    assert fleet.apply(DOCUMENT % 20, "--canary", "1", "--rollback-on-failure").returncode == 1
    status, host = fleet.json("status"), fleet.hosts()["a"]
    found = status["state"], vlan(a), vlan(b), host["state"], host["revision"] - status["revision"], host["problem"]
    assert found == ("rolledBack", 20, 10, "refused", 0, "check: 'sh' has the exit status 1"), found
    assert a.get("/health").splitlines()[-1] == host["problem"]
    pathlib.Path("stuck").unlink()


def requests_that_arrive_late(fleet):
    links = [Links(fleet.store.urls) for _ in range(2)]
    # No keep-alive comes between, with this lease.
    fleet.members[0].kill()
    c = fleet.add("c", [link.urls[0] for link in links], lease=60, coordinate=False, user="c",
                  passwordFile=f"{os.getcwd()}/private/c")
    until(lambda: vlan(c) == 10 and fleet.hosts()["c"]["drift"] == 0, "c has the revision")
    used = re.findall(r"the store answers: (\S+)", c.log())[-1]
    kept = next(link for link in links if link.urls[0] == used)
    kept.cut()
    for number, drift in ((99, 1), (10, 0)):
        c.qvs("port", "vlan", "set", "sw1", "web", "--id", str(number))
        until(lambda: fleet.hosts()["c"]["drift"] == drift, f"the drift of c is {drift}")
    # The status with the drift arrives at last.
    kept.mend()
    time.sleep(1)
    assert fleet.hosts()["c"]["drift"] == 0


def disk_that_was_full(fleet):
    pathlib.Path("d-agent").mkdir(mode=0o700)
    if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k,mode=700", "none", "d-agent"]).returncode != 0:
        return print("without a full disk: a file system cannot be mounted")
    try:
        fleet.add("d", coordinate=False, user="d", passwordFile=f"{os.getcwd()}/private/d")
        until(lambda: "d" in fleet.hosts() and vlan(fleet.members[-1]) == 10, "d has the revision")
        with open("d-agent/full", "wb", buffering=0) as full, contextlib.suppress(OSError):
            while full.write(bytes(4096)):
                pass
        # The revision is taken back because of b, so that nothing is left that d could write.
        fleet.apply(DOCUMENT % 20, "--rollback-on-failure")
        assert (fleet.json("status")["state"], fleet.hosts()["d"]["state"]) == ("rolledBack", "failing")
        os.unlink("d-agent/full")
        until(lambda: fleet.hosts()["d"]["state"] == "up", "the status of d says that there is room again")
        fleet.members[-1].end()
    finally:
        subprocess.run(["umount", "--lazy", "d-agent"])


def main():
    with Fleet() as fleet:
        for part in (secure, permissions, host_that_was_taken_over, documents_that_were_changed,
                     host_that_refuses_to_go_back, disk_that_was_full, requests_that_arrive_late):
            begin = time.monotonic()
            part(fleet)
            print(f"{part.__name__}: {time.monotonic() - begin:.1f} s")
    return 0


sys.exit(main())
