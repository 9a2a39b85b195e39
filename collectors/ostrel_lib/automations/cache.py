# SPDX-License-Identifier: Apache-2.0
"""The last inventory, kept as the text of its JSON, so that answering from it parses nothing.

The file is one line "ostrel-automations 1 {crc32} {bytes} {seconds since 1970}", then the text. It is
believed only if it is whole: a reader finds the old inventory, the new one, or none.
"""
from __future__ import annotations

import os
from binascii import crc32
from fcntl import LOCK_EX, LOCK_NB, flock

from ostrel_lib.owned import make_folder

MAGIC = b"ostrel-automations"
VERSION = b"1"
LARGEST = 64 << 20
OLDEST = 86400.0
"""Seconds. What was seen longer ago says nothing of next runs, so it is read anew."""
LONGEST_HEADER = 100
BESIDE = ".new"
"""Behind the writer's pid, the end of the name under which new contents are written."""


def load(path: str, now: float) -> bytes | memoryview:
    """The kept JSON text; empty when there is none, or it is damaged, too old or from the future."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC)
    except OSError:
        return b""
    try:
        size = os.fstat(file).st_size
        content = read_whole(file, size) if size <= LARGEST else b""
    except OSError:
        return b""
    finally:
        os.close(file)
    end = content.find(b"\n", 0, LONGEST_HEADER)
    fields = content[:max(0, end)].split(b" ")
    if len(fields) != 5 or fields[0] != MAGIC or fields[1] != VERSION or not fields[4].isdigit():
        return b""
    text = memoryview(content)[end + 1:]  # megabytes, so no copy of them
    if fields[2] != b"%08x" % crc32(text) or fields[3] != b"%d" % len(text):
        return b""
    return text if 0 <= now - int(fields[4]) <= OLDEST else b""


def read_whole(file: int, size: int) -> bytes:
    """A regular file that may be read in pieces."""
    parts = []
    while size > 0:
        part = os.read(file, size)
        if not part:
            break
        parts.append(part)
        size -= len(part)
    return b"".join(parts)


def store(path: str, text: bytes, now: float) -> str:
    """Keeps the text for the user alone; the reason when it can't be kept, else ""."""
    header = b"%s %s %08x %d %d\n" % (MAGIC, VERSION, crc32(text), len(text), int(now))
    return replace(path, header + text)


def replace(path: str, content: bytes) -> str:
    """Writes a file of the user's own in one step; the reason when that fails, else "". What a killed writer
    left in that folder goes first."""
    folder = os.path.dirname(path)
    beside = f"{path}.{os.getpid()}{BESIDE}"
    try:
        make_folder(folder)
        remove_leftovers(folder)
        file = make_beside(beside) or make_beside(beside)
    except OSError as problem:
        return problem.strerror or "can't be written"
    if not file:
        return "another program removes it"
    renamed = False
    try:
        with open(file, "wb") as stream:
            stream.write(content)
            stream.flush()
            os.fsync(file)
            os.rename(beside, path)
            renamed = True
    except OSError as problem:
        return problem.strerror or "can't be written"
    finally:
        if not renamed:
            unlink(beside)
    return ""


def make_beside(path: str) -> int:
    """Makes a file that is locked as long as it is open; 0 when another's clearing up came between the two.
    Raises OSError."""
    file = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_NOFOLLOW | os.O_CLOEXEC, 0o600)
    try:
        flock(file, LOCK_EX)
    except OSError:
        pass  # where there are no locks, nobody takes it for a leftover either
    if os.fstat(file).st_nlink:
        return file
    os.close(file)
    return 0


def remove_leftovers(folder: str) -> None:
    """Removes the files beside others that nobody writes any more."""
    for name in os.listdir(folder):
        if not name.endswith(BESIDE) or not name[:-len(BESIDE)].rpartition(".")[2].isdecimal():
            continue
        path = folder + "/" + name
        try:
            file = os.open(path, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC)
        except OSError:
            continue
        try:
            flock(file, LOCK_EX | LOCK_NB)
            if os.path.samestat(os.fstat(file), os.lstat(path)):
                os.unlink(path)
        except OSError:
            pass
        finally:
            os.close(file)


def unlink(path: str) -> None:
    """Removes a file, if that can be done."""
    try:
        os.unlink(path)
    except OSError:
        pass
