# SPDX-License-Identifier: Apache-2.0
"""What an earlier version has left is read: a state directory, a journal, a checkpoint, the memory of an agent. What a
later version leaves is refused in words and stays as it is.

1.0.0 holds what that version wrote when its host was killed while `qvs apply --confirm` waited.
"""
import contextlib
import json
import os
import pathlib
import re
import sqlite3
import subprocess

FILES = pathlib.Path(os.environ["QVS_SOURCE"], "tests/upgrade/1.0.0")
STATE = pathlib.Path("state").resolve()
MEMORY = {"applied": 7, "trying": 0, "tried": 7, "attempts": 0, "refused": {"8": {"step": "s", "reason": "r"}}}


def run(*words, **more):
    result = subprocess.run(words, capture_output=True, text=True, timeout=60, **more)
    return result.returncode, result.stdout + result.stderr


def on_host(line):
    return run("qvs-host", "run", "--state", str(STATE), "--", "sh", "-c", line)


def put(name, text):
    path = STATE / name
    path.parent.mkdir(mode=0o700, exist_ok=True)
    path.write_text(text)
    path.chmod(0o600)
    return path


def text_of(name):
    return (FILES / name).read_text()


def left():
    """The state directory as 1.0.0 has left it."""
    put("qvs.journal", text_of("qvs.journal"))
    put("checkpoints/before", text_of("checkpoint")).parent.chmod(0o700)
    with contextlib.closing(sqlite3.connect(STATE / "hypercore.db")) as database:
        database.executescript(text_of("hypercore.sql"))


def earlier():
    before, after = "mtu: 2000", "mtu: 9000"
    status, exported = on_host("qvs export")
    assert status == 0 and after in exported and "com.example.text: a2VwdAA=" in exported, exported
    assert "p1:\n        connectId: 1\n        blocked: off\n        vlan: {id: 9}" in exported, exported
    status, said = on_host("qvs apply --recover; qvs export")
    assert said.startswith("undone\n") and before in said and "p3:" not in said and "vlan: {id: 7}" in said, said
    status, said = on_host("qvs mtu set hall 1500 && qvs checkpoint rollback before --yes && qvs export")
    assert status == 0 and said.endswith(text_of("checkpoint").split("\n\n", 1)[1]), said


def later():
    path = put("checkpoints/later", text_of("checkpoint").replace("qvs checkpoint 1", "qvs checkpoint 2"))
    assert on_host("qvs checkpoint show later") == (
        1, "qvs: checkpoint 'later': a newer version of qvs wrote it, in format 2; this one reads format 1\n")
    path.unlink()
    path = put("qvs.journal", text_of("qvs.journal").replace('"qvsJournal":1', '"qvsJournal":2'))
    kept = path.read_text()
    status, said = on_host("qvs apply --recover")
    assert status == 1 and "it is of version 2, and this program knows 1; use the newer program" in said, said
    assert path.read_text() == kept
    with contextlib.closing(sqlite3.connect(STATE / "hypercore.db")) as database:
        database.execute("PRAGMA user_version = 2")
    status, said = run("qvs-host", "start", "--state", str(STATE))
    assert status == 125 and "it was written by a newer version of this program" in said, said


def agent():
    """The agent says which revision its host has before it looks for the store."""
    words = ["timeout", "1", "qvs-agent", "run", "--host", "h", "--directory", str(STATE / "agent"), "--listen", "none",
             "--endpoints", "http://127.0.0.1:1"]
    for memory, expected in ((MEMORY, r"host h: revision 7, store "),
                             (MEMORY | {"format": 1}, r"host h: revision 7, store "),
                             (MEMORY | {"format": 2}, r"a newer version of qvs-agent wrote it, in format 2; this one reads format 1")):
        text = json.dumps(memory)
        path = put("agent/memory.json", text)
        said = run(*words)[1]
        assert re.search(expected, said), (memory, said)
        assert path.read_text() == text


STATE.mkdir(mode=0o700)
left()
earlier()
later()
agent()
