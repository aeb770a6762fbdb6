#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""faults [--faults N] [--seed N] [--hosts N]: rollouts while agents, hosts and members of the store are killed and
stopped, networks are cut and slow, disks are full and clocks are moved.

Each round publishes a revision or two at once, some of which one host refuses, and meanwhile does something at random
moments. Then everything runs again, and each host must have exactly one whole revision: the one that its agent
remembers, that its status tells, and that the state of the rollout allows. No revision that was acknowledged is lost.
"""
import argparse
import collections
import contextlib
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from links import Links  # noqa: E402
from members import Fleet, until, QUIET  # noqa: E402

PORTS = [f"p{i}" for i in range(6)]
# Refuses the VLANs that end with the digit 9, and fails without a host.
CHECK = ["sh", "-c", "sleep 0.05; found=$(qvs port vlan get sw1 p5) && ! printf '%s\\n' \"$found\" | grep -q '^id:.*9$'"]
CLOCK = "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1"
KEPT = 5


def settings_of(name, vlan):
    return f"switches:\n  sw1:\n    uplinks: [uplink0]\n    ports:\n" + "".join(
        f"      {port}: {{vlan: {{id: {vlan}}}}}\n" for port in PORTS)


class Rollouts:
    """What operators publish, and what became of it."""

    def __init__(self, fleet, chance, counts):
        self.fleet = fleet
        self.chance = chance
        self.counts = counts
        self.names = [member.name for member in fleet.members]
        self.number = 0
        self.acknowledged = {}  # revision: message
        self.seen = {}

    def words(self):
        """A command that publishes another VLAN, now and then one that a host refuses."""
        self.number += 1
        vlan = 10 + (self.number * 10) % 4000 + self.chance.randrange(8)
        # The first revision is complete, so that there is one to go back to.
        bad = self.chance.choice(self.names) if self.number > 1 and self.chance.random() < 0.2 else ""
        files = [pathlib.Path("all%d.yaml" % (self.number % 2))]
        files[0].write_text(settings_of("", vlan))
        if bad:
            files.append(pathlib.Path("bad%d.yaml" % (self.number % 2)))
            files[1].write_text(f"host: {bad}\n" + settings_of(bad, vlan - vlan % 10 + 9))
        options = ["--batch", str(self.chance.randrange(1, len(self.names) + 1)), "--keep", str(KEPT)]
        options += self.chance.choice(([], ["--rollback-on-failure"]))
        message = f"{vlan} {bad}"
        return message, ["qvs", "fleet", "apply", *map(str, files), *options, "--message", message, "--detach", "--json"]

    def publish(self, at_once):
        """Returns how many were acknowledged."""
        begun = []
        for _ in range(at_once):
            message, words = self.words()
            begun.append((message, subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)))
        before = len(self.acknowledged)
        for message, process in begun:
            output, _ = process.communicate(timeout=60)
            if process.returncode == 0:
                revision = json.loads(output.splitlines()[-1])["revision"]
                if revision in self.acknowledged:
                    raise AssertionError(f"revision {revision} was acknowledged twice")
                self.acknowledged[revision] = message
                self.counts["document_that_one_host_refuses"] += not message.endswith(" ")
        return len(self.acknowledged) - before

    def read(self):
        for one in self.fleet.json("history"):
            self.seen[one["revision"]] = one["message"]
        for revision, message in self.acknowledged.items():
            if self.seen.get(revision) != message:
                raise AssertionError(f"revision {revision} was acknowledged as {message!r}: {self.seen.get(revision)!r}")

    def vlan(self, revision):
        return int(self.seen[revision].split()[0]) if revision in self.seen else None

    def refuses(self, revision, host):
        return self.seen[revision].endswith(f" {host}")


def chosen(fleet, chance):
    return chance.choice(fleet.members)


def pause(process, seconds):
    os.kill(process, signal.SIGSTOP)
    time.sleep(seconds)
    return lambda: os.kill(process, signal.SIGCONT)


def kill_agent(fleet, chance):
    member = chosen(fleet, chance)
    member.kill()
    return member.start


def stop_agent(fleet, chance):
    # The longest is longer than the lease.
    return pause(chosen(fleet, chance).agent(), chance.choice((0.1, 0.5, 4)))


def end_host(fleet, chance):
    member = chosen(fleet, chance)
    subprocess.run(["qvs-host", "stop", "--state", member.name], **QUIET)
    time.sleep(chance.random() / 2)
    return member.start_host


def kill_host(fleet, chance):
    member = chosen(fleet, chance)
    os.kill(member.host(), signal.SIGKILL)
    time.sleep(chance.random() / 2)
    return member.start_host


def stop_host(fleet, chance):
    return pause(chosen(fleet, chance).host(), chance.choice((0.1, 0.5, 2)))


def kill_member(fleet, chance, members=1):
    ended = chance.sample(range(3), members)
    for one in ended:
        fleet.store.kill(one)
    time.sleep(chance.random())
    return lambda: [fleet.store.start(one) for one in ended]


def kill_leader(fleet, _):
    leader = fleet.store.leader()
    fleet.store.kill(leader)
    return lambda: fleet.store.start(leader)


def kill_store(fleet, chance):
    return kill_member(fleet, chance, 3)


def stop_member(fleet, chance):
    return pause(chance.choice(fleet.store.processes).pid, chance.choice((0.2, 2)))


def stop_leader(fleet, chance):
    return pause(fleet.store.processes[fleet.store.leader()].pid, chance.choice((0.2, 2)))


def stop_store(fleet, chance):
    processes = [process.pid for process in fleet.store.processes]
    for process in processes:
        os.kill(process, signal.SIGSTOP)
    time.sleep(chance.choice((0.2, 4)))

    def go_on():
        for process in processes:
            # One that the other fault has killed keeps none of them stopped.
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGCONT)
    return go_on


def cut_network(fleet, chance):
    links = chosen(fleet, chance).links
    links.cut()
    time.sleep(chance.choice((0.3, 1.5, 4)))
    return links.mend


def slow_network(fleet, chance):
    links = chosen(fleet, chance).links
    # The longest is beyond the limit of a request.
    links.slow(chance.choice((0.05, 0.3, 0.7)))
    time.sleep(chance.random() * 2)
    return links.mend


def fill_disk(fleet, chance):
    file = pathlib.Path(f"{chosen(fleet, chance).name}-agent/full")
    with open(file, "wb", buffering=0) as full:
        try:
            while True:
                full.write(bytes(4096))
        except OSError:
            pass
    time.sleep(chance.random() * 2)
    return file.unlink


def move_clock(fleet, chance):
    clock = pathlib.Path(f"{chosen(fleet, chance).name}.clock")
    clock.write_text(chance.choice(("+3600", "-3600", "+864000", "-864000")))
    time.sleep(chance.random())
    return lambda: clock.write_text("+0")


def compact(fleet, chance):
    restart = chance.choice((kill_agent, stop_agent, cut_network))(fleet, chance)
    found = fleet.store.control("get", "nothing", "-w", "json").stdout
    if found:
        fleet.store.control("compact", str(json.loads(found)["header"]["revision"]))
    return restart


FAULTS = [kill_agent, stop_agent, end_host, kill_host, stop_host, kill_member, kill_leader, kill_store, stop_member,
          stop_leader, stop_store, cut_network, slow_network, fill_disk, move_clock, compact]


def vlans(member):
    found = json.loads(member.qvs("export", "--json") or "{}").get("switches", {}).get("sw1", {}).get("ports", {})
    return [found.get(port, {}).get("vlan", {}).get("id") for port in PORTS]


def wrong(fleet, rollouts):
    """What is not as it shall be at the end; nothing when each host has a whole revision, and its status tells which."""
    status, hosts = fleet.json("status"), fleet.hosts()
    if not status or status["state"] in ("running", "rollingBack"):
        return f"status {status}"
    rollouts.read()
    for member in fleet.members:
        host = hosts.get(member.name)
        if host is None or host["state"] not in ("up", "refused") or host["drift"] != 0:
            return f"host {member.name}: {host}"
        found = set(vlans(member))
        memory = json.loads(pathlib.Path(f"{member.name}-agent/memory.json").read_text())
        revision = host["revision"]
        if memory["trying"] or memory["applied"] != revision:
            return f"host {member.name}: {host}, on disk {memory}"
        allowed = {"done": revision == status["revision"],
                   "rolledBack": revision != status["revision"] or host["state"] == "refused"}
        if not allowed.get(status["state"], revision >= status["base"]):
            return f"host {member.name}: {host}, but {status}"
        vlan = rollouts.vlan(revision)
        if vlan and rollouts.refuses(revision, member.name):
            raise AssertionError(f"{member.name} has a revision that its check refuses")
        if found != {vlan}:
            return f"host {member.name}: VLANs {found}, but revision {revision} is {vlan}"
        if (member.get("/health").splitlines()[-1] == "ok") != (host["state"] == "up"):
            return f"host {member.name}: {host}, and {member.get('/health')}"
    kept = {one["revision"] for one in fleet.json("history")}
    used = {host["revision"] for host in hosts.values()} | {status["base"], status["revision"]}
    if not used <= kept | {0}:
        raise AssertionError(f"the revisions {used - kept} are in use, and not in the store")
    return None


def add_hosts(fleet, names):
    for name in names:
        disk = pathlib.Path(f"{name}-agent")
        disk.mkdir(mode=0o700)
        if fill_disk in FAULTS and subprocess.run(
                ["mount", "-t", "tmpfs", "-o", "size=128k,mode=700", "none", disk], **QUIET).returncode != 0:
            FAULTS.remove(fill_disk)
            print("without full disks: a file system cannot be mounted")
        pathlib.Path(f"{name}.clock").write_text("+0")
        environment = {}
        if os.path.exists(CLOCK) and not os.environ.get("QVS_SANITIZED"):
            environment = {"LD_PRELOAD": CLOCK, "FAKETIME_TIMESTAMP_FILE": os.path.abspath(f"{name}.clock"),
                           "FAKETIME_NO_CACHE": "1", "FAKETIME_DONT_FAKE_MONOTONIC": "1"}
        elif move_clock in FAULTS:
            FAULTS.remove(move_clock)
            print("without moved clocks: faketime is not installed, or the programs are sanitized")
        links = Links(fleet.store.urls)
        fleet.add(name, urls=links.urls, environment=environment, check=CHECK, requestLimit=1).links = links
    until(lambda: len(fleet.hosts()) == len(names), "the hosts register")


def meet(fleet, chance, counts):
    repairs = []
    for fault in chance.sample(FAULTS, 3):
        time.sleep(chance.random() * 0.3)
        try:
            repairs.append(fault(fleet, chance))
            counts[fault.__name__] += 1
        except (AssertionError, OSError, LookupError, ValueError, StopIteration):
            pass  # what the other fault has ended cannot be met by this one
    for repair in repairs:
        try:
            repair()
        except OSError:
            pass  # what was paused was killed, too


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--faults", type=int, default=20)
    parser.add_argument("--seed", type=int, default=None)
    parser.add_argument("--hosts", type=int, default=5)
    arguments = parser.parse_args()
    seed = arguments.seed if arguments.seed is not None else random.randrange(10**6)
    print(f"seed {seed}")
    names = [f"h{i}" for i in range(arguments.hosts)]
    chance = random.Random(seed)
    counts = collections.Counter()
    states = collections.Counter()
    try:
        with Fleet(members=3) as fleet:
            add_hosts(fleet, names)
            rollouts = Rollouts(fleet, chance, counts)
            while sum(counts.values()) < arguments.faults:
                at_once = 2 if rollouts.number and chance.random() < 0.3 else 1
                if not rollouts.publish(at_once):
                    time.sleep(0.2)
                    continue
                if at_once == 2:
                    counts["two_rollouts"] += 1
                if rollouts.number > 1:
                    meet(fleet, chance, counts)
                last = []
                until(lambda: not last.append(wrong(fleet, rollouts)) and last[-1] is None, lambda: last[-1], 90)
                states[fleet.json("status")["state"]] += 1
                print(f"{sum(counts.values())} faults, {sum(states.values())} rollouts", flush=True)
    finally:
        for name in names:
            subprocess.run(["umount", "--lazy", f"{name}-agent"], **QUIET)
        print(f"{sum(counts.values())} faults: {dict(sorted(counts.items()))}")
        print(f"{sum(states.values())} rollouts: {dict(states)}")
    return 0


sys.exit(main())
