# SPDX-License-Identifier: Apache-2.0
"""A program in another language: libqvs.so.1 through ctypes, by its soname alone."""
import ctypes
import struct

qvs = ctypes.CDLL("libqvs.so.1")
state = ctypes.CDLL("libmeshPublic.so")
for name in ("VSDVS_CreateVSwitch", "VSDVS_AddDVPort", "VSDVS_RemoveDVPort", "VSDVS_DvPortIDToPortID", "DVSLoadConfig",
             "VSDVS_GetSwitchUplinkPorts", "NetDVS_Dump"):
    getattr(qvs, name).restype = ctypes.c_uint32
qvs.ReturnStatusToString.restype = ctypes.c_char_p

assert qvs.VSDVS_CreateVSwitch(b"py", b"py-1", None, 7, 1, 16, 1, 1) == 0
assert qvs.DVSLoadConfig() == 0
assert qvs.VSDVS_AddDVPort(b"py", b"web", 42) == 0
assert qvs.VSDVS_AddDVPort(b"py", b"web", 42) == 0xbad0005
assert qvs.VSDVS_RemoveDVPort(b"py", b"nowhere") == 0xbad0003
assert qvs.ReturnStatusToString(0xbad0005) == b"Already exists"

names, ports = ctypes.c_void_p(), ctypes.c_void_p()
assert qvs.VSDVS_GetSwitchUplinkPorts(b"py", ctypes.byref(names), ctypes.byref(ports)) == 0
assert ctypes.string_at(names, 85) == struct.pack("<I81s", 1, b"uplink0")
assert ctypes.string_at(ports, 52) == struct.pack("<I48s", 1, b"uplink0")
qvs.VSDVS_FreeMemory(names)
qvs.VSDVS_FreeMemory(ports)

# Port numbers run on: the uplink, then port0, then web.
number = ctypes.c_uint32()
assert qvs.VSDVS_DvPortIDToPortID(b"py", b"web", ctypes.byref(number)) == 0
assert number.value == 0x4000003, hex(number.value)

assert qvs.DVSLoadConfig() == 0
text = ctypes.c_void_p()
assert qvs.NetDVS_Dump(b"py", ctypes.byref(text)) == 0
dump = ctypes.string_at(text)
qvs.NetDVS_FreeMemory(text)
assert dump.startswith(b"switch py-1 (vswitch)\n\tmax ports: 16\n\tglobal properties:\n"), dump
assert b"\tport web:\n" in dump and b"\t\tcom.quillon.common.opaqueDvs = true , \tpropType = CONFIG \n" in dump, dump
