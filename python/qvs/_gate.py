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
        self._inside = threading.local()  # whether a call of this thread is among those that are counted

    @contextmanager
    def use(self) -> Iterator[None]:
        """For the duration of a call that reads the snapshot."""
        if getattr(self._inside, "call", False):
            # Part of a call that runs already; a load that waits for it must not stop it.
            yield
            return
        with self._changed:
            while self._loading:
                self._changed.wait()
            self._calls += 1
        self._inside.call = True
        try:
            yield
        finally:
            self._inside.call = False
            with self._changed:
                self._calls -= 1
                self._changed.notify_all()

    @contextmanager
    def alone(self) -> Iterator[None]:
        """For the duration of a call that loads the snapshot. It waits for the block of another thread to end."""
        with self.turn:
            try:
                with self._changed:
                    # New calls wait from now on, so that the running ones come to an end.
                    self._loading = True
                    while self._calls:
                        self._changed.wait()
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
