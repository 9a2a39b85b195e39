# SPDX-License-Identifier: Apache-2.0
"""What a cleanup that is under way has done so far, in a file beside the receipts, so that a run that is
killed still gets its receipt.

The run holds a lock on its file, which ends with the process. A later call that finds a file without a lock
makes the receipt. A run that ended without being able to write its receipt has its outcome in the name of
its file. Before the first entry is tried the file has a line with the group; for each entry then a
line that says which is tried next, with the disk space it has, and a line with the outcome: "+" and the bytes
freed, or "-". The outcome is written together with the next attempt, so a killed run leaves at most one
attempt open; the disk tells how that ended.
"""
from __future__ import annotations

import errno
import fcntl
import os
import stat
import time

from ostrel_lib.janitor import receipts
from ostrel_lib.janitor.listing import mib
from ostrel_lib.janitor.receipts import RECORD_ENDING as ENDING
from ostrel_lib.jsontext import quoted

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator

    from ostrel_lib.janitor.folders import Entry

FULL = (errno.ENOSPC, errno.EDQUOT)
BEGINNING_SECONDS, BEGINNING_BYTES = 60, 64
"""A file of this age and no more bytes, without a line, is of a run that was killed before it began."""


class Progress:
    """The record of one running cleanup. `removed` counts files, `freed` is in bytes."""

    __slots__ = ("group", "removed", "freed", "_folder", "_file", "_name", "_unwritten")

    def __init__(self, home: str, group: str) -> None:
        """Begins the record. Raises OSError: without a record there is no cleanup."""
        self.group = group
        self.removed = 0
        self.freed = 0
        folder = receipts.open_folder(home, make=True)
        if folder is None:
            raise FileNotFoundError(errno.ENOENT, "no folder for receipts")
        self._folder = folder
        self._name = f"clean-{os.getpid()}-{time.time_ns()}{ENDING}"
        flags = os.O_RDWR | os.O_APPEND | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC
        self._file = os.open(self._name, flags, 0o600, dir_fd=folder)
        fcntl.flock(self._file, fcntl.LOCK_EX)
        self._unwritten = ascii_line(group)
        self._write()

    def trying(self, entry: Entry) -> None:
        """To be called before each removal. Raises OSError when the record can't go on."""
        status = entry.status
        size = status.st_blocks * 512 if status.st_nlink == 1 else 0
        self._unwritten += f"{size} {status.st_dev} {status.st_ino} ".encode("ascii") + ascii_line(entry.path)
        self._write()

    def tried(self, freed: int | None) -> None:
        """To be called after each removal, with the bytes freed, or None when the entry is still there."""
        if freed is None:
            self._unwritten += b"-\n"
        else:
            self.removed += 1
            self.freed += freed
            self._unwritten += b"+%d\n" % freed

    def finish(self) -> None:
        """Turns the record into a receipt. Raises OSError when that can't be written; the next call of the
        script then makes it, and learns the outcome from the record's name if that still can be changed: a
        name takes no room on a disk that stays full."""
        try:
            self._write()
            give_receipt(self._folder, self._name, self.group, self.removed, self.freed, cut_short=False)
        except OSError:
            counted = f"{run_of(self._name)}.{self.group}.{self.removed}.{self.freed}{ENDING}"
            os.rename(self._name, counted, src_dir_fd=self._folder, dst_dir_fd=self._folder)
            raise
        finally:
            os.close(self._file)
            os.close(self._folder)

    def _write(self) -> None:
        """A full disk is no reason to stop what makes room on it: what can't be written yet is kept."""
        try:
            while self._unwritten:
                self._unwritten = self._unwritten[os.write(self._file, self._unwritten):]
        except OSError as error:
            if error.errno not in FULL:
                raise


def run_of(name: str) -> str:
    """The name of the run that a record is of."""
    return name.partition(".")[0]


def ascii_line(text: str) -> bytes:
    """A text as one line of ASCII."""
    return quoted(text).encode("ascii") + b"\n"


def give_receipt(folder: int, name: str, group: str, removed: int, freed: int, cut_short: bool) -> None:
    """Appends the receipt of a run and removes its record. Raises OSError."""
    receipt: dict[str, object] = {
        "kind": "clean", "group": group, "removed": removed, "freed_mb": mib(freed), "run": run_of(name)}
    if cut_short:
        receipt["cut_short"] = True
    receipts.append(folder, receipt)
    os.unlink(name, dir_fd=folder)


def settle_dead_runs(home: str) -> None:
    """Makes the receipts of runs that were killed. What can't be settled now is left to the next call."""
    try:
        folder = receipts.open_folder(home, make=False)
    except OSError:
        return
    if folder is None:
        return
    try:
        for name in os.listdir(folder):
            if name.startswith("clean-") and name.endswith(ENDING):
                settle(home, folder, name)
    except OSError:
        pass
    finally:
        os.close(folder)


def settle(home: str, folder: int, name: str) -> None:
    """Makes one run's receipt, unless the run is alive or another call is at it. Raises OSError."""
    try:
        file = os.open(name, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC, dir_fd=folder)
    except OSError:
        return
    try:
        status = os.fstat(file)
        if not stat.S_ISREG(status.st_mode):
            return
        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        if os.stat(name, dir_fd=folder, follow_symlinks=False).st_ino != status.st_ino:
            return
        counted = name[:-len(ENDING)].split(".")
        ended = len(counted) == 4
        if ended:
            group, removed, freed = counted[1], int(counted[2]), int(counted[3])
        else:
            group, removed, freed = outcome(file, home)
        if group is None:
            old = time.time() - status.st_mtime > BEGINNING_SECONDS
            if old and status.st_size <= BEGINNING_BYTES:
                os.unlink(name, dir_fd=folder)
        elif has_receipt(folder, run_of(name)):
            os.unlink(name, dir_fd=folder)
        else:
            give_receipt(folder, name, group, removed, freed, cut_short=not ended)
    except (BlockingIOError, FileNotFoundError, ValueError):
        return  # another call's, or no record of ours
    finally:
        os.close(file)


def outcome(file: int, home: str) -> tuple[str | None, int, int]:
    """What a record says: the group, files removed and bytes freed. No group when the record has no line."""
    import json

    group: str | None = None
    removed = freed = 0
    attempt = b""
    for line in whole_lines(file):
        if group is None:
            group = json.loads(line)
        elif line[:1] == b"+":
            removed += 1
            freed += int(line[1:])
            attempt = b""
        elif line[:1] == b"-":
            attempt = b""
        else:
            attempt = line
    if attempt:
        size, device, inode, path = attempt.split(b" ", 3)
        if not is_there(home + "/" + json.loads(path), int(device), int(inode)):
            removed += 1
            freed += int(size)
    return group, removed, freed


def whole_lines(file: int) -> Iterator[bytes]:
    """The lines of a file that were written to their end, without it."""
    rest = b""
    while True:
        part = os.read(file, 262144)
        if not part:
            return
        lines = (rest + part).split(b"\n")
        rest = lines.pop()
        yield from lines


def is_there(path: str, device: int, inode: int) -> bool:
    """Whether this very file still has this name."""
    try:
        status = os.stat(path, follow_symlinks=False)
    except OSError:
        return False
    return (status.st_dev, status.st_ino) == (device, inode)


def has_receipt(folder: int, run: str) -> bool:
    """Whether a run that was killed at its very end had written its receipt. A line that a full disk cut
    short is none."""
    mark = ('"run": "' + run + '"').encode("ascii", "replace")
    return any(mark in line and receipts.parse(line) is not None for name in receipts.day_files(folder)[:3]
               for line in receipts.last_lines(folder, name))
