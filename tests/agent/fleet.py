#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""fleet: rollouts over emulated hosts with a real store: waves, failures, crashes, drift, joining and leaving."""
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from members import Fleet, until  # noqa: E402


def wanted(vlan, port="web"):
    return f"switches:\n  sw1:\n    uplinks: [uplink0]\n    ports:\n      {port}:\n        vlan: {{id: {vlan}}}\n"


def vlan(member, port="web"):
    try:
        return json.loads(member.qvs("port", "vlan", "get", "sw1", port, "--json")).get("id")
    except json.JSONDecodeError:
        return None


def equal(found, expected, what):
    if found != expected:
        raise AssertionError(f"{what}: {found!r}, not {expected!r}")


def state(fleet):
    status = until(lambda: fleet.json("status"), "the store answers")
    return status["revision"], status["state"]


def settings(_):
    pathlib.Path("bad.yaml").write_text("endpoints: [http://x]\nlease: 1\nenforc: yes\n")
    example = subprocess.run(["qvs-agent", "config"], capture_output=True, text=True).stdout
    # Every line of the example is a setting with its default.
    pathlib.Path("example.yaml").write_text(re.sub(r"^#(\w+:)", r"\1", example, flags=re.M))
    for words, message in (
            (["--config", "bad.yaml"], "qvs-agent: bad.yaml:2:8: lease: 1 is below 2\n"
                                       "qvs-agent: bad.yaml:3:1: enforc: no such member; did you mean 'enforce'?\n"),
            (["--listen", "nope"], "qvs-agent: listen: 'nope' is not ADDRESS:PORT, such as 127.0.0.1:9476, or none\n"),
            (["--labels", "x"], "qvs-agent: labels: 'x' is not NAME=VALUE\n"),
            (["--host", "a/b"], "qvs-agent: host: 'a/b' is no name of letters, digits, dots and dashes\n"),
            (["--config", "example.yaml", "--listen", "none", "--endpoints", "ftp://x"],
             "qvs-agent: 'ftp://x' is no endpoint; write http://HOST:PORT or https://HOST:PORT\n")):
        run = subprocess.run(["qvs-agent", "run", *words, "--directory", f"{os.getcwd()}/unused"], capture_output=True,
                             text=True)
        equal((run.returncode, run.stderr), (2, message), words)


def waves_and_failures(fleet):
    a, b, c = fleet.members
    equal(fleet.run("status").returncode, 0, "status of an empty fleet")
    done = fleet.apply(wanted(10), "--canary", "1", "--batch", "1", "--message", "first")
    equal((done.returncode, "state:     done" in done.stdout.splitlines()), (0, True), "first revision")
    equal([vlan(one) for one in fleet.members], [10] * 3, "VLANs of the first revision")

    # The check of b refuses VLAN 20: what a has is taken back, what b has is undone, and c never had it.
    failed = fleet.apply(wanted(20), "--batch", "1", "--rollback-on-failure")
    equal(failed.returncode, 1, "second revision")
    equal(state(fleet), (2, "rolledBack"), "state of the second revision")
    equal([vlan(one) for one in fleet.members], [10] * 3, "VLANs after the second revision")
    equal([host["revision"] for host in fleet.hosts().values()], [1] * 3, "revisions after the second revision")
    host = fleet.hosts()["b"]
    equal((host["state"], host["problem"]), ("refused", "check: 'sh' has the exit status 1"), "what b says")
    equal("tries revision 2" in c.log(), False, "c tried the second revision")
    equal(b.get("/health").splitlines()[-1], "check: 'sh' has the exit status 1", "health of b")
    equal(a.get("/health").splitlines()[-1], "ok", "health of a")
    equal("qvs_agent_failures_total 1" in b.get("/metrics").splitlines(), True, "metrics of b")

    # Nor is it tried again.
    b.kill()
    b.start()
    until(lambda: "revision" in fleet.hosts()["b"], "b is back")
    equal(b.log().count("tries revision 2"), 1, "tries of the second revision")
    done = fleet.run("rollback", "1")
    equal((done.returncode, state(fleet)), (0, (3, "done")), "rollback")
    history = fleet.json("history")
    equal([(one["revision"], one["state"], one["copies"]) for one in history],
          [(1, "done", None), (2, "rolledBack", None), (3, "done", 1)], "history")


def documents(fleet):
    a, b, c = fleet.members
    pathlib.Path("all.yaml").write_text(wanted(30))
    pathlib.Path("group.yaml").write_text("group: left\nlabels: {side: left}\n" + wanted(31))
    pathlib.Path("host.yaml").write_text("host: b\n" + wanted(32))
    pathlib.Path("other.yaml").write_text("group: first\nlabels: {side: left}\n" + wanted(33))
    refused = fleet.run("apply", "all.yaml", "group.yaml", "other.yaml")
    equal((refused.returncode, refused.stderr),
          (2, "qvs-fleet: left and first disagree about switches.sw1.ports.web.vlan, and both are for host a\n"),
          "groups that disagree")
    plan = fleet.run("apply", "all.yaml", "group.yaml", "host.yaml", "--dry-run")
    equal((plan.returncode, plan.stdout),
          (0, "a:\n~ switches.sw1.ports.web.vlan: {id: 10} -> {id: 31}\n"
              "b:\n~ switches.sw1.ports.web.vlan: {id: 10} -> {id: 32}\n"
              "c:\n~ switches.sw1.ports.web.vlan: {id: 10} -> {id: 30}\n"), "plan")
    equal(fleet.run("apply", "all.yaml", "group.yaml", "host.yaml").returncode, 0, "documents")
    equal([vlan(one) for one in fleet.members], [31, 32, 30], "VLANs by document")
    # What a revision no longer names is cleared; what nobody named stays.
    a.qvs("port", "add", "sw1", "own")
    equal(fleet.apply("switches: {sw1: {}}").returncode, 0, "an empty revision")
    equal([vlan(one) for one in fleet.members], [None] * 3, "VLANs that no revision names")
    equal("own" in a.qvs("port", "list", "sw1", "--names").split(), True, "a port of others")
    equal(fleet.apply(wanted(10)).returncode, 0, "back")


def drift(fleet):
    a, b, _ = fleet.members
    a.qvs("port", "vlan", "set", "sw1", "web", "--id", "99")
    until(lambda: fleet.hosts()["a"]["drift"] == 1, "the drift is seen")
    equal(fleet.hosts()["a"]["differences"], ["~ switches.sw1.ports.web.vlan: {id: 99} -> {id: 10}"], "drift")
    equal(fleet.run("diff", "a").returncode, 4, "diff of a host that drifts")
    a.kill(signal.SIGTERM)
    a.start(enforce=True)
    until(lambda: vlan(a) == 10 and fleet.hosts()["a"]["drift"] == 0, "the drift is undone")
    equal(fleet.run("diff").returncode, 0, "diff of a fleet that does not drift")


def absence(fleet):
    a, b, c = fleet.members
    # One is drained, one is away: the rollout goes on without the first, and waits for the second.
    equal(fleet.run("drain", "c").stdout, "c: changed\n", "drain")
    equal(fleet.run("drain", "c").stdout, "c: unchanged\n", "drain again")
    b.kill()
    until(lambda: fleet.hosts()["b"]["state"] == "away", "b is away")
    rollout = subprocess.Popen(["qvs", "fleet", "apply", "wanted.yaml"], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL) if pathlib.Path("wanted.yaml").write_text(wanted(40)) else None
    until(lambda: vlan(a) == 40, "a has the revision")
    equal(fleet.apply(wanted(41)).returncode, 7, "a second rollout at once")
    equal(state(fleet)[1], "running", "state without b")
    b.start()
    equal(rollout.wait(timeout=30), 0, "rollout with b back")
    equal((vlan(b), vlan(c)), (40, 10), "VLANs of the one that was away and the one that is drained")
    equal(fleet.run("drain", "c", "--undo").stdout, "c: changed\n", "drain --undo")
    until(lambda: vlan(c) == 40, "c catches up")
    # A host that joins gets what the fleet has.
    d = fleet.add("d")
    until(lambda: vlan(d) == 40, "d joins")


def crashes(fleet):
    a, b, c, d = fleet.members
    # The agent is killed within a change: it is undone, and tried again.
    pathlib.Path("slow").touch()
    fleet.apply(wanted(50), "--detach")
    until(lambda: vlan(b) == 50, "b tries")
    b.kill()
    pathlib.Path("slow").unlink()
    b.start()
    until(lambda: state(fleet)[1] == "done", "the rollout goes on")
    equal([vlan(one) for one in fleet.members], [50] * 4, "VLANs after a crash")
    # The store is away, and an agent is killed: what was confirmed stays.
    fleet.store.kill(0)
    c.kill()
    c.start()
    time.sleep(2)
    equal(vlan(c), 50, "VLAN without a store")
    equal(c.get("/health").splitlines()[-1], "the store does not answer", "health without a store")
    fleet.store.start(0)
    until(lambda: fleet.hosts() and fleet.hosts()["c"]["state"] == "up", "c is back")
    # The coordinator is killed within a rollout.
    leader = next(one for one in fleet.members if one.name == fleet.json("status")["coordinator"])
    pathlib.Path("slow").touch()
    fleet.apply(wanted(60), "--batch", "1", "--detach")
    leader.kill()
    pathlib.Path("slow").unlink()
    leader.start()
    until(lambda: state(fleet)[1] == "done", "another agent coordinates", 60)
    equal([vlan(one) for one in fleet.members], [60] * 4, "VLANs after the loss of the coordinator")
    # The store goes away while a host tries a revision: it is undone, and not tried again.
    pathlib.Path("slow").touch()
    fleet.apply(wanted(70), "--canary", "1", "--detach")
    until(lambda: vlan(a) == 70, "a tries")
    fleet.store.kill(0)
    pathlib.Path("slow").unlink()
    until(lambda: vlan(a) == 60, "a goes back")
    fleet.store.start(0)
    until(lambda: state(fleet)[1] == "stopped", "the rollout is stopped", 60)
    equal(fleet.hosts()["a"]["problem"].split(":")[0], "store", "the step of a")


def lost_host(fleet):
    a = fleet.members[0]
    equal(fleet.run("rollback", str(fleet.json("status")["base"])).returncode, 0, "back")
    before = vlan(a)
    # The host ends while its change is checked, by a command that does not look at the switches.
    pathlib.Path("slow").touch()
    fleet.apply(wanted(80), "--canary", "1", "--detach")
    until(lambda: vlan(a) == 80, "a tries")
    subprocess.run(["qvs-host", "stop", "--state", "a"], check=True)
    pathlib.Path("slow").unlink()
    until(lambda: fleet.hosts()["a"]["state"] == "failing", "the status says that a is lost")
    host = fleet.hosts()["a"]
    equal((host["problem"].splitlines()[0], host["revision"]),
          ("no hypercore on this machine: the emulated host that this shell belongs to has ended",
           fleet.json("status")["base"]), "the problem of a")
    equal(fleet.json("status")["away"], ["a"], "hosts that the rollout waits for")
    equal(a.get("/health").splitlines()[-1].startswith("no hypercore"), True, "health of a")
    a.start_host()
    until(lambda: state(fleet)[1] == "done", "the rollout goes on", 60)
    equal((before, [vlan(one) for one in fleet.members]), (60, [80] * 4), "VLANs with the host back")


def old_revisions(fleet):
    a = fleet.members[0]
    first = fleet.json("status")["revision"]
    revisions = lambda: [one["revision"] - first for one in fleet.json("history")]  # noqa: E731
    fleet.apply(wanted(81))
    equal(revisions(), list(range(1 - first, 2)), "revisions before")
    # A drained host keeps revision 1 in the store; what else is behind the newest two goes.
    fleet.run("drain", "a")
    fleet.apply(wanted(82))
    fleet.apply(wanted(83), "--keep", "2")
    equal(revisions(), [1, 2, 3], "revisions that are kept")
    documents = fleet.store.control("get", "/qvs/v1/documents/", "--prefix", "--keys-only").stdout.split()
    equal(len(documents), 3, "documents that are kept")
    # Nobody knows what a host has that is away.
    fleet.run("drain", "a", "--undo")
    until(lambda: vlan(a) == 83, "a catches up")
    a.kill()
    until(lambda: fleet.hosts()["a"]["state"] == "away", "a is away")
    fleet.apply(wanted(84), "--keep", "1", "--max-unavailable", "1")
    equal(revisions(), [1, 2, 3, 4], "revisions while a host is away")
    a.start()
    until(lambda: fleet.hosts()["a"].get("revision") == first + 4, "a is back")
    fleet.apply(wanted(85), "--keep", "1")
    equal(revisions(), [4, 5], "the newest, and the one before it, to which the hosts may go back")
    equal([vlan(one) for one in fleet.members], [85] * 4, "VLANs without old revisions")


def main():
    with Fleet() as fleet:
        # b refuses VLAN 20, and is slow when it shall be.
        check = ["sh", "-c", "while test -e slow; do sleep 0.1; done"]
        refusing = ["sh", "-c", "while test -e slow; do sleep 0.1; done\nqvs export | grep -q 'vlan: {id: 20}' && exit 1; exit 0"]
        fleet.add("a", labels=["side=left"], check=check)
        fleet.add("b", check=refusing)
        fleet.add("c", check=check)
        until(lambda: len(fleet.hosts()) == 3, "three hosts register")
        for part in (settings, waves_and_failures, documents, drift, absence, crashes, lost_host, old_revisions):
            begin = time.monotonic()
            part(fleet)
            print(f"{part.__name__}: {time.monotonic() - begin:.1f} s")
    return 0


sys.exit(main())
