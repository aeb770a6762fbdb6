# SPDX-License-Identifier: Apache-2.0
"""Carries out policy_table.py with the data path of a host, and compares it with the table in docs/datapath.md.

`rules.py --page` prints the lines of the page.
"""
import json
import os
import pathlib
import re
import select
import socket
import struct
import subprocess
import sys
import time

from hostile import Client
from policy_table import ELSEWHERE, ROWS

STATE = pathlib.Path("state").absolute()
NUMBERS = {"web": 1, "db": 2, "app": 3, "a": 0x61, "b": 0x62, "bad": 0xbad, "net": 0xee, "net1": 0xee, "out": 0xff}
PORTS = {"web": "web", "db": "db", "app": "app", "net": "pnic0", "net1": "pnic1"}
GROUPS = {"all": b"\xff" * 6, "group": bytes.fromhex("01005e010101")}
CLASS_OF = {"all": "broadcast", "group": "multicast"}
IGMP = {"JOIN": "01005e010101 {} 0800 4600002000000000010200000a000001ef010101940400001600f9fdef010101",
        "LEAVE": "01005e000002 {} 0800 4600002000000000010200000a000001e0000002940400001700f8fdef010101",
        "QUERY": "01005e000001 {} 0800 4600002000000000010200000a000001e0000001940400001100eeff00000000"}
LAB = {"network": True, "pnics": [{"name": "pnic0"}, {"name": "pnic1"}],
       "clients": [{"switch": "sw1", "port": name, "name": name, "mac": f"02:00:00:00:00:0{NUMBERS[name]}"}
                   for name in ("web", "db", "app")],
       "switches": [{"alias": "sw1", "version": 106, "uplinks": ["u0", "u1"], "ports": ["web", "db", "app"]}]}
BASE = ["teaming set sw1 --active u0,u1 --balance explicit --link-state on", "mcast mode set sw1 legacy"]


def mac(name):
    return GROUPS.get(name) or struct.pack(">HI", 0x0200, NUMBERS[name])


def frame_of(text):
    """The port of the sender and the bytes of a frame."""
    sender, source, to, tags, length = re.fullmatch(r"(\w+)(?:=(\w+))?>(\w+)((?:\[[\d.]+\])*)(?:\((\d+)\))?",
                                                    text).groups()
    tags = [tag.rpartition(".") for tag in re.findall(r"[\d.]+", tags)]
    data = mac(to) + mac(source or sender) + b"".join(
        struct.pack(">HH", 0x8100, int(priority or 0) << 13 | int(vlan)) for priority, _, vlan in tags)
    size = int(length or 46)
    if to == "group":
        packet = struct.pack(">BBHIBBH4s4s", 0x45, 0, size, 0, 64, 17, 0, bytes([10, 0, 0, 1]), bytes([239, 1, 1, 1]))
        return sender, data + b"\x08\x00" + packet.ljust(size, b"\0")
    return sender, data + b"\x88\xb5" + b"\xda" * size


class Session:
    def __init__(self, port):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self.socket.settimeout(10)
        self.socket.connect(str(STATE / "frames"))
        self.socket.send(f"attach\0sw1\0{port}".encode())
        answer = self.socket.recv(1000)
        assert answer == b"ok", answer

    def finish(self):
        """Returns when the data path has forwarded what was sent."""
        self.socket.send(b"")
        while self.socket.recv(1 << 17):
            pass
        self.socket.close()

    def taken(self):
        frames = []
        while select.select([self.socket], [], [], 0)[0]:
            frames.append(self.socket.recv(1 << 17))
        return frames


def tags_of(data):
    text, at = "", 12
    while data[at:at + 2] == b"\x81\x00":
        tag = struct.unpack_from(">H", data, at + 2)[0]
        text += f"[{f'{tag >> 13}.' if tag >> 13 else ''}{tag & 0xfff}]"
        at += 4
    return text


def qvs(*commands):
    script = "; ".join(f"qvs {words} || exit" for words in commands)
    done = subprocess.run(["qvs-host", "run", "--state", STATE, "--", "sh", "-c", script], timeout=60, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    assert done.returncode == 0, (commands, done.stdout)
    return done.stdout


def host(*words):
    done = subprocess.run(["qvs-host", *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=60, check=False)
    assert done.returncode == 0, (words, done.stdout)
    return done.stdout


def perform(step, receivers):
    """Carries out a line. Returns what happened instead of what it says, or nothing."""
    if step.startswith("SLEEP"):
        time.sleep(float(step.split()[1]))
        return None
    if ":" not in step or not re.match(r"\w+(=\w+)?>| *\w+ (JOIN|LEAVE|QUERY):", step):
        qvs(step)
        return None
    text, _, expected = step.partition(":")
    if ">" in text:
        sender, data = frame_of(text)
    else:
        sender, word = text.split()
        data = bytes.fromhex(IGMP[word].format(mac(sender).hex()))
    one = Session(PORTS[sender])
    one.socket.send(data)
    one.finish()
    came = sorted(name + tags_of(each) for name, session in receivers.items() for each in session.taken())
    # A client of the port that sends is no receiver.
    found = " ".join(came)
    return None if found == expected.strip() else f"{text}: {found or 'nothing'}, not {expected.strip() or 'nothing'}"


def is_complete(row):
    """Each class of frames arrives and does not arrive, in each direction."""
    problems = []
    for direction, steps in ("sends", row.sends), ("receives", row.receives):
        if not steps and row.only:
            continue
        for kind in row.classes:
            results = set()
            for step in steps:
                found = re.match(r"\w+(?:=\w+)?>(\w+)[^:]*:(.*)", step)
                if not found or CLASS_OF.get(found[1], "unicast") != kind:
                    continue
                results.add("web" in re.split(r"[ \[]", found[2]) if direction == "receives" else found[2].strip())
            wanted = results >= {True, False} if direction == "receives" else len(results) > 1
            if not wanted:
                problems.append(f"{row.policy}: {direction} lacks {kind} frames that arrive or that do not")
    return problems


def request(**members):
    answer = json.loads(Client(STATE).control(json.dumps(members)))
    assert answer["ok"], answer
    return answer


def check(row):
    """What is different from the row, as texts."""
    request(op="reset")
    request(op="seed", lab=LAB)
    qvs(*BASE, *row.setup)
    receivers = {name: Session(port) for name, port in PORTS.items()}
    problems = [problem for step in row.sends + row.receives if (problem := perform(step, receivers))]
    for session in receivers.values():
        session.finish()
    counts = ", ".join(sorted(f"{each['port']} {each['reason']} {each['frames']}"
                              for each in request(op="drops", switch="sw1")["drops"]))
    wanted = ", ".join(sorted(row.counts.split(", "))) if row.counts else ""
    if counts != wanted:
        problems.append(f"drops: {counts}, not {wanted}")
    for words, text in row.tables:
        shown = qvs(words)
        text = re.sub("PORT (.*)", lambda found: qvs(f"port number sw1 {found[1]}").strip(), text)
        if text not in shown:
            problems.append(f"{words} lacks {text!r}:\n{shown}")
    return problems


def cell(steps):
    """Frames that arrive, and those that do not."""
    shown = {True: [], False: []}
    for step in steps:
        found = re.match(r"(\w+(?:=\w+)?>[^:]*):(.*)", step)
        if found and f"`{found[1]}`" not in shown[bool(found[2].strip())]:
            shown[bool(found[2].strip())].append(f"`{found[1]}`")
    return shown


def page():
    lines = ["| Policy | Frames that arrive | Frames that do not | Reasons | Tables |", "|---|---|---|---|---|"]
    for row in ROWS:
        shown = cell(row.sends + row.receives)
        tables = dict.fromkeys(f"`{words.split(' sw1')[0]}`" for words, _ in row.tables)
        reasons = dict.fromkeys(f"`{each.split()[1]}`" for each in row.counts.split(", ") if each)
        lines.append("| " + " | ".join([row.policy, " ".join(shown[True]) or "-", " ".join(shown[False]) or "-",
                                        " ".join(reasons) or "-", " ".join(tables) or "-"]) + " |")
    lines += ["", "| Policy | Tests (`datapath.…`) |", "|---|---|"]
    return lines + [f"| {policy} | {tests} |" for policy, tests in ELSEWHERE]


def main():
    if sys.argv[1:] == ["--page"]:
        return print("\n".join(page()))
    problems = [problem for row in ROWS for problem in is_complete(row)]
    if "\n".join(page()) not in pathlib.Path(os.environ["QVS_SOURCE"], "docs/datapath.md").read_text():
        problems.append("docs/datapath.md has another table than `tests/network/rules.py --page` prints")
    host("start", "--state", STATE, "--network")
    try:
        problems += [f"{row.policy}: {problem}" for row in ROWS for problem in check(row)]
    finally:
        host("stop", "--state", STATE)
    if problems:
        sys.exit("\n".join(problems))
    return None


main()
