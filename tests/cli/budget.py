#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""budget.py: on a host with 5,000 MAC addresses, 100 forwarding sessions and 500 interfaces, qvs lists each table in
less than 60 ms of processor time. The best of a few runs counts, so that a busy machine is no fault."""
import os
import resource
import subprocess
import sys

BUDGET = 0.060
RUNS = 8
TABLES = """
switch list | port list tenants | uplink list tenants | mac table tenants | mac table tenants --json | mac static tenants
mac ports tenants | mac stats tenants | mac security tenants | mirror list tenants | mirror runtime ids tenants
mirror runtime destinations tenants | mcast switch-filters tenants | bfd sessions | bfd sessions --json | bfd stats
kcp switches | kcp portsets | kcp interfaces | kcp interfaces --json | kcp container-interfaces | kcp hypervisor-interfaces
kcp hypervisor-nics | kcp uplinks | kcp containers | livetrace list | livetrace counts 0 | spf list edge | options get
"""


def processor_time(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def best(command):
    fastest = BUDGET
    for _ in range(RUNS):
        fastest = min(fastest, processor_time(command))
        if fastest < BUDGET / 2:
            break
    return fastest


if "QVS_HOST_SOCKET" not in os.environ:
    if os.environ["QVS_SANITIZED"]:
        sys.exit(77)  # a sanitizer takes its time
    lab = os.environ["QVS_SOURCE"] + "/labs/pod.json"
    sys.exit(subprocess.run([os.environ["QVS_BIN"] + "/qvs-host", "run", "--lab", lab, "--", __file__]).returncode)

late = False
for table in (words.strip() for words in TABLES.replace("\n", "|").split("|")):
    if table:
        seconds = best(["qvs", *table.split()])
        late = late or seconds >= BUDGET
        print(f"{seconds * 1000:5.1f} ms  qvs {table}" + ("  TOO LONG" if seconds >= BUDGET else ""))
sys.exit(1 if late else 0)
