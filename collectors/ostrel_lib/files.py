# SPDX-License-Identifier: Apache-2.0
"""Small files of the kernel, read as bytes, and the numbers in them. Nothing here raises."""
from __future__ import annotations

import os

LONGEST_NUMBER = 15
"""Digits. No size, time or count that a snapshot holds needs more; longer ones are nonsense."""

FLAGS = os.O_RDONLY | os.O_NONBLOCK | os.O_NOFOLLOW
"""A pipe in the place of a file isn't waited for, and a link isn't followed."""


def read(path: str, limit: int = 65536, folder: int | None = None) -> bytes:
    """Up to `limit` bytes of a file in one read, as the kernel's own files are to be taken; b"" when it can't
    be read or is a link. `path` is relative to the open directory `folder` when there is one."""
    try:
        file = os.open(path, FLAGS, dir_fd=folder)
    except OSError:
        return b""
    try:
        return os.read(file, limit)
    except OSError:
        return b""
    finally:
        os.close(file)


def read_list(path: str, limit: int = 1048576) -> bytes:
    """A file that the kernel hands out by records, no more than a page in one read; else like `read`."""
    try:
        file = os.open(path, FLAGS)
    except OSError:
        return b""
    parts: list[bytes] = []
    try:
        while limit > 0 and (part := os.read(file, limit)):
            parts.append(part)
            limit -= len(part)
    except OSError:
        pass
    finally:
        os.close(file)
    return b"".join(parts)


def read_setting(path: str) -> bytes:
    """A file of a person's or an administrator's, which may well be a link; b"" when it can't be read."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    except OSError:
        return b""
    try:
        return os.read(file, 65536)
    except OSError:
        return b""
    finally:
        os.close(file)


def read_within(descriptor: int, most: int) -> bytes | None:
    """All that a descriptor gives, as far as it can be read; None for more than `most` bytes."""
    parts = []
    try:
        while part := os.read(descriptor, 1048576):
            most -= len(part)
            if most < 0:
                return None
            parts.append(part)
    except OSError:
        pass
    return b"".join(parts)


def read_at(descriptor: int, size: int, place: int) -> bytes:
    """That many bytes of an open file from a place on, fewer only where it ends. Raises OSError."""
    data = os.pread(descriptor, size, place)
    while len(data) < size and (part := os.pread(descriptor, size - len(data), place + len(data))):
        data += part
    return data


def network(proc_root: str, name: str) -> bytes:
    """One of the kernel's lists on the network as this process sees it. The folder that /proc shows for it is
    a link to where it really is, so the list is taken from there."""
    try:
        own = os.readlink(proc_root + "/self")
    except OSError:
        own = ""
    folder = proc_root + "/" + own + "/net" if own.isdecimal() else proc_root + "/net"
    return b"" if os.path.islink(folder) else read_list(folder + "/" + name)


def names(path: str) -> list[str]:
    """The names in a directory, sorted; none when it can't be listed."""
    try:
        return sorted(os.listdir(path))
    except OSError:
        return []


def number(field: bytes) -> int:
    """An unsigned number; 0 for anything else, and for one too long to be meant."""
    return int(field) if field.isdigit() and len(field) <= LONGEST_NUMBER else 0


def fraction(field: bytes) -> float:
    """An unsigned decimal number such as 0.75; 0 for anything else. Python's own reading would let nan, inf
    and 1e5 through."""
    whole, _, part = field.partition(b".")
    if not whole.isdigit() or (part and not part.isdigit()) or len(field) > 2 * LONGEST_NUMBER:
        return 0.0
    return float(field)
