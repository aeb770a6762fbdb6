#!/usr/bin/env python3
"""layouts.py: what the emulated kernel hands over is what layouts/emulated.json says. Each record is decoded by the file
alone: fields do not overlap, bytes outside of them are zero, each field is other than zero somewhere, and those in
layouts.txt have the values that the lab pod.json and the commands of SETUP gave them."""
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
if "QVS_HOST_SOCKET" not in os.environ:
    on = {"switch": "tenants", "port": "vm2", "vlan": 12}
    lab = json.load(open(SOURCE + "/labs/pod.json", encoding="utf-8"))
    for entry in lab["kcp"]["containerInterfaces"][0], lab["kcp"]["hypervisorNics"][0], lab["macEntries"][3]:
        entry.update(on, port=entry.get("port", on["port"]))
    json.dump(lab, open("lab.json", "w", encoding="utf-8"))
    sys.exit(subprocess.run([BIN + "/qvs-host", "run", "--lab", "lab.json", "--", __file__]).returncode)

NUMBERS = "".join((number << 40 | number).to_bytes(8, "little").hex() for number in range(1, 17))
SETUP = f"""
port vlan set tenants vm2 --id 77 | port security set tenants vm2 --mac-change deny | int set 010203040506
prop set tenants com.quillon.common.port.statistics --port vm2 --hex {NUMBERS} | options set 09000200abcd
port mac-learning set tenants vm1 --learning on --flooding on --limit 300 --limit-policy deny
learn-static set tenants on | overlay-cache set tenants on | mac-learning set tenants --aging 700 --limit 6000
mac learning set --first 900 --second 20000 | port ipfix set tenants vm0 --collector 192.0.2.9:1 --collector 192.0.2.8:1
livetrace create tenants vm2 --hex {bytes(range(1, 31)).hex()} | spf plumb tenants vm2 02:07:00:00:00:09
spf plumb tenants vm2 02:07:00:00:00:09 | spf unplumb tenants vm3 | spf unplumb tenants vm3
"""
NO_VALUE = {"lags", "selector"}
SIZES = {"u8": 1, "u16": 2, "u32": 4, "u64": 8, "mac": 6, "MAC": 6, "IPv4": 4, "IPv6": 16}
layout = json.load(open(BIN + "/../share/qvs/layouts/emulated.json", encoding="utf-8"))
qvs = ctypes.CDLL("libqvs.so.1")


def listed(name, argument, size):
    pointer = ctypes.c_void_p()
    assert getattr(qvs, name)(argument, ctypes.byref(pointer)) == 0, name
    return ctypes.string_at(pointer, 8 + size * ctypes.c_uint32.from_address(pointer.value).value)


def single(name, size, *arguments):
    record = ctypes.create_string_buffer(size)
    assert getattr(qvs, name)(*arguments, record) == 0, name
    return record.raw


# What the tool does not write with --raw.
FETCH = {
    "uplink list tenants --kernel": lambda: listed("VSHYP_GetUplinks", b"tenants", 36),
    "port list tenants --kernel": lambda: listed("VSHYP_GetSwitchPortInfo", b"tenants", 1458),
    "port show tenants vm2 hint": lambda: single("VSHYP_PortGetTeamUplinkHint", 32, 0x4000023),
    "uplink list tenants": lambda: single("VSHYP_GetUplinkDVPortID", 48, b"pnic4"),
    "switch list --kernel portsets": lambda: listed("VSHYP_GetSwitches", 1, 128),
    "switch list --kernel": lambda: listed("VSHYP_GetSwitches", 0, 81),
    "mac learning get": lambda: single("VSHYP_GetGlobalMACLearningProps", 10),
    "mirror runtime ids tenants": lambda: listed("VSHYP_GetDVMirrorSessionIDs", b"tenants", 32),
}


class Decoder:
    """Fields by their path, like "3.entries.0.mac", as they are to be shown."""

    def __init__(self, data):
        self.data, self.taken, self.shown = data, bytearray(len(data)), {}

    def plain(self, field, at, near):
        kind = near.get(field.get("family"), field["type"])
        used = SIZES.get(kind, near.get(field.get("used"), field.get("length")))
        room = field.get("length", used)
        value = self.data[at:at + min(used, room)]
        assert len(value) == min(used, room) and not any(self.taken[at:at + room]), f"{field} at {at}"
        self.taken[at:at + room] = b"\1" * room
        if kind in ("IPv4", "IPv6"):
            return str(ipaddress.ip_address(value)), room
        if kind in ("mac", "MAC", "bytes"):
            return value.hex() if kind == "bytes" else value.hex(":"), room
        if kind == "text":
            return value.split(b"\0")[0].decode(), room
        number = int.from_bytes(value, "little")
        if "flags" in field:
            words = layout["words"][field["flags"]]
            return "+".join(words[str(1 << bit)] for bit in range(32) if number >> bit & 1), room
        return layout["words"][field["values"]].get(str(number), number) if "values" in field else number, room

    def fields(self, fields, base, path, near):
        near, end = dict(near), base
        for field in fields:
            at = base + field["at"]
            most = near.get(field.get("count"), field.get("count", 1 << 32 if "until" in field else 1))
            for i in range(most):
                if "until" in field and at >= base + near[field["until"]]:
                    break
                name = path + field["name"] + (f".{i}" if {"count", "until"} & field.keys() else "")
                if field["type"] == "group":
                    length = self.fields(field["fields"], at, name + ".", near) - at
                    length = field.get("stride", length)
                else:
                    self.shown[name], length = self.plain(field, at, near)
                    near[field["name"]] = self.shown[name]
                at += length
            end = max(end, at)
        return end


def decode(name, data, listing, near):
    record, decoder, at, count = layout["records"][name], Decoder(data), 0, 1
    fields = [*layout["records"].get(record.get("like"), {"fields": []})["fields"], *record["fields"]]
    if listing:
        at = layout["lists"][listing]["size"]
        decoder.fields(layout["lists"][listing]["fields"], 0, "", {})
        count = decoder.shown["count"]
    for i in range(count):
        end = decoder.fields(fields, at, f"{i}." if listing else "", near)
        at = end if "tail" in record else at + record["size"]
    assert at == len(data), f"{at} bytes described, {len(data)} came"
    loose = [offset for offset, byte in enumerate(data) if byte and not decoder.taken[offset]]
    assert not loose, f"no field holds the bytes at {loose[:8]}"
    return decoder.shown


def check(row, used):
    name, command, given, expected = (part.strip() for part in row.split("|"))
    data = FETCH[command]() if command in FETCH else subprocess.run(
        ["qvs", *command.split(), "--raw", "-"], check=True, stdout=subprocess.PIPE).stdout
    ways = [way for way in layout["records"][name]["commands"]
            if re.match(re.sub("[A-Z]+", r"\\S+", way["command"]), command)]
    shape = max(ways, key=lambda way: len(way["command"]))
    used[name, shape["command"]] = True
    shown = decode(name, data, shape.get("list"), {"type": given})
    for path, value in shown.items():
        field = name, re.sub(r"(^|\.)\d+(?=\.|$)", "", path)
        used[field] = used.get(field) or value not in (0, "", "no", "none", "down")
    for path, value in (item.split("=") for item in expected.split("; ") if item):
        assert str(shown.get(path)) == value, f"{path} is {shown.get(path)}, not {value}"


def main():
    for command in SETUP.strip().replace("\n", " | ").split(" | "):
        refused = command.startswith("spf")  # all but the first
        subprocess.run(["qvs", *command.split()], check=not refused, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL if refused else None)
    used, rows = {}, open(SOURCE + "/tests/host/layouts.txt", encoding="utf-8").read().splitlines()[2:]
    wrong = []
    for row in rows:
        try:
            check(row, used)
        except AssertionError as error:
            wrong.append(f"{row.split(' |')[0]}: {error}")
    wanted = {(name, way["command"]) for name, record in layout["records"].items() for way in record["commands"]}
    wrong += [f"{name}: nobody asked for '{command}'" for name, command in sorted(wanted - used.keys())]
    wrong += [f"{name}: {path} was always zero" for (name, path), other in sorted(used.items())
              if not other and path not in NO_VALUE]
    print(*wrong, sep="\n")
    return 1 if wrong else 0


sys.exit(main())
