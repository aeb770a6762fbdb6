# SPDX-License-Identifier: Apache-2.0
"""The exceptions of the module: one class for each status that programs tell apart."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any

from qvs import constants, lib
from qvs._load import to_text

if TYPE_CHECKING:
    from qvs.config import Entry


class Error(Exception):
    """A function of the library failed.

    status    the status, a number
    name      its text, as the library gives it: "Not found"
    what      the object and what was done with it
    problems  of a configuration document: the errors in it, or what could not be done
    """

    def __init__(self, status: int, what: str, problems: list[Entry] | None = None) -> None:
        self.status = status
        self.name = to_text(lib.ReturnStatusToString(status) or b"")
        self.what = what
        self.problems = problems or []
        lines = [f"{what}: {self.name} (0x{status:x})", *(f"  {problem}" for problem in self.problems)]
        super().__init__("\n".join(lines))

    def __reduce__(self) -> tuple[Any, ...]:
        # Without __init__, whose arguments are others, and which needs the library.
        return _restored, (type(self), *self.args), self.__dict__


def _restored(kind: type[Error], message: str) -> Error:
    error = kind.__new__(kind)
    error.args = (message,)
    return error


class Failure(Error):
    """A step failed, for example a command of the kernel's shell."""


class NotFound(Error):
    """There is no such object, or nothing is stored."""


class Exists(Error):
    """There is such an object already, or somebody else holds the lock of the host."""


class LimitExceeded(Error):
    """There is no room for it."""


class BadParameter(Error):
    """The library or the kernel refuses a value."""


class NoMemory(Error):
    """Memory ran out."""


class NotSupported(Error):
    """The switch, or the kernel, has no such function."""


class NoHost(Error):
    """There is no hypervisor on this machine."""


class StaleHandle(RuntimeError):
    """A handle was used outside of the block of its snapshot, or after the snapshot was loaded again."""


NO_CONNECTION = 0xBAD0040  # of the state library, when there is no host
CLASSES: dict[int, type[Error]] = {
    constants.HYP_FAILURE: Failure,
    constants.HYP_NOT_FOUND: NotFound,
    constants.HYP_EXISTS: Exists,
    constants.HYP_LIMIT_EXCEEDED: LimitExceeded,
    constants.HYP_BAD_PARAM: BadParameter,
    constants.HYP_NO_MEMORY: NoMemory,
    constants.HYP_NOT_SUPPORTED: NotSupported,
    NO_CONNECTION: NoHost,
}


def check(status: int, what: str, problems: list[Entry] | None = None) -> None:
    """Raises the exception of a status that is a failure."""
    if status != constants.HYP_OK:
        raise CLASSES.get(status, Error)(status, what, problems)
