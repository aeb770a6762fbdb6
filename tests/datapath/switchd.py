# SPDX-License-Identifier: Apache-2.0
"""Runs the data path in the place of the emulated kernel, and speaks its messages."""
import array
import contextlib
import json
import os
import pathlib
import select
import socket
import struct
import subprocess
import sys
import time

START, KEPT, CONFIGURE, IN_FORCE, KEEP, CARRIER, LEARNT, JOINED = 100, 101, 102, 110, 111, 112, 113, 114
SLOT_VALUES, SLOTS = 40, 1 << 17
SOURCE = pathlib.Path(os.environ["QVS_SOURCE"])
BIN = pathlib.Path(os.environ["QVS_BIN"])
PROGRAM = BIN.parent / "libexec/qvs/qvs-switchd"
WAIT = 10


def text(value):
    value = value if isinstance(value, bytes) else value.encode()
    return struct.pack("<I", len(value)) + value


def compiled(configuration):
    """The bytes of a configuration."""
    json_file = pathlib.Path("configuration.json")
    json_file.write_text(json.dumps(configuration))
    subprocess.run(["flatc", "--binary", SOURCE / "host/datapath/policy.fbs", json_file], check=True)
    return pathlib.Path("configuration.bin").read_bytes()


def port(number, **policies):
    return {"number": number, "slot": number, "id": f"port{number}", "client": f"vm{number}", "link": True,
            "mac": {"bytes": [2, 0, 0, 0, 0, number]}, **policies}


def switch(*ports, number=1, name="sw1", **policies):
    return {"number": number, "name": name, "slot": 100, "ports": list(ports), **policies}


def frame(to, sender, payload=b"payload", kind=0x88b5):
    mac = lambda number: b"\xff" * 6 if number is None else bytes([2, 0, 0, 0, 0, number])
    return mac(to) + mac(sender) + struct.pack(">H", kind) + payload.ljust(46, b"\0")


def expect(what, found, wanted):
    if found != wanted:
        raise AssertionError(f"{what}: {found!r}, not {wanted!r}")


class Process:
    """A data path with its own state directory."""

    def __init__(self, directory="state", kept=(), memory=None, memory_size=SLOTS * SLOT_VALUES * 8, limit=None):
        self.directory = pathlib.Path(directory).absolute()
        self.directory.mkdir(exist_ok=True)
        self.memory = memory if memory is not None else os.memfd_create("counters")
        os.ftruncate(self.memory, memory_size)
        self.socket, theirs = socket.socketpair(socket.AF_UNIX)
        self.log = open(self.directory / "log", "ab+")
        script = ["sh", "-c", (f"ulimit -n {limit}; " if limit else "") + 'exec "$@"', "sh"]
        self.process = subprocess.Popen([*script, PROGRAM, "--kernel", str(theirs.fileno())],
                                        pass_fds=[theirs.fileno()], stderr=self.log)
        theirs.close()
        self.unread, self.files, self.kept, self.carriers, self.learnt = b"", [], {}, {}, set()
        self.generation = 0
        self.send(START, text(str(self.directory)), self.memory)
        for name, file in kept:
            self.kept[name] = file
            self.send(KEPT, text(name), file)

    def send(self, kind, payload, file=None):
        data = struct.pack("<II", len(payload), kind) + payload
        beside = [] if file is None else [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", [file]))]
        sent = self.socket.sendmsg([data], beside)
        self.socket.sendall(data[sent:])

    def receive(self, deadline):
        """Takes notice of one message, and returns its kind and payload, or None if none comes in time."""
        while len(self.unread) < 8 or len(self.unread) < 8 + struct.unpack_from("<I", self.unread)[0]:
            if not select.select([self.socket], [], [], max(0, deadline - time.monotonic()))[0]:
                return None
            data, files, _, _ = socket.recv_fds(self.socket, 1 << 16, 4)
            if not data:
                raise EOFError(f"the data path ended: {self.logged()}")
            self.unread += data
            self.files += files
        length, kind = struct.unpack_from("<II", self.unread)
        payload, self.unread = self.unread[8:8 + length], self.unread[8 + length:]
        if kind == KEEP:
            name = payload[4:].decode()
            self.kept.pop(name, None)
            if self.files:
                self.kept[name] = self.files.pop(0)
        if kind == CARRIER:
            number, up, size = struct.unpack_from("<IBI", payload)
            self.carriers[number] = (bool(up), payload[9:9 + size].decode())
        if kind == LEARNT:
            for i in range(struct.unpack_from("<I", payload)[0]):
                self.learnt.add(struct.unpack_from("<IBQII", payload, 4 + 21 * i))
        return kind, payload

    def configure(self, *switches, attachments=None, **members):
        self.generation += 1
        configuration = {"generation": self.generation, "whole": True, "switches": list(switches), **members}
        if attachments is not None:
            configuration |= {"attachments": attachments, "attachments_given": True}
        self.send(CONFIGURE, text(compiled(configuration)))
        self.wait_in_force()

    def wait_in_force(self):
        deadline = time.monotonic() + WAIT
        while message := self.receive(deadline):
            if message[0] == IN_FORCE:
                return expect("generation", struct.unpack("<Q", message[1])[0], self.generation)
        raise AssertionError("the configuration is not in force")

    def wait_carrier(self, number, wanted):
        deadline = time.monotonic() + WAIT
        while self.carriers.get(number) != wanted:
            if self.receive(deadline) is None:
                raise AssertionError(f"carrier of {number}: {self.carriers.get(number)}, not {wanted}")

    def counter(self, slot, value):
        return struct.unpack("<Q", os.pread(self.memory, 8, (slot * SLOT_VALUES + value) * 8))[0]

    def session(self, *words):
        session = Session(self.directory / "frames")
        session.request(*words)
        return session

    def client(self, number):
        session = self.session("attach", "sw1", f"port{number}")
        expect("answer", session.answer(), b"ok")
        return session

    def logged(self):
        return (self.directory / "log").read_text()

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.socket.close()

    def stop(self):
        self.socket.close()
        expect("exit status", self.process.wait(WAIT), 0)

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if self.process.poll() is None:
            if kind is None:
                self.stop()
            else:
                self.kill()


class Session:
    def __init__(self, path, kind=socket.SOCK_SEQPACKET):
        self.socket = socket.socket(socket.AF_UNIX, kind)
        self.socket.settimeout(WAIT)
        deadline = time.monotonic() + WAIT
        while True:
            try:
                return self.socket.connect(str(path))
            except (FileNotFoundError, ConnectionRefusedError):
                if time.monotonic() > deadline:
                    raise
                time.sleep(0.01)

    def request(self, *words):
        with contextlib.suppress(BrokenPipeError, ConnectionResetError):
            self.socket.send("\0".join(words).encode())

    def answer(self):
        try:
            return self.socket.recv(1 << 17)
        except ConnectionResetError:  # the peer closed without having read everything
            return self.socket.recv(1 << 17)

    def send(self, data):
        self.socket.send(data)

    def next(self):
        """The next frame without what pads it, or None if none comes for a while."""
        if not select.select([self.socket], [], [], 0.2)[0]:
            return None
        return self.socket.recv(1 << 17)

    def close(self):
        self.socket.close()


class Stream(Session):
    def __init__(self, path):
        super().__init__(path, socket.SOCK_STREAM)

    def send(self, data):
        self.socket.sendall(struct.pack(">I", len(data)) + data)

    def next(self):
        size = struct.unpack(">I", self.socket.recv(4, socket.MSG_WAITALL))[0]
        return self.socket.recv(size, socket.MSG_WAITALL)


def run_cases(*cases):
    """Runs each function in a directory of its own, or those that the command line names. The first failure ends the
    test."""
    top = pathlib.Path.cwd()
    for case in cases:
        if sys.argv[1:] and case.__name__ not in sys.argv[1:]:
            continue
        directory = top / case.__name__
        directory.mkdir()
        os.chdir(directory)
        try:
            case()
        except BaseException:
            print(f"{case.__name__} failed", file=sys.stderr)
            raise
