# SPDX-License-Identifier: Apache-2.0
"""What the backends look at and what they give: the processes, the terminals, one that was selected."""
from __future__ import annotations

import os
import stat
import time

from ostrel_lib.places import Places
from ostrel_lib.processes import look_twice
from ostrel_lib.tools import Deadline
from ostrel_lib.tree import Tree

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Mapping

SECONDS = 15.0
"""For all questions together; the reader waits for 20."""
PATIENCE = 3.0
"""For one question to one server; each answers within a hundredth of that."""
GONE = "That terminal doesn't exist any more. Refresh to read the list anew."
PLAIN = frozenset(b"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-/")


class Scene:
    """This machine as its user sees it. The processes are read once, when they are first asked for."""

    __slots__ = ("places", "environ", "deadline", "_tree")

    def __init__(self, places: Places, environ: Mapping[str, str], seconds: float = SECONDS) -> None:
        self.places = places
        self.environ = environ
        self.deadline = Deadline(seconds)
        self._tree: Tree | None = None

    @property
    def tree(self) -> Tree:
        """The processes as they are at the first question."""
        if self._tree is None:
            self._tree = Tree(look_twice(self.places.proc, time.monotonic, lambda _: None, 0.0))
        return self._tree


class Terminal:
    """A terminal. `pid` is the process that was started in it, 0 when it isn't known; `connected` tells
    whether somebody can see it."""

    __slots__ = ("handle", "title", "pid", "connected")

    def __init__(self, handle: str, title: str, pid: int, connected: bool) -> None:
        self.handle = handle
        self.title = title
        self.pid = pid
        self.connected = connected


class Listed:
    """What a backend found. `faults` tells in sentences what couldn't be read; `absent` says why there can't
    be any terminal of this kind."""

    __slots__ = ("terminals", "faults", "absent")

    def __init__(self, absent: str = "") -> None:
        self.terminals: list[Terminal] = []
        self.faults: list[str] = []
        self.absent = absent


class Selected:
    """A terminal that was made the present one within its program, or the `problem` why it wasn't. `viewers`
    are the processes that show it, the likeliest first, each with its window where that is known, else 0."""

    __slots__ = ("label", "problem", "viewers")

    def __init__(self, label: str = "", problem: str = "") -> None:
        self.label = label
        self.problem = problem
        self.viewers: list[tuple[int, int]] = []


def owner_of(path: str) -> tuple[int, str]:
    """The process that serves a socket, and why it can't be talked to. (0, "") when nobody serves it, when
    it isn't this user's, or when it is no socket. "@" begins a name that no file stands for."""
    import socket
    import struct

    if path[:1] != "@":
        try:
            status = os.lstat(path)
        except OSError:
            return 0, ""
        if not stat.S_ISSOCK(status.st_mode) or status.st_uid != os.getuid():
            return 0, ""
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as probe:
        probe.setblocking(False)
        try:
            probe.connect(address(path))
        except BlockingIOError:
            return 0, "takes no connection"
        except OSError:  # nobody is there, or the path is too long for anybody to be
            return 0, ""
        size = struct.calcsize("3i")
        pid, user, _ = struct.unpack("3i", probe.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, size))
    return (pid, "") if user == os.getuid() else (0, "")


def address(path: str) -> bytes:
    """A socket's path as the kernel takes it."""
    return b"\0" + os.fsencode(path[1:]) if path[:1] == "@" else os.fsencode(path)


def key_of(path: str) -> str:
    """A socket's path as one word of plain letters, for handles."""
    return "".join([chr(byte) if byte in PLAIN else f"%{byte:02X}" for byte in os.fsencode(path)])
