# SPDX-License-Identifier: Apache-2.0
"""Folders and day files of the user's own that the scripts make: for nobody else, whatever the umask is, and
with nothing followed or waited for that somebody put in their place."""
from __future__ import annotations

import errno
import os
import stat

OTHERS_WRITE = stat.S_IWGRP | stat.S_IWOTH


def make_folder(path: str) -> None:
    """Makes a folder, and those above it that aren't there, for the user alone. One that is there and the
    user's own is closed to the writing of others. Raises OSError when there is none in the end."""
    try:
        os.mkdir(path, 0o700)
        return
    except FileNotFoundError:
        make_folder(os.path.dirname(path))
        make_folder(path)
        return
    except FileExistsError:
        pass
    status = os.stat(path)
    if not stat.S_ISDIR(status.st_mode):
        raise NotADirectoryError(errno.ENOTDIR, "it isn't a folder", path)
    if status.st_mode & OTHERS_WRITE and status.st_uid == os.geteuid():
        try:
            os.chmod(path, stat.S_IMODE(status.st_mode) & ~OTHERS_WRITE)
        except OSError:
            pass  # a file system without rights of its own


def open_lines(path: str, folder: int | None = None) -> int:
    """Opens a file of lines for one more at its end, and makes it. `path` is relative to the open directory
    `folder` when there is one. Raises OSError, also when it isn't a regular file."""
    flags = os.O_RDWR | os.O_APPEND | os.O_CREAT | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC
    file = os.open(path, flags, 0o600, dir_fd=folder)
    if not stat.S_ISREG(os.fstat(file).st_mode):
        os.close(file)
        raise OSError(errno.EINVAL, "it isn't a regular file", path)
    return file


def add_line(file: int, line: bytes) -> None:
    """Appends a line in one write, so that writers at the same time lose nothing of each other's. One that
    another writer left unfinished is ended first; it looks the same while it is being written, so there can
    be empty lines. Raises OSError when it isn't there as a whole: what is missing can't follow it, since the
    line of another may stand there by now."""
    size = os.fstat(file).st_size
    whole = size == 0 or os.pread(file, 1, size - 1) == b"\n"
    text = line + b"\n" if whole else b"\n" + line + b"\n"
    if os.write(file, text) != len(text):
        raise OSError(errno.ENOSPC, "the disk took half a line")
