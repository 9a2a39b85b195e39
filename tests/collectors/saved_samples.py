# SPDX-License-Identifier: Apache-2.0
"""A temporary home with saved samples, and processes that work on it. Sample n has the swap figure n."""
import os
from pathlib import Path

from fabricated_machine import fresh_folder, put

from ostrel_lib import history_file

BACKUP = "mem-history.backup-"
IN_MEMORY = "/dev/shm"
"""Flushing to a disk would take most of the tests' time, and a killed process leaves the same on both."""


class Home:
    """The home of one test."""

    def __init__(self, test) -> None:
        self.path = fresh_folder(test, dir=IN_MEMORY if os.access(IN_MEMORY, os.W_OK) else None)
        self.folder = history_file.folder_of(self.path)
        self.file = os.path.join(self.folder, history_file.NAME)
        self.backups: set = set()
        self.in_backups: set = set()

    def write(self, content: bytes) -> None:
        """The history as these bytes."""
        put(self.file, content)

    def content(self) -> bytes:
        """The bytes of the history."""
        return Path(self.file).read_bytes()

    def names(self) -> list:
        """The files of the folder but the lock, those of backups without their time."""
        found = [name for name in sorted(os.listdir(self.folder)) if name != history_file.LOCK_NAME]
        return [BACKUP if name.startswith(BACKUP) else name for name in found]

    def saved(self) -> list:
        """The numbers of the samples in the history, which must be whole lines."""
        lines = self.content().split(b"\n")
        assert lines.pop() == b"", lines[-1:]
        return numbers(lines)

    def backed_up(self) -> set:
        """The numbers of the samples in all backups. One that has been read isn't read again."""
        for name in os.listdir(self.folder):
            if name.startswith(BACKUP) and name not in self.backups:
                self.in_backups.update(numbers(Path(self.folder, name).read_bytes().splitlines()))
                self.backups.add(name)
        return self.in_backups


def sample(number: int) -> dict:
    return {"ts": "2026-07-18T10:11:12+02:00", "swap": number, "load": 30, "mcp": 2}


def line(number: int) -> bytes:
    return b'{"ts": "2026-07-18T10:11:12+02:00", "swap": %d, "load": 30, "mcp": 2}\n' % number


def lines(first: int, last: int) -> bytes:
    """The samples from the first number to the last one."""
    return b"".join(map(line, range(first, last + 1)))


def numbers(read: list) -> list:
    return [history_file.as_sample(one)["swap"] for one in read]


def forked(work) -> int:
    """The pid of a process that does the work and ends, with status 0 if nothing was raised."""
    pid = os.fork()
    if pid == 0:
        status = 1
        try:
            work()
            status = 0
        finally:
            os._exit(status)
    return pid
