# SPDX-License-Identifier: Apache-2.0
"""The snapshot of a host, and its switches and ports.

The process has one snapshot, which all threads share. A block `with qvs.Snapshot()` loads it; the block of another
thread waits until this one ends. Other threads may use the switches and ports of an open block. They are void when the
block ends, and when the snapshot is loaded again: by reload(), by an inner block, by create_switch(), or by a function
of qvs.config. Using one then raises StaleHandle.
"""
from __future__ import annotations

import ctypes
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from types import TracebackType

from qvs import constants, lib
from qvs._gate import gate
from qvs._handle import walk
from qvs._load import copied, flag, from_text, optional, to_text, word
from qvs.errors import NotFound, StaleHandle, check
from qvs.switch import Switch


class Snapshot:
    """The switches of this host. NoHost: there is no hypervisor on this machine."""

    def __init__(self) -> None:
        self._generation = 0
        self._owner: int | None = None  # the thread whose block is open

    def __enter__(self) -> Snapshot:
        gate.turn.acquire()
        if self._owner is not None:
            gate.turn.release()
            raise RuntimeError("the block of this snapshot is open already")
        try:
            self._owner = threading.get_ident()
            self.reload()
        except BaseException:
            self._owner = None
            gate.turn.release()
            raise
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if self._owner != threading.get_ident():
            state = "is not open" if self._owner is None else "must be ended by the thread that opened it"
            raise RuntimeError(f"the block of this snapshot {state}")
        self._owner = None
        gate.turn.release()

    def reload(self) -> None:
        """Loads the snapshot again. Switches and ports from before are void."""
        if self._owner is None:
            raise StaleHandle("the block of the snapshot has ended")
        gate.load()
        self._generation = gate.generation

    @contextmanager
    def _use(self, generation: int | None = None) -> Iterator[None]:
        with gate.use():
            if self._owner is None:
                raise StaleHandle("the block of the snapshot has ended")
            if gate.generation != (self._generation if generation is None else generation):
                raise StaleHandle("the snapshot was loaded again; get the object from it again")
            yield

    @property
    def switches(self) -> list[Switch]:
        with self._use():
            return [Switch(self, pointer) for pointer in walk(lib.DVSState_SwitchForEach)]

    def switch(self, alias: str) -> Switch:
        """The switch with this alias."""
        with self._use():
            pointer = lib.DVSState_SwitchFindByAlias(from_text(alias))
            if not pointer:
                raise NotFound(constants.HYP_NOT_FOUND, f"switch {alias!r}")
            return Switch(self, pointer)

    def create_switch(
        self,
        alias: str,
        *,
        id: str | None = None,
        portset: str | None = None,
        version: int = constants.QVS_SWITCH_VERSION_DEFAULT,
        opaque: bool = False,
        max_ports: int = 0,
        uplinks: int = 0,
        ports: int = 0,
    ) -> Switch:
        """Creates a switch, loads the snapshot again, and returns the switch."""
        numbers = {"max_ports": max_ports, "uplinks": uplinks, "ports": ports}
        words = [word(name, number) for name, number in numbers.items()]
        names = (from_text(alias), optional(id), optional(portset))
        with self._use():
            status = lib.VSDVS_CreateVSwitch(*names, word("version", version), flag("opaque", opaque), *words)
        check(status, f"switch {alias!r}")
        self.reload()
        return self.switch(alias)

    def dump(self, alias: str | None = None) -> str:
        """The state as text, of one switch or of all."""
        pointer = ctypes.c_void_p()
        with self._use():
            status = lib.NetDVS_Dump(optional(alias), ctypes.byref(pointer))
        check(status, f"dump of switch {alias!r}" if alias is not None else "dump")
        try:
            return to_text(copied(pointer))
        finally:
            lib.NetDVS_FreeMemory(pointer)
