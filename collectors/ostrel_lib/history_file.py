# SPDX-License-Identifier: Apache-2.0
"""The collector's own saved samples, one JSON object a line, the oldest first.

A sample is an object with the numbers `swap` (percent of it in use), `load` (percent of the cores) and
`mcp` (servers); `ts` and `t` are its time, as text and in seconds.

Whoever changes the file holds the lock beside it, which ends with its process. A line is appended in one
write and the file replaced by renaming, so readers need no lock, and a writer that is killed leaves the
samples there were. `samples` and `append` tell errors as data; the functions below them raise OSError.
"""
from __future__ import annotations

import os
import stat
import time

from ostrel_lib.files import LONGEST_NUMBER, read_at
from ostrel_lib.jsontext import dump, parse
from ostrel_lib.owned import make_folder

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable, Iterable

FOLDER = "Library/Application Support/ostrel"
NAME = "mem-history.jsonl"
LOCK_NAME = "mem-history.lock"
BESIDE = "mem-history.new"
"""Where new contents are written; only the holder of the lock does that."""

MOST_BYTES = 524288
"""Size from which an append drops the older half, some thousand samples."""

MOST_SAMPLES = 8192
"""Samples that such an append looks at."""

LONGEST_LINE = 4096
"""Bytes; a longer line isn't a sample."""

BLOCK = 65536
PAUSE = 0.01
"""Seconds between two tries for the lock."""

FIGURES = ("swap", "load", "mcp")
LARGEST_FIGURE = 1e15
PLAIN = b"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz -+:.,/_"
"""Characters that stand for themselves in a JSON text."""


def folder_of(home: str) -> str:
    """The folder that holds the samples, their lock and their backups."""
    return os.path.join(home, FOLDER)


def samples(home: str, most: int) -> list[dict[str, object]]:
    """The latest `most` samples, the oldest of them first; none when there is no file that can be read."""
    try:
        file = open_regular(os.path.join(folder_of(home), NAME))
    except OSError:
        return []
    try:
        return [sample for _, sample in latest(file, most)]
    except OSError:
        return []
    finally:
        os.close(file)


def append(home: str, sample: dict[str, object], wait: float = 0.5) -> str:
    """Saves one sample, with the folder if need be. "" when it is in the file, else the reason why it isn't.
    Waits up to `wait` seconds for another writer."""
    line = dump(sample).encode("ascii")
    if as_sample(line) is None:
        return "not a sample"
    folder = folder_of(home)
    try:
        make_folder(folder)
        lock = take_lock(folder, wait)
    except OSError as fault:
        return reason(fault)
    if lock is None:
        return "another program holds the history"
    try:
        append_line(folder, line + b"\n")
        return ""
    except OSError as fault:
        return reason(fault)
    finally:
        os.close(lock)


def append_line(folder: str, line: bytes) -> None:
    """Appends under the caller's lock. A file at its bound loses its older half; a line that a full disk cut
    short is taken back, and one that was left unfinished is closed first."""
    path = os.path.join(folder, NAME)
    file = open_regular(path, os.O_RDWR | os.O_APPEND | os.O_CREAT)
    try:
        size = os.fstat(file).st_size
        if size + len(line) > MOST_BYTES:
            replace(folder, NAME, [newest_within(file, MOST_BYTES // 2) + line])
            return
        if size and os.pread(file, 1, size - 1) != b"\n":
            line = b"\n" + line
        if os.write(file, line) != len(line):
            os.ftruncate(file, size)
            raise OSError("the disk took half a line")
    finally:
        os.close(file)


def take_lock(folder: str, wait: float) -> int | None:
    """The open lock file of a folder that exists; closing it ends the lock. None when another process held it
    for `wait` seconds."""
    import fcntl

    file = open_regular(os.path.join(folder, LOCK_NAME), os.O_RDWR | os.O_CREAT)
    end = time.monotonic() + wait
    while True:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
            return file
        except BlockingIOError:
            if time.monotonic() >= end:
                os.close(file)
                return None
            time.sleep(PAUSE)
        except OSError:
            os.close(file)
            raise


def open_regular(path: str, flags: int = os.O_RDONLY) -> int:
    """Opens a regular file, not through a link and never waiting for a pipe's other end."""
    file = os.open(path, flags | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC, 0o600)
    if not stat.S_ISREG(os.fstat(file).st_mode):
        os.close(file)
        raise OSError("not a regular file")
    return file


def replace(
    folder: str, name: str, parts: Iterable[bytes], unless: Callable[[], bool] = lambda: False
) -> int:
    """Gives the file `name` new contents at once, under the caller's lock: written beside, flushed to the
    disk, renamed, unless `unless` says at that moment that it mustn't be. Gives their size in bytes. What a
    killed writer left beside goes first."""
    beside = os.path.join(folder, BESIDE)
    try:
        os.unlink(beside)
    except FileNotFoundError:
        pass
    file = open_regular(beside, os.O_WRONLY | os.O_CREAT | os.O_EXCL)
    try:
        try:
            for part in parts:
                write_all(file, part)
            os.fsync(file)
            size = os.fstat(file).st_size
        finally:
            os.close(file)
        if unless():
            raise OSError("changed by another program")
        os.rename(beside, os.path.join(folder, name))
    except OSError:
        try:
            os.unlink(beside)
        except OSError:
            pass  # the next replacement does it
        raise
    flush_folder(folder)
    return size


def write_all(file: int, data: bytes) -> None:
    """Writes the whole of `data`."""
    while data:
        data = data[os.write(file, data):]


def flush_folder(folder: str) -> None:
    """Makes the names in a folder last through a loss of power, where its file system can do that."""
    try:
        file = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
    except OSError:
        return
    try:
        os.fsync(file)
    except OSError:
        pass
    finally:
        os.close(file)


def latest(file: int, most: int) -> list[tuple[bytes, dict[str, object]]]:
    """The latest `most` samples of an open file as lines and values, the oldest of them first. Reads from the
    end and no further than it must."""
    found: list[tuple[bytes, dict[str, object]]] = []
    left = os.fstat(file).st_size
    rest = b""
    while left and len(found) < most:
        size = min(BLOCK, left)
        left -= size
        lines = (read_at(file, size, left) + rest).split(b"\n")
        # The first line goes on in the block before; one that is too long already needs no more of it.
        rest = lines.pop(0)[:LONGEST_LINE + 1] if left else b""
        for line in reversed(lines):
            sample = as_sample(line)
            if sample is not None and len(found) < most:
                found.append((line, sample))
    found.reverse()
    return found


def newest_within(file: int, room: int) -> bytes:
    """As many of the latest samples as fit `room` bytes, as whole lines, the oldest first."""
    kept: list[bytes] = []
    for line, _ in reversed(latest(file, MOST_SAMPLES)):
        room -= len(line) + 1
        if room < 0:
            break
        kept.append(line + b"\n")
    kept.reverse()
    return b"".join(kept)


def as_sample(line: bytes) -> dict[str, object] | None:
    """The sample that a line holds; None for any other line."""
    if not line or len(line) > LONGEST_LINE:
        return None
    value: object = plain_object(line)
    if value is None:
        try:
            value = parse(line.decode("utf-8"))
        except ValueError:
            return None
    if type(value) is not dict or not all(is_figure(value.get(name)) for name in FIGURES):
        return None
    return value


def plain_object(line: bytes) -> dict[str, object] | None:
    """A JSON object as `append` writes it: short whole numbers, and texts of plain characters. None for any
    other line. Saves the snapshot from loading a JSON reader."""
    if line[:2] != b'{"' or line[-1:] != b"}":
        return None
    found: dict[str, object] = {}
    for member in line[2:-1].split(b', "'):
        name, _, value = member.partition(b'": ')
        if not name.isalnum():
            return None
        if value.isdigit() and len(value) <= LONGEST_NUMBER and (value[:1] != b"0" or len(value) == 1):
            found[name.decode("ascii")] = int(value)
        elif len(value) > 1 and value[:1] == value[-1:] == b'"' and not value[1:-1].translate(None, PLAIN):
            found[name.decode("ascii")] = value[1:-1].decode("ascii")
        else:
            return None
    return found


def is_figure(value: object) -> bool:
    """Whether a value is a number that a sample can hold."""
    return type(value) in (int, float) and -LARGEST_FIGURE <= value <= LARGEST_FIGURE


def reason(fault: OSError) -> str:
    """A refusal in the words of the system, or of whoever raised it."""
    return fault.strerror or str(fault) or "unknown error"
