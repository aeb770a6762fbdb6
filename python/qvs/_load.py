# SPDX-License-Identifier: Apache-2.0
"""How the module reaches the libraries: the C types of qvs.lib, loading, and text."""
from __future__ import annotations

import ctypes
import operator
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from functools import cache
from typing import Annotated, Any, TypeVar, get_args

T = TypeVar("T")

# The C types of parameters and results. The second part is what ctypes converts to.
U8 = Annotated[int, ctypes.c_uint8]
U16 = Annotated[int, ctypes.c_uint16]
U32 = Annotated[int, ctypes.c_uint32]
U64 = Annotated[int, ctypes.c_uint64]
I32 = Annotated[int, ctypes.c_int32]
Size = Annotated[int, ctypes.c_size_t]
Text = Annotated["bytes | None", ctypes.c_char_p]
Pointer = Annotated[Any, ctypes.c_void_p]
# The callback of a walk over the snapshot: the object, and a context that is not used.
WALK = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)
Walk = Annotated[Any, WALK]

LIBRARY = "libqvs.so.1"
STATE_LIBRARY = "libmeshPublic.so"
CONFIG_LIBRARY = "libqvs-config.so.0"


@cache
def library(soname: str) -> ctypes.CDLL:
    """Loads a library. ImportError: the loader does not find it."""
    try:
        return ctypes.CDLL(soname, use_errno=True)
    except OSError as error:
        raise ImportError(
            f"{error}; install the library, set LD_LIBRARY_PATH, or run the program with qvs-host run"
        ) from None


def soname_of(function: str) -> str:
    if function.startswith("QVSConfig_"):
        return CONFIG_LIBRARY
    # DVSData, DVSHYP, DVSState and DVS_ are the state library's, DVSLoadConfig and DVSAlias... are not.
    return STATE_LIBRARY if function.startswith(("DVSData_", "DVSHYP_", "DVSState_", "DVS_")) else LIBRARY


def between(value: int, kind: Any) -> int:
    """A number that a C type holds. ctypes would cut off one that does not fit."""
    bits, signed = 8 * ctypes.sizeof(kind), kind(-1).value < 0
    low, high = (-1 << bits - 1, (1 << bits - 1) - 1) if signed else (0, (1 << bits) - 1)
    number = operator.index(value)
    if not low <= number <= high:
        raise ValueError(f"{number} is not between {low} and {high}")
    return number


@cache
def checked(kind: Any) -> Any:
    """A type of a parameter, which refuses numbers that do not fit."""
    if not isinstance(kind(), ctypes._SimpleCData) or not isinstance(kind().value, int):
        return kind

    class Checked:
        @staticmethod
        def from_param(value: int) -> Any:
            return kind(between(value, kind))

    return Checked


def plain(function: Any, name: str) -> Any:
    """A function whose arguments raise TypeError and ValueError, which ctypes wraps in ArgumentError."""

    def call(*arguments: Any) -> Any:
        try:
            return function(*arguments)
        except ctypes.ArgumentError as error:
            wrapped = error
        for kind, argument in zip(function.argtypes, arguments):
            kind.from_param(argument)  # raises the error again, as it was
        raise wrapped

    call.__name__ = name
    return call


def resolver(annotations: dict[str, Any], names: dict[str, Any]) -> Callable[[str], Any]:
    """The __getattr__ of qvs.lib: finds a function when it is first used, with the types that it is annotated with."""

    def find(name: str) -> Any:
        if name not in annotations:
            raise AttributeError(f"module 'qvs.lib' has no function {name!r}")
        arguments, result = get_args(annotations[name])
        # A state library may lack DVS_PortState, which gives an AttributeError.
        function = getattr(library(soname_of(name)), name)
        function.argtypes = [checked(get_args(argument)[1]) for argument in arguments]
        function.restype = get_args(result)[1] if result not in (None, type(None)) else None
        names[name] = plain(function, name)
        return names[name]

    return find


def copied(pointer: ctypes.c_void_p, size: int = -1) -> bytes:
    """The bytes at an address, or those before a NUL. Some functions succeed with a null pointer without memory."""
    if not pointer.value:
        raise MemoryError("the library returned no value")
    return ctypes.string_at(pointer.value, size)


def word(name: str, value: int) -> int:
    """A number of 32 bits."""
    with named(name):
        return between(value, ctypes.c_uint32)


def flag(name: str, value: bool, number: int = 1) -> int:
    """The number of a flag that is set, or 0. A text would be true, even "no"."""
    with named(name):
        return number if of_type(bool, value) else 0


@contextmanager
def named(name: str) -> Iterator[None]:
    """Says what a value is wrong for."""
    try:
        yield
    except TypeError as error:
        raise TypeError(f"{name}: {error}") from None
    except (ValueError, OverflowError) as error:
        raise ValueError(f"{name}: {error}") from None


def of_type(kind: type[T], value: T) -> T:
    """The value, if it is of this type. bytes() makes zeros of a number, and truth has every value."""
    if not isinstance(value, kind):
        raise TypeError(f"{value!r} is not of the type {kind.__name__}")
    return value


def octets(value: bytes) -> bytes:
    """A copy of bytes, and of nothing that bytes() would make some from, such as a number or a list."""
    return bytes(memoryview(value))


def from_text(text: str) -> bytes:
    """The bytes of a text. Names of switches and ports need not be UTF-8; to_text and from_text keep every byte."""
    data = of_type(str, text).encode("utf-8", "surrogateescape")
    if b"\0" in data:
        raise ValueError(f"{text!r} contains a NUL character")
    return data


def to_text(data: bytes) -> str:
    return data.decode("utf-8", "surrogateescape")


def optional(text: str | None) -> bytes | None:
    return None if text is None else from_text(text)
