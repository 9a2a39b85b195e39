# SPDX-License-Identifier: Apache-2.0
"""As much of the X protocol as it takes to find a window and to ask for it: a few requests over the socket of
a display of this machine.

A tool that does it would be one more thing to install, and none of those that come with X can ask a window
manager for anything. All failures are OSError.
"""
from __future__ import annotations

import os
import socket
import struct
import time

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Mapping

PATIENCE = 3.0
"""Seconds for all answers together; each takes less than a thousandth of one."""
MOST_WORDS = 1 << 16  # four bytes each, of one property
MOST_LEVELS = 16
LOCAL_FAMILIES = (256, 65535)  # this machine by name, and any
COOKIE = b"MIT-MAGIC-COOKIE-1"

INTERN_ATOM, GET_PROPERTY, QUERY_TREE, SEND_EVENT = 16, 20, 15, 25
CLIENT_MESSAGE = 33
REDIRECT = 0x180000  # the events that a window manager listens to on the root window
FROM_A_PAGER = 2  # the user asked for the window, not a program for itself


class Display:
    """An open connection. Windows and atoms are numbers; 0 is none."""

    def __init__(self, environ: Mapping[str, str], home: str) -> None:
        self.end = time.monotonic() + PATIENCE
        self.atoms: dict[str, int] = {}
        self.sequence = 0
        number = display_number(environ.get("DISPLAY", ""))
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        try:
            self.connect(f"/tmp/.X11-unix/X{number}")
            self.root = self.greet(cookie(environ.get("XAUTHORITY") or home + "/.Xauthority", number))
        except OSError:
            self.close()
            raise

    def connect(self, path: str) -> None:
        """Takes the socket by its path, or by the name that no file stands for."""
        self.socket.settimeout(PATIENCE)
        try:
            self.socket.connect(path)
        except OSError:
            self.socket.connect("\0" + path)

    def close(self) -> None:
        """Ends the connection."""
        self.socket.close()

    def greet(self, data: bytes) -> int:
        """Introduces us, and gives the root window of the first screen."""
        name = COOKIE if data else b""
        self.socket.sendall(struct.pack("<BxHHHHxx", 108, 11, 0, len(name), len(data))
                            + padded(name) + padded(data))
        status, words = struct.unpack("<B5xH", self.take(8))
        body = self.take(words * 4)
        if status != 1 or len(body) < 32:
            raise PermissionError("the display lets nobody in without its cookie")
        vendor, formats = struct.unpack_from("<H3xB", body, 16)
        at = 32 + vendor + -vendor % 4 + 8 * formats
        if len(body) < at + 4:
            raise ConnectionError("the display has no screen")
        return struct.unpack_from("<I", body, at)[0]

    def take(self, size: int) -> bytes:
        """The next bytes that the display sends."""
        parts = []
        while size > 0:
            self.socket.settimeout(max(0.001, self.end - time.monotonic()))
            part = self.socket.recv(min(size, 1 << 16))
            if not part:
                raise ConnectionError("the display closed the connection")
            parts.append(part)
            size -= len(part)
        return b"".join(parts)

    def send(self, code: int, detail: int, body: bytes) -> None:
        """Sends one request."""
        self.sequence = self.sequence + 1 & 0xFFFF
        self.socket.sendall(struct.pack("<BBH", code, detail, 1 + len(body) // 4) + body)

    def ask(self, code: int, detail: int, body: bytes) -> bytes:
        """The reply to a request, its head of 32 bytes included; nothing for one that was refused."""
        self.send(code, detail, body)
        while True:
            head = self.take(32)
            kind, sequence, words = head[0], *struct.unpack_from("<HI", head, 2)
            if kind == 1:
                return head + self.take(words * 4)
            if kind == 0 and sequence == self.sequence:
                return b""

    def atom(self, name: str) -> int:
        """A name's number."""
        if name not in self.atoms:
            text = name.encode("ascii")
            reply = self.ask(INTERN_ATOM, 0, struct.pack("<Hxx", len(text)) + padded(text))
            self.atoms[name] = struct.unpack_from("<I", reply, 8)[0] if reply else 0
        return self.atoms[name]

    def text(self, window: int, name: str) -> bytes:
        """A property's bytes; none when the window or the property isn't there."""
        reply = self.ask(GET_PROPERTY, 0, struct.pack("<IIIII", window, self.atom(name), 0, 0, MOST_WORDS))
        if not reply:
            return b""
        return reply[32:32 + struct.unpack_from("<I", reply, 16)[0] * (reply[1] // 8)]

    def numbers(self, window: int, name: str) -> tuple[int, ...]:
        """A property's numbers, which may be windows and atoms too."""
        data = self.text(window, name)
        return struct.unpack(f"<{len(data) // 4}I", data[:len(data) // 4 * 4])

    def windows(self) -> tuple[int, ...]:
        """The windows that the window manager looks after."""
        return self.numbers(self.root, "_NET_CLIENT_LIST")

    def outer(self, window: int, known: tuple[int, ...]) -> int:
        """The one of the known windows that a window is, or lies in; 0 when it is in none."""
        for _ in range(MOST_LEVELS):
            if window in known:
                return window
            reply = self.ask(QUERY_TREE, 0, struct.pack("<I", window)) if window else b""
            if not reply:
                return 0
            window = struct.unpack_from("<I", reply, 12)[0]
        return 0

    def activate(self, window: int) -> None:
        """Asks the window manager to raise a window and give it the keyboard, as a pager does."""
        event = struct.pack("<BBHII5I", CLIENT_MESSAGE, 32, 0, window, self.atom("_NET_ACTIVE_WINDOW"),
                            FROM_A_PAGER, 0, 0, 0, 0)
        self.send(SEND_EVENT, 0, struct.pack("<II", self.root, REDIRECT) + event)


def display_number(name: str) -> int:
    """The number of a display of this machine."""
    host, colon, rest = name.rpartition(":")
    digits = rest.partition(".")[0]
    if not name:
        raise FileNotFoundError("there is no X display")
    if host not in ("", "unix") or not colon or not digits.isdecimal() or len(digits) > 5:
        raise FileNotFoundError("the X display isn't one of this machine")
    return int(digits)


def cookie(path: str, number: int) -> bytes:
    """What opens a display, from the file that holds it; b"" without any."""
    try:
        with open(path, "rb") as file:
            data = file.read(1 << 20)
    except OSError:
        return b""
    host = os.uname().nodename.encode("utf-8", "surrogateescape")
    at = 0
    while at + 2 <= len(data):
        family = int.from_bytes(data[at:at + 2], "big")
        at += 2
        fields = []
        for _ in range(4):
            size = int.from_bytes(data[at:at + 2], "big")
            fields.append(data[at + 2:at + 2 + size])
            at += 2 + size
        machine, display, name, secret = fields
        ours = family == LOCAL_FAMILIES[1] or (family == LOCAL_FAMILIES[0] and machine == host)
        if ours and display in (b"", b"%d" % number) and name == COOKIE:
            return secret
    return b""


def padded(data: bytes) -> bytes:
    """Filled up to whole words."""
    return data + b"\0" * (-len(data) % 4)
