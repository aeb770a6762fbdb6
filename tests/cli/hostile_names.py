# SPDX-License-Identifier: Apache-2.0
"""200 hostile names on every path of qvs that takes a name; QVS_EVERY=1 tries all of them, the default each tenth.

A command may refuse a name, but ends by itself and within its limit, prints nothing that a terminal would interpret, and
runs, opens or makes nothing else. A name that `port add` has accepted is listed, and removed, under the same bytes.
"""
import itertools
import json
import os
import re
import subprocess

PIECES = ["$(touch x)", "`touch x`", ";touch x;", "|touch x", "&& touch x", "\n touch x \n", ">x", "<x", "../x", "/etc/passwd",
          "..", ".", "~", "*", "?", "[a]", "{a,b}", "!x", "#x", "%s%n", "%00", "'", '"', "\\", "\\x00", "\t", "\r", "\x1b[31m",
          "\x1b]0;x\x07", "\x07", "\x7f", "\u202e", "\u200b", "\ufeff", "\U0001f600", b"\xff\xfe", b"\xc3(", b"\xed\xa0\x80",
          "=", ":", ",", "-", "--", "--help", "-x", "--json", "null", "true", "0", "-1", "4294967296", " ", "  x  ", "a b"]
NAMES = [piece if isinstance(piece, bytes) else piece.encode() for piece in PIECES]
NAMES += [pattern.replace(b"@", name) for pattern in (b"a@", b"@b", b"a@b") for name in NAMES[:46]]
NAMES += [b"x" * length for length in (31, 32, 47, 48, 63, 64, 80, 81, 127, 128, 255, 256, 4096, 100_000)][:200 - len(NAMES)]

# Where a name stands. The switch "sw" has the port "p0"; sw-of and so on are the words before the name.
PATHS = """switch create @|switch create new --id @|switch create new --portset @|switch show @|switch info @|switch destroy @
prop get @ k|prop get sw @|prop set sw @ v|prop set sw k @|prop clear sw @|prop list sw --port @|prop get @ k --by-id
port add sw @|port add @ p|port show sw @|port list @|port remove sw @|port block sw @|port vlan get sw @
port vlan set sw @ --id 1|uplink add sw @|uplink list @|uplink up sw @|uplink down sw @|uplink remove sw @|mtu set @ 1500
mac table @|mac table sw --port @|mirror add sw @ --type dvport --destinations p0 --sources-in p0|mirror remove sw @
mirror add sw s --type dvport --destinations @ --sources-in @|mirror list sw --port @|mcast filters @ --type mac
checkpoint save @|checkpoint show @|checkpoint remove @|apply @ --yes|validate @|dump @|export --switch @|topology @|health list @
batch @|mac table sw --layout @|prop set sw k --file @|help @|switch @|@""".replace("\n", "|").split("|")


def qvs(*words):
    """Runs qvs with words that are bytes, and returns its status and its output."""
    words = [word.encode() if isinstance(word, str) else word for word in words]
    result = subprocess.run([b"qvs", *words], capture_output=True, stdin=subprocess.DEVNULL, timeout=20)
    said = result.stdout + result.stderr
    assert 0 <= result.returncode <= 8, (words, result.returncode, said[:300])
    # JSON is for programs, and has the names as they are.
    more = b"" if b"--json" in words else rb"|\x7f|\xe2\x80[\x8b\xae]|\xef\xbb\xbf"
    assert not re.search(rb"[\x00-\x08\x0b-\x1f]" + more, said), (words, said[:300])
    said.decode()
    return result.returncode, result.stdout


def main():
    assert len(NAMES) == 200 and len(set(NAMES)) == 200, len(set(NAMES))
    os.mkdir("inside")
    os.chdir("inside")
    tried = NAMES[::int(os.environ.get("QVS_EVERY", 40 if os.environ.get("QVS_SANITIZED") else 10))]
    accepted = runs = 0
    for name, path in itertools.product(tried, PATHS):
        if path == PATHS[0]:
            qvs("switch", "create", "sw")
            qvs("port", "add", "sw", "p0")
        words = [name if word == "@" else word for word in path.split(" ")]
        status, _ = qvs(*words)
        runs += 1
        if path.startswith("port add sw") and status == 0 and not name.startswith(b"--"):
            accepted += 1
            numbers = json.loads(qvs("port", "list", "sw", "--json")[1])
            assert len(numbers) == 2, (name, numbers)
            assert qvs("port", "remove", "sw", "--", name)[0] == 0, name
        if path == PATHS[-1]:
            for alias in qvs("switch", "list", "--names")[1].splitlines():
                assert qvs("switch", "destroy", "--", alias)[0] == 0, alias
    made = [entry for entry in os.listdir(".") if entry not in ("checkpoints",)]
    assert not made and not os.path.exists("../x"), made
    print(f"{len(tried)} names, {len(PATHS)} paths, {runs} runs; {accepted} names of ports were accepted")
    assert accepted > len(tried) // 4


main()
