#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""model: checks the protocol of rollouts (docs/fleet.md) in all schedules of a small fleet.

Three hosts, the first of which is the canary, two operators who each want to publish a revision, two agents that may
coordinate. Any process may crash or stop between any two of its steps, the check on any host may fail, and any message
may not arrive. Hosts that do the same are interchangeable, which keeps the number of states small.

Then each safeguard of the protocol is left out in turn: the search must find what it protects from.

Rollouts that are rolled back have the most states: they are searched with two hosts, and with three by --all, which takes
a minute.
"""
import sys
from collections import namedtuple

# The record that all agents watch. `state`: running, stopped, done, rollingBack, rolledBack.
Head = namedtuple("Head", "revision base wave state ended")
# What a host has on disk, and what its agent does. `config` is what the switches have: a revision, or HALF within a
# change. `journal` is what the change is undone to. `phase` is lost in a crash, everything else is not.
Host = namedtuple("Host", "config journal applied trying refused phase status")
HALF = -1
GONE = None  # the status of a host whose lease has ended

LAST = 1
FRESH = Host(0, None, 0, None, frozenset(), "idle", (0, None))


class Violation(Exception):
    pass


def require(holds, what):
    if not holds:
        raise Violation(what)


class Model:
    def __init__(self, rolls_back, waves=(0, 1, 1), without=None):
        self.waves = waves
        self.rolls_back = rolls_back
        self.without = without

    def has(self, safeguard):
        return self.without != safeguard

    # --- what agents decide ---

    def wanted(self, head, index, host):
        """The revision that the fleet wants on a host."""
        if head.state in ("rollingBack", "rolledBack"):
            return head.base if host.applied == head.revision else max(host.applied, head.base)
        return head.revision if self.waves[index] <= head.wave else max(host.applied, head.base)

    def goal(self, head, index, host):
        """The revision that a host should have."""
        wanted = self.wanted(head, index, host)
        return host.applied if self.has("refusal") and wanted in host.refused else wanted

    def truth(self, head, index, host):
        """The status that a host reports: the revision that it has, and what it has refused: the one that is wanted now,
        or the published one."""
        wanted = self.wanted(head, index, host) if self.has("report") else head.revision
        refused = (one for one in (wanted, head.revision) if one in host.refused and one != host.applied)
        return (host.applied, next(refused, None))

    def host_steps(self, head, index, host):
        phase, trying = host.phase, host.trying
        if phase == "idle":
            wanted = self.goal(head, index, host)
            if wanted != host.applied:
                yield host._replace(config=HALF, journal=host.config, trying=wanted, phase="changing")
            if host.status != self.truth(head, index, host):
                yield host._replace(status=self.truth(head, index, host))
        elif phase == "changing":
            yield host._replace(config=trying, phase="trial")
        elif phase == "trial":
            # The check fails, or the store does not answer.
            yield host._replace(refused=host.refused | {trying}, phase="refused")
            # The status is written only while the store still wants this revision here.
            if not self.has("open") or self.goal(head, index, host) == trying:
                applied = trying if not self.has("order") else host.applied
                yield host._replace(phase="agreed", applied=applied)
            else:
                yield self.undone(host)
        elif phase == "refused":
            yield self.undone(host)
        elif phase == "agreed":
            yield host._replace(journal=None, phase="confirmed")
            # The time to confirm was over, and another program has undone the change.
            yield host._replace(refused=host.refused | {trying}, phase="refused")
        elif phase == "confirmed":
            yield host._replace(applied=trying, trying=None, phase="idle")
        if phase == "crashed":
            yield self.restarted(host)
        else:
            yield host._replace(phase="crashed")
        if phase == "crashed" and host.status is not GONE:
            yield host._replace(status=GONE)

    @staticmethod
    def undone(host):
        return host._replace(config=host.journal, journal=None, trying=None, phase="idle")

    def restarted(self, host):
        if host.journal is not None and self.has("journal"):
            host = self.undone(host)
        elif host.trying is not None and host.config == host.trying and self.has("comparison"):
            host = host._replace(applied=host.trying)
        return host._replace(trying=None, journal=None, phase="idle")

    # --- what the coordinator decides ---

    def decision(self, head, hosts):
        """The next head, or None while there is nothing to do."""
        statuses = [host.status for host in hosts]
        if head.state == "rollingBack":
            if any(status and status[0] == head.revision and status[1] != head.base for status in statuses):
                return None
            return head._replace(state="rolledBack", ended=head.ended | {head.revision})
        if head.state != "running":
            return None
        opened = [status for wave, status in zip(self.waves, statuses) if wave <= head.wave]
        if any(status and status[1] == head.revision for status in opened):
            if self.rolls_back:
                return head._replace(state="rollingBack")
            return head._replace(state="stopped", ended=head.ended | {head.revision})
        counted = opened if self.has("missing") else [status for status in opened if status]
        if not all(status and status[0] == head.revision for status in counted):
            return None
        if head.wave < LAST:
            return head._replace(wave=head.wave + 1)
        return head._replace(state="done", base=head.revision, ended=head.ended | {head.revision})

    def check_advance(self, head, after, hosts):
        if after.wave > head.wave or after.state == "done":
            for wave, host in zip(self.waves, hosts):
                require(wave > head.wave or host.applied == head.revision, "a wave was passed that is not done")

    def coordinator_steps(self, head, hosts, plans, holder):
        for me in (0, 1):
            others = plans[1 - me]
            pair = (lambda plan, me=me, others=others: (plan, others) if me == 0 else (others, plan))
            if plans[me] is None:
                after = self.decision(head, hosts)
                if after is not None and holder == me:
                    yield head, pair((head, after)), holder
            else:
                seen, after = plans[me]
                # The transaction compares the record that was seen, and the lease of the coordinator.
                if (seen == head and holder == me) or not self.has("transaction"):
                    self.check_advance(head, after, hosts)
                    yield after, pair(None), holder
                else:
                    yield head, pair(None), holder
        yield head, plans, 1 - holder

    # --- what operators do ---

    def operator_steps(self, head, operators):
        for me in (0, 1):
            change = (lambda state, me=me: tuple(state if i == me else old for i, old in enumerate(operators)))
            state = operators[me]
            if state == "new" and head.state not in ("running", "rollingBack"):
                yield head, change(head)
            elif isinstance(state, Head):
                if state == head or not self.has("publication"):
                    require(head.revision in head.ended, "a rollout was replaced before its end")
                    yield Head(state.revision + 1, state.base, 0, "running", head.ended), change("published")
                else:
                    yield head, change("lost")

    # --- the search ---

    def successors(self, state):
        head, hosts, plans, holder, operators = state
        for index, host in enumerate(hosts):
            for after in self.host_steps(head, index, host):
                changed = hosts[:index] + (after,) + hosts[index + 1:]
                yield head, changed, plans, holder, operators
        for now, changed, who in self.coordinator_steps(head, hosts, plans, holder):
            yield now, hosts, changed, who, operators
        for now, changed in self.operator_steps(head, operators):
            yield now, hosts, plans, holder, changed

    def canonical(self, state):
        head, hosts, plans, holder, operators = state
        first, *rest = hosts
        rest.sort(key=repr)
        if self.has("transaction"):
            # What was planned for another record will be refused, whenever that is.
            plans = tuple(None if plan and plan[0] != head else plan for plan in plans)
            if holder == 1:
                plans, holder = (plans[1], plans[0]), 0
        if self.has("publication"):
            operators = tuple("lost" if isinstance(one, Head) and one != head else one for one in operators)
            operators = tuple(sorted(operators, key=repr))
        return head, (first, *rest), plans, holder, operators

    def is_settled(self, head, index, host):
        return (host.phase == "idle" and host.status == self.truth(head, index, host)
                and self.goal(head, index, host) == host.applied)

    def check(self, state):
        head, hosts = state[:2]
        if head.state in ("running", "rollingBack") and all(self.is_settled(head, *one) for one in enumerate(hosts)):
            require(self.decision(head, hosts) is not None, "a rollout waits, and nobody will do anything")
        for host in hosts:
            if host.config == HALF:
                require(host.journal is not None, "a host is between two revisions, and nothing can undo that")
            if host.phase == "idle":
                require(host.config == host.applied, "a host does not have the revision that its agent remembers")
            if host.phase in ("changing", "trial", "agreed", "confirmed"):
                require(host.trying not in host.refused, "a host tries a revision again that it has refused")

    def search(self):
        hosts = (FRESH,) * len(self.waves)
        start = self.canonical((Head(0, 0, LAST, "done", frozenset({0})), hosts, (None, None), 0, ("new", "new")))
        seen = {start}
        waiting = [start]
        ends = set()
        while waiting:
            state = waiting.pop()
            head = state[0]
            ends.add((head.revision, head.state))
            for after in self.successors(state):
                after = self.canonical(after)
                if after not in seen:
                    self.check(after)
                    seen.add(after)
                    waiting.append(after)
        return len(seen), ends


SAFEGUARDS = ("journal", "comparison", "refusal", "order", "missing", "transaction", "publication", "report")


def main():
    most = (0, 1, 1)
    for rolls_back, waves in ((False, most), (True, most if "--all" in sys.argv else (0, 1))):
        count, ends = Model(rolls_back, waves).search()
        wanted = {"running", "done"} | ({"rollingBack", "rolledBack"} if rolls_back else {"stopped"})
        assert {state for revision, state in ends if revision == 2} == wanted, ends
        print(f"{len(waves)} hosts, rollback {rolls_back}: {count} states, no violation")
    for safeguard in SAFEGUARDS:
        try:
            Model(safeguard == "report", (0, 1) if safeguard == "report" else most, safeguard).search()
        except Violation as violation:
            print(f"without {safeguard}: {violation}")
        else:
            print(f"without {safeguard}: nothing was found")
            return 1
    return 0


sys.exit(main())
