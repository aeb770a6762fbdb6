# SPDX-License-Identifier: Apache-2.0
"""A host with a network, as a test drives it: started directly, with the data path of switchd.py."""
import contextlib
import json
import os
import pathlib
import signal
import struct
import subprocess
import time

from hostile import PROP_SET, Client, eventually, number, text

HERE = pathlib.Path(__file__).parent
HOSTD = next(pathlib.Path(os.environ["QVS_BIN"]).parent.rglob("qvs-hostd"))
FIRST = 0x4000001  # the number of the first port of a host
STATE = pathlib.Path("state").absolute()
VLAN = "com.quillon.vswitch.port.vlan"


def behave(words=None):
    file = STATE / "behave"
    if words is None:
        file.unlink(missing_ok=True)
    else:
        file.write_text(words)


def configurations():
    """The configurations that data paths got, as JSON."""
    files = sorted(STATE.glob("configuration.?"), key=lambda file: file.suffix)
    files += sorted(STATE.glob("configuration.??"), key=lambda file: file.suffix)
    return [decode(file) for file in files]


def decode(file):
    schema = pathlib.Path(os.environ["QVS_SOURCE"], "host/datapath/policy.fbs")
    pathlib.Path("decoded").mkdir(exist_ok=True)
    copy = pathlib.Path("decoded", "c.bin")
    copy.write_bytes(file.read_bytes())
    subprocess.run([os.environ["QVS_FLATC"], "--json", "--strict-json", "-o", "decoded", schema, "--", copy],
                   check=True)
    return json.loads(pathlib.Path("decoded/c.json").read_text())


def last(count):
    """Waits for the configuration with this number, and returns it."""
    eventually(lambda: (STATE / f"configuration.{count}").exists())
    return decode(STATE / f"configuration.{count}")


def pid():
    return int((STATE / "process").read_text())


def log():
    return (STATE / "log").read_text()


def serves():
    try:
        Client("state").call(2)
    except OSError:
        return False
    return True


@contextlib.contextmanager
def host(lab, *words):
    pathlib.Path("lab.json").write_text(json.dumps(lab))
    daemon = subprocess.Popen([HOSTD, "--state", STATE, "--lab", "lab.json", "--switchd", HERE / "switchd.py", *words])
    eventually(serves)
    if "network" in lab:
        last(1)
    try:
        yield daemon
    finally:
        daemon.send_signal(signal.SIGTERM)
        assert daemon.wait(20) == 0


def request(**members):
    return json.loads(Client("state").control(json.dumps(members)))


def status():
    return request(op="status")["network"]


def set_vlan(vlan, port="p1", client=None):
    """Sets the VLAN of a port as the state library does. Returns the status and the seconds until the answer."""
    record = struct.pack("<HHHH", 0, vlan, 0, 0)
    begin = time.monotonic()
    answer = (client or Client("state")).call(
        PROP_SET, b"\2" + text(IDENTIFIER) + text(port) + text(VLAN) + text(record) + number(8))
    return struct.unpack("<I", answer)[0], time.monotonic() - begin


def qvs(*words):
    result = subprocess.run(["qvs-host", "run", "--state", STATE, "--", "qvs", *words], capture_output=True,
                            text=True, timeout=60, check=False)
    assert result.returncode == 0, result.stderr
    return result.stdout


IDENTIFIER = "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00"


def lab(ports=2, **members):
    return {"network": True, "pnics": [{"name": "pnic0"}, {"name": "pnic1"}],
            "switches": [{"alias": "sw1", "maxPorts": 2000, "uplinks": ["u0", "u1"],
                          "ports": [f"p{i + 1}" for i in range(ports)]}], **members}
