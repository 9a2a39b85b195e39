# SPDX-License-Identifier: Apache-2.0
"""Finds and ends every process that one cause started, also those whose parents have ended.

A mark in the environment passes from parent to child. The caller becomes the parent of orphans
(`adopt_orphans`), so that none slips away to process 1.
"""
import contextlib
import ctypes
import os
import signal
import time
from collections.abc import Collection
from pathlib import Path

MARK = "OSTREL_DESKTOP_MARK"
PATIENCE = 3.0  # seconds

_PR_SET_PDEATHSIG = 1
_PR_SET_CHILD_SUBREAPER = 36
_libc = ctypes.CDLL(None, use_errno=True)


def adopt_orphans() -> None:
    """Makes this process the parent of its descendants' orphans, from now on."""
    _libc.prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_with_parent() -> None:
    """To be called in a new child: it is asked to end when its parent dies, however that happens."""
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)


def living(mark: str) -> set[int]:
    """The running processes that carry the mark, without the caller."""
    return having(MARK, mark)


def having(name: str, value: str) -> set[int]:
    """The running processes that were started with that variable, without the caller."""
    entry = f"{name}={value}".encode()
    found: set[int] = set()
    for pid in map(int, filter(str.isdigit, os.listdir("/proc"))):
        with contextlib.suppress(OSError):
            if alive(pid) and entry in Path(f"/proc/{pid}/environ").read_bytes().split(b"\0"):
                found.add(pid)
    return found - {os.getpid()}


def end_all(mark: str, reaped_elsewhere: Collection[int]) -> set[int]:
    """Asks every marked process to end, kills what is still there after three seconds, and gives what
    even that didn't end (nothing, unless a process hangs in the kernel). Whoever holds the ones that are
    `reaped_elsewhere` asks for their exit codes."""
    begin = time.monotonic()
    asked: set[int] = set()
    while pids := living(mark):
        late = time.monotonic() - begin - PATIENCE
        if late > PATIENCE:
            return pids
        for pid in pids if late > 0 else pids - asked:
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL if late > 0 else signal.SIGTERM)
        asked |= pids
        time.sleep(0.02)
    for pid in asked.difference(reaped_elsewhere):
        # Orphans that became our children would stay as zombies.
        with contextlib.suppress(ChildProcessError):
            os.waitpid(pid, os.WNOHANG)
    return set()


def children(pid: int, script: str = "") -> list[int]:
    """The children of a process, zombies too, or those that run a script."""
    found = []
    for child in filter(str.isdigit, os.listdir("/proc")):
        with contextlib.suppress(OSError):
            parent = int(Path(f"/proc/{child}/stat").read_bytes().rpartition(b") ")[2].split()[1])
            words = os.fsdecode(Path(f"/proc/{child}/cmdline").read_bytes()).split("\0")
            if parent == pid and (not script or any(word.endswith("/" + script) for word in words)):
                found.append(int(child))
    return found


def alive(pid: int) -> bool:
    with contextlib.suppress(OSError):
        return Path(f"/proc/{pid}/stat").read_bytes().rpartition(b") ")[2][:1] not in (b"Z", b"X")
    return False
