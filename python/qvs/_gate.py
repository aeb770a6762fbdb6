# SPDX-License-Identifier: Apache-2.0
"""The process has one snapshot. Calls that use it may run at the same time, loading it again runs alone."""
from __future__ import annotations

import threading
from collections.abc import Iterator
from contextlib import contextmanager

from qvs import lib
from qvs.errors import check


class Gate:
    def __init__(self) -> None:
        # Held by the thread whose block is open, or which loads the snapshot.
        self.turn = threading.RLock()
        # Counts the loads, so that a handle knows whether it is of this one.
        self.generation = 0
        self._changed = threading.Condition()
        self._calls = 0
        self._loading = False

    @contextmanager
    def use(self) -> Iterator[None]:
        """For the duration of a call that reads the snapshot."""
        with self._changed:
            while self._loading:
                self._changed.wait()
            self._calls += 1
        try:
            yield
        finally:
            with self._changed:
                self._calls -= 1
                self._changed.notify_all()

    @contextmanager
    def alone(self) -> Iterator[None]:
        """For the duration of a call that loads the snapshot. It waits for the block of another thread to end."""
        with self.turn:
            with self._changed:
                while self._calls:
                    self._changed.wait()
                self._loading = True
            try:
                yield
            finally:
                with self._changed:
                    self._loading = False
                    self.generation += 1
                    self._changed.notify_all()

    def load(self) -> None:
        with self.alone():
            status = lib.DVSLoadConfig()
        check(status, "the switches of this host")


gate = Gate()
