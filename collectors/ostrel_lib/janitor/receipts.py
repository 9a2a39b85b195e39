# SPDX-License-Identifier: Apache-2.0
"""The receipts: one file per local day, one line of JSON per action, appended and never changed."""
from __future__ import annotations

import os
import stat
import time

from ostrel_lib.files import read_at
from ostrel_lib.jsontext import dump
from ostrel_lib.owned import add_line, make_folder, open_lines

FOLDER = "Library/Application Support/Ostrel/receipts"
RECORD_ENDING = ".progress"
"""Of the records of cleanups that are under way, which lie beside the receipts."""
MOST_RECEIPTS = 200
"""Receipts that one answer holds, the newest."""
MOST_BYTES = 1 << 20
"""What is read of one day's file, from its end."""
LONGEST_LINE = 65536


def open_folder(home: str, make: bool) -> int | None:
    """The open folder of the receipts; None when it isn't there and isn't to be made. Raises OSError."""
    path = home + "/" + FOLDER
    if make:
        make_folder(path)
    try:
        return os.open(path, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    except FileNotFoundError:
        return None


def has_records(home: str) -> bool:
    """Whether a cleanup is under way, or was killed."""
    try:
        return any(name.endswith(RECORD_ENDING) for name in os.listdir(home + "/" + FOLDER))
    except OSError:
        return False


def append(folder: int, receipt: dict[str, object]) -> None:
    """Adds one receipt, its time set here, to today's file. Raises OSError."""
    now = time.localtime()
    line = dump({"ts": time.strftime("%Y-%m-%d %H:%M:%S", now), **receipt})
    file = open_lines(time.strftime("%Y-%m-%d.jsonl", now), folder)
    try:
        add_line(file, line.encode("ascii"))
    finally:
        os.close(file)


def newest(home: str) -> dict[str, object]:
    """The reply of `receipts`: the newest first. Lines that aren't JSON objects are passed over."""
    found: list[dict[str, object]] = []
    try:
        folder = open_folder(home, make=False)
    except OSError:
        folder = None
    if folder is None:
        return {"receipts": found}
    try:
        for name in day_files(folder):
            for line in last_lines(folder, name):
                receipt = parse(line)
                if receipt is not None:
                    found.append(receipt)
                if len(found) == MOST_RECEIPTS:
                    return {"receipts": found}
    finally:
        os.close(folder)
    return {"receipts": found}


def day_files(folder: int) -> list[str]:
    """The names of the day files, the newest first."""
    names = [name for name in os.listdir(folder) if name.endswith(".jsonl")]
    return sorted((name for name in names if is_day(name[:-6])), reverse=True)


def is_day(name: str) -> bool:
    """Whether a name has the form of a date."""
    parts = name.split("-")
    return [len(part) for part in parts] == [4, 2, 2] and "".join(parts).isdecimal() and name.isascii()


def last_lines(folder: int, name: str) -> list[bytes]:
    """The lines at the end of a day file, the last first; none when it isn't a regular file."""
    try:
        flags = os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC
        file = os.open(name, flags, dir_fd=folder)
    except OSError:
        return []
    try:
        status = os.fstat(file)
        if not stat.S_ISREG(status.st_mode):
            return []
        start = max(0, status.st_size - MOST_BYTES)
        lines = read_at(file, MOST_BYTES, start).split(b"\n")
    except OSError:
        return []
    finally:
        os.close(file)
    return lines[:0:-1] if start else lines[::-1]


def parse(line: bytes) -> dict[str, object] | None:
    """The receipt on a line."""
    import json

    if not line.startswith(b"{") or len(line) > LONGEST_LINE:
        return None
    try:
        receipt = json.loads(line.decode("utf-8", "replace"))
    except (ValueError, RecursionError):
        return None
    return receipt if isinstance(receipt, dict) else None
