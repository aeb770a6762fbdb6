#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""top.py: the screen of qvs top in a pseudo terminal: order, filter, pause, sizes, hosts that go and come back, and that
every way to leave gives the terminal back. QVS_SCREENS=1 prints the screens."""
import fcntl
import json
import os
import pathlib
import pty
import select
import signal
import struct
import subprocess
import sys
import termios
import time

import pyte

BIN = pathlib.Path(os.environ["QVS_BIN"])
LAB = {
    "switches": [{"alias": "sw1", "uplinks": ["uplink0"], "ports": [f"vm{i}" for i in range(60)] + ["wéb-東京"]}],
    "clients": [{"switch": "sw1", "port": "vm7", "name": "seven.eth0"}],
    "busy": [{"switch": "sw1", "port": port} for port in ("vm2", "vm7", "wéb-東京")],
}
HOST = [BIN / "qvs-host", "run", "--state", "state"]
failures = []


def check(what, holds, screen=None):
    if not holds:
        failures.append(what)
        print(f"top.py: {what}", *(screen.display if screen else []), sep="\n")


class Terminal:
    """A program in a terminal of its own, and what the terminal shows."""

    def __init__(self, words, lines=24, columns=100, **environment):
        self.screen = pyte.Screen(columns, lines)
        self.stream = pyte.ByteStream(self.screen)
        self.raw = b""
        go, start = os.pipe()
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.read(go, 1)
            os.environ.update({"TERM": "linux", "LC_ALL": "C.UTF-8", **environment})
            # The size is there before the program looks.
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))
            os.execv(words[0], [str(word) for word in words])
        self.before = termios.tcgetattr(self.fd)
        os.write(start, b"1")
        os.close(go)
        os.close(start)

    def resize(self, lines, columns):
        self.screen.resize(lines, columns)
        fcntl.ioctl(self.fd, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))

    def read(self, seconds):
        """Takes what comes for a time. False at the end."""
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            if not select.select([self.fd], [], [], left)[0]:
                continue
            try:
                piece = os.read(self.fd, 65536)
            except OSError:
                return False
            self.raw += piece
            self.stream.feed(piece)
        return True

    def wait(self, what, holds, seconds=15):
        """Reads until the screen is as it should be."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.read(0.05)
            if holds(self.screen.display):
                break
        check(what, holds(self.screen.display), self.screen)
        if os.environ.get("QVS_SCREENS"):
            print(f"--- {what}", *self.screen.display, sep="\n")

    def press(self, keys):
        os.write(self.fd, keys.encode())

    def check_given_back(self, what):
        check(f"{what}: the other screen stays", self.raw.rfind(b"\x1b[?1049l") >= self.raw.rfind(b"\x1b[?1049h"))
        check(f"{what}: the cursor stays hidden", self.raw.rfind(b"\x1b[?25h") > self.raw.rfind(b"\x1b[?25l"))

    def end(self, what, status=0):
        """The program ends with this status, and the terminal is as it was."""
        end = time.monotonic() + 15
        pid = 0
        while pid == 0 and time.monotonic() < end:
            self.read(0.05)
            pid, found = os.waitpid(self.pid, os.WNOHANG)
        if pid == 0:
            os.kill(self.pid, signal.SIGKILL)
            return check(f"{what}: does not end", False, self.screen)
        check(f"{what}: ends with {found}", os.waitstatus_to_exitcode(found) == status)
        check(f"{what}: the modes of the terminal stay changed", termios.tcgetattr(self.fd) == self.before)
        self.check_given_back(what)
        os.close(self.fd)


def names(display, above=3):
    return [line.split(" ")[0] for line in display[above:-1] if line.strip()]


def busy(ports):
    # The emulation keeps an empty cell behind a wide character.
    return sorted(name[:3] for name in ports) == ["vm2", "vm7", "wéb"]


def top(*words, **more):
    return Terminal([BIN / "qvs", "top", "--interval", "0.1", *words], **more)


def screens():
    terminal = top()
    terminal.wait("busy ports come first", lambda d: busy(names(d)[:3]) and "62 ports" in d[1])
    terminal.press("n")
    terminal.wait("by name", lambda d: names(d)[:3] == ["uplink0", "vm0", "vm1"] and "by name" in d[0])
    terminal.press("\x1b[4~")
    terminal.wait("the end", lambda d: names(d)[-1].startswith("wéb"))
    terminal.press("r\x1b[1~")
    terminal.wait("reversed, from the start", lambda d: names(d)[0].startswith("wéb") and names(d)[1] == "vm59")
    terminal.press("/vm7\r")
    terminal.wait("filtered", lambda d: names(d) == ["vm7"] and "with 'vm7'" in d[0] and "1 port:" in d[1])
    terminal.press(" ")
    terminal.wait("paused", lambda d: "PAUSED" in d[0])
    shown = list(terminal.screen.display)
    terminal.read(0.5)
    check("a paused screen changes", shown == terminal.screen.display, terminal.screen)
    terminal.press(" \x1b")
    terminal.wait("on again, without a filter", lambda d: "PAUSED" not in d[0] and "62 ports" in d[1])
    terminal.press("a")
    terminal.wait("without the idle", lambda d: busy(names(d)))
    terminal.press("?")
    terminal.wait("help", lambda d: any("page down" in line for line in d))
    terminal.press("xt")
    for lines, columns in ((10, 40), (3, 20), (1, 1), (60, 200)):
        terminal.resize(lines, columns)
        terminal.read(0.3)
    terminal.wait("large again", lambda d: "seven.eth0" in "".join(d) and "CLIENT" in d[2])
    terminal.resize(12, 44)
    terminal.wait("small: the rates stay", lambda d: "IN b/s" in d[2] and "DROP/s" in d[2] and "CLIENT" not in d[2])
    terminal.press("p")
    terminal.wait("small: the column of the order stays", lambda d: "*IN p/s" in d[2] and "OUT p/s" not in d[2])
    terminal.press("q")
    terminal.end("q")


def endings():
    for what, end in (("^C", lambda each: each.press("\x03")),
                      ("SIGTERM", lambda each: os.kill(each.pid, signal.SIGTERM)),
                      ("SIGINT", lambda each: os.kill(each.pid, signal.SIGINT)),
                      ("SIGHUP", lambda each: os.kill(each.pid, signal.SIGHUP)),
                      ("SIGTERM to the screen", lambda each: os.kill(child_of(each.pid), signal.SIGTERM))):
        # A terminal with another screen, of which the emulation does not know all that it does.
        terminal = top("sw1", TERM="xterm-256color")
        terminal.wait(f"before {what}", lambda d: "62 ports" in d[1])
        end(terminal)
        terminal.end(what)
    # Under a shell, as the death of the first process of a terminal takes the terminal away.
    terminal = Terminal(["/bin/sh", "-c", f"'{BIN}/qvs' top --interval 0.1; read line"])
    terminal.wait("before SIGKILL", lambda d: "62 ports" in d[1])
    tool = child_of(terminal.pid)
    screen = child_of(tool)
    os.kill(tool, signal.SIGKILL)
    end = time.monotonic() + 15
    while runs(screen) and time.monotonic() < end:
        terminal.read(0.05)
    check("killed: the screen goes on", not runs(screen))
    terminal.read(0.2)
    terminal.press("\n")
    terminal.end("killed")


def child_of(pid):
    return int(pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()[0])


def runs(pid):
    stat = pathlib.Path(f"/proc/{pid}/stat")
    try:
        # Nobody may have asked for its status yet.
        return stat.read_text().rsplit(")", 1)[1].split()[0] not in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return False


def hosts():
    """A host that goes away, hangs and comes back. This process has started it, so it may stop it."""
    terminal = top()
    terminal.wait("looking", lambda d: "62 ports" in d[1])
    control = [BIN / "qvs-host"]
    status = json.loads(subprocess.check_output([*control, "status", "--json"]))
    os.kill(status["pid"], signal.SIGSTOP)
    terminal.read(0.3)
    terminal.press("n")
    terminal.wait("keys while the host hangs", lambda d: "by name" in d[0])
    os.kill(status["pid"], signal.SIGCONT)
    subprocess.run([*control, "stop"], check=True, stdout=subprocess.DEVNULL)
    terminal.wait("gone", lambda d: "the host is gone" in d[-1] and names(d)[0] == "uplink0")
    back = subprocess.Popen([*control, "start", "--state", "state"], stdout=subprocess.DEVNULL)
    back.wait()
    terminal.wait("back", lambda d: "the host is gone" not in d[-1] and ": in 0 bit/s" not in d[1])
    terminal.press("q")
    terminal.end("after the host came back")
    subprocess.run([*control, "stop"], check=True, stdout=subprocess.DEVNULL)


def trees():
    for locale, branch in (("C.UTF-8", "├─ vm0"), ("C", "|- vm0")):
        terminal = Terminal([BIN / "qvs", "show", "--all"], lines=80, LC_ALL=locale)
        terminal.wait(f"a tree in {locale}", lambda d: any(branch in line for line in d))
        os.waitpid(terminal.pid, 0)


def refusals():
    terminal = top(TERM="nonsense")
    terminal.read(1)
    check("an unknown terminal", b"terminal type 'nonsense' is not known" in terminal.raw, terminal.screen)


if len(sys.argv) == 1:
    pathlib.Path("lab.json").write_text(json.dumps(LAB))
    sys.exit(subprocess.run([*HOST, "--lab", "lab.json", "--", sys.argv[0], "inside"]).returncode)
screens()
endings()
trees()
refusals()
hosts()
sys.exit(1 if failures else 0)
