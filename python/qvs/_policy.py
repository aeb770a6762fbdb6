# SPDX-License-Identifier: Apache-2.0
"""Policies of switches and ports as attributes: reading, assigning and deleting one calls the library.

A policy is a row in the classes Switch and Port: the functions that read, store and clear it, and how its value is
passed. In place of a function that clears there may be a key.
"""
from __future__ import annotations

import ctypes
import dataclasses
from collections.abc import Callable
from contextlib import AbstractContextManager
from typing import Any, Generic, NamedTuple, Protocol, Self, TypeVar, overload

from qvs import constants, lib, records
from qvs._load import between, copied, from_text, named, octets, of_type, to_text
from qvs._record import Record
from qvs.errors import NotFound, check

T = TypeVar("T")
R = TypeVar("R", bound=Record)
Names = tuple[bytes, ...]


class Place(Protocol):
    """What has policies: a switch or a port."""

    def _names(self) -> AbstractContextManager[Names]:
        """The arguments by which the library knows the place, while it may be used."""

    def get_property(self, key: str) -> bytes: ...

    def set_property(self, key: str, value: bytes | str) -> None: ...

    def clear_property(self, key: str) -> None: ...


class Reading(Generic[T]):
    """A value that can be read. Switches and ports have no dictionary, so that assigning to it is an AttributeError."""

    _name = ""

    def __set_name__(self, owner: type[Any], name: str) -> None:
        self._name = name

    @overload
    def __get__(self, place: None, owner: type[Any]) -> Self: ...

    @overload
    def __get__(self, place: Place, owner: type[Any]) -> T | None: ...

    def __get__(self, place: Place | None, owner: type[Any]) -> Self | T | None:
        return self if place is None else self._value(place)

    def _value(self, place: Place) -> T | None:
        raise NotImplementedError


class Known(Reading[R]):
    """A record that no function of the library reads: it is there under a key."""

    def __init__(self, record: type[R], key: str) -> None:
        self._record, self._key = record, key

    def _value(self, place: Place) -> R | None:
        try:
            return self._record.from_bytes(place.get_property(self._key))
        except NotFound:
            return None


class Stored(Known[R]):
    """Such a record that is stored under the key."""

    def __set__(self, place: Place, value: R) -> None:
        with named(self._name):
            data = self._record.one_to_bytes(value)
        place.set_property(self._key, data)

    def __delete__(self, place: Place) -> None:
        clear(place, self._key)


def clear(place: Place, key: str) -> None:
    try:
        place.clear_property(key)
    except NotFound:
        pass


class Policy(Reading[T]):
    _more: Names = ()  # arguments that follow those of the place

    def __init__(self, read: str, store: str = "", clear: str = "") -> None:
        self._functions = {"read": read, "store": store, "clear": clear}

    def _value(self, place: Place) -> T | None:
        with place._names() as names:
            status, value = self._read(self._function("read"), names + self._more)
        if status == constants.HYP_NOT_FOUND:
            return None
        check(status, f"{place}: {self._name}")
        return value

    def __set__(self, place: Place, value: T) -> None:
        with place._names() as names, named(self._name):
            status = self._store(self._function("store"), names + self._more, value)
        check(status, f"{place}: {self._name}")

    def __delete__(self, place: Place) -> None:
        if "." in self._functions["clear"]:
            return clear(place, self._functions["clear"])
        with place._names() as names:
            status = self._function("clear")(*names, *self._more)
        if status != constants.HYP_NOT_FOUND:
            check(status, f"{place}: {self._name}")

    def _function(self, role: str) -> Callable[..., int]:
        name = self._functions[role]
        if not name:
            raise AttributeError(f"the library has no function to {role} the policy {self._name!r}")
        function: Callable[..., int] = getattr(lib, name)
        return function

    def _read(self, function: Callable[..., int], names: Names) -> tuple[int, T | None]:
        raise NotImplementedError

    def _store(self, function: Callable[..., int], names: Names, value: T) -> int:
        raise NotImplementedError


class Number(Policy[int]):
    """A number of 32 bits that the getter stores through a pointer."""

    def _read(self, function: Callable[..., int], names: Names) -> tuple[int, Any]:
        number = ctypes.c_uint32()
        return function(*names, ctypes.byref(number)), number.value

    def _store(self, function: Callable[..., int], names: Names, value: int) -> int:
        return function(*names, value)


class Mask(Number):
    """A number that the setter, too, takes through a pointer."""

    def _store(self, function: Callable[..., int], names: Names, value: int) -> int:
        return function(*names, ctypes.byref(ctypes.c_uint32(between(value, ctypes.c_uint32))))


class Flag(Policy[bool]):
    def _read(self, function: Callable[..., int], names: Names) -> tuple[int, Any]:
        flag = ctypes.c_uint8()
        return function(*names, ctypes.byref(flag)), flag.value != 0

    def _store(self, function: Callable[..., int], names: Names, value: bool) -> int:
        return function(*names, of_type(bool, value))


class Name(Policy[str]):
    """A text in a buffer of the caller."""

    def __init__(self, size: int, read: str, store: str, clear: str) -> None:
        super().__init__(read, store, clear)
        self._size = size

    def _read(self, function: Callable[..., int], names: Names) -> tuple[int, Any]:
        buffer = ctypes.create_string_buffer(self._size + 1)
        return function(*names, buffer), to_text(buffer.value)

    def _store(self, function: Callable[..., int], names: Names, value: str) -> int:
        data = from_text(value)
        if len(data) >= self._size:
            raise ValueError(f"{len(data)} bytes, at most {self._size - 1} can be read back")
        return function(*names, data)


class Whole(Policy[R]):
    """A record of the caller."""

    def __init__(self, record: type[R], read: str, store: str, clear: str) -> None:
        super().__init__(read, store, clear)
        self._record = record

    def _read(self, function: Callable[..., int], names: Names) -> tuple[int, Any]:
        buffer = ctypes.create_string_buffer(self._record.SIZE)
        return function(*names, buffer), self._record.from_bytes(buffer.raw)

    def _store(self, function: Callable[..., int], names: Names, value: R) -> int:
        return function(*names, self._record.one_to_bytes(value))


class Allocated(Policy[T]):
    """A value of the state library, released here. What it holds says how long it is."""

    release = "VSDVS_FreeMemory"

    def _read(self, function: Callable[..., int], names: Names) -> tuple[int, Any]:
        pointer, number = ctypes.c_void_p(), ctypes.c_uint32()
        arguments = [ctypes.byref(pointer)]
        if self._counted:
            arguments.append(ctypes.byref(number))
        status = function(*names, *arguments)
        try:
            if status == constants.HYP_OK:
                # The status of a getter may be success with nothing stored.
                return status, self._decode(pointer, number.value) if pointer.value else None
            return status, None
        finally:
            if pointer.value:
                getattr(lib, self.release)(pointer)

    _counted = False  # whether the getter has a second result, a number

    def _decode(self, pointer: ctypes.c_void_p, number: int) -> T:
        raise NotImplementedError


@dataclasses.dataclass(slots=True)
class Vlan:
    """The VLAN policy of a port. Ranges are those of a trunk, with both ends; without ranges it carries all VLANs."""

    id: int = 0
    priority: int | None = None
    trunk: bool = False
    private: bool = False
    ranges: list[tuple[int, int]] = dataclasses.field(default_factory=list)


class VlanPolicy(Allocated[Vlan]):
    _counted = True  # the priority

    def _decode(self, pointer: ctypes.c_void_p, number: int) -> Vlan:
        size = records.VSDVS_PortVLAN.SIZE
        head = records.VSDVS_PortVLAN.from_bytes(copied(pointer, size))
        data = copied(pointer, size + head.rangeCount * records.VSDVS_VLANRange.SIZE)
        ranges = records.VSDVS_VLANRange.list_from_bytes(data, size, head.rangeCount)
        return Vlan(
            head.vlan,
            number if head.flags & constants.VSDVS_VLAN_PRIORITY else None,
            bool(head.flags & constants.VSDVS_VLAN_TRUNK),
            bool(head.flags & constants.VSDVS_VLAN_PRIVATE),
            [(each.first, each.last) for each in ranges],
        )

    def _store(self, function: Callable[..., int], names: Names, value: Vlan) -> int:
        # The library does not check the numbers, and ctypes cuts them off.
        ranges = [*of_type(Vlan, value).ranges, (value.id, value.id)]
        if not all(0 <= first <= last <= constants.QVS_VLAN_MAX for first, last in ranges):
            raise ValueError(f"a VLAN id is between 0 and {constants.QVS_VLAN_MAX}: {value}")
        if value.priority is not None and not 0 <= value.priority <= constants.QVS_PRIORITY_MAX:
            raise ValueError(f"a priority is between 0 and {constants.QVS_PRIORITY_MAX}: {value}")
        priority = constants.VSDVS_NO_PRIORITY if value.priority is None else value.priority
        packed, count = records.VSDVS_VLANRange.list_to_bytes(records.VSDVS_VLANRange(*each) for each in value.ranges)
        return function(*names, value.id, priority, value.trunk, value.private, packed, count)


class PrivateVlans(Allocated["list[records.VSDVS_PrivateVLAN]"]):
    _counted = True

    def _decode(self, pointer: ctypes.c_void_p, number: int) -> list[records.VSDVS_PrivateVLAN]:
        record = records.VSDVS_PrivateVLAN
        return record.list_from_bytes(copied(pointer, number * record.SIZE), 0, number)

    def _store(self, function: Callable[..., int], names: Names, value: list[records.VSDVS_PrivateVLAN]) -> int:
        packed, count = records.VSDVS_PrivateVLAN.list_to_bytes(value)
        status = function(*names, packed, count)
        # An empty map is none.
        return constants.HYP_OK if not count and status == constants.HYP_NOT_FOUND else status


class Addresses(Allocated["list[bytes]"]):
    """MAC addresses of 6 bytes."""

    def _decode(self, pointer: ctypes.c_void_p, number: int) -> list[bytes]:
        count = copied(pointer, 1)[0]
        data = copied(pointer, 1 + 6 * count)
        return [data[place : place + 6] for place in range(1, len(data), 6)]

    def _store(self, function: Callable[..., int], names: Names, value: list[bytes]) -> int:
        packed, count = records.VSDVS_MACAddress.list_to_bytes(map(records.VSDVS_MACAddress, value))
        return function(*names, count, packed)


class Mirrors(NamedTuple):
    """Mirror sessions and the entities of all sessions, in their order."""

    sessions: list[records.VSDVS_MirrorSession]
    entities: list[records.VSDVS_MirrorEntity]
    version: int = constants.VSDVS_MIRROR_VERSION


class MirrorPolicy(Allocated[Mirrors]):
    def _decode(self, pointer: ctypes.c_void_p, number: int) -> Mirrors:
        session, entity = records.VSDVS_MirrorSession, records.VSDVS_MirrorEntity
        start = records.VSDVS_MirrorHeader.SIZE
        head = records.VSDVS_MirrorHeader.from_bytes(copied(pointer, start))
        middle = start + head.sessionCount * session.SIZE
        data = copied(pointer, middle + head.entityCount * entity.SIZE)
        return Mirrors(
            session.list_from_bytes(data, start, head.sessionCount),
            entity.list_from_bytes(data, middle, head.entityCount),
            head.version,
        )

    def _store(self, function: Callable[..., int], names: Names, value: Mirrors) -> int:
        sessions, session_count = records.VSDVS_MirrorSession.list_to_bytes(of_type(Mirrors, value).sessions)
        entities, entity_count = records.VSDVS_MirrorEntity.list_to_bytes(value.entities)
        head = records.VSDVS_MirrorHeader(constants.VSDVS_MIRROR_MAGIC, value.version, session_count, entity_count)
        return function(*names, bytes(head) + sessions + entities)


class UplinkMirrors(MirrorPolicy):
    """The sessions of the uplinks of a switch: an empty port selects them."""

    _more = (b"",)


class Ipfix(NamedTuple):
    """Flow sampling of a port. The length in the record is set to that of the text."""

    record: records.IPFIXDVS_Port
    observation: bytes = b""


class IpfixPolicy(Allocated[Ipfix]):
    release = "IPFIXDVS_FreeMemory"

    def _decode(self, pointer: ctypes.c_void_p, number: int) -> Ipfix:
        size = records.IPFIXDVS_Port.SIZE
        record = records.IPFIXDVS_Port.from_bytes(copied(pointer, size))
        return Ipfix(record, copied(pointer, size + record.virtualObsIDLength)[size:])

    def _store(self, function: Callable[..., int], names: Names, value: Ipfix) -> int:
        observation = octets(of_type(Ipfix, value).observation)
        record = dataclasses.replace(of_type(records.IPFIXDVS_Port, value.record), virtualObsIDLength=len(observation))
        return function(*names, records.IPFIXDVS_Port.one_to_bytes(record) + observation)
