# SPDX-License-Identifier: Apache-2.0
"""The tables of the running kernel.

The kernel defines the layout of their entries, so that they are bytes here. `alias` is the alias of a switch in the
snapshot of the process: use these functions in the block of a qvs.Snapshot. `portset` is the name of its data path,
Switch.portset. `number` is that of a port in the kernel, Port.number.
"""
from __future__ import annotations

import ctypes
import errno
from collections.abc import Callable
from typing import Any

from qvs import constants as sizes
from qvs import lib
from qvs._gate import gate
from qvs._load import copied, flag, from_text
from qvs.errors import Failure, check

_free = ctypes.CDLL(None).free
_free.argtypes, _free.restype = [ctypes.c_void_p], None
_usable_size = ctypes.CDLL(None).malloc_usable_size
_usable_size.argtypes, _usable_size.restype = [ctypes.c_void_p], ctypes.c_size_t


def _arguments(names: tuple[str | int, ...]) -> list[bytes | int]:
    return [name if isinstance(name, int) else from_text(name) for name in names]


def _copy(address: int | None, head: int, entry: int) -> list[bytes]:
    """The entries behind the head of a list, which begins with their number."""
    if not address:
        return []
    count = int.from_bytes(ctypes.string_at(address, 4), "little")
    # The number is that of the kernel's last answer, the room that of its first. A kernel may contradict itself.
    room = (_usable_size(address) - head) // entry
    if count > room:
        raise Failure(sizes.HYP_FAILURE, f"the kernel counts {count} entries, but handed over at most {room}")
    return [ctypes.string_at(address + head + index * entry, entry) for index in range(count)]


def _list(function: Callable[..., int], *names: str | int, entry: int, head: int = 8) -> list[bytes]:
    pointer = ctypes.c_void_p()
    with gate.use():
        status = function(*_arguments(names), ctypes.byref(pointer))
    check(status, _what(function, names))
    try:
        return _copy(pointer.value, head, entry)
    finally:
        lib.VSHYP_FreeMemory(pointer)


def _block(function: Callable[..., int], *names: str | int, size: int) -> bytes:
    """A block that the library allocates."""
    pointer = ctypes.c_void_p()
    with gate.use():
        status = function(*_arguments(names), ctypes.byref(pointer))
    check(status, _what(function, names))
    try:
        return copied(pointer, size)
    finally:
        lib.VSHYP_FreeMemory(pointer)


def _filled(function: Callable[..., int], *names: str | int, size: int) -> bytes:
    """A block of the caller."""
    buffer = ctypes.create_string_buffer(size)
    with gate.use():
        status = function(*_arguments(names), buffer)
    check(status, _what(function, names))
    return buffer.raw


def _returned(function: Callable[..., Any], *names: str | int) -> int:
    """The address of what a function returns. It is null on failure, and only some functions tell why, in errno."""
    ctypes.set_errno(0)
    with gate.use():
        address: int | None = function(*_arguments(names))
    if address:
        return address
    number = ctypes.get_errno() & 0xFFFFFFFF
    if number == errno.ENOMEM:
        number = sizes.HYP_NO_MEMORY
    check(number if number >> 16 == sizes.HYP_FAILURE >> 16 else sizes.HYP_FAILURE, _what(function, names))
    return 0


def _returned_block(function: Callable[..., Any], *names: str | int, size: int) -> bytes:
    address = _returned(function, *names)
    try:
        return ctypes.string_at(address, size)
    finally:
        _free(address)


def _returned_list(function: Callable[..., Any], *names: str | int, entry: int, head: int = 8) -> list[bytes]:
    address = _returned(function, *names)
    try:
        return _copy(address, head, entry)
    finally:
        _free(address)


def _control_plane(function: Callable[..., Any], entry: int, head: int = 4) -> list[bytes]:
    """A list of the control plane, which is null when it is empty and when the request fails."""
    address = function()
    try:
        return _copy(address, head, entry)
    finally:
        _free(address)


def _what(function: Any, names: tuple[str | int, ...]) -> str:
    return f"{function.__name__}({', '.join(map(repr, names))})"


def switches() -> list[bytes]:
    """The portset names of the switches, 128 bytes each."""
    return _list(lib.VSHYP_GetSwitches, sizes.VSHYP_SELECT_SWITCH_NAMES, entry=sizes.VSHYP_SWITCH_NAME_ENTRY_SIZE)


def switch_info(alias: str) -> bytes:
    return _block(lib.VSHYP_GetSwitchInfo, alias, size=sizes.VSHYP_SWITCH_INFO_SIZE)


def ports(alias: str) -> list[bytes]:
    return _list(lib.VSHYP_GetSwitchPortInfo, alias, entry=sizes.VSHYP_PORT_INFO_SIZE)


def port_info(alias: str, port: str) -> bytes:
    return _block(lib.VSHYP_GetPortInfo, alias, port, size=sizes.VSHYP_PORT_INFO_SIZE)


def uplinks(portset: str) -> list[bytes]:
    return _list(lib.VSHYP_GetUplinks, portset, entry=sizes.VSHYP_UPLINK_ENTRY_SIZE)


def uplink_is_up(portset: str, uplink: str) -> bool:
    return any(_filled(lib.VSHYP_GetUplinkLinkState, portset, uplink, size=4))


def set_uplink_up(portset: str, uplink: str, up: bool) -> None:
    """Sets the administrative state of an uplink."""
    status = lib.VSHYP_SetUplinkAdminLinkState(from_text(portset), from_text(uplink), flag("up", up))
    check(status, f"uplink {uplink!r} of portset {portset!r}")


def lag_table(portset: str) -> bytes:
    return _block(lib.VSHYP_GetLAGTable, portset, size=sizes.VSHYP_LAG_TABLE_SIZE)


def mac_table(alias: str, selector: int = 0) -> list[bytes]:
    return _list(lib.VSHYP_GetMACTable, alias, selector, entry=sizes.VSHYP_MAC_ENTRY_SIZE)


def team_mac_table(alias: str, selector: int = 0) -> list[bytes]:
    return _list(lib.VSHYP_GetTeamMACTable, alias, selector, entry=sizes.VSHYP_MAC_ENTRY_SIZE)


def port_mac_table(alias: str, port: str, selector: int = 0) -> list[bytes]:
    return _list(lib.VSHYP_GetPortMACTable, alias, port, selector, entry=sizes.VSHYP_MAC_ENTRY_SIZE)


def mac_learning_ports(alias: str) -> list[bytes]:
    return _list(lib.VSHYP_GetMACLearningAllPorts, alias, entry=sizes.VSHYP_PORT_MAC_LEARNING_SIZE)


def mac_learning_statistics(alias: str) -> list[bytes]:
    return _list(lib.VSHYP_GetSwitchMACLearningStats, alias, entry=sizes.VSHYP_MAC_LEARNING_STATS_SIZE)


def mirror_session_ids(alias: str) -> list[bytes]:
    return _list(lib.VSHYP_GetDVMirrorSessionIDs, alias, entry=sizes.VSHYP_MIRROR_SESSION_ID_SIZE)


def mirror_session_statistics(alias: str, session: str) -> bytes:
    return _filled(lib.VSHYP_GetDVMirrorSessionStats, alias, session, size=sizes.VSHYP_MIRROR_STATS_SIZE)


def multicast_filters(portset: str, value: int = 0) -> list[bytes]:
    return _list(lib.VSHYP_GetSwitchMcastFilters, portset, value, entry=sizes.VSHYP_SWITCH_MCAST_FILTER_SIZE)


def ipfix_statistics(alias: str, port: str | None = None) -> bytes:
    """Of a switch, or of one of its ports."""
    if port is None:
        return _filled(lib.IPFIXHYP_GetIpfixStats, alias, size=sizes.IPFIXHYP_STATS_SIZE)
    return _filled(lib.IPFIXHYP_GetIpfixGranularStats, alias, port, size=sizes.IPFIXHYP_STATS_SIZE)


def forwarding_sessions(flags: int = 3) -> bytes:
    """The table of the sessions of bidirectional forwarding detection."""
    return _returned_block(lib.BFD_GetSessions, flags, size=sizes.BFD_SESSIONS_SIZE)


def service_ports(alias: str) -> list[bytes]:
    return _returned_list(lib.SPFHYP_GetPortsList, alias, entry=sizes.SPFHYP_PORT_ENTRY_SIZE)


def traceflow_statistics(number: int) -> bytes:
    return _returned_block(lib.TFHYP_GetPortStats, number, size=sizes.TFHYP_PORT_STATS_SIZE)


def control_plane_switches() -> list[bytes]:
    return _control_plane(lib.KCP_GetDVSList, sizes.KCP_DVS_SIZE)


def control_plane_interfaces() -> list[bytes]:
    return _control_plane(lib.KCP_GetVIFList, sizes.KCP_VIF_SIZE)


def control_plane_container_interfaces() -> list[bytes]:
    return _control_plane(lib.KCP_GetCIFList, sizes.KCP_CIF_SIZE)


def control_plane_hypervisor_interfaces() -> list[bytes]:
    return _control_plane(lib.KCP_GetHYPVIFList, sizes.KCP_VIF_SIZE)


def control_plane_nics() -> list[bytes]:
    return _control_plane(lib.KCP_GetHYPNICList, sizes.KCP_HYPNIC_SIZE)


def control_plane_uplinks() -> list[bytes]:
    return _control_plane(lib.KCP_GetUplinkList, sizes.KCP_UPLINK_SIZE)


def control_plane_portsets() -> list[bytes]:
    return _control_plane(lib.KCP_GetPSPropList, sizes.KCP_PSPROP_SIZE)


def control_plane_containers() -> list[bytes]:
    return _control_plane(lib.KCP_GetContainerList, sizes.KCP_CONTAINER_SIZE, head=8)
