# SPDX-License-Identifier: Apache-2.0
"""Which files and folders processes have in use: executables, working folders, open and mapped files, and
paths among arguments."""
from __future__ import annotations

import os
import time

MAX_BYTES = 64 << 20
"""Of one kernel file that lists mappings or arguments."""


class Uses:
    """What processes use below one folder, looked at anew whenever the last look has become old.

    Processes that this user may not look into show their arguments only.
    """

    __slots__ = ("_below", "_root", "_until", "_paths", "_commands")

    def __init__(self, below: str, proc_root: str = "/proc") -> None:
        self._below = below.rstrip("/") + "/"
        self._root = proc_root
        self._until = 0.0
        self._paths: set[str] = set()
        self._commands: list[bytes] = []

    def holds(self, path: str) -> bool:
        """Whether a process has exactly this file or folder in use."""
        self._look()
        return path in self._paths

    def holds_below(self, path: str, needle: str) -> bool:
        """Whether a process has something in use below this folder, or `needle` among its arguments."""
        self._look()
        inside = path + "/"
        if path in self._paths or any(used.startswith(inside) for used in self._paths):
            return True
        words = os.fsencode(needle)
        return any(words in command for command in self._commands)

    def _look(self) -> None:
        begin = time.monotonic()
        if begin < self._until:
            return
        self._paths = set()
        self._commands = []
        own = own_pid(self._root)
        for name in os.listdir(self._root):
            if name.isdecimal() and name != own:
                self._look_into(self._root + "/" + name)
        now = time.monotonic()
        self._until = now + max(1.0, 20 * (now - begin))  # a slow look is repeated less often

    def _look_into(self, process: str) -> None:
        command = read_whole(process + "/cmdline")
        if command:
            self._commands.append(command)
        for link in ("/exe", "/cwd"):
            self._add(process + link)
        try:
            numbers = os.listdir(process + "/fd")
        except OSError:
            numbers = []
        for number in numbers:
            self._add(process + "/fd/" + number)
        below = os.fsencode(self._below)
        maps = read_whole(process + "/maps") if command else b""
        if below in maps:
            for line in maps.split(b"\n"):
                at = line.find(below)
                if at >= 0:
                    self._paths.add(os.fsdecode(line[at:].replace(b"\\012", b"\n")))

    def _add(self, link: str) -> None:
        try:
            path = os.readlink(link)
        except OSError:
            return
        if path.startswith(self._below):
            self._paths.add(path)


def own_pid(proc_root: str) -> str:
    """The caller's number as this /proc counts."""
    try:
        return os.readlink(proc_root + "/self")
    except OSError:
        return str(os.getpid())


def read_whole(path: str, folder: int | None = None, limit: int = MAX_BYTES) -> bytes:
    """A kernel file to its end, which takes several reads, up to `limit` bytes. b"" when it can't be read."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC, dir_fd=folder)
    except OSError:
        return b""
    parts = []
    try:
        while limit > 0:
            part = os.read(file, min(limit, 262144))
            if not part:
                break
            parts.append(part)
            limit -= len(part)
    except OSError:
        pass
    finally:
        os.close(file)
    return b"".join(parts)
