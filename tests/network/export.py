# SPDX-License-Identifier: Apache-2.0
"""Flow records of a host arrive at a collector, and at nfcapd where that is installed."""
import contextlib
import ipaddress
import json
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import time

WAIT = 20
STATE = pathlib.Path("state").absolute()
MAC = {"web": bytes.fromhex("020000000001"), "out": bytes.fromhex("020000000009")}


def host(verb, *words):
    return subprocess.run(["qvs-host", verb, "--state", STATE, *words], check=True, capture_output=True, text=True,
                          timeout=60).stdout


def qvs(*words):
    return host("run", "--", "qvs", *words)


def tcp(version, source, to, port, flags):
    segment = struct.pack(">HHIIBBHHH", port, 443, 1, 0, 0x50, flags, 1000, 0, 0) + b"x" * 100
    addresses = ipaddress.ip_address(source).packed + ipaddress.ip_address(to).packed
    if version == 4:
        packet = struct.pack(">BBHIBBH", 0x45, 0x2e, 20 + len(segment), 0, 64, 6, 0) + addresses + segment
    else:
        packet = struct.pack(">IHBB", 0x62e00000, len(segment), 6, 64) + addresses + segment
    return MAC["out"] + MAC["web"] + (b"\x08\x00" if version == 4 else b"\x86\xdd") + packet


class Collector:
    """Reads messages with the templates in them."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.settimeout(WAIT)
        self.port = self.socket.getsockname()[1]
        self.templates, self.sequence = {}, 0

    def records(self):
        message, _ = self.socket.recvfrom(65536)
        version, length, _, sequence, domain = struct.unpack_from(">HHIII", message)
        assert (version, length, sequence, domain) == (10, len(message), self.sequence, 7), message
        records, at = [], 16
        while at < length:
            number, size = struct.unpack_from(">HH", message, at)
            body, at = message[at + 4:at + size], at + size
            if number in (2, 3):
                self.read_templates(body, number == 3)
            else:
                records += self.read_records(body, self.templates[number])
        self.sequence += len(records)
        return records

    def read_templates(self, body, options):
        while body:
            number, count = struct.unpack_from(">HH", body)
            body = body[6 if options else 4:]
            self.templates[number] = [struct.unpack_from(">HH", body, 4 * i) for i in range(count)]
            body = body[4 * count:]

    @staticmethod
    def read_records(body, fields):
        while body:
            record = {}
            for number, size in fields:
                if size == 0xffff:
                    size, body = body[0], body[1:]
                record[number], body = body[:size], body[size:]
            yield record


@contextlib.contextmanager
def nfcapd():
    pathlib.Path("flows").mkdir()
    spare = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    spare.bind(("127.0.0.1", 0))
    port = spare.getsockname()[1]
    spare.close()
    process = subprocess.Popen(["nfcapd", "-b", "127.0.0.1", "-p", str(port), "-w", "flows", "-t", "3600"],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        yield port
    finally:
        process.send_signal(signal.SIGTERM)
        process.wait(WAIT)


def stats(*words):
    return json.loads(qvs("ipfix", "stats", "sw1", *words, "--json"))["fields"]


def main():
    collector = Collector()
    with contextlib.ExitStack() as stack:
        port = stack.enter_context(nfcapd()) if shutil.which("nfcapd") else collector.port
        collectors = f"127.0.0.1:{collector.port}" + ("" if port == collector.port else f",127.0.0.1:{port}")
        number = collectors.count(":")
        qvs("switch", "create", "sw1", "--uplinks", "1")
        qvs("port", "add", "sw1", "web")
        qvs("port", "vlan", "set", "sw1", "web", "--id", "20")
        qvs("port", "ipfix", "set", "sw1", "web", "--idle", "1", "--active", "3", "--obs-domain", "7", "--obs-id", "lab",
            "--collectors", collectors)
        for version, source, to in ((4, "10.0.0.1", "192.0.2.5"), (6, "2001:db8::1", "2001:db8::5")):
            for flags in (2, 0x10):
                host("send", "web", "--hex", tcp(version, source, to, 40000, flags).hex())
        found = collector.records()
        while sum(len(record) > 4 for record in found) < 2:
            found += collector.records()
        assert found[0] == {149: b"\0\0\0\7", 300: b"lab"}, found[0]
        four = next(record for record in found if 8 in record)
        six = next(record for record in found if 27 in record)
        expected = {8: "0a000001", 12: "c0000205", 4: "06", 5: "2e", 7: "9c40", 11: "01bb", 58: "0014", 61: "00",
                    56: "020000000001", 80: "020000000009", 6: "12", 2: "0000000000000002", 1: f"{2 * 140:016x}",
                    136: "01"}
        for element, value in expected.items():
            assert four[element].hex() == value, (element, four[element].hex())
        assert six[27] == ipaddress.ip_address("2001:db8::1").packed and six[1].hex() == f"{2 * 160:016x}", six
        begin = int.from_bytes(four[152], "big") / 1000
        assert abs(time.time() - begin) < WAIT, begin
        shown = stats("web")
        wanted = {"sampledPorts": 1, "collectors": number, "flowsBegun": 2, "flowsEndedIdle": 2, "flowsInTable": 0,
                  "framesSeen": 4, "framesSampled": 4, "recordsSent": 3 * number}
        assert {name: shown[name] for name in wanted} == wanted, shown
        assert stats() == shown, stats()
        # Every second frame. The record is for what was sampled; the options name the gap.
        qvs("port", "ipfix", "set", "sw1", "web", "--rate", "2")
        for _ in range(4):
            host("send", "web", "--hex", tcp(4, "10.0.0.1", "192.0.2.6", 40001, 2).hex())
        qvs("port", "ipfix", "clear", "sw1", "web")
        found = collector.records()
        assert found[0] == {302: bytes(7) + b"\1", 304: b"\0\1", 305: b"\0\0\0\1", 306: b"\0\0\0\1"}, found
        assert (found[-1][12].hex(), found[-1][2][-1], found[-1][136]) == ("c0000206", 2, b"\4"), found
        assert stats()["sampledPorts"] == 0
    if shutil.which("nfdump"):
        listed = subprocess.run(["nfdump", "-R", "flows", "-q", "-o", "fmt:%sa %da %sp %dp %pr %pkt %byt %svln", "-6"],
                                capture_output=True, text=True, check=True).stdout
        rows = sorted(" ".join(line.split()) for line in listed.splitlines())
        print("\n".join(rows))
        for row in ("10.0.0.1 192.0.2.5 40000 443 TCP 2 280", "2001:db8::1 2001:db8::5 40000 443 TCP 2 320"):
            assert any(each.startswith(row) for each in rows), rows


host("start", "--network")
try:
    main()
finally:
    host("stop")
