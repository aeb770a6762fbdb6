# SPDX-License-Identifier: Apache-2.0
"""Protocol stacks of real kernels and programs: clients in namespaces on three hosts that are wired to each other.

`web` is on an access port of the host left; `far` behind the uplinks of left and right; `inner` on a switch of the
host inner, whose NIC is wired to a trunk port of left, as a virtual switch in a guest would be.
"""
import json
import pathlib
import shutil
import socket
import subprocess
import sys
import time

CLIENTS = {"web": ("left", 1), "far": ("right", 2), "inner": ("inner", 3)}
VLAN = 10


def host(*words, **options):
    return subprocess.run(["qvs-host", *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=60, check=False, **options)


def qvs(name, *words):
    done = host("run", "--state", name, "--", "qvs", *words)
    assert done.returncode == 0, (words, done.stdout)


def within(client, *command):
    return ["qvs-host", "enter", "--state", CLIENTS[client][0], client, "--", *command]


def enter(client, *command):
    done = subprocess.run(within(client, *command), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=60, check=False)
    assert done.returncode == 0, (client, command, done.stdout)
    return done.stdout


def client(name, mac, attach):
    return {"switch": "sw1", "port": name, "name": name, "mac": f"02:00:00:00:00:{mac:02x}", "attach": attach}


def lab(wire, *clients):
    return {"network": True, "pnics": [{"name": "pnic0", "mtu": 9000, "attach": f"host:../{wire}"}],
            "switches": [{"alias": "sw1", "uplinks": ["u0"], "ports": [each["port"] for each in clients]}],
            "clients": list(clients)}


LABS = {
    "left": lab("right/pnic0", client("web", 1, "namespace"), client("trunk", 9, "host:../inner/pnic0")),
    "right": lab("left/pnic0", client("far", 2, "namespace")),
    "inner": lab("left/trunk", client("inner", 3, "namespace")),
}


def start():
    for name, description in LABS.items():
        pathlib.Path(f"{name}.json").write_text(json.dumps(description))
        done = host("start", "--state", name, "--lab", f"{name}.json")
        assert done.returncode == 0, done.stdout
        qvs(name, "mtu", "set", "sw1", "9000")
    status = host("status", "--state", "left").stdout
    if "forbids" in status:
        print("skipped:", next(line for line in status.splitlines() if "forbids" in line).strip())
        sys.exit(77)
    for name, (state, _) in CLIENTS.items():
        qvs(state, "port", "vlan", "set", "sw1", name, "--id", str(VLAN))
    qvs("left", "port", "vlan", "set", "sw1", "trunk", "--trunk", "10-20")
    # Behind the trunk are addresses that are not those of its adapter.
    qvs("left", "port", "mac-learning", "set", "sw1", "trunk", "--learning", "on", "--flooding", "on")
    deadline = time.monotonic() + 10
    while any("carrier down" in host("status", "--state", name).stdout for name in LABS):
        assert time.monotonic() < deadline, [host("status", "--state", name).stdout for name in LABS]
        time.sleep(0.05)
    for name, (_, number) in CLIENTS.items():
        enter(name, "sh", "-c", f"echo 0 >/proc/sys/net/ipv6/conf/eth0/accept_dad; "
              f"ip address add 10.0.0.{number}/24 dev eth0; ip address add fd00::{number}/64 dev eth0 nodad")


def ping():
    """Small and jumbo packets of both families reach both neighbours; one byte more does not fit."""
    for to in 2, 3:
        for address, headers in (f"10.0.0.{to}", 28), (f"fd00::{to}", 48):
            for size in 56, 9000 - headers:
                enter("web", "ping", "-c", "2", "-i", "0.02", "-w", "5", "-M", "do", "-s", str(size), address)
            done = subprocess.run(within("web", "ping", "-c", "1", "-M", "do", "-s", str(9001 - headers), address),
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
            assert done.returncode == 1 and "too long" in done.stdout, done.stdout
    # Nothing reaches a client in another VLAN.
    qvs("left", "port", "vlan", "set", "sw1", "trunk", "--trunk", "11-20")
    done = subprocess.run(within("web", "ping", "-c", "2", "-i", "0.02", "-W", "1", "10.0.0.3"),
                          stdout=subprocess.PIPE, text=True, check=False)
    assert ", 0 received" in done.stdout, done.stdout
    qvs("left", "port", "vlan", "set", "sw1", "trunk", "--trunk", "10-20")


def discovery():
    """Neighbour discovery finds the addresses, and the link-local ones of everybody."""
    neighbours = json.loads(enter("web", "ip", "-json", "-6", "neighbour", "show", "dev", "eth0"))
    found = {each["dst"]: each.get("lladdr") for each in neighbours}
    for number in 2, 3:
        assert found[f"fd00::{number}"] == f"02:00:00:00:00:{number:02x}", found
    answers = enter("web", "ping", "-c", "2", "-i", "0.5", "ff02::1%eth0")
    assert len({line.split()[3] for line in answers.splitlines() if "bytes from fe80" in line}) >= 3, answers


SERVE = """
import hashlib, socket
server = socket.create_server(("", 7)); print("ready", flush=True)
peer, _ = server.accept(); digest = hashlib.sha256()
while data := peer.recv(1 << 20): digest.update(data)
peer.sendall(digest.digest())
"""
SEND = """
import hashlib, random, socket, sys
data = random.Random(1).randbytes(8 << 20)
peer = socket.create_connection((sys.argv[1], 7)); peer.sendall(data); peer.shutdown(socket.SHUT_WR)
answer = b""
while part := peer.recv(32): answer += part
print(answer == hashlib.sha256(data).digest())
"""


def packets(state, port):
    done = host("run", "--state", state, "--", "qvs", "port", "stats", "sw1", port, "--json")
    assert done.returncode == 0, done.stdout
    return json.loads(done.stdout)[0]


def transfer(to):
    server = subprocess.Popen(within(to, sys.executable, "-c", SERVE), stdout=subprocess.PIPE)
    try:
        server.stdout.readline()
        return enter("web", sys.executable, "-c", SEND, f"10.0.0.{CLIENTS[to][1]}").strip()
    finally:
        server.kill()
        server.wait()


def tcp():
    """Bulk data arrives unchanged, in segments that the stack leaves to the network and in whole frames."""
    for to in "far", "inner":
        for segments in "on", "off":
            enter("web", "ethtool", "-K", "eth0", "tso", segments)
            before = packets("left", "web")
            assert transfer(to) == "True", (to, segments)
            after = packets("left", "web")
            sent = [after[each] - before[each] for each in ("bytesInUnicast", "pktsInUnicast")]
            # 8 MiB in frames of the MTU are about 940, and fewer by half in segments of up to 64 KiB.
            assert sent[0] > 8 << 20 and (sent[1] < 470) == (segments == "on"), (to, segments, sent)
    # A client that takes no offloads gets frames of the MTU.
    done = host("attach", "--state", "right", "sw1", "far", "namespace", "--mac", "02:00:00:00:00:02",
                           "--no-offloads")
    assert done.returncode == 0, done.stdout
    enter("web", "ethtool", "-K", "eth0", "tso", "on")
    assert transfer("far") == "True"


def dhcp():
    """A server behind the trunk port gives an address to a client on the access port."""
    pathlib.Path("got").write_text('#!/bin/sh\n[ "$1" != bound ] || echo "$ip $mask $router"\n')
    pathlib.Path("got").chmod(0o755)
    server = subprocess.Popen(within(
        "inner", "dnsmasq", "--no-daemon", "--conf-file=/dev/null", "--port=0", "--user=root", "--group=root",
        "--interface=eth0", "--bind-interfaces", "--dhcp-range=10.0.0.100,10.0.0.100,255.255.255.0", "--leasefile-ro",
        "--dhcp-option=3,10.0.0.3", "--pid-file="), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    try:
        answer = enter("web", "udhcpc", "-f", "-q", "-n", "-i", "eth0", "-t", "10", "-T", "1", "-s",
                       str(pathlib.Path("got").absolute()))
        assert "10.0.0.100 24 10.0.0.3" in answer, answer
    finally:
        server.terminate()
        print(server.communicate(timeout=10)[0] if sys.exc_info()[0] else "", end="")


def main():
    for program, package in {"ip": "iproute2", "ping": "iputils-ping", "ethtool": "ethtool", "dnsmasq": "dnsmasq-base",
                             "udhcpc": "udhcpc"}.items():
        if shutil.which(program) is None:
            print(f"skipped: {program} is not installed; scripts/setup installs it (Debian: {package})")
            sys.exit(77)
    try:
        start()
        for case in ping, discovery, tcp, dhcp:
            began = time.monotonic()
            case()
            print(f"{case.__name__}: {time.monotonic() - began:.1f} s")
    finally:
        for name in LABS:
            host("stop", "--state", name)


main()
