# SPDX-License-Identifier: Apache-2.0
"""The configuration of a host as a document, YAML or JSON: export, checks, comparison, application.

The functions need libqvs-config.so.0. Each loads the snapshot of the process again, so that switches and ports of a
qvs.Snapshot are void afterwards. A function that fails raises qvs.Error, or the subclass of its status, whose
`problems` are the errors, each with its place in the document.
"""
from __future__ import annotations

import ctypes
from collections.abc import Callable
from dataclasses import dataclass
from enum import IntEnum

from qvs import constants, lib
from qvs._gate import gate
from qvs._load import copied, flag, from_text, octets, to_text, word
from qvs.errors import check


class Kind(IntEnum):
    """What an entry is about."""

    ERROR = constants.QVSCONFIG_ERROR
    WARNING = constants.QVSCONFIG_WARNING
    ADDED = constants.QVSCONFIG_ADDED
    REMOVED = constants.QVSCONFIG_REMOVED
    CHANGED = constants.QVSCONFIG_CHANGED


@dataclass(frozen=True)
class Entry:
    """An error, a warning or a change. `line` and `column` are 0 when there is no place in the document."""

    kind: Kind
    path: str
    text: str = ""
    before: str = ""
    after: str = ""
    line: int = 0
    column: int = 0

    def __str__(self) -> str:
        place = f"line {self.line}, column {self.column}: " if self.line else ""
        path = self.path or "host"
        if self.kind in (Kind.ERROR, Kind.WARNING):
            return f"{place}{path}: {self.text}"
        return f"{path}: {self.before or 'nothing'} -> {self.after or 'nothing'}"


def _entries(report: ctypes.c_void_p) -> list[Entry]:
    found = []
    for index in range(lib.QVSConfig_CountEntries(report)):
        entry = lib.QVSConfig_Entry()
        check(lib.QVSConfig_GetEntry(report, index, ctypes.byref(entry)), "an entry of a report")
        path, text, before, after = (to_text(text) for text in (entry.path, entry.text, entry.before, entry.after))
        found.append(Entry(Kind(entry.kind), path, text, before, after, entry.line, entry.column))
    return found


def _run(what: str, function: Callable[..., int], *arguments: object) -> list[Entry]:
    report = ctypes.c_void_p()
    with gate.alone():
        status = function(*arguments, ctypes.byref(report))
    try:
        entries = _entries(report)
    finally:
        lib.QVSConfig_FreeReport(report)
    check(status, what, [entry for entry in entries if entry.kind is Kind.ERROR])
    return entries


def _document(text: str | bytes) -> tuple[bytes, int]:
    data = text.encode("utf-8", "surrogateescape") if isinstance(text, str) else octets(text)
    return data, len(data)


def _flags(prune: bool, strict: bool) -> int:
    return flag("prune", prune, constants.QVSCONFIG_PRUNE) | flag("strict", strict, constants.QVSCONFIG_STRICT)


def export(*aliases: str, json: bool = False, defaults: bool = False) -> str:
    """The document of these switches, or of all. `defaults`: also with the values that hold where nothing is stored."""
    names = (ctypes.c_char_p * len(aliases))(*map(from_text, aliases))
    flags = flag("json", json, constants.QVSCONFIG_JSON) | flag("defaults", defaults, constants.QVSCONFIG_DEFAULTS)
    text = ctypes.c_void_p()
    try:
        _run("export", lib.QVSConfig_Export, names if aliases else None, len(aliases), flags, ctypes.byref(text))
        return to_text(copied(text))
    finally:
        lib.QVSConfig_FreeText(text)


def validate(text: str | bytes) -> list[Entry]:
    """Checks a document, without a host, and returns warnings. BadParameter: the document has errors."""
    return _run("the document", lib.QVSConfig_Validate, *_document(text))


def diff(text: str | bytes, *, prune: bool = False, strict: bool = False) -> list[Entry]:
    """The changes that apply() would make, and warnings.

    prune   also remove what the document does not name
    strict  a reference to what does not exist is an error
    """
    return _run("the document", lib.QVSConfig_Compare, *_document(text), _flags(prune, strict))


def apply(text: str | bytes, *, prune: bool = False, strict: bool = False, confirm: int = 0) -> list[Entry]:
    """Makes the host match a document, all of it or nothing, and returns the changes, and warnings.

    confirm  seconds within which confirm() must be called; otherwise the change is undone
    """
    seconds = word("confirm", confirm)
    return _run("the document", lib.QVSConfig_Apply, *_document(text), _flags(prune, strict), seconds)


def confirm() -> None:
    """Keeps the change that waits for its confirmation. NotFound: no change is waiting."""
    with gate.alone():
        status = lib.QVSConfig_Confirm()
    check(status, "confirmation")


def recover() -> list[Entry]:
    """Undoes a change that was interrupted or that waits for its confirmation. NotFound: there is none."""
    return _run("recovery", lib.QVSConfig_Recover)
