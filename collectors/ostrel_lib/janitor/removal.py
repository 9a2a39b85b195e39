# SPDX-License-Identifier: Apache-2.0
"""Removing one entry of a plan. Nothing else in the scripts deletes a user's file."""
from __future__ import annotations

import fcntl
import os
import stat
import struct

from ostrel_lib.janitor.folders import PASSED_OVER

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ostrel_lib.janitor.folders import Entry

LOCK = "hhqqi"
"""struct flock: kind, where its start counts from, start, length, process."""


def remove(entry: Entry) -> int | None:
    """Removes a file or link and gives the bytes that came free; None when it was left alone, because it
    isn't what the plan saw, is locked, or the system refuses. Raises OSError when the machine can't go on.

    The entry is opened without side effects first, so that what is compared, locked and removed is one and
    the same file. A lock that can be had is held until the file is gone.
    """
    held = -1
    try:
        seen = os.open(entry.name, os.O_PATH | os.O_NOFOLLOW | os.O_CLOEXEC, dir_fd=entry.folder.fd)
        try:
            if not same(os.fstat(seen), entry.status):
                return None
            if stat.S_ISREG(entry.status.st_mode):
                held = os.open(f"/proc/self/fd/{seen}", os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC)
                if is_locked(held):
                    return None
            now = os.stat(entry.name, dir_fd=entry.folder.fd, follow_symlinks=False)
            if not same(now, entry.status) or not entry.folder.in_place():
                return None
            os.unlink(entry.name, dir_fd=entry.folder.fd)
            left = os.fstat(seen)
            return left.st_blocks * 512 if left.st_nlink == 0 else 0
        finally:
            os.close(seen)
    except OSError as error:
        if error.errno in PASSED_OVER:
            return None
        raise
    finally:
        if held >= 0:
            os.close(held)


def remove_folder(entry: Entry) -> None:
    """Removes a folder that the plan has emptied, if it is still that folder and holds nothing. Raises
    OSError when the machine can't go on."""
    try:
        now = os.stat(entry.name, dir_fd=entry.folder.fd, follow_symlinks=False)
        if (now.st_dev, now.st_ino) == (entry.status.st_dev, entry.status.st_ino) and entry.folder.in_place():
            os.rmdir(entry.name, dir_fd=entry.folder.fd)
    except OSError as error:
        if error.errno not in PASSED_OVER:
            raise


def same(now: os.stat_result, planned: os.stat_result) -> bool:
    """Whether this is the planned file, and nobody wrote to it since."""
    return (
        now.st_dev == planned.st_dev
        and now.st_ino == planned.st_ino
        and now.st_size == planned.st_size
        and now.st_mtime_ns == planned.st_mtime_ns
        and stat.S_IFMT(now.st_mode) == stat.S_IFMT(planned.st_mode)
    )


def is_locked(file: int) -> bool:
    """Whether another process has a lock of any kind on an open file. One that isn't is locked by us from now
    on, as long as it is open."""
    try:
        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        return True
    wanted = struct.pack(LOCK, fcntl.F_WRLCK, os.SEEK_SET, 0, 0, 0)
    found = fcntl.fcntl(file, fcntl.F_OFD_GETLK, wanted)
    return struct.unpack(LOCK, found)[0] != fcntl.F_UNLCK
