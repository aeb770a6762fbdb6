# SPDX-License-Identifier: Apache-2.0
"""What clients, readers of a trace, files of a state directory and rows of the database must not do to a host.

Each function is a case on a directory of its own; the first failure ends the test.
"""
import contextlib
import os
import pathlib
import resource
import select
import signal
import socket
import sqlite3
import stat
import struct
import subprocess
import sys
import time

REPLY, STATE_GET, PROP_GET, PROP_SET, SWITCH_ADD = 1, 10, 11, 12, 14
OPEN, IOCTL, COPY_IN, COPY_OUT, COPIED, SHELL, CONTROL, FOLLOW, LINE = 30, 31, 32, 33, 34, 40, 50, 51, 52
ESC = "\x1b[31m\n"


def text(value):
    value = value if isinstance(value, bytes) else value.encode()
    return struct.pack("<I", len(value)) + value


def number(value):
    return struct.pack("<I", value)


class Client:
    def __init__(self, state):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(20)
        self.socket.connect(f"{state}/socket")

    def send(self, kind, payload=b""):
        self.socket.sendall(struct.pack("<II", len(payload), kind) + payload)

    def bytes(self, size):
        data = bytearray()
        while len(data) < size:
            piece = self.socket.recv(min(size - len(data), 1 << 20))
            if not piece:
                raise EOFError
            data += piece
        return bytes(data)

    def receive(self):
        length, kind = struct.unpack("<II", self.bytes(8))
        return kind, self.bytes(length)

    def call(self, kind, payload=b""):
        self.send(kind, payload)
        return self.receive()[1]

    def control(self, request):
        return self.call(CONTROL, text(request))[4:].decode()

    def open(self, path="/dev/vswitch"):
        assert self.call(OPEN, text(path)) == number(0)
        return self

    def is_closed(self):
        try:
            return self.receive() is None
        except (EOFError, ConnectionError):
            return True


def shell(client, *words):
    return client.call(SHELL, number(len(words)) + b"".join(map(text, words)))


def qvs_host(*words, **options):
    return subprocess.run(["qvs-host", *words], capture_output=True, text=True, timeout=60, **options)


def pid_of(state):
    return int(pathlib.Path(state, "lock").read_text())


def start(state, *words, **options):
    result = qvs_host("start", "--state", state, *words, **options)
    assert result.returncode == 0, result.stderr
    return pid_of(state)


@contextlib.contextmanager
def host(*words, state="state"):
    process = start(state, *words)
    try:
        yield process
    finally:
        os.kill(process, signal.SIGCONT)
        qvs_host("stop", "--state", state)


def descriptors(process):
    return len(os.listdir(f"/proc/{process}/fd"))


def memory(process):
    """The most megabytes that the process ever had."""
    lines = pathlib.Path(f"/proc/{process}/status").read_text().splitlines()
    return int(next(line for line in lines if line.startswith("VmHWM")).split()[1]) // 1024


def eventually(condition):
    end = time.monotonic() + 5
    while not condition():
        assert time.monotonic() < end, "it does not come to that"
        time.sleep(0.01)


def cut_dialogues():
    """A client that dies inside a device request leaves nothing."""
    with host() as process:
        before = descriptors(process)
        for _ in range(100):
            client = Client("state").open()
            client.send(IOCTL, struct.pack("<IQ", 0x100B, 16))
            assert client.receive()[0] == COPY_IN
            client.socket.close()
        eventually(lambda: descriptors(process) <= before)


def deep_json():
    """JSON that is nested too deeply is refused, wherever it comes from."""
    deep = "[" * 200000
    pathlib.Path("deep.json").write_text(deep)
    message = "it is nested deeper than 64 levels"
    assert message in qvs_host("start", "--state", "state", "--lab", "deep.json").stderr
    with host():
        for words in (["run", "--lab", "deep.json", "--state", "state", "--", "true"],
                      ["fault", "add", "x", "--lab", "deep.json", "--state", "state"]):
            result = qvs_host(*words)
            assert result.returncode == 125 and message in result.stderr, result
        for depth, answer in ((64, '"op\\" is not'), (65, message)):
            request = '{"op":"x","lab":' + "[" * (depth - 1) + "]" * (depth - 1) + "}"
            assert answer in Client("state").control(request), depth
        request = '{"op":"\\"[[[' + "[" * 100 + '"}'
        assert "is not an operation" in Client("state").control(request)


def trace_pipe():
    """A trace that nobody reads, or reads late, makes no one wait, and says what it lacks."""
    os.mkfifo("pipe")
    result = qvs_host("start", "--state", "state", "--trace", "pipe")
    assert result.returncode == 125 and "no process reads from it" in result.stderr, result
    reader = os.open("pipe", os.O_RDONLY | os.O_NONBLOCK)
    with host("--trace", "pipe"):
        client = Client("state")
        begin = time.monotonic()
        for _ in range(60):
            shell(client, "-e", "ls", "x" * 60000)
        assert time.monotonic() - begin < 5
        assert "traceDropped" in client.control('{"op":"status"}')
        assert "dropped lines" in qvs_host("status", "--state", "state").stdout
        lines = b""
        while b"trace dropped lines=" not in lines:
            assert select.select([reader], [], [], 5)[0], "the reader waits in vain"
            lines += os.read(reader, 1 << 20)
            shell(client, "-e", "ls", "/net")
        assert all(line.startswith((b"shell treesh -e ls ", b"trace dropped lines="))
                   for line in lines.rpartition(b"\n")[0].splitlines()), "lines are mixed"
    os.close(reader)
    with host("--trace", "/dev/full"):
        for dropped in (1, 2):
            shell(Client("state"), "-e", "ls", "/net")
            assert f"dropped lines {dropped}\n" in qvs_host("status", "--state", "state").stdout
    log = pathlib.Path("state/log").read_text()
    assert log.count("warning cannot write to the trace /dev/full: No space left on device") == 1, log
    os.symlink("elsewhere", "link")
    result = qvs_host("start", "--state", "state", "--trace", "link")
    assert result.returncode == 125 and "symbolic link" in result.stderr and not os.path.exists("elsewhere"), result


def late_follower():
    """So does who follows the trace and does not read."""
    with host() as process:
        follower = Client("state")
        follower.call(FOLLOW)
        client = Client("state")
        for _ in range(200):
            shell(client, "-e", "ls", "x" * 60000)
        assert memory(process) < 100, memory(process)
        lines = [follower.receive()[1][4:]]
        while not lines[-1].startswith(b"trace dropped lines="):
            lines.append(follower.receive()[1][4:])
        missing = int(lines[-1].rpartition(b"=")[2])
        assert missing + len(lines) - 1 == 200, (missing, len(lines))


def long_area():
    """A device request with 16 MiB of input is traced in part, and soon."""
    size = 16 << 20
    with host("--trace", "trace"):
        client = Client("state").open()
        client.send(IOCTL, struct.pack("<IQ", 0x1010, 16))
        client.receive()
        client.send(COPIED, number(0) + text(struct.pack("<IIQQ", size, 8, 1, 2)))
        client.receive()
        client.send(COPIED, number(0) + text(b"\x01" * size))
        begin = time.monotonic()
        client.receive()
        assert time.monotonic() - begin < 2, time.monotonic() - begin
        shell(Client("state"), "-e", "ls", b"\xff" * 100000)
    lines = pathlib.Path("trace").read_text().splitlines()
    shown = "01" * (256 << 10)
    assert lines[1] == ('device ioctl "/dev/vswitch" 0x1010 GetSwitchInfo in=16777216 out=8 '
                        f"input=[0:{shown} +16515072 bytes] -> ENOENT"), lines[1][-100:]
    assert lines[-1].endswith('"+34464 bytes -> exit 1'), lines[-1][-100:]


def unread_answers():
    """Answers that nobody reads do not fill the memory, and others are served."""
    lab = '{"kcp": {"containerInterfaces": [{"name": "c", "count": 10000}]}}'
    pathlib.Path("lab.json").write_text(lab)
    with host("--lab", "lab.json") as process:
        client = Client("state")
        place = b"\0" + text("a") + text("")
        client.call(SWITCH_ADD, text("a") + text("vswitch") + number(8) + number(105))
        assert client.call(PROP_SET, place + text("k") + text(b"v" * (32 << 20)) + number(16)) == number(0)
        readers = [Client("state") for _ in range(40)]
        for reader in readers:
            reader.send(PROP_GET, place + text("k"))
        assert readers[0].receive()[1][:4] == number(0)
        assert memory(process) < 300, memory(process)
        room = 8 + 10000 * 11689
        devices = [Client("state").open("/crate/devices/char/hypdriver/kcp") for _ in range(6)]
        for device in devices:
            device.send(IOCTL, struct.pack("<IQ", 11, 16))
            device.receive()
            device.send(COPIED, number(0) + text(struct.pack("<IIQ", 0, room, 1)))
        assert shell(client, "-e", "ls", "/net")[:4] == number(0)
        assert memory(process) < 950, memory(process)
    log = pathlib.Path("state/log").read_text()
    assert "info connection closed: " in log and "bytes of messages are not read" in log, log


def no_memory():
    """A request that fails in a way of its own is answered, and the connection lasts."""
    with host() as process:
        client = Client("state")
        client.call(SWITCH_ADD, text("a") + text("vswitch") + number(8) + number(105))
        place = b"\0" + text("a") + text("")
        assert client.call(PROP_SET, place + text("k") + text(b"v" * (24 << 20)) + number(16)) == number(0)
        used = int(pathlib.Path(f"/proc/{process}/statm").read_text().split()[0]) * resource.getpagesize()
        # The value is stored; a snapshot that holds it once more finds no room.
        resource.prlimit(process, resource.RLIMIT_AS, (used + (8 << 20),) * 2)
        answer = client.call(STATE_GET, b"\0")
        assert answer[:4] == number(0xBAD0001), answer[:4]
        assert shell(client, "-e", "ls", "/net")[:4] == number(0)
    assert "error a request of kind 10 failed: " in pathlib.Path("state/log").read_text()


def who_may():
    """The socket is its user's, whatever the umask, and a state directory is nobody else's."""
    with host() as process:
        assert stat.S_IMODE(os.stat("state/socket").st_mode) == 0o600
    old = os.umask(0)
    with host(state="open"):
        assert stat.S_IMODE(os.stat("open/socket").st_mode) == 0o600
        assert stat.S_IMODE(os.stat("open").st_mode) & 0o022 == 0
        for name in os.listdir("open"):
            assert os.stat(f"open/{name}").st_mode & 0o022 == 0, name
        if os.geteuid() == 0:
            os.chmod("open/socket", 0o777)
            os.chmod(".", 0o755)
            child = os.fork()
            if child == 0:
                os.setuid(65534)
                with contextlib.suppress(ConnectionError):
                    client = Client("open")
                    os._exit(0 if client.is_closed() else 1)
                os._exit(0)
            assert os.waitpid(child, 0)[1] == 0, "another user was served"
            assert "the client belongs to user 65534" in pathlib.Path("open/log").read_text()
    os.umask(old)

    def refused(message):
        result = qvs_host("start", "--state", "state")
        assert result.returncode == 125 and message in result.stderr, (message, result)

    os.chmod("state", 0o777)
    refused("other users can write to")
    os.chmod("state", 0o755)
    if os.geteuid() == 0:
        os.chown("state", 65534, 65534)
        refused("belongs to user 65534")
        os.chown("state", 0, 0)
    for name in ("lock", "log", "hypercore.db", "hypercore.db-wal", "hypercore.db-journal"):
        with contextlib.suppress(FileNotFoundError):
            os.rename(f"state/{name}", "kept")
        pathlib.Path("target").write_text("precious")
        os.symlink("../target", f"state/{name}")
        refused(f"state/{name} is a symbolic link")
        assert pathlib.Path("target").read_text() == "precious", name
        os.remove(f"state/{name}")
        with contextlib.suppress(FileNotFoundError):
            os.rename("kept", f"state/{name}")


def privileged_programs():
    """A program with privileges of its own does not go to the host that its caller names."""
    if os.geteuid() != 0:
        return
    listener = socket.socket(socket.AF_UNIX)
    listener.bind("caller")
    os.chmod("caller", 0o777)
    os.chmod(".", 0o755)
    listener.listen()
    listener.settimeout(0.2)
    treesh = subprocess.check_output(["qvs-host", "run", "--", "sh", "-c", "echo $QVS_HOST_TREESH"], text=True).strip()
    subprocess.run(["cp", treesh, "plain"], check=True)
    subprocess.run(["cp", treesh, "privileged"], check=True)
    os.chown("privileged", 65534, 65534)
    os.chmod("privileged", 0o4755)
    environment = dict(os.environ, QVS_HOST_SOCKET="caller")
    for program, connects in (("plain", True), ("privileged", False)):
        process = subprocess.Popen([f"./{program}", "-e", "ls", "/net"], env=environment, stderr=subprocess.DEVNULL)
        try:
            listener.accept()[0].close()
            assert connects, program
        except TimeoutError:
            assert not connects, program
        process.wait(20)


def control_characters():
    """Names of others steer no terminal."""
    escaped = "\\x1b[31m\\n"
    with host():
        qvs_host("fault", "add", ESC, "--delay", "1", "--state", "state", check=True)
        Client("state").control('{"op":"seed","lab":{"switches":[{"alias":"\\u001b[31m\\n"}]}}')
        for words in (["status"], ["fault", "list"]):
            out = qvs_host(*words, "--state", "state").stdout
            assert escaped in out and "\x1b" not in out, out
        assert "\u009b" not in qvs_host("fault", "add", "\u009b", "--delay", "1", "--state", "state").stdout
        assert "\u009b" not in qvs_host("fault", "list", "--json", "--state", "state").stdout
    for words in (["run", "--lab", ESC, "--", "true"], ["status", "--state", ESC], ["run", "--", ESC], ["run", ESC],
                  ["start", "--state", "state", "--trace", f"no/{ESC}"]):
        err = qvs_host(*words).stderr
        assert escaped in err and "\x1b" not in err, (words, err)


def strange_rows():
    """A row of a device that no host has written is refused with its table and its key."""
    start("state")
    qvs_host("stop", "--state", "state", check=True)
    whole = pathlib.Path("state/hypercore.db").read_bytes()
    cases = [
        ("multicast groups", 4294967296, b""), ("multicast groups", "04000001 0 01005e00000", b""),
        ("multicast groups", "04000001 2 e0000001", b"abc"), ("multicast groups", "4000001 2 e0000001", b""),
        ("mac table", "2/0/1", b"1"), ("mac table", "020000000001/0000/1", b"x"),
        ("mac learning", "limit", b"65536"), ("mac learning", "colour", b"1"), ("busy ports", "4000001", b""),
        ("tarn-spf ports", "04000001", b"abc"), ("tarn-spf", "failures", b""), ("rtm", "1", b"x" * 20),
        ("rtm", "00000000000000000001", b"x" * 20), ("options", "packed", b"\0\0\xff\xff"),
        ("bfd.sessions", "x", b"\0" * 88), ("bfd.sessions", "0000000001", b"short"), ("bfd", "logLevel", b"\2\0\0\0"),
        ("kcp.interfaces", "0000000001", b"short"), ("kcp", "status", b"\0"),
        ("livetrace.sessions", "0000000001", b""), ("traceflow.requests", "0000000001", b"\1\0\0\0"),
        ("traceflow", "telemetry", b""), ("host", "seed", b"many"), ("no such table", "k", b""),
    ]
    for table, key, value in cases:
        pathlib.Path("state/hypercore.db").write_bytes(whole)
        for end in ("-wal", "-shm"):
            pathlib.Path(f"state/hypercore.db{end}").unlink(missing_ok=True)
        with contextlib.closing(sqlite3.connect("state/hypercore.db")) as database:
            database.execute("INSERT INTO device_values VALUES (?, ?, ?)", (table, key, value))
            database.commit()
        result = qvs_host("start", "--state", "state")
        expected = f'row "{key}" of the table "{table}" is invalid; restore a copy'
        assert result.returncode == 125 and expected in result.stderr, (table, key, result)


def silent_host():
    """A host that does not answer is named, and nobody waits for it longer than he wants to."""
    with host() as process:
        run = subprocess.Popen(["qvs-host", "run", "--state", "state", "--", "sh", "-c", "echo up; read line"],
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        run.stdout.readline()
        os.kill(process, signal.SIGSTOP)
        # Its command ends; it waits for the host to take the lease back.
        run.stdin.close()
        time.sleep(0.2)
        assert run.poll() is None
        run.terminate()
        assert run.wait(2) == -signal.SIGTERM
        environment = dict(os.environ, QVS_HOST_TIMEOUT="1")
        for words in (["status"], ["stop"], ["run", "--", "true"]):
            begin = time.monotonic()
            result = qvs_host(words[0], "--state", "state", *words[1:], env=environment)
            assert result.returncode == 125 and f"(process {process}) does not answer" in result.stderr, result
            assert time.monotonic() - begin < 3, words


def start_after_kill():
    """The next host does not mind that the last one was killed just now."""
    os.kill(start("state"), signal.SIGKILL)
    # Who dies slowly holds the lock until the end.
    subprocess.Popen(["flock", "-F", "state/lock", "sleep", "0.4"])
    eventually(lambda: subprocess.run(["flock", "-n", "state/lock", "true"], check=False).returncode != 0)
    with host():
        pass


CASES = [cut_dialogues, deep_json, trace_pipe, late_follower, long_area, unread_answers, no_memory, who_may,
         privileged_programs, control_characters, strange_rows, silent_host, start_after_kill]

if __name__ == "__main__":
    wanted = sys.argv[1:]
    for case in CASES:
        if wanted and case.__name__ not in wanted:
            continue
        # Limits of memory mean nothing to a sanitizer, which takes terabytes of addresses.
        if os.environ.get("QVS_SANITIZED") and case in (no_memory, unread_answers, late_follower):
            continue
        home = os.getcwd()
        os.mkdir(case.__name__)
        os.chdir(case.__name__)
        begin = time.monotonic()
        case()
        print(f"{case.__name__}: {time.monotonic() - begin:.2f} s")
        os.chdir(home)
