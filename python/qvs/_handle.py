# SPDX-License-Identifier: Apache-2.0
"""What switches and ports have in common: an object of the snapshot, and properties that are stored by key."""
from __future__ import annotations

import ctypes
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from types import MemberDescriptorType
from typing import TYPE_CHECKING, Any, Final, TypeVar

from qvs import lib, records
from qvs._load import WALK, copied, from_text, octets, to_text
from qvs._record import Record
from qvs.errors import check

if TYPE_CHECKING:
    from qvs.snapshot import Snapshot

R = TypeVar("R", bound=Record)


def walk(function: Callable[..., None], *start: int) -> list[int]:
    """The addresses of what a walk of the state library visits."""
    found: list[int] = []
    interrupts: list[BaseException] = []

    def visit(pointer: int, context: int | None) -> int:
        try:
            found.append(pointer)
            return 0
        except BaseException as interrupt:  # such as KeyboardInterrupt, which ctypes would ignore
            interrupts.append(interrupt)
            return 1

    function(*start, WALK(visit), None)
    if interrupts:
        raise interrupts[0]
    return found


def properties_of(function: Callable[..., None], pointer: int) -> dict[str, bytes]:
    return {to_text(lib.DVSData_Name(data) or b""): value_of(data) for data in walk(function, pointer)}


def value_of(data: int) -> bytes:
    value = ctypes.c_void_p()
    length = lib.DVSData_Data(data, ctypes.byref(value))
    return ctypes.string_at(value.value, length) if value.value and length else b""


def list_of(pointer: ctypes.c_void_p, record: type[R]) -> list[R]:
    """The records of a counted list of the library."""
    head = records.QVS_ListHead.SIZE
    count = records.QVS_ListHead.from_bytes(copied(pointer, head)).count
    return record.list_from_bytes(copied(pointer, head + count * record.SIZE), head, count)


def text(value: bytes) -> str:
    """The text in a property, which usually ends with a NUL."""
    return to_text(value.partition(b"\0")[0])


def stored(value: bytes | str) -> tuple[bytes, int]:
    """The bytes of a value, a text with its NUL, and their number."""
    data = from_text(value) + b"\0" if isinstance(value, str) else octets(value)
    return data, len(data)


class Handle:
    """An object of a snapshot. Its properties are read from the kernel and stored there at once."""

    __slots__ = ("_snapshot", "_generation", "_pointer", "_identity", "_id", "id", "__weakref__")

    def __init__(self, snapshot: Snapshot, pointer: int, *identity: bytes) -> None:
        self._snapshot: Final = snapshot
        self._generation: Final = snapshot._generation
        self._pointer: Final = pointer
        self._identity: Final = identity  # the identifiers of the switch and of the port
        self._id: Final = identity[-1]
        self.id: Final = to_text(self._id)

    if not TYPE_CHECKING:  # mypy knows what is final, and would allow every name

        def __setattr__(self, name: str, value: Any) -> None:
            """Attributes are policies. The others are set once: a switch gets no other name by assigning one."""
            if isinstance(getattr(type(self), name, None), MemberDescriptorType) and hasattr(self, name):
                raise AttributeError(f"{name!r} of a {type(self).__name__.lower()} is read-only")
            super().__setattr__(name, value)

    def __eq__(self, other: object) -> bool:
        """Whether both are the same object of the host, in the same load of the snapshot."""
        if not isinstance(other, Handle):
            return NotImplemented
        return self._key() == other._key()

    def __hash__(self) -> int:
        return hash(self._key())

    def _key(self) -> tuple[object, ...]:
        return self._snapshot, self._generation, self._identity

    @contextmanager
    def _object(self) -> Iterator[int]:
        with self._snapshot._use(self._generation):
            yield self._pointer

    def _get(self, function: Callable[..., int], *place: bytes) -> bytes:
        value, length = ctypes.c_void_p(), ctypes.c_uint32()
        with self._object():
            status = function(*place, ctypes.byref(value), ctypes.byref(length))
        check(status, f"{self}: {to_text(place[-1])}")
        try:
            return ctypes.string_at(value.value, length.value) if value.value else b""
        finally:
            lib.DVSHYP_DataFree(value)

    def _change(self, function: Callable[..., int], switch: bytes, place: tuple[bytes, ...], *value: Any) -> None:
        # The identifier is used, not the alias, which another switch may have, too.
        with self._object():
            status = function(None, *place, *value, switch, 0)
        check(status, f"{self}: {to_text(place[-1])}")
