# SPDX-License-Identifier: Apache-2.0
"""Two hosts, wired by their NICs, check each other's VLANs and MTU, and know each other by LLDP."""
import json
import pathlib
import shutil
import subprocess
import time

WAIT = 20


def host(name, verb, *words):
    return subprocess.run(["qvs-host", verb, "--state", pathlib.Path(name).absolute(), *words], check=True,
                          capture_output=True, text=True, timeout=60).stdout


def qvs(name, *words):
    return host(name, "run", "--", "qvs", *words)


def eventually(wanted, what):
    deadline = time.monotonic() + WAIT
    while (found := what()) != wanted:
        assert time.monotonic() < deadline, (found, wanted)
        time.sleep(0.05)


def result(name, port):
    """The VLANs with an answer and those without, and the longest packet; None before the first result."""
    found = subprocess.run(["qvs-host", "run", "--state", pathlib.Path(name).absolute(), "--", "qvs", "health", "result",
                            "sw1", port], capture_output=True, text=True, timeout=60, check=False)
    if found.returncode != 0:
        return None
    lines = dict(line.split(":", 1) for line in found.stdout.splitlines())
    return [lines[key].strip() for key in ("VLANs trunked", "VLANs not trunked", "MTUs allowed")]


def neighbours(name):
    status = json.loads(host(name, "status", "--json"))["network"]
    return [(n["port"], n["nic"], n["portId"], n["portDescription"], n["systemName"], n["ttl"])
            for n in status["neighbours"]]


def wire():
    for name in "left", "right":
        qvs(name, "switch", "create", "sw1", "--uplinks", "2")
        qvs(name, "port", "add", "sw1", "web")
    qvs("left", "port", "vlan", "set", "sw1", "web", "--trunk", "10-12")
    for name, other in ("left", "right"), ("right", "left"):
        host(name, "attach", "sw1", "pnic0", "host", "--path", str(pathlib.Path(other).absolute()), "--peer", "pnic0")


def check():
    qvs("left", "uplink", "down", "sw1", "uplink1")
    qvs("left", "health", "vlan-mtu", "set", "sw1", "--interval", "1")
    eventually(["-", "10-12", "-"], lambda: result("left", "web"))  # the other end does not run the check
    qvs("right", "port", "vlan", "set", "sw1", "uplink0", "--trunk", "1-11")
    qvs("right", "health", "vlan-mtu", "set", "sw1", "--interval", "1")
    # A link that changes begins another round at once.
    qvs("left", "uplink", "down", "sw1", "uplink0")
    eventually(["-", "10-12", "-"], lambda: result("left", "web"))
    qvs("left", "uplink", "up", "sw1", "uplink0")
    eventually(["10-11", "12", "1280-1500"], lambda: result("left", "web"))
    # The left switch probes the VLANs of all its ports, its uplinks among them.
    eventually(["1-11", "12-4094", "1280-1500"], lambda: result("left", "uplink0"))
    qvs("left", "health", "vlan-mtu", "clear", "sw1")
    eventually(None, lambda: result("left", "web"))


def lldp():
    assert neighbours("left") == [], neighbours("left")
    qvs("left", "discovery", "set", "sw1", "--protocol", "lldp", "--operation", "advertise")
    qvs("right", "discovery", "set", "sw1", "--protocol", "lldp", "--operation", "listen")
    # A host that begins to listen waits for the next message; a link that comes sends one at once.
    qvs("left", "uplink", "down", "sw1", "uplink0")
    qvs("left", "uplink", "up", "sw1", "uplink0")
    eventually([("uplink0", "pnic0", "pnic0", "uplink0", "left", 120)], lambda: neighbours("right"))
    assert neighbours("left") == [], neighbours("left")
    assert "neighbour 02:" in host("right", "status"), host("right", "status")
    qvs("left", "discovery", "clear", "sw1")
    eventually([], lambda: neighbours("right"))


def decoded():
    """The message as tshark reads it, where that is installed."""
    if not shutil.which("tshark"):
        return
    pcap = pathlib.Path("lldp.pcap").absolute()
    host("right", "detach", "sw1", "pnic0")
    host("left", "detach", "sw1", "pnic0")
    host("left", "attach", "sw1", "pnic0", "capture", "--peer", str(pcap))
    qvs("left", "discovery", "set", "sw1", "--protocol", "lldp", "--operation", "advertise")
    eventually(True, lambda: pcap.exists() and pcap.stat().st_size > 60)
    fields = ["lldp.chassis.id.mac", "lldp.port.id", "lldp.time_to_live", "lldp.port.desc", "lldp.tlv.system.name",
              "lldp.tlv.system.desc", "_ws.expert.message"]
    words = [word for field in fields for word in ("-e", field)]
    shown = subprocess.run(["tshark", "-r", pcap, "-Y", "lldp", "-T", "fields", *words], capture_output=True, text=True,
                           check=True).stdout.splitlines()[0].split("\t")
    assert shown[0].startswith("02:") and shown[1:] == ["pnic0", "120", "uplink0", "left", "switch sw1", ""], shown


for each in "left", "right":
    host(each, "start", "--network")
try:
    wire()
    check()
    lldp()
    decoded()
finally:
    for each in "left", "right":
        host(each, "stop")
