#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""topology.py [--browser]: the drawings of qvs topology are whole and right, and no name of the host breaks out of them.

With --browser, the page is used in a headless Chromium: it logs no error, search finds a port, a click shows its details,
and it holds 1,000 ports. Exit status 77 means "skipped"; the last line gives the reason."""
import html.parser
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

sys.dont_write_bytecode = True
from checks import expect, failures, report, run  # noqa: E402

HOSTILE = '</script><script>alert(1)</script><!--'
QUOTES = 'a"b\\N<b>&amp;]]>\x01'
VLAN = "com.quillon.vswitch.port.vlan"
MANY = 998
TEXT = r"""sw1
|- NIC pnic0 -- uplink0: up, 100 Gbit/s
|- no NIC -- uplink1: down
|- No VLAN: 2 ports
|  |- </script><script>alert(1)</script><!--: free
|  `- a"b\\N<b>&amp;]]>\x01: blocked
|- VLAN 100: 2 ports
|  |- db: down, db.eth0
|  `- web: up, web.eth0
|- VLAN 100 (security): 1 port
|  `- probe: free
|- mirror session far (disabled): uplink0 -> pnic9
|- mirror session tap: web, db -> probe
`- private VLAN 100: 100 promiscuous, 101 isolated

sw2
"""


def write_labs():
    vlan = "0000640000000000"
    ports = [{"scope": "port", "port": port, "key": VLAN, "hex": vlan, "type": 8} for port in ("web", "db", "probe")]
    ports += [{"scope": "port", "port": "uplink0", "key": "com.quillon.common.port.linkstatus", "hex": "01000008"},
              {"scope": "port", "port": QUOTES, "key": "com.quillon.common.port.block", "text": "true\0"}]
    small = {"pnics": [{"name": "pnic0"}], "switches": [
        {"alias": "sw1", "uplinks": ["uplink0"], "ports": ["web", "db", "probe", HOSTILE, QUOTES], "properties": ports},
        {"alias": "sw2"}], "clients": [{"switch": "sw1", "port": "web", "name": "web.eth0"},
                                       {"switch": "sw1", "port": "db", "name": "db.eth0", "link": "down"}]}
    pathlib.Path("small.json").write_text(json.dumps(small))
    names = [f"vm{i}" for i in range(MANY)]
    many = {"alias": "many", "maxPorts": 1100, "uplinks": ["uplink0", "uplink1"], "ports": names,
            "properties": [{"scope": "port", "port": name, "key": VLAN, "hex": f"0000{10 + i % 9:02x}0000000000", "type": 8}
                           for i, name in enumerate(names)]}
    pathlib.Path("many.json").write_text(json.dumps({"switches": [many]}))


def policies():
    for words in ("uplink add sw1 uplink1", "port security set sw1 probe --promiscuous allow",
                  "pvlan set sw1 100:100:promiscuous 100:101:isolated",
                  "mirror add sw1 tap --type dvport --port probe --destinations probe --sources-in web --sources-out db",
                  "mirror add sw1 far --type dvport --destinations pnic9 --sources-in uplink0 --flags disabled"):
        result = run("qvs", *words.split())
        expect(words, result.returncode, 0)


class Elements(html.parser.HTMLParser):
    """Collects the scripts of a page, and what it refers to."""

    def __init__(self):
        super().__init__()
        self.scripts, self.references = [], []

    def handle_starttag(self, tag, attrs):
        if tag == "script":
            self.scripts.append("")
        self.references += [value for name, value in attrs if name in ("src", "href")]

    def handle_data(self, data):
        if self.cdata_elem == "script":
            self.scripts[-1] += data


def check_drawings():
    policies()
    result = run("qvs", "topology")
    expect("text", (result.returncode, result.stdout), (0, TEXT))
    expect("one switch", run("qvs", "topology", "sw2").stdout, "sw2\n")
    expect("no switch", run("qvs", "topology", "sw3").returncode, 3)

    page = run("qvs", "topology", "--format", "html").stdout
    elements = Elements()
    elements.feed(page)
    expect("references", elements.references, ["data:,"])
    expect("scripts", len(elements.scripts), 2)
    data = json.loads(elements.scripts[0])
    expect("switches", [switch["alias"] for switch in data["switches"]], ["sw1", "sw2"])
    shown = json.loads(run("qvs", "show", "--json").stdout)
    expect("data", data["switches"], shown)
    expect("names", [HOSTILE in json.dumps(data), any(port["port"] == HOSTILE for port in data["switches"][0]["ports"])],
           [True, True])

    os.mkdir("empty")
    result = run(shutil.which("qvs"), "topology", "--format", "svg", env={**os.environ, "PATH": "empty"})
    expect("without Graphviz", (result.returncode, result.stdout, result.stderr),
           (1, "", "qvs: --format svg needs the program dot of Graphviz, which is not installed; on Debian: "
                   "apt-get install graphviz\n"))
    fake = pathlib.Path("empty/dot")
    fake.write_text("#!/bin/sh\necho half\necho broken >&2\nexit 3\n")
    fake.chmod(0o755)
    result = run(shutil.which("qvs"), "topology", "--format", "svg", env={**os.environ, "PATH": "empty:/bin"})
    expect("a Graphviz that fails", (result.returncode, result.stdout, result.stderr),
           (1, "", "broken\nqvs: dot has failed; its message is above\n"))
    if not shutil.which("dot"):
        return print("topology: dot is not installed (Debian package graphviz); the check of the picture is left out")
    result = run("qvs", "topology", "--format", "svg")
    expect("svg", (result.returncode, result.stderr), (0, ""))
    texts = {element.text for element in xml.etree.ElementTree.fromstring(result.stdout).iter() if element.text}
    for text in ("sw1", "pnic0, 100 Gbit/s", "uplink1", "VLAN 100", "security", "web", HOSTILE, QUOTES.replace("\\", "\\\\")
                 .replace("\x01", "\\x01"), "mirror tap", "private VLAN 100: 100 promiscuous, 101 isolated"):
        expect(f"svg: {text}", text in {each.replace("\u00a0", " ") for each in texts}, True)


PROBE = """<pre id="probe"></pre><script>
const errors = [];
addEventListener("error", event => errors.push(event.message));
const show = text => { at("search").value = text; search(); return at("found").textContent; };
const press = key => at("search").dispatchEvent(new KeyboardEvent("keydown", { key, bubbles: true }));
const result = { title: document.title, ports: document.querySelectorAll(".chip").length, open: document.querySelectorAll(".box.open").length };
result.nothing = show("no such name");
result.found = show(FIND);
result.hits = [...document.querySelectorAll(".chip.hit")].map(chip => chip.innerText);
result.shownHits = [...document.querySelectorAll(".chip.hit")].every(chip => chip.getClientRects().length === 1);
press("Enter");
result.details = [...details.querySelectorAll("h2, tr")].map(row => row.innerText.replace(/\\s+/g, " ").trim()).slice(0, 3);
press("Escape");
result.after = document.querySelectorAll(".hit").length;
const before = canvas.getBoundingClientRect().height / scale;
at("in").click();
result.zoom = scale > 1;
const colours = [];
for (let i = 0; i < 3; i++) { at("theme").click(); colours.push(getComputedStyle(document.body).backgroundColor); }
result.colours = colours;
const mirror = items.find(item => item.kind === "Mirror" && item.name === "tap");
if (mirror) { mirror.element.click(); result.linked = [...document.querySelectorAll(".chip.linked")].map(chip => chip.innerText).sort(); }
at("expand").click();
result.errors = errors;
at("probe").textContent = JSON.stringify(result);
</script></body>"""


def browse(find, wanted):
    page = run("qvs", "topology", "--format", "html").stdout
    path = pathlib.Path("page.html")
    path.write_text(page.replace("</body>", PROBE.replace("FIND", json.dumps(find))))
    options = ["--no-sandbox"] if os.geteuid() == 0 else []
    environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
    result = run("chromium", "--headless", *options, "--disable-gpu", "--enable-logging=stderr", "--user-data-dir=profile",
                 "--window-size=1600,1000", "--virtual-time-budget=5000", "--dump-dom", path.resolve().as_uri(),
                 env={**environment, "HOME": os.getcwd()})
    expect("console", [line for line in result.stderr.splitlines() if "CONSOLE" in line], [])
    probe = re.search(r'<pre id="probe">(.*?)</pre>', result.stdout, re.DOTALL)
    if not probe:
        failures.append(f"the page has not run:\n{result.stdout[-2000:]}\n{result.stderr[-2000:]}")
        return
    found = json.loads(html.unescape(probe.group(1)))
    expect("title", found.pop("title").startswith("Virtual switches of "), True)
    for name, value in wanted.items():
        expect(f"{find}: {name}", found[name], value)
    expect("errors", found["errors"], [])


def check_small_page():
    policies()
    light, dark = "rgb(244, 245, 247)", "rgb(20, 24, 30)"
    browse("script", {"ports": 5, "open": 3, "nothing": "nothing found", "found": "1 match", "hits": [HOSTILE],
                      "shownHits": True, "details": ["Port " + HOSTILE, "switch sw1", "port " + HOSTILE], "after": 0,
                      "zoom": True, "colours": [light, dark, light], "linked": ["db", "probe", "web"]})
    browse("vlan 100 eth0", {"found": "2 matches", "hits": ["db", "web"]})
    browse("sw1 vlan 100 web.eth0", {"found": "1 match", "hits": ["web"]})
    browse("vlan 10", {"found": "nothing found"})
    browse("sw2 web.eth0", {"found": "nothing found", "hits": []})


def check_large_page():
    browse("vm997", {"ports": MANY, "open": 0, "found": "1 match", "hits": ["vm997"], "shownHits": True,
                     "details": ["Port vm997", "switch many", "port vm997"]})


CHECKS = {"drawings": ("small.json", check_drawings), "small": ("small.json", check_small_page),
          "large": ("many.json", check_large_page)}
if len(sys.argv) == 3:
    CHECKS[sys.argv[2]][1]()
else:
    browser = sys.argv[1:] == ["--browser"]
    if browser and not shutil.which("chromium"):
        print("topology: skipped: chromium is not installed (Debian package chromium)")
        sys.exit(77)
    write_labs()
    status = 0
    for name in ("small", "large") if browser else ("drawings",):
        status |= subprocess.run(["qvs-host", "run", "--lab", CHECKS[name][0], "--", sys.executable, __file__, "--run", name]).returncode
    sys.exit(status)
report()
