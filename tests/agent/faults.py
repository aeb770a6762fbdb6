#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""faults [--faults N] [--seed N]: rollouts while agents, hosts and members of the store are killed and stopped.

Each round publishes a revision, some of which one host refuses, and meanwhile does something at a random moment. Then
everything runs again, and each host must have exactly one whole revision: the one that its agent remembers, that its
status tells, and that the state of the rollout allows.
"""
import argparse
import collections
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from members import Fleet, until, QUIET  # noqa: E402

PORTS = [f"p{i}" for i in range(6)]
# Refuses the VLANs that end with the digit 9.
CHECK = ["sh", "-c", "sleep 0.05; ! qvs port vlan get sw1 p5 | grep -q '^id:.*9$'"]


def document(vlan, bad_host):
    text = "switches:\n  sw1:\n    uplinks: [uplink0]\n    ports:\n"
    text += "".join(f"      {port}: {{vlan: {{id: {vlan}}}}}\n" for port in PORTS)
    pathlib.Path("all.yaml").write_text(text)
    files = ["all.yaml"]
    if bad_host:
        bad = f"host: {bad_host}\nswitches:\n  sw1:\n    ports:\n"
        bad += "".join(f"      {port}: {{vlan: {{id: {vlan - vlan % 10 + 9}}}}}\n" for port in PORTS)
        pathlib.Path("bad.yaml").write_text(bad)
        files.append("bad.yaml")
    return files


def kill_agent(fleet, chance):
    member = chance.choice(fleet.members)
    member.kill()
    return member.start


def stop_agent(fleet, chance):
    process = chance.choice(fleet.members).agent()
    os.kill(process, signal.SIGSTOP)
    time.sleep(chance.choice((0.1, 0.5, 4)))
    return lambda: os.kill(process, signal.SIGCONT)


def end_host(fleet, chance):
    member = chance.choice(fleet.members)
    subprocess.run(["qvs-host", "stop", "--state", member.name], **QUIET)
    time.sleep(chance.random() / 2)
    return lambda: subprocess.run(["qvs-host", "start", "--state", member.name], check=True, **QUIET)


def kill_member(fleet, chance, members=1):
    chosen = chance.sample(range(3), members)
    for one in chosen:
        fleet.store.kill(one)
    time.sleep(chance.random())
    return lambda: [fleet.store.start(one) for one in chosen]


def kill_leader(fleet, _):
    leader = fleet.store.leader()
    fleet.store.kill(leader)
    return lambda: fleet.store.start(leader)


def kill_store(fleet, chance):
    return kill_member(fleet, chance, 3)


def stop_member(fleet, chance):
    process = chance.choice(fleet.store.processes).pid
    os.kill(process, signal.SIGSTOP)
    time.sleep(chance.choice((0.2, 2)))
    return lambda: os.kill(process, signal.SIGCONT)


def second_rollout(fleet, _):
    subprocess.run(["qvs", "fleet", "apply", "all.yaml", "--detach"], **QUIET)
    return lambda: None


def compact(fleet, chance):
    restart = kill_agent(fleet, chance)
    found = fleet.store.control("get", "nothing", "-w", "json").stdout
    if found:
        fleet.store.control("compact", str(json.loads(found)["header"]["revision"]))
    return restart


FAULTS = (kill_agent, stop_agent, end_host, kill_member, kill_leader, kill_store, stop_member, second_rollout, compact)


def vlans(member):
    found = json.loads(member.qvs("export", "--json") or "{}").get("switches", {}).get("sw1", {}).get("ports", {})
    return [found.get(port, {}).get("vlan", {}).get("id") for port in PORTS]


def check(fleet, wanted, refused):
    """Whether each host has a whole revision, and its status tells which."""
    status, hosts = fleet.json("status"), fleet.hosts()
    if not status or status["state"] in ("running", "rollingBack"):
        return False
    for member in fleet.members:
        host = hosts.get(member.name)
        if host is None or host["state"] == "away" or host["drift"] != 0:
            return False
        found = set(vlans(member))
        memory = json.loads(pathlib.Path(f"{member.name}-agent/memory.json").read_text())
        if memory["trying"] or memory["applied"] != host["revision"] or found != {wanted.get(host["revision"])}:
            return False
        if host["revision"] in refused.get(member.name, ()):
            raise AssertionError(f"{member.name} has a revision that its check refuses")
    return True


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--faults", type=int, default=20)
    parser.add_argument("--seed", type=int, default=None)
    arguments = parser.parse_args()
    seed = arguments.seed if arguments.seed is not None else random.randrange(10**6)
    print(f"seed {seed}")
    chance = random.Random(seed)
    counts = collections.Counter()
    states = collections.Counter()
    wanted = {}  # the VLAN of each revision
    refused = {}
    with Fleet(members=3) as fleet:
        for name in "abcde":
            fleet.add(name, check=CHECK, requestLimit=1)
        until(lambda: len(fleet.hosts()) == 5, "the hosts register")
        number = 0
        while sum(counts.values()) < arguments.faults:
            number += 1
            vlan = 10 + (number * 10) % 4000 + chance.randrange(8)
            # The first revision is complete, so that there is one to go back to.
            bad = chance.choice("abcde") if number > 1 and chance.random() < 0.2 else None
            options = ["--batch", str(chance.randrange(1, 6))] + chance.choice(([], ["--rollback-on-failure"]))
            applied = fleet.run("apply", *document(vlan, bad), *options, "--detach")
            if applied.returncode != 0:
                time.sleep(0.2)
                continue
            revision = fleet.json("status")["revision"]
            wanted[revision] = wanted[revision + 1] = vlan
            if bad:
                refused.setdefault(bad, set()).add(revision)
            repairs = []
            if number > 1:
                for fault in chance.sample(FAULTS, 2):
                    time.sleep(chance.random() * 0.3)
                    try:
                        repairs.append(fault(fleet, chance))
                        counts[fault.__name__] += 1
                    except (AssertionError, OSError, LookupError, ValueError, StopIteration):
                        pass  # what the other fault has ended cannot be met by this one
            for repair in repairs:
                try:
                    repair()
                except (OSError, subprocess.CalledProcessError):
                    pass  # the other repair has started it
            until(lambda: check(fleet, wanted, refused), f"revision {revision} is whole everywhere", 60)
            states[fleet.json("status")["state"]] += 1
            print(f"{sum(counts.values())} faults, {sum(states.values())} rollouts", flush=True)
    print(f"{sum(counts.values())} faults: {dict(sorted(counts.items()))}")
    print(f"{sum(states.values())} rollouts: {dict(states)}")
    return 0


sys.exit(main())
