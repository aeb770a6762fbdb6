#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""monitoring.py [--prometheus]: what comes along for monitoring systems fits qvs metrics.

The names in the queries of the dashboard are metrics, and the units pass systemd's check and serve them. With
--prometheus, Debian's Prometheus scrapes an emulated host, and each query of the dashboard finds data.
Exit status 77 means "skipped"; the last line gives the reason."""
import json
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import time
import urllib.error
import urllib.parse
import urllib.request

sys.dont_write_bytecode = True
from checks import failures, report  # noqa: E402

PATIENCE = 30
source = pathlib.Path(os.environ["QVS_SOURCE"])
dashboard = json.loads((source / "share/grafana/qvs.json").read_text())


def skip(why):
    print(f"monitoring: skipped: {why}")
    sys.exit(77)


def queries():
    return [target["expr"] for panel in dashboard["panels"] for target in panel.get("targets", [])]


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def fetch(url):
    """Asks until there is an answer."""
    end = time.monotonic() + PATIENCE
    while True:
        try:
            return urllib.request.urlopen(url, timeout=PATIENCE).read().decode()
        except urllib.error.HTTPError:
            raise
        except OSError:
            if time.monotonic() > end:
                raise
            time.sleep(0.05)


def command_of_unit():
    unit = (source / "share/systemd/qvs-metrics@.service.in").read_text()
    command = re.search(r"^ExecStart=@QVS_BINDIR@/(.*)$", unit, re.MULTILINE).group(1).split()
    return [shutil.which(command[0]), *command[1:]]


def serve(port):
    """Starts what the units say, as systemd would."""
    names = [name for name in os.environ if name.startswith("QVS_") or name in ("LD_PRELOAD", "LD_LIBRARY_PATH")]
    return subprocess.Popen(["systemd-socket-activate", "--accept", "--inetd", "-l", f"127.0.0.1:{port}",
                             *(word for name in names for word in ("-E", name)), *command_of_unit()],
                            stderr=subprocess.DEVNULL)


def check_names():
    known = {row["metric"] for row in json.loads(subprocess.check_output(["qvs", "metrics", "list", "--json"]))}
    page = subprocess.check_output(["qvs", "metrics"], text=True)
    for query in queries() + [str(variable.get("query", "")) for variable in dashboard["templating"]["list"]]:
        for name in re.findall(r"\bqvs_\w+", query):
            if name not in known or not re.search(rf"^{name}[{{ ]", page, re.MULTILINE):
                failures.append(f"{name} is not on the page, but in the query {query}")
    ids = [panel["id"] for panel in dashboard["panels"]]
    if len(set(ids)) != len(ids) or len(queries()) < 30:
        failures.append(f"the dashboard has panels {ids} and {len(queries())} queries")


def check_units():
    if not shutil.which("systemd-analyze"):
        print("monitoring: systemd-analyze is not installed; the check of the units is left out")
    else:
        units = pathlib.Path("units")
        units.mkdir()
        service = (source / "share/systemd/qvs-metrics@.service.in").read_text()
        (units / "qvs-metrics@.service").write_text(service.replace("@QVS_BINDIR@", os.environ["QVS_BIN"]))
        shutil.copy(source / "share/systemd/qvs-metrics.socket", units)
        result = subprocess.run(["systemd-analyze", "verify", "--man=no", "units/qvs-metrics.socket"],
                                capture_output=True, text=True)
        about_units = [line for line in result.stderr.splitlines() if "qvs-metrics" in line]
        if about_units:
            failures.append("systemd-analyze: " + "\n".join(about_units))
    if not shutil.which("systemd-socket-activate"):
        return print("monitoring: systemd-socket-activate is not installed; serving by it is left out")
    port = free_port()
    server = serve(port)
    try:
        for _ in range(2):
            if "\nqvs_switches 4\n" not in fetch(f"http://127.0.0.1:{port}/metrics"):
                failures.append("the served page has no switches")
    finally:
        server.terminate()
        server.wait()


def ask(address, query):
    return json.loads(fetch(f"{address}/api/v1/query?" + urllib.parse.urlencode({"query": query})))["data"]["result"]


def check_queries():
    scraped, own = free_port(), free_port()
    address = f"http://127.0.0.1:{own}"
    pathlib.Path("prometheus.yml").write_text(
        "global: {scrape_interval: 1s, scrape_timeout: 1s}\n"
        f"scrape_configs: [{{job_name: qvs, static_configs: [{{targets: ['127.0.0.1:{scraped}']}}]}}]\n")
    server = serve(scraped)
    prometheus = subprocess.Popen(["prometheus", "--config.file=prometheus.yml", "--storage.tsdb.path=data",
                                   f"--web.listen-address=127.0.0.1:{own}", "--log.level=error"])
    try:
        end = time.monotonic() + PATIENCE
        while not ask(address, "count_over_time(qvs_switches[1m]) >= 4"):
            if time.monotonic() > end:
                sys.exit("monitoring: Prometheus has scraped nothing")
            time.sleep(0.2)
        for query in queries():
            asked = query.replace("$__rate_interval", "1m")
            asked = re.sub(r"\$(instance|switch|port)\b", ".*", asked)
            found = ask(address, asked)
            print(f"{len(found):4} series  {asked}")
            if not found:
                failures.append(f"no data: {asked}")
    finally:
        for process in (prometheus, server):
            process.terminate()
            process.wait()


if "QVS_HOST_SOCKET" not in os.environ:
    if "--prometheus" in sys.argv:
        for program, package in {"prometheus": "prometheus", "systemd-socket-activate": "systemd"}.items():
            if not shutil.which(program):
                skip(f"{program} is not installed (Debian package {package})")
    lab = str(source / "labs/pod.json")
    sys.exit(subprocess.run(["qvs-host", "run", "--lab", lab, "--", sys.executable, *sys.argv]).returncode)
if "--prometheus" in sys.argv:
    check_queries()
else:
    check_names()
    check_units()
report()
