# SPDX-License-Identifier: Apache-2.0
"""Carries out policy_table.py with the data path of a host, and compares it with the table in docs/datapath.md.

`rules.py --page` prints the lines of the page.
"""
import json
import os
import pathlib
import re
import select
import signal
import socket
import struct
import subprocess
import sys
import time

from hostile import Client, eventually
from policy_table import ELSEWHERE, ROWS

STATE = pathlib.Path("state").absolute()
LAYOUT = f"{os.environ.get('QVS_SOURCE')}/layouts/emulated.json"
NUMBERS = {"web": 1, "db": 2, "app": 3, "a": 0x61, "b": 0x62, "bad": 0xbad, "net": 0xee, "net1": 0xee, "out": 0xff}
PORTS = {"web": "web", "db": "db", "app": "app", "net": "pnic0", "net1": "pnic1"}
GROUPS = {"all": b"\xff" * 6, "group": bytes.fromhex("01005e010101")}
CLASS_OF = {"all": "broadcast", "group": "multicast"}
IGMP = {"JOIN": "01005e010101 {} 0800 4600002000000000010200000a000001ef010101940400001600f9fdef010101",
        "LEAVE": "01005e000002 {} 0800 4600002000000000010200000a000001e0000002940400001700f8fdef010101",
        "QUERY": "01005e000001 {} 0800 4600002000000000010200000a000001e0000001940400001100eeff00000000"}
LAB = {"network": True, "pnics": [{"name": "pnic0"}, {"name": "pnic1"}],
       # Frames of a port count while it has an attachment.
       "clients": [{"switch": "sw1", "port": name, "name": name, "mac": f"02:00:00:00:00:0{NUMBERS[name]}",
                    "attach": f"capture:,{name}.pcap"} for name in ("web", "db", "app")],
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
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          env={**os.environ, "QVS_LAYOUT": LAYOUT})
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
                results.add(found[2].strip() if direction == "sends" or row.policy.startswith("mirror")
                            else "web" in re.split(r"[ \[]", found[2]))
            # What a session copies does not show in the frames for its source.
            strict = direction == "receives" and not row.policy.startswith("mirror")
            wanted = results >= {True, False} if strict else len(results) > 1
            if not wanted:
                problems.append(f"{row.policy}: {direction} lacks {kind} frames that arrive or that do not")
    return problems


def request(**members):
    answer = json.loads(Client(STATE).control(json.dumps(members)))
    assert answer["ok"], answer
    return answer


def check(row):
    """What is different from the row, as texts."""
    receivers = begin(*row.setup)
    problems = [problem for step in row.sends + row.receives if (problem := perform(step, receivers))]
    for session in receivers.values():
        session.finish()
    counts = ", ".join(sorted(f"{each['port']} {each['reason']} {each['frames']}"
                              for each in request(op="drops", switch="sw1")["drops"]))
    wanted = ", ".join(sorted(row.counts.split(", "))) if row.counts else ""
    if counts != wanted:
        problems.append(f"drops: {counts}, not {wanted}")
    for words, text in row.tables:
        shown = re.sub(r" \(\w+\)(?=:)", "", " ".join(qvs(words).split()))
        text = re.sub("PORT (.*)", lambda found: qvs(f"port number sw1 {found[1]}").strip(), text)
        if text not in shown:
            problems.append(f"{words} lacks {text!r}:\n{shown}")
    return problems


def begin(*commands):
    request(op="reset")
    request(op="seed", lab=LAB)
    qvs(*BASE, *commands)
    return {name: Session(port) for name, port in PORTS.items()}


def malformed():
    """Frames of impossible forms are dropped with a reason, and disturb nobody."""
    receivers = begin()
    process = request(op="status")["network"]["process"]
    one, head = Session("web"), mac("db") + mac("web")
    bad = [head[:1], head, head + b"\x08", head + b"\x81\x00", head + b"\x81\x00\0\0", mac("db") + mac("all") + b"xx"]
    long = [head + b"\x88\xb5" + b"x" * size for size in (1501, 60000, 65522)]
    tags = [head + b"\x81\x00\0\7" * count + b"\x88\xb5xx" for count in (2, 50)]
    packets = [mac("group") + mac("web") + b"\x08\x00" + bytes([first]) + b"\xff" * size
               for first in (0x45, 0x4f, 0x40, 0x65) for size in (0, 3, 19, 40)]
    for data in bad + long + tags + packets:
        one.socket.send(data)
    one.finish()
    for session in receivers.values():
        session.taken()
    assert perform("web>db: db", receivers) is None
    assert request(op="status")["network"]["process"] == process
    listed = json.loads(host("drops", "--state", STATE, "sw1", "web", "--json"))
    assert listed == [{"switch": "sw1", "port": "web", "client": "web", "reason": reason, "frames": len(frames)}
                      for reason, frames in (("Malformed", bad), ("TooLong", long), ("Vlan", tags))], listed
    assert host("drops", "--state", STATE).split()[:10] == [
        "SWITCH", "PORT", "CLIENT", "REASON", "FRAMES", "sw1", "web", "web", "Malformed", "6"]


def killed():
    """A data path that is killed comes back with its policies, and requests are answered all the time."""
    begin("port vlan set sw1 web db --id 10")
    first = request(op="status")["network"]["process"]
    os.kill(first, signal.SIGKILL)
    began = time.monotonic()
    qvs("port vlan set sw1 app --id 10")
    assert time.monotonic() - began < 3
    eventually(lambda: request(op="status")["network"]["process"] not in (None, first))
    qvs("port vlan set sw1 app --id 11", "port vlan set sw1 app --id 10")
    receivers = {name: Session(port) for name, port in PORTS.items()}
    for step in "web>all: app db net[10]", "web>db[10]:":
        assert perform(step, receivers) is None, perform(step, receivers)


def addresses():
    """Ports without a given address differ between hosts, and keep theirs when the host starts again."""
    def start(state):
        host("start", "--state", state, "--network")
        done = subprocess.run(["qvs-host", "run", "--state", state, "--", "sh", "-c",
                               "qvs switch create sw1 >/dev/null; qvs port add sw1 p1 p2 >/dev/null; "
                               "for port in p1 p2; do qvs-host attach --state $0 sw1 $port capture --peer $port.pcap; "
                               "qvs port show sw1 $port; done", state],
                              capture_output=True, text=True, timeout=60, check=True,
                              env={**os.environ, "QVS_LAYOUT": LAYOUT})
        host("stop", "--state", state)
        return re.findall(r"mac: +(\S*:\S*)", done.stdout)

    one, other = start("one"), start("other")
    assert len(set(one + other)) == 4 and all(address.startswith("02:") for address in one + other), (one, other)
    assert start("one") == one


def cell(steps):
    """Frames that arrive, and those that do not."""
    shown = {True: [], False: []}
    for step in steps:
        found = re.match(r"(\w+(?:=\w+)?>[^:]*):(.*)", step)
        if found:
            receivers = found[2].strip()
            text = f"`{found[1]} → {receivers}`" if receivers else f"`{found[1]}`"
            shown[bool(receivers)] += [text] if text not in shown[bool(receivers)] else []
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
        malformed()
        killed()
    finally:
        host("stop", "--state", STATE)
    addresses()
    if problems:
        sys.exit("\n".join(problems))
    return None


main()
