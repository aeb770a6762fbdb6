#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""examples: the playbook and the timer of examples/ do on emulated hosts what they say."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

source = pathlib.Path(os.environ["QVS_SOURCE"]) / "examples"
DOCUMENT = "switches:\n  sw1:\n    uplinks: [uplink0]\n    ports:\n      web:\n        vlan: {id: %d}\n"


def on(host, *words):
    return subprocess.run(["qvs-host", "run", "--state", host, "--", *words], capture_output=True, text=True)


def vlan(host):
    return json.loads(on(host, "qvs", "port", "vlan", "get", "sw1", "web", "--json").stdout or "{}").get("id")


def equal(found, expected, what):
    if found != expected:
        raise AssertionError(f"{what}: {found!r}, not {expected!r}")


def timer():
    units = pathlib.Path("units")
    units.mkdir()
    for unit in source.joinpath("systemd").iterdir():
        text = unit.read_text().replace("/usr/bin", os.environ["QVS_BIN"])
        (units / unit.name).write_text(text)
    if shutil.which("systemd-analyze"):
        verified = subprocess.run(["systemd-analyze", "verify", "--man=no", "units/qvs-apply.timer"],
                                  capture_output=True, text=True)
        equal([line for line in verified.stderr.splitlines() if "qvs-apply" in line], [], "systemd-analyze")
    text = (units / "qvs-apply.service").read_text()
    pathlib.Path("switches.yaml").write_text(DOCUMENT % 10)
    words = re.search("^ExecStart=(.*)$", text, re.M).group(1).replace("/etc/qvs/", f"{os.getcwd()}/").split()
    first = on("timer", *words)
    equal((first.returncode, vlan("timer")), (0, 10), f"first run: {first.stderr}")
    on("timer", "qvs", "port", "vlan", "set", "sw1", "web", "--id", "99")
    equal((on("timer", *words).returncode, vlan("timer")), (0, 10), "a change by hand")
    # A change that an operator has not confirmed is not undone by the timer before its time is over.
    pathlib.Path("other.yaml").write_text(DOCUMENT % 20)
    equal(on("timer", "qvs", "apply", "other.yaml", "--yes", "--confirm", "600").returncode, 0, "a change that waits")
    equal((on("timer", *words).returncode != 0, vlan("timer")), (True, 20), "a run while a change waits")


def playbook():
    if not shutil.which("ansible-playbook"):
        return print("examples: ansible-playbook is not installed; the playbook is left out")

    def play(number, *options):
        pathlib.Path("wanted.yaml").write_text(DOCUMENT % number)
        run = subprocess.run(
            ["ansible-playbook", "-i", "h1,h2,h3,", "-c", "local", source / "ansible/apply.yaml", "-e",
             json.dumps({"document": f"{os.getcwd()}/wanted.yaml", "confirm": 60,
                         "place": os.getcwd() + "/{{ inventory_hostname }}.yaml",
                         "qvs": f"qvs-host run --state {os.getcwd()}/" + "{{ inventory_hostname }} -- qvs"}), *options],
            capture_output=True, text=True, env=dict(os.environ, ANSIBLE_LOCAL_TEMP=f"{os.getcwd()}/local",
                                                     ANSIBLE_REMOTE_TEMP=f"{os.getcwd()}/remote", LC_ALL="C.UTF-8"))
        recap = re.findall(r"^(h\d) .*changed=(\d).*failed=(\d)", run.stdout, re.M)
        return run.returncode, recap, [vlan(host) for host in ("h1", "h2", "h3")], run.stdout

    equal(play(10, "--check")[2], [None] * 3, "VLANs after --check")
    found = play(10)
    equal((found[0], found[2]), (0, [10] * 3), found[3])
    equal(play(10)[1], [("h1", "0", "0"), ("h2", "0", "0"), ("h3", "0", "0")], "a second play")
    # The first host that fails ends the play.
    failed = play(5000)
    equal((failed[0], [one[0] for one in failed[1]], failed[2]), (2, ["h1"], [10] * 3), "a document that is wrong")


def main():
    timer()
    playbook()
    return 0


sys.exit(main())
