# SPDX-License-Identifier: Apache-2.0
"""What the records have in common: packed, little-endian fields at fixed offsets."""
from __future__ import annotations

import dataclasses
import operator
from collections.abc import Iterable
from functools import cache
from typing import TYPE_CHECKING, Any, ClassVar, NamedTuple, TypeVar, cast

from qvs._load import from_text, named, octets, of_type, to_text

R = TypeVar("R", bound="Record")


class Place(NamedTuple):
    """Where a field is: its offset, the size of one element, and the number of elements; 0 when it is no array."""

    kind: str | type[Record]
    offset: int
    size: int
    elements: int

    def decode(self, data: bytes) -> Any:
        if self.kind == "unsigned" or self.kind == "signed":
            return int.from_bytes(data, "little", signed=self.kind == "signed")
        if self.kind == "text":
            return to_text(data.partition(b"\0")[0])
        return data if isinstance(self.kind, str) else self.kind.from_bytes(data)

    def encode(self, value: Any) -> bytes:
        if self.kind == "unsigned" or self.kind == "signed":
            return operator.index(value).to_bytes(self.size, "little", signed=self.kind == "signed")
        if not isinstance(self.kind, str):
            return self.kind.one_to_bytes(value)
        data = from_text(value) if self.kind == "text" else octets(value)
        # Raw bytes have no end of their own, so that a wrong length is a mistake.
        if len(data) > self.size or (self.kind != "text" and len(data) != self.size):
            raise ValueError(f"{len(data)} bytes do not fit into {self.size}")
        return data.ljust(self.size, b"\0")

    def load(self, data: bytes) -> Any:
        if not self.elements:
            return self.decode(data[self.offset : self.offset + self.size])
        places = range(self.offset, self.offset + self.elements * self.size, self.size)
        return [self.decode(data[place : place + self.size]) for place in places]

    def store(self, value: Any, data: bytearray) -> None:
        values = value if self.elements else [value]
        if not isinstance(values, (list, tuple)):  # a text would be a list of its characters
            raise TypeError(f"{value!r} is not a list")
        if len(values) > max(self.elements, 1):
            raise ValueError(f"{len(values)} elements do not fit into {self.elements}")
        for index, element in enumerate(values):
            place = self.offset + index * self.size
            data[place : place + self.size] = self.encode(element)


def _field(default: Any, place: Place) -> Any:
    factory = list if place.elements else default
    return dataclasses.field(default_factory=factory, metadata={"place": place})


def unsigned(offset: int, size: int, count: int = 0) -> Any:
    return _field(int, Place("unsigned", offset, size, count))


def signed(offset: int, size: int, count: int = 0) -> Any:
    return _field(int, Place("signed", offset, size, count))


def text(offset: int, size: int, count: int = 0) -> Any:
    return _field(str, Place("text", offset, size, count))


def raw(offset: int, size: int, count: int = 0) -> Any:
    return _field(lambda: bytes(size), Place("raw", offset, size, count))


def nested(record: type[Record], offset: int, size: int, count: int = 0) -> Any:
    return _field(record, Place(record, offset, size, count))


@cache
def _layout(record: Any) -> tuple[tuple[str, Place], ...]:
    return tuple((field.name, field.metadata["place"]) for field in dataclasses.fields(record))


class Record:
    """The base of the dataclasses of qvs.records."""

    SIZE: ClassVar[int]

    def __init_subclass__(cls, size: int) -> None:
        cls.SIZE = size

    if not TYPE_CHECKING:  # mypy would allow every name

        def __setattr__(self, name: str, value: Any) -> None:
            if name not in type(self).__dataclass_fields__:
                raise AttributeError(f"{type(self).__name__} has no field {name!r}")
            super().__setattr__(name, value)

    @classmethod
    def from_bytes(cls: type[R], data: bytes, offset: int = 0) -> R:
        """Reads the record at an offset. ValueError: the bytes end before the record does."""
        if offset < 0 or len(data) - offset < cls.SIZE:
            raise ValueError(f"{cls.__name__} has {cls.SIZE} bytes, but {max(0, len(data) - max(0, offset))} are there")
        chunk = bytes(data[offset : offset + cls.SIZE])
        return cls(**{name: place.load(chunk) for name, place in _layout(cast(Any, cls))})

    @classmethod
    def list_from_bytes(cls: type[R], data: bytes, offset: int, count: int) -> list[R]:
        """Reads `count` records without gaps."""
        return [cls.from_bytes(data, offset + index * cls.SIZE) for index in range(count)]

    @classmethod
    def one_to_bytes(cls: type[R], value: R) -> bytes:
        """The bytes of a record that must be of this type: the library reads as many as the type has."""
        data = bytes(of_type(cls, value))
        if len(data) != cls.SIZE:
            raise TypeError(f"{value!r} has {len(data)} bytes, not the {cls.SIZE} of {cls.__name__}")
        return data

    @classmethod
    def list_to_bytes(cls: type[R], values: Iterable[R]) -> tuple[bytes, int]:
        """The bytes of records of this type without gaps, and their number, by which the library reads them."""
        each = [cls.one_to_bytes(value) for value in values]
        return b"".join(each), len(each)

    def __bytes__(self) -> bytes:
        """The bytes of the record. ValueError: a value does not fit into its field. TypeError: it has another type."""
        data = bytearray(self.SIZE)
        for name, place in _layout(cast(Any, type(self))):
            with named(f"{type(self).__name__}.{name}"):
                place.store(getattr(self, name), data)
        return bytes(data)
