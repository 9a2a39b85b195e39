# SPDX-License-Identifier: Apache-2.0
"""Small files of the kernel, read as bytes, and the numbers in them. Nothing here raises."""
from __future__ import annotations

import os

LONGEST_NUMBER = 15
"""Digits. No size, time or count that a snapshot holds needs more; longer ones are nonsense."""


def read(path: str, limit: int = 65536, folder: int | None = None) -> bytes:
    """Up to `limit` bytes of a file in one read, as the kernel's own files are to be taken; b"" when it can't
    be read. `path` is relative to the open directory `folder` when there is one."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NONBLOCK, dir_fd=folder)
    except OSError:
        return b""
    try:
        return os.read(file, limit)
    except OSError:
        return b""
    finally:
        os.close(file)


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
