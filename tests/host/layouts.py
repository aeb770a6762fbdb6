#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""layouts.py: what the emulated kernel hands over is what layouts/emulated.json says. Each record is decoded by the file
alone. Fields do not overlap, bytes outside of them are zero, each field is other than zero somewhere, and those in
layouts.txt have the values that the lab and the commands of SETUP gave them."""
import ctypes
import ipaddress
import json
import os
import re
import subprocess
import sys

if os.environ["QVS_SANITIZED"]:
    sys.exit(77)  # Python loads libqvs
SOURCE, BIN = os.environ["QVS_SOURCE"], os.environ["QVS_BIN"]
LAYOUT = json.load(open(BIN + "/../share/qvs/layouts/emulated.json", encoding="utf-8"))
NUMBERS = "".join((number * 257).to_bytes(8, "little").hex() for number in range(1, 17))
# Of the SPF commands all but the first are refused, and counted.
SETUP = f"""
port vlan set tenants vm2 --id 77 | port security set tenants vm2 --mac-change deny | int set 010203040506
prop set tenants com.quillon.common.port.statistics --port vm2 --hex {NUMBERS} | options set 09000200abcd
port mac-learning set tenants vm1 --learning on --flooding on --limit 300 --limit-policy deny
learn-static set tenants on | overlay-cache set tenants on | mac-learning set tenants --aging 700 --limit 6000
mac host set --first 900 --second 20000 | port ipfix set tenants vm0 --collectors 192.0.2.9:1,192.0.2.8:1
livetrace create tenants vm2 --hex {bytes(range(1, 31)).hex()} | spf plumb tenants vm2 02:07:00:00:00:09
spf plumb tenants vm2 02:07:00:00:00:09 | spf unplumb tenants vm3 | spf unplumb tenants vm3
"""
SIZES = {"u8": 1, "u16": 2, "u32": 4, "u64": 8, "mac": 6, "MAC": 6, "IPv4": 4, "IPv6": 16}
ALWAYS_ZERO = {"lags", "selector"}


def listed(name, argument, size):
    pointer = ctypes.c_void_p()
    assert getattr(ctypes.CDLL("libqvs.so.1"), name)(argument, ctypes.byref(pointer)) == 0, name
    return ctypes.string_at(pointer, 8 + size * ctypes.c_uint32.from_address(pointer.value).value)


def single(name, size, *arguments):
    record = ctypes.create_string_buffer(size)
    assert getattr(ctypes.CDLL("libqvs.so.1"), name)(*arguments, record) == 0, name
    return record.raw


# What the tool does not write with --raw.
FETCH = {
    "uplink list tenants --kernel": lambda: listed("VSHYP_GetUplinks", b"tenants", 36),
    "port list tenants --kernel": lambda: listed("VSHYP_GetSwitchPortInfo", b"tenants", 1458),
    "port show tenants vm2 hint": lambda: single("VSHYP_PortGetTeamUplinkHint", 32, 0x4000023),
    "uplink list tenants": lambda: single("VSHYP_GetUplinkDVPortID", 48, b"pnic4"),
    "switch list --kernel portsets": lambda: listed("VSHYP_GetSwitches", 1, 128),
    "switch list --kernel": lambda: listed("VSHYP_GetSwitches", 0, 81),
    "mac host get": lambda: single("VSHYP_GetGlobalMACLearningProps", 10),
    "mirror runtime ids tenants": lambda: listed("VSHYP_GetDVMirrorSessionIDs", b"tenants", 32),
}


def scalar(field, value, kind):
    if kind in ("IPv4", "IPv6"):
        return str(ipaddress.ip_address(value))
    if kind in ("bytes", "mac", "MAC"):
        return value.hex() if kind == "bytes" else value.hex(":")
    if kind == "text":
        return value.split(b"\0")[0].decode()
    number = int.from_bytes(value, "little")
    if "flags" in field:
        return "+".join(LAYOUT["words"][field["flags"]][str(1 << bit)] for bit in range(32) if number >> bit & 1)
    return LAYOUT["words"][field["values"]].get(str(number), number) if "values" in field else number


def read(fields, base, path, near, shown, taken, data):
    """Shows the fields of what begins at `base` by their paths, like "3.entries.0.mac"; returns where it ends."""
    near, end = dict(near), base
    for field in fields:
        at = base + field["at"]
        many = "count" in field or "until" in field
        count = field.get("count", len(data) if many else 1)
        for i in range(near.get(count, count)):
            if "until" in field and at >= base + near[field["until"]]:
                break
            name = path + field["name"] + (f".{i}" if many else "")
            if field["type"] == "group":
                length = read(field["fields"], at, name + ".", near, shown, taken, data) - at
                at += field.get("stride", length)
                continue
            kind = near.get(field.get("family"), field["type"])
            used = SIZES.get(kind, near.get(field.get("used"), field.get("length")))
            room = field.get("length", used)
            assert at + room <= len(data) and not any(taken[at:at + room]), f"{name} at {at} overlaps another field"
            taken[at:at + room] = b"\1" * room
            shown[name] = near[field["name"]] = scalar(field, data[at:at + min(used, room)], kind)
            # None counts that far here; at a wrong offset it has zeros below or bytes of the next one on top.
            assert "counter" not in field or shown[name] < 1 << 16, f"{name} is {shown[name]}"
            at += room
        end = max(end, at)
    return end


def decode(record, data, header, given):
    shown, taken, at = {}, bytearray(len(data)), 0
    fields = LAYOUT["records"].get(record.get("like"), {"fields": []})["fields"] + record["fields"]
    if header:
        read(LAYOUT["lists"][header]["fields"], 0, "", {}, shown, taken, data)
        at = LAYOUT["lists"][header]["size"]
    for i in range(shown.get("count", 1)):
        end = read(fields, at, f"{i}." if header else "", given, shown, taken, data)
        at = max(at + record["size"], end if "tail" in record else 0)
    assert at == len(data), f"{at} bytes are described, {len(data)} came"
    loose = [offset for offset, byte in enumerate(data) if byte and not taken[offset]]
    assert not loose, f"no field holds the bytes at {loose[:8]}"
    return shown


def check(row, other):
    """A row of layouts.txt. Notes in `other` which commands were tried, and which fields were other than zero."""
    name, command, kind, expected = (part.strip() for part in row.split("|"))
    raw = ["qvs", *command.split(), "--raw", "-"]
    data = FETCH[command]() if command in FETCH else subprocess.run(raw, check=True, stdout=subprocess.PIPE).stdout
    ways = [way for way in LAYOUT["records"][name]["commands"]
            if re.match(re.sub("[A-Z]+", r"\\S+", way["command"]), command)]
    way = max(ways, key=lambda way: len(way["command"]))
    other[name, "qvs " + way["command"]] = True
    shown = decode(LAYOUT["records"][name], data, way.get("list"), {"type": kind})
    for path, value in shown.items():
        field = name, re.sub(r"(^|\.)\d+(?=\.|$)", "", path)
        other[field] = other.get(field) or value not in (0, "", "no", "none", "down")
    for path, value in (item.split("=") for item in expected.split("; ") if item):
        assert str(shown.get(path)) == value, f"{path} is {shown.get(path)}, not {value}"


def main():
    for command in SETUP.strip().replace("\n", " | ").split(" | "):
        silent = subprocess.PIPE if "spf" in command else None
        subprocess.run(["qvs", *command.split()], check=not silent, stdout=subprocess.DEVNULL, stderr=silent)
    other = {(name, "qvs " + way["command"]): False for name in LAYOUT["records"] for way in
             LAYOUT["records"][name]["commands"]}
    wrong = []
    for row in open(SOURCE + "/tests/host/layouts.txt", encoding="utf-8").read().splitlines()[2:]:
        try:
            check(row, other)
        except AssertionError as error:
            wrong.append(f"{row.split(' |')[0]}: {error}")
    wrong += [f"{name}: nothing came by {what}" for (name, what), some in sorted(other.items())
              if not some and what not in ALWAYS_ZERO]
    print(*wrong, sep="\n")
    return 1 if wrong else 0


if "QVS_HOST_SOCKET" in os.environ:
    sys.exit(main())
LAB = json.load(open(SOURCE + "/labs/pod.json", encoding="utf-8"))
for entry in LAB["kcp"]["containerInterfaces"][0], LAB["kcp"]["hypervisorNics"][0], LAB["macEntries"][3]:
    entry.update({"switch": "tenants", "port": entry.get("port", "vm2"), "vlan": 12})
json.dump(LAB, open("lab.json", "w", encoding="utf-8"))
sys.exit(subprocess.run([BIN + "/qvs-host", "run", "--lab", "lab.json", "--", __file__]).returncode)
