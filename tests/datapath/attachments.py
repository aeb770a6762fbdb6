# SPDX-License-Identifier: Apache-2.0
"""Frames through the data path by each kind of attachment, and by the commands of qvs-host."""
import pathlib
import os
import shutil
import socket
import struct
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from switchd import BIN, WAIT, Process, Session, Stream, expect, frame, port, run_cases, switch  # noqa: E402


def stream():
    with Process() as path:
        attachment = {"port": 1, "kind": "Stream", "path": "vm1.socket"}
        path.configure(switch(port(1), port(2)), attachments=[attachment])
        path.wait_carrier(1, (False, ""))
        two = path.client(2)
        client = Stream(path.directory / "vm1.socket")
        path.wait_carrier(1, (True, ""))
        expect("another client", Stream(path.directory / "vm1.socket").socket.recv(1), b"")
        for piece in struct.pack(">I", 60), frame(2, 1)[:20], frame(2, 1)[20:] + struct.pack(">I", 60)[:2], \
                struct.pack(">I", 60)[2:] + frame(2, 1):
            client.socket.sendall(piece)
            time.sleep(0.02)
        for _ in range(2):
            expect("frame in pieces", two.next(), frame(2, 1))
        two.send(frame(1, 2))
        expect("frame back", client.next(), frame(1, 2))
        client.socket.sendall(b"GET / HTTP/1.1\r\n")
        path.wait_carrier(1, (False, ""))
        expect("logged", "sent a frame of 1195725856 bytes and is disconnected" in path.logged(), True)
        again = Stream(path.directory / "vm1.socket")
        path.wait_carrier(1, (True, ""))
        # The same attachment stays as it is; another one replaces it.
        path.configure(switch(port(1), port(2)), attachments=[attachment])
        again.send(frame(2, 1, b"again"))
        expect("second client", two.next(), frame(2, 1, b"again"))
        path.configure(switch(port(1), port(2)), attachments=[])
        expect("detached", again.socket.recv(1), b"")
        expect("file", (path.directory / "vm1.socket").exists(), False)


def datagram():
    with Process() as path:
        path.configure(switch(port(1), port(2)),
                       attachments=[{"port": 1, "kind": "Datagram", "path": "here", "peer": "there"}])
        two, watch = path.client(2), path.session("watch", "sw1", "port1", "out")
        expect("watching", watch.answer(), b"ok")
        two.send(frame(1, 2))
        expect("nobody listens yet", watch.next(), frame(1, 2))
        peer = Session.__new__(Session)
        peer.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        peer.socket.bind(str(path.directory / "there"))
        peer.socket.sendto(frame(2, 1), str(path.directory / "here"))
        expect("datagram in", two.next(), frame(2, 1))
        two.send(frame(1, 2, b"second"))
        expect("datagram out", peer.next(), frame(1, 2, b"second"))


def pcap(*frames, magic=0xa1b2c3d4, link=1, order="<"):
    head = struct.pack(order + "IHHiIII", magic, 2, 4, 0, 0, 65535, link)
    return head + b"".join(struct.pack(order + "IIII", 1, 2, len(each), len(each)) + each for each in frames)


def capture():
    frames = [frame(2, 1, bytes([i])) for i in range(100)]
    with Process() as path:
        (path.directory / "in").write_bytes(pcap(*frames, order=">"))
        path.configure(switch(port(1), port(2)), attachments=[{"port": 2, "kind": "Capture", "peer": "out"}])
        path.configure(switch(port(1), port(2)), attachments=[{"port": 2, "kind": "Capture", "peer": "out"},
                                                              {"port": 1, "kind": "Capture", "path": "in"}])
        deadline = time.monotonic() + WAIT
        out, size = path.directory / "out", 24 + 100 * (16 + 60)
        while out.stat().st_size < size and time.monotonic() < deadline:
            time.sleep(0.01)
        expect("size", out.stat().st_size, size)
        found = out.read_bytes()
        expect("head", found[:24], struct.pack("<IHHiIII", 0xa1b2c3d4, 2, 4, 0, 0, 262144, 1))
        expect("frames", [found[24 + i * 76 + 16:][:60] for i in range(100)], frames)


# What each file or name of an attachment is reported with.
PROBLEMS = {
    "pcap short": ({"kind": "Capture", "path": "file"}, b"abc", "is shorter than the head of a capture file"),
    "pcap other": ({"kind": "Capture", "path": "file"}, b"x" * 99, "is not a capture file in the pcap format"),
    "pcapng": ({"kind": "Capture", "path": "file"}, b"\x0a\x0d\x0d\x0a" * 9,
               'is in the pcapng format; convert it with "editcap -F pcap"'),
    "pcap link": ({"kind": "Capture", "path": "file"}, pcap(link=113), "does not hold Ethernet frames"),
    "pcap cut": ({"kind": "Capture", "path": "file"}, pcap(frame(2, 1))[:-5], "ends in the middle of frame 1"),
    "pcap length": ({"kind": "Capture", "path": "file"}, pcap() + b"\xff" * 16,
                    "is damaged: frame 1 would have 4294967295 bytes"),
    "pcap snapped": ({"kind": "Capture", "path": "file"}, pcap() + struct.pack("<IIII", 0, 0, 14, 60) + b"x" * 14,
                     "has 14 of the 60 bytes of frame 1; capture whole frames (tcpdump -s 0)"),
    "pcap absent": ({"kind": "Capture", "path": "nosuch"}, None, "No such file or directory"),
    "pcap directory": ({"kind": "Capture", "path": "."}, None, "is not a regular file; name a capture file"),
    "pcap overwritten": ({"kind": "Capture", "peer": "file"}, b"my thesis",
                         "is not a capture file that can be continued; remove it, or name another one"),
    "stream file": ({"kind": "Stream", "path": "file"}, b"my thesis",
                    "is there and is no socket; remove it, or name another path"),
    "stream served": ({"kind": "Stream", "path": "frames"}, None,
                      "another process serves"),
    "stream long": ({"kind": "Stream", "path": "x" * 120}, None,
                    "the path is longer than the 107 bytes a socket may have; name a shorter one"),
    "stream nowhere": ({"kind": "Stream", "path": "a/b"}, None, "No such file or directory"),
    "datagram long": ({"kind": "Datagram", "path": "a", "peer": "x" * 120}, None, "name a shorter one"),
    "host itself": ({"kind": "Host", "name": "nic0", "peer": "wire-nic0"}, None, "is both ends of the wire"),
    "tap long": ({"kind": "Tap", "name": "x" * 16}, None, ""),
    "namespace without name": ({"kind": "Namespace"}, None, "the attachment names no namespace"),
}


def problems():
    with Process() as path:
        for name, (attachment, contents, problem) in PROBLEMS.items():
            (path.directory / "file").unlink(missing_ok=True)
            if contents is not None:
                (path.directory / "file").write_bytes(contents)
            path.configure(switch(port(1)), attachments=[])
            path.carriers.clear()
            path.configure(switch(port(1)), attachments=[{"port": 1, **attachment}])
            deadline = time.monotonic() + 1
            while path.carriers.get(1, (True, ""))[0] and path.receive(deadline):
                pass
            up, found = path.carriers.get(1, (None, "no carrier was told"))
            expect(f"{name}: carrier", up, False)
            if problem not in found or not found:
                raise AssertionError(f"{name}: {found}")
            if contents is not None:
                expect(f"{name}: file", (path.directory / "file").read_bytes(), contents)


def two_hosts():
    """One wire between two hosts, whichever comes first, and after each of them came back."""
    def start(name, other):
        path = Process(name)
        path.configure(switch(port(1), port(2, uplink=True)),
                       attachments=[{"port": 2, "kind": "Host", "name": "nic0",
                                     "peer": str(pathlib.Path(other).absolute() / "wire-nic0")}])
        return path
    hosts = {"b": start("b", "a")}
    for name, other in ("a", "b"), ("b", "a"), ("a", "b"):
        if name in hosts:
            hosts[name].kill()
        hosts[name] = start(name, other)
        for each in hosts.values():
            each.wait_carrier(2, (True, ""))
        mine, theirs = hosts[name].client(1), hosts[other].client(1)
        sent = frame(None, 11 if name == "a" else 12)
        mine.send(sent)
        expect(f"from {name}", theirs.next(), sent)
    # A NIC that is taken down takes the link from the other one.
    for link in False, True:
        hosts["b"].configure(switch(port(1), port(2, uplink=True, link=link)))
        hosts["a"].wait_carrier(2, (link, ""))
    for each in hosts.values():
        each.stop()


def host(path, *words):
    done = subprocess.run([BIN / "qvs-host", words[0], "--state", path.directory, *words[1:]],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return done.returncode, done.stdout.replace(str(path.directory), "STATE")


def by_hand():
    """The commands that send frames and wait for them."""
    one = "ffffffffffff 020000000001 8100a005 0806 0001"
    line = "02:00:00:00:00:01 > ff:ff:ff:ff:ff:ff, VLAN 5 priority 5, type 0x0806, 20 bytes\n"
    trunk = {"vlan": {"trunk": True, "ranges": [{"first": 0, "last": 4094}]}}
    with Process() as path:
        path.configure(switch(port(1, **trunk), port(2, **trunk), port(3, blocked=True)))
        pathlib.Path("two").write_bytes(pcap(frame(2, 1), frame(None, 5)))
        send = [BIN / "qvs-host", "send", "--state", path.directory]
        two = ["02:00:00:00:00:01 > 02:00:00:00:00:02, type 0x88b5, 60 bytes\n",
               "02:00:00:00:00:05 > ff:ff:ff:ff:ff:ff, type 0x88b5, 60 bytes\n"]
        for words, found in {
            ("expect", "port2", "--", *send, "port1", "--hex", one): (0, line),
            ("expect", "vm2", "--count", "3", "--switch", "sw1", "--", *send, "port1", "--hex", one, "--count", "3"):
                (0, line * 3),
            ("expect", "port2", "--count", "2", "--pcap", "got", "--", *send, "vm1", "--pcap", "two"):
                (0, "".join(two)),
            ("expect", "port2", "--from", "02:00:00:00:00:05", "--", *send, "port1", "--pcap", "two"): (0, two[1]),
            ("expect", "port3", "--none", "--", *send, "port1", "--hex", one): (0, ""),
            ("expect", "port2", "--none", "--", *send, "port1", "--hex", one):
                (1, line + "qvs-host: a frame came to port2, and none was expected\n"),
            ("expect", "port2", "--timeout", "1", "--", "true"):
                (1, "qvs-host: 0 of 1 frames came to port2 within 1 s\n"),
            ("expect", "port2", "--", "false"): (125, "qvs-host: the command failed\n"),
            ("send", "port9", "--hex", one): (125, "qvs-host: no switch has a port or client port9\n"),
            ("send", "port1", "--pcap", "/dev/null"):
                (125, "qvs-host: /dev/null is not a regular file; name a capture file\n"),
        }.items():
            expect(words, host(path, *words), found)
        expect("capture file", [len(pathlib.Path("got").read_bytes())], [24 + 2 * 76])
    expect("without data path", host(path, "send", "port1", "--hex", one),
           (125, "qvs-host: no data path serves STATE/frames (Connection refused); run the host with --network\n"))


def enter(path, client, *command, **options):
    return subprocess.run([BIN / "qvs-host", "enter", "--state", path.directory, client, "--", *command],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)


ECHO = """
import socket, sys
peer = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
peer.bind(("10.9.0.2", 7)); print("ready", flush=True)
while True: data, sender = peer.recvfrom(70000); peer.sendto(data, sender)
"""
ASK = """
import socket, sys
own = socket.socket(socket.AF_INET, socket.SOCK_DGRAM); own.settimeout(5)
own.sendto(b"x" * int(sys.argv[1]), ("10.9.0.2", 7)); print(len(own.recv(70000)))
"""


RAW = """
import socket, sys
raw = socket.socket(socket.AF_PACKET, socket.SOCK_RAW); raw.bind(("eth0", 0)); raw.send(bytes.fromhex(sys.argv[1]))
"""


def asked(path, size):
    return enter(path, "vm1", sys.executable, "-c", ASK, str(size)).stdout.strip()


def namespaces():
    attachments = [{"port": n, "kind": "Namespace", "name": f"vm{n}", "mac": {"bytes": [2, 0, 0, 0, 0, n]}}
                   for n in (1, 2)]
    if shutil.which("ip") is None:
        print("skipped namespaces: ip (Debian: iproute2) is not installed")
        return
    with Process() as path:
        path.configure(switch(port(1), port(2), port(3)), attachments=attachments)
        while 1 not in path.carriers and path.receive(time.monotonic() + WAIT):
            pass
        if "forbids network namespaces" in path.carriers[1][1]:
            print("skipped namespaces:", path.carriers[1][1])
            return
        for n in (1, 2):
            path.wait_carrier(n, (True, ""))
            expect("address", enter(path, f"vm{n}", "ip", "address", "add", f"10.9.0.{n}/24", "dev", "eth0").stdout, "")
        if os.path.isdir("/sys/class/net"):
            expect("/sys", enter(path, "vm1", "ls", "/sys/class/net").stdout.split(), ["eth0", "lo"])
        unknown = enter(path, "vm9", "true")
        expect("unknown client", (unknown.returncode, unknown.stdout),
               (125, "qvs-host: no client has the network namespace vm9; there are: vm1, vm2\n"))
        echo = subprocess.Popen([BIN / "qvs-host", "enter", "--state", path.directory, "vm2", "--", sys.executable,
                                 "-c", ECHO], stdout=subprocess.PIPE)
        try:
            echo.stdout.readline()
            for size in 10, 40000:
                expect("through the switch", asked(path, size), str(size))
            # A tag that the kernel takes out of a frame is in it again.
            watch = path.session("watch", "sw1", "port1", "in")
            expect("watching", watch.answer(), b"ok")
            tagged = frame(9, 1, b"", 0x8100)[:14] + bytes.fromhex("a00588b5") + b"tagged".ljust(46)
            enter(path, "vm1", sys.executable, "-c", RAW, tagged.hex())
            found = []
            while (data := watch.next()) is not None:
                found += [data] if data[:6] == tagged[:6] else []
            expect("tag", found, [tagged])
            expect("carrier", enter(path, "vm1", "ip", "link", "set", "eth0", "down").stdout, "")
            path.wait_carrier(1, (False, ""))
            enter(path, "vm1", "ip", "link", "set", "eth0", "up")
            path.wait_carrier(1, (True, ""))
            # An attachment that changes keeps its interface.
            attachments[0]["mtu"] = 9000
            path.configure(switch(port(1), port(2), mtu=9000), attachments=attachments)
            path.wait_carrier(1, (True, ""))
            expect("changed", asked(path, 10), "10")
            expect("MTU", enter(path, "vm1", "cat", "/sys/class/net/eth0/mtu").stdout, "9000\n")
            # The namespaces, their addresses and what runs in them outlive the data path.
            path.kill()
            with Process(kept=list(path.kept.items()), memory=path.memory) as again:
                again.configure(switch(port(1), port(2)), attachments=attachments)
                for n in (1, 2):
                    again.wait_carrier(n, (True, ""))
                expect("after a restart", asked(again, 10), "10")
                again.configure(switch(port(1), port(2)), attachments=attachments[1:])
                expect("detached", enter(again, "vm1", "true").stdout,
                       "qvs-host: no client has the network namespace vm1; there are: vm2\n")
                again.wait_carrier(2, (True, ""))
                expect("kept", sorted(again.kept), sorted({*path.kept} - {"client vm1"}))
        finally:
            echo.kill()
            echo.wait()


run_cases(stream, datagram, capture, problems, two_hosts, by_hand, namespaces)
