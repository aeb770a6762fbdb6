#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""metrics.py: the page of qvs metrics is well-formed, complete and right, survives what fails, and is served by HTTP."""
import json
import os
import re
import resource
import shutil
import socket
import stat
import struct
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from checks import expect, report, run  # noqa: E402

LINE = re.compile(r'([a-z_]+)(?:\{((?:[a-z]+="(?:[^"\\\n]|\\["\\n])*",?)+)\})? (\d+(?:\.\d+)?)')
HOSTILE = 'a"b\\c\nd\x01</script>'
STATISTICS = "com.quillon.common.port.statistics"
BUDGET = 0.3


def samples(page):
    """Takes a page apart and returns its values by their series, after a look at its form."""
    values, families, current = {}, {}, None
    for line in page.splitlines():
        if line.startswith("# HELP "):
            name = line.split()[2]
            expect(f"{name}: one family", name in families, False)
            expect(f"{name}: help", bool(re.fullmatch(r"# HELP \S+ \S.*\.", line)), True)
        elif line.startswith("# TYPE "):
            expect("TYPE follows HELP", line.split()[2], name)
            current, families[name] = name, line.split()[3]
            expect(f"{name}: type", families[name], "counter" if name.endswith("_total") else "gauge")
        elif not line.startswith("#"):
            match = LINE.fullmatch(line)
            expect(f"form of {line!r}", bool(match), True)
            expect(f"family of {line!r}", match.group(1), current)
            expect(f"{line!r} once", line.rsplit(" ", 1)[0] in values, False)
            values[line.rsplit(" ", 1)[0]] = match.group(3)
    expect("end of line", page.endswith("\n"), True)
    return values, families


def lab():
    counters = struct.pack("<16Q", *range(1, 16), 2**64 - 1)
    properties = [{"scope": "port", "port": "web", "key": STATISTICS, "hex": counters.hex(), "type": 32},
                  {"scope": "port", "port": "uplink0", "key": "com.quillon.common.port.linkstatus", "hex": "01000008"}]
    hostile = {"alias": HOSTILE, "portset": "other", "ports": [HOSTILE, "\x7f\u00e9"]}
    text = json.dumps({"switches": [{"alias": "sw1", "uplinks": ["uplink0"], "ports": ["web"], "properties": properties},
                                    hostile], "clients": [{"switch": "sw1", "port": "web", "name": "vm"}]})
    with open("lab.json", "w") as file:
        file.write(text)


def check_page():
    run("qvs", "mirror", "add", "sw1", "tap", "--type", "dvport", "--destinations", "web", "--sources-in", "uplink0")
    result = run("qvs", "metrics")
    expect("status", (result.returncode, result.stderr), (0, ""))
    values, families = samples(result.stdout)
    promtool = shutil.which("promtool")
    if promtool:
        checked = run(promtool, "check", "metrics", input=result.stdout)
        expect("promtool", (checked.returncode, checked.stdout + checked.stderr), (0, ""))
    else:
        print("metrics: promtool is not installed (Debian package prometheus); its check is left out")

    listed = json.loads(run("qvs", "metrics", "list", "--json").stdout)
    used = {}
    for series in values:
        name, _, labels = series.partition("{")
        used[name] = re.findall(r'([a-z]+)="(?:[^"\\]|\\.)*"', labels)
    wanted = {row["metric"]: row["labels"] for row in listed}
    wanted.pop("qvs_bfd_session_up")  # there is no session
    expect("metrics and their labels", used, wanted)
    expect("types", families, {row["metric"]: row["type"] for row in listed if row["metric"] in families})

    port = 'switch="sw1",port="web"'
    series_of_port = [f'{what}_total{{{port},direction="{way}",kind="{kind}"}}' for way in ("in", "out")
                      for kind in ("unicast", "multicast", "broadcast") for what in ("packets", "bytes")]
    series_of_port += [f'{what}_packets_total{{{port},direction="{way}"}}' for what in ("dropped", "exception")
                       for way in ("in", "out")]
    for number, series in enumerate(series_of_port, 1):
        expect(series, values.get("qvs_port_" + series), str(number if number < 16 else 2**64 - 1))
    shown = r'a\"b\\\\c\\nd\\x01</script>'
    for series, value in {
            "qvs_switches": "2", 'qvs_switch_ports{switch="sw1"}': "2", 'qvs_switch_ports_in_use{switch="sw1"}': "2",
            'qvs_switch_uplinks_up{switch="sw1"}': "1", 'qvs_switch_mtu_bytes{switch="sw1"}': "1500",
            'qvs_uplink_info{switch="sw1",uplink="uplink0",port="uplink0",nic="pnic0"}': "1",
            'qvs_uplink_speed_bytes_per_second{switch="sw1",uplink="uplink0"}': "12500000000",
            'qvs_mirror_session_active{switch="sw1",session="tap"}': "1", 'qvs_scrape_failures{part="teaming"}': "0",
            f'qvs_port_up{{switch="{shown}",port="{shown}"}}': "0",
            f'qvs_port_up{{switch="{shown}",port="\\\\x7f\u00e9"}}': "0"}.items():
        expect(series, values.get(series), value)


def check_choices():
    found = samples(run("qvs", "metrics", "--ports", "uplinks").stdout)[0]
    expect("--ports", sum(series.startswith("qvs_port_up{") for series in found), 1)
    expect("--ports nix", run("qvs", "metrics", "--ports", "nix").returncode, 2)
    result = run("qvs", "metrics", "--layout", "nix")
    expect("--layout nix", (result.returncode, result.stdout, result.stderr),
           (1, "", "qvs: file 'nix': No such file or directory\n"))

    result = run("qvs", "metrics", env={**os.environ, "QVS_LAYOUT": ""})
    remark = "# statistics of teaming are left out: no layout file is named; name one with --layout or in the variable QVS_LAYOUT"
    expect("without a layout", (result.returncode, remark in result.stdout.splitlines(), "\nqvs_teaming" in result.stdout,
                                "\nqvs_mirror_sessions" in result.stdout), (0, True, False, True))

    run("qvs-host", "fault", "add", "device ioctl*GetServicePort", "--forever", "--errno", "EIO")
    result = run("qvs", "metrics")
    values = samples(result.stdout)[0]
    expect("a part fails", (result.returncode, result.stderr.count("statistics of teaming: ")), (1, 2))
    expect("its count", values['qvs_scrape_failures{part="teaming"}'], "2")
    expect("the others", [values[f"qvs_{name}"] for name in ('scrape_failures{part="rarp"}', "mirror_agent_sessions")], ["0", "1"])
    run("qvs-host", "fault", "clear")
    # A host that has not answered once is not asked again.
    run("qvs-host", "fault", "add", "device ioctl*GetRARPStats", "--errno", "ETIMEDOUT")
    values = samples(run("qvs", "metrics").stdout)[0]
    expect("no answer", [values[f'qvs_scrape_failures{{part="{part}"}}'] for part in ("teaming", "rarp", "mirror", "bfd")],
           ["0", "2", "3", "1"])


def check_output():
    os.umask(0o077)
    os.mkdir("collector")
    for _ in range(2):
        expect("--output", run("qvs", "metrics", "--output", "collector/qvs.prom").returncode, 0)
    expect("files", os.listdir("collector"), ["qvs.prom"])
    expect("mode", stat.S_IMODE(os.stat("collector/qvs.prom").st_mode), 0o644)
    samples(open("collector/qvs.prom").read())
    os.mkfifo("fifo")
    os.symlink("fifo", "link")
    irregular = "it exists and is no regular file; name another one"
    for path, error in {"none/qvs.prom": "No such file or directory", "collector": irregular, "fifo": irregular,
                        "link": irregular}.items():
        result = run("qvs", "metrics", "--output", path)
        expect(path, (result.returncode, result.stderr), (1, f"qvs: file '{path}': {error}\n"))
    expect("kinds", (stat.S_ISFIFO(os.lstat("fifo").st_mode), os.path.islink("link")), (True, True))


def ask(request, patience=10):
    """Returns the status and the content that a request on a socket is answered with."""
    ours, theirs = socket.socketpair()
    with ours, theirs:
        process = subprocess.Popen(["qvs", "metrics", "--http"], stdin=theirs, stdout=theirs, stderr=subprocess.DEVNULL)
        theirs.close()
        ours.settimeout(patience)
        ours.sendall(request)
        answer = b""
        while piece := ours.recv(65536):
            answer += piece
        expect(f"{request[:30]}: exit status", process.wait(patience), 0)
    head, _, content = answer.partition(b"\r\n\r\n")
    length = re.search(rb"Content-Length: (\d+)", head)
    if content:
        expect(f"{request[:30]}: length", int(length.group(1)), len(content))
    return head.decode().split("\r\n"), content.decode()


def check_http():
    head, content = ask(b"GET /metrics?x=y HTTP/1.1\r\nHost: here\r\n\r\n")
    expect("GET", head[:2], ["HTTP/1.1 200 OK", "Content-Type: text/plain; version=0.0.4; charset=utf-8"])
    samples(content)
    head, content = ask(b"HEAD /metrics HTTP/1.0\r\n\r\n")
    expect("HEAD", (head[0], content), ("HTTP/1.1 200 OK", ""))
    for request, status in {
            b"GET / HTTP/1.1\r\n\r\n": 404, b"GET /metrics/x HTTP/1.1\r\n\r\n": 404, b"POST /metrics HTTP/1.1\r\n\r\n": 405,
            b"GET  HTTP/1.1\r\n\r\n": 400, b"GET /a b HTTP/1.1\r\n\r\n": 400, b"\x00\xff\r\n\r\n": 400, b"\r\n\r\n": 400,
            b"GET /metrics HTTP/2.0\r\n\r\n": 505, b"GET /metrics\r\n\r\n": 400,
            b"GET /metrics HTTP/1.1\r\n" + b"x" * 9000: 431, b"GET /metrics HTTP/1.1\r\nslow": 408}.items():
        start = time.monotonic()
        head, _ = ask(request)
        expect(f"{request[:40]}", head[0].split()[1], str(status))
        expect(f"{request[:40]}: in time", time.monotonic() - start < 8, True)
        expect(f"{request[:40]}: Allow", "Allow: GET, HEAD" in head, status == 405)


def check_speed():
    result, best = None, 10.0
    for _ in range(5):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        result = run("qvs", "metrics")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        best = min(best, after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime)
    series = sum(not line.startswith("#") for line in result.stdout.splitlines())
    print(f"metrics: {series} series in {best:.3f} s of processor time")
    expect("series", series > 160000, True)
    expect("in time", best < BUDGET, True)


def on_host(lab_file, part):
    run_on = ["qvs-host", "run", "--lab", lab_file, "--", sys.executable, __file__, part]
    return subprocess.run(run_on).returncode


if len(sys.argv) > 1:
    for check in {"page": [check_page, check_choices, check_output, check_http], "speed": [check_speed]}[sys.argv[1]]:
        check()
else:
    lab()
    status = on_host("lab.json", "page")
    with open("big.json", "w") as big:
        json.dump({"switches": [{"alias": "big", "maxPorts": 10000, "ports": [f"port{i}" for i in range(10000)]}]}, big)
    if not os.environ["QVS_SANITIZED"]:
        status = on_host("big.json", "speed") or status
    head, _ = ask(b"GET /metrics HTTP/1.1\r\n\r\n")
    expect("without a host", head[0], "HTTP/1.1 503 Service Unavailable")
    expect("without a host", run("qvs", "metrics").returncode, 5)
    if status:
        sys.exit(status)
report()
