# SPDX-License-Identifier: Apache-2.0
"""The daemon and the process of the data path: answers wait for it, and it may hang, die or lie."""
import os
import pathlib
import signal
import threading
import time

from hostile import PROP_GET, Client, eventually, shell, text
from network import (FIRST, IDENTIFIER, STATE, VLAN, behave, configurations, host, lab, last, log, pid, qvs, request,
                     set_vlan, status)


def answers_wait():
    """A reply waits for the data path, those of others do not; what changes nothing for frames is not sent."""
    with host(lab()):
        behave("delay 0.4")
        client = Client("state")
        seconds = []
        waits = threading.Thread(target=lambda: seconds.append(set_vlan(7)[1]))
        waits.start()
        time.sleep(0.1)
        begin = time.monotonic()
        client.call(PROP_GET, b"\2" + text(IDENTIFIER) + text("p2") + text(VLAN))
        assert time.monotonic() - begin < 0.2
        waits.join()
        assert seconds[0] >= 0.4
        assert last(2)["changed_ports"] == [
            {"portset": 1, "policy": {**configurations()[0]["switches"][0]["ports"][0], "vlan": {"id": 7}}}]
        assert set_vlan(7)[1] < 0.2
        # So do the answers to the shell, to devices and to control requests.
        for perform, found in (
                (lambda: shell(client, "-e", "set", "/net/portsets/sw1/mtu", "9000"),
                 lambda sent: sent["switches"][0]["mtu"] == 9000),
                (lambda: qvs("uplink", "down", "sw1", "u0"),
                 lambda sent: "link" not in sent["changed_ports"][0]["policy"]),
                (lambda: request(op="seed", lab={"clients": [{"switch": "sw1", "port": "p2", "name": "db"}]}),
                 lambda sent: sent["changed_ports"][0]["policy"]["client"] == "db")):
            begin = time.monotonic()
            perform()
            assert time.monotonic() - begin >= 0.4
            assert found(configurations()[-1]), configurations()[-1]
        assert len(configurations()) == 5


def comes_back():
    """A data path that hangs, dies, or sends nonsense is started again with everything that it had."""
    pathlib.Path("secret").write_text("kept")
    with host(lab()) as daemon:
        expected = configurations()[0]
        (STATE / "tell").write_text(f"keep {pathlib.Path('secret').absolute()}")
        for count, (word, words) in enumerate([
                ("hang", "killed by signal 9: it did not carry out configuration"),
                ("wrong", "it sent an invalid message of kind 110"),
                ("garbage", "it sent a message that is too long"),
                ("die", "ended with status 7: ")]):
            first = pid()
            behave(word)
            status_, seconds = set_vlan(count + 10)
            assert status_ == 0 and seconds < 3 and (word != "hang" or seconds >= 1), (word, seconds)
            behave()
            eventually(lambda: pid() != first and not set_vlan(99, "p2")[0])
            assert words in log(), (words, log())
        assert "data path: last words" in log()
        eventually(lambda: (STATE / "returned").read_bytes() == b"kept kept")
        # The answers tell that the new data path has everything.
        assert [set_vlan(vlan, "p2")[0] for vlan in (98, 99)] == [0, 0]
        first, count = pid(), len(configurations())
        os.kill(first, signal.SIGKILL)
        eventually(lambda: pid() != first)
        whole = last(count + 1)
        expected["generation"] = whole["generation"]
        expected["switches"][0]["ports"][0]["vlan"] = {"id": 13}
        expected["switches"][0]["ports"][1]["vlan"] = {"id": 99}
        assert whole == expected, (whole, expected)
        assert status()["restarts"] >= 5
        os.kill(daemon.pid, signal.SIGKILL)
        daemon.wait()
        # Nothing of a killed host stays behind.
        child = pid()
        eventually(lambda: not pathlib.Path(f"/proc/{child}").exists())
        daemon.wait = lambda _: 0


def only_where_wanted():
    """A host has a data path while it is wanted: by the lab, by a request, or by an attachment."""
    without = lab()
    del without["network"]
    with host(without):
        assert status() == {"enabled": False}
        assert request(op="attach", switch="sw1", port="p1", kind="stream", path="vm1", mac="02:00:00:00:00:01")["ok"]
        assert [a["path"] for a in last(1)["attachments"]] == [f"{STATE}/vm1"]
        assert [(a["port"], a["client"], a["carrier"]) for a in status()["attachments"]] == [("p1", "p1", "down")]
        assert request(op="detach", switch="sw1", port="p1")["ok"]
        eventually(lambda: not pathlib.Path(f"/proc/{pid()}").exists())
        assert status() == {"enabled": False}
        for members, words in (
                ({"op": "detach", "port": "p1"}, "\"port\" has no attachment"),
                ({"op": "attach", "port": "p9", "kind": "tap"}, "\"port\" is neither a port nor a NIC of the switch: p9"),
                ({"op": "attach", "port": "p1", "kind": "stream"}, "\"path\" is missing"),
                ({"op": "attach", "port": "p1", "kind": "wire"}, "\"kind\" is none of \"namespace\""),
                ({"op": "attach", "port": "u0", "kind": "tap", "mac": "02:00:00:00:00:01"}, "\"mac\" cannot be given")):
            answer = request(switch="sw1", **members)
            assert not answer["ok"] and words in answer["error"], answer
        assert request(op="attach", switch="sw1", port="pnic1", kind="tap", name="tap7")["ok"]
    # It is stored, and goes with its port.
    (STATE / "process").unlink()
    with host({"pnics": []}, "--network"):
        assert [(a["port"], a["kind"], a["name"]) for a in status()["attachments"]] == [("u1", "tap", "tap7")]
        request(op="attach", switch="sw1", port="p2", kind="namespace")
        assert len(status()["attachments"]) == 2
        qvs("port", "remove", "sw1", "p2")
        assert len(status()["attachments"]) == 1 and not any(
            a["port"] == FIRST + 1 for a in configurations()[-1]["attachments"])


for case in (answers_wait, comes_back, only_where_wanted):
    case()
    os.system("rm -rf state decoded")
    print(case.__name__)
