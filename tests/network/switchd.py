#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A data path that forwards nothing and answers as the file "behave" of the state directory says.

delay SECONDS, hang, wrong (a generation that was never sent), garbage, die. It writes each configuration to
configuration.N, and sends the messages of the file "tell" before it answers. "slot NUMBER VALUE..." in that file
counts.
"""
import array
import mmap
import os
import pathlib
import socket
import struct
import sys
import time

START, KEPT, CONFIGURE, IN_FORCE, KEEP, CARRIER, LEARNT, JOINED = 100, 101, 102, 110, 111, 112, 113, 114
SLOT = 40 * 8
kernel = socket.socket(fileno=3)
waiting = []


def receive(size):
    data = b""
    while len(data) < size:
        piece, ancillary, _, _ = kernel.recvmsg(size - len(data), socket.CMSG_SPACE(4))
        for _, _, passed in ancillary:
            waiting.append(array.array("i", passed)[0])
        if not piece:
            sys.exit()
        data += piece
    return data


def text(value):
    return struct.pack("<I", len(value)) + value


def send(kind, payload, file=None):
    rights = [] if file is None else [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", [file]))]
    kernel.sendmsg([struct.pack("<II", len(payload), kind) + payload], rights)


def tell(state, memory):
    for line in pathlib.Path(state, "tell").read_text().splitlines():
        what, *words = line.split()
        numbers = [int(word, 0) for word in words if word[0].isdigit()]
        if what == "slot":
            memory[numbers[0] * SLOT:numbers[0] * SLOT + 8 * len(numbers[1:])] = struct.pack(
                f"<{len(numbers) - 1}Q", *numbers[1:])
        elif what == "carrier":
            send(CARRIER, struct.pack("<IB", *numbers) + text(b"no cable" if numbers[1] == 0 else b""))
        elif what == "learnt":
            send(LEARNT, struct.pack("<IIBQII", 1, *numbers))
        elif what == "joined":
            send(JOINED, struct.pack("<IIB", 1, *numbers) + text(socket.inet_aton("239.1.2.3")))
        elif what == "keep":
            send(KEEP, text(b"kept"), os.open(words[0], os.O_RDONLY))


def behave(state, generation):
    word, *rest = (pathlib.Path(state, "behave").read_text().split() if pathlib.Path(state, "behave").exists()
                   else ["well"])
    if word == "delay":
        time.sleep(float(rest[0]))
    elif word == "wrong":
        generation += 100
    elif word == "garbage":
        return kernel.sendall(b"\xff" * 64)
    elif word == "die":
        print("last words", file=sys.stderr, flush=True)
        os._exit(7)
    if word != "hang":
        send(IN_FORCE, struct.pack("<Q", generation))
    return None


def main():
    state, memory, count = None, None, 0
    while True:
        length, kind = struct.unpack("<II", receive(8))
        payload = receive(length)
        if kind == START:
            state = payload[4:].decode()
            memory = mmap.mmap(waiting.pop(), SLOT << 17)
            pathlib.Path(state, "process.new").write_text(str(os.getpid()))
            os.rename(f"{state}/process.new", f"{state}/process")
            count = len(list(pathlib.Path(state).glob("configuration.*")))
        elif kind == KEPT:
            pathlib.Path(state, "returned").write_bytes(payload[4:] + b" " + os.pread(waiting.pop(), 99, 0))
        elif kind == CONFIGURE:
            count += 1
            file = pathlib.Path(state, f"configuration.{count}")
            file.with_suffix(".new").write_bytes(payload[4:])
            file.with_suffix(".new").rename(file)
            if pathlib.Path(state, "tell").exists():
                tell(state, memory)
            # The root table begins where its offset says; `generation` is its first field.
            root = struct.unpack_from("<I", payload, 4)[0] + 4
            fields = root - struct.unpack_from("<i", payload, root)[0]
            at = struct.unpack_from("<H", payload, fields + 4)[0]
            behave(state, struct.unpack_from("<Q", payload, root + at)[0])


main()
