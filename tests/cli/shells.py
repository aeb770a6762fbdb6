#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""shells.py: completes words in bash, zsh and fish, with the completion as it is installed."""
import os
import pty
import re
import select
import shutil
import subprocess
import sys
import time

sys.dont_write_bytecode = True
from checks import expect, report  # noqa: E402

BIN = os.environ["QVS_BIN"]
SHARE = os.path.dirname(BIN) + "/share"
HOSTILE = "a b'$(touch x)"
SETUP = [
    "qvs switch create sw1 --ports 1 --uplinks 1",
    "qvs mirror add sw1 monitor --type dvport --destinations uplink0",
    "qvs mirror add sw1 tap0 --port port0 --type dvport --destinations uplink0",
    "qvs checkpoint save before --dir kept",
]

# What is typed, and what it becomes.
COMPLETED = [
    ("qvs swi", "qvs switch"),
    ("qvs switch cr", "qvs switch create"),
    ("qvs switch create --may", "qvs switch create --may-exist"),
    ("qvs port list sw", "qvs port list sw1"),
    ("qvs port show sw1 por", "qvs port show sw1 port0"),
    ("qvs mirror list sw1 --port por", "qvs mirror list sw1 --port port0"),
    ("qvs port vlan c", "qvs port vlan clear"),
    ("qvs uplink down sw1 upl", "qvs uplink down sw1 uplink0"),
    ("qvs mcast filters sw1 --type i", "qvs mcast filters sw1 --type ipv"),
    ("qvs teaming set sw1 --balance source-p", "qvs teaming set sw1 --balance source-port"),
    ("qvs teaming set sw1 --standby up", "qvs teaming set sw1 --standby uplink0"),
    ("qvs port vlan set sw1 port0 --priv", "qvs port vlan set sw1 port0 --private"),
    ("qvs mirror show sw1 mon", "qvs mirror show sw1 monitor"),
    ("qvs mirror show sw1 --port port0 tap", "qvs mirror show sw1 --port port0 tap0"),
    ("qvs checkpoint show --dir kept bef", "qvs checkpoint show --dir kept before"),
    ("qvs help checkp", "qvs help checkpoint"),
    ("qvs topology --format h", "qvs topology --format html"),
    ("qvs metrics --ports up", "qvs metrics --ports uplinks"),
    ("qvs port list sw1 --columns vl", "qvs port list sw1 --columns vlan"),
    ("qvs port list sw1 --columns vlan,in-", "qvs port list sw1 --columns vlan,in-use"),
    ("qvs help al", "qvs help all"),
    ("qvs help port vlan ge", "qvs help port vlan get"),
    ("qvs completion f", "qvs completion fish"),
    ("qvs-host fault a", "qvs-host fault add"),
    ("qvs-host start --lab two", "qvs-host start --lab two-nics"),
    ("qvs-host start --trace some-f", "qvs-host start --trace some-file"),
    ("qvs-host run -- some-nothing", "qvs-host run -- some-nothing"),
]


def bash(typed):
    program = typed.split()[0]
    function = "_" + program.replace("-", "_")
    words = " ".join("'%s'" % word.replace("'", "'\\''") for word in typed.split(" "))
    script = (f". {SHARE}/bash-completion/completions/{program}; COMP_WORDS=({words}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); "
              f"{function}; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
    offered = subprocess.run(["bash", "--norc", "-c", script], capture_output=True, text=True).stdout.split("\n")[:-1]
    return completed(typed, [word for word in offered if word])


def fish(typed):
    environment = dict(os.environ, HOME=os.getcwd(), XDG_DATA_DIRS=SHARE)
    script = "complete -C " + "'" + typed.replace("\\", "\\\\").replace("'", "\\'") + "'"
    output = subprocess.run(["fish", "--no-config", "-c", f"source {SHARE}/fish/vendor_completions.d/{typed.split()[0]}.fish; {script}"],
                            capture_output=True, text=True, env=environment).stdout
    return completed(typed, [line.split("\t")[0] for line in output.splitlines()])


def completed(typed, offered):
    """The typed line with what all words that are offered begin with."""
    last = typed.split(" ")[-1]
    common = os.path.commonprefix(offered) if offered else last
    return typed[:len(typed) - len(last)] + common


class Zsh:
    """One zsh with a terminal, in which lines are typed, completed and printed instead of run."""

    def __init__(self):
        child, self.terminal = pty.fork()
        if child == 0:
            os.environ.update(TERM="dumb", PS1="", HOME=os.getcwd(), COLUMNS="200")
            os.execvp("zsh", ["zsh", "-f", "-i"])
        self.child = child
        setup = (f"fpath=({SHARE}/zsh/site-functions $fpath); autoload -U compinit; compinit -u -D; unsetopt beep; "
                 "setopt no_auto_menu no_list_ambiguous no_auto_list no_auto_param_slash no_auto_remove_slash; "
                 "show() { print -r -- \"<<$BUFFER>>\"; BUFFER= }; zle -N show; bindkey '^X' show; "
                 "bindkey '^I' complete-word; print ready-''now")
        os.write(self.terminal, setup.encode() + b"\n")
        self.read(rb"ready-now\r?\n")

    def read(self, pattern):
        text = b""
        deadline = time.time() + 20
        while time.time() < deadline:
            if select.select([self.terminal], [], [], 0.2)[0]:
                text += os.read(self.terminal, 65536)
            found = re.search(pattern, text)
            if found:
                return found
        sys.exit(f"zsh does not answer: {text!r}")

    def __call__(self, typed):
        os.write(self.terminal, typed.encode() + b"\t\x18")
        return self.read(rb"<<(.*?)>>").group(1).decode().rstrip()

    def end(self):
        os.close(self.terminal)
        os.waitpid(self.child, 0)


def main():
    with open("some-file", "w"):
        pass
    for command in SETUP:
        subprocess.run(command.split(), check=True, stdout=subprocess.DEVNULL)
    for name in ("fish", "zsh"):
        if not shutil.which(name):
            sys.exit(f"{name} is not installed; scripts/setup installs it")
    shells = {"bash": bash, "fish": fish, "zsh": Zsh()}
    for shell, complete in shells.items():
        for typed, expected in COMPLETED:
            expect(f"{shell}: {typed!r}", complete(typed), expected)
    # A name of the host is quoted and runs nothing.
    subprocess.run(["qvs", "port", "add", "sw1", HOSTILE], check=True, stdout=subprocess.DEVNULL)
    for shell, complete in shells.items():
        found = complete("qvs port show sw1 a")
        whole = found.startswith("qvs port show sw1 a") and len(found) >= len("qvs port show sw1 ") + len(HOSTILE)
        expect(f"{shell}: a name in {found!r}", whole, True)
    shells["zsh"].end()
    if os.path.exists("x"):
        sys.exit("a name was run as a command")
    report()


if "QVS_HOST_SOCKET" not in os.environ:
    sys.exit(subprocess.run([BIN + "/qvs-host", "run", "--", os.path.abspath(__file__)]).returncode)
main()
