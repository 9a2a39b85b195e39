# SPDX-License-Identifier: Apache-2.0
"""The user's processes with their memory, command line and share of a processor, from two looks at /proc.

A process is known by its pid together with its start time, since pids are used again: what was read of one
process is never told of the next one that got its number.
"""
from __future__ import annotations

import os

from ostrel_lib.files import number, read

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

WINDOW = 0.2
"""Seconds between the two looks. The kernel counts in hundredths, so a share comes in steps of 5 %."""

LONGEST_COMMAND = 4096
"""Bytes of a command line that are read."""

PAGE_SIZE = os.sysconf("SC_PAGE_SIZE")
LARGEST_PAGES = 2**40  # more than any machine has
KERNEL_THREAD = 0x00200000  # PF_KTHREAD in the flags of a task
ENDED = (b"Z", b"X", b"x")  # states of a process whose memory and command line are gone


class Process:
    """One process. `rss` is in bytes, `cpu` in percent of one core, `cmdline` as the kernel gives it without
    the NULs at its end."""

    __slots__ = ("pid", "start", "ppid", "comm", "cmdline", "rss", "cpu")

    def __init__(self, pid: int, start: int, ppid: int, comm: bytes) -> None:
        self.pid = pid
        self.start = start
        self.ppid = ppid
        self.comm = comm
        self.cmdline = b""
        self.rss = 0
        self.cpu = 0.0


def look_twice(
    root: str, clock: Callable[[], float], pause: Callable[[float], object], window: float = WINDOW
) -> list[Process]:
    """The processes that lived through both looks, in no particular order.

    Kernel threads, ended processes and the caller itself are left out, and so is what this user isn't shown.
    An unreadable `root` gives none. `clock` gives seconds that only grow, `pause` waits for some.
    """
    try:
        folder = os.open(root, os.O_RDONLY | os.O_DIRECTORY)
    except OSError:
        return []
    try:
        begin = clock()
        seen = first_look(folder, clock)
        for _, _, process in seen:
            read_details(folder, process)
        pause(max(0.0, begin + window - clock()))
        return second_look(folder, seen, clock)
    except OSError:
        return []
    finally:
        os.close(folder)


def first_look(folder: int, clock: Callable[[], float]) -> list[tuple[bytes, float, Process]]:
    """Every process that is to be listed, with its stat file and the time of reading it."""
    own = own_pid(folder)
    seen: list[tuple[bytes, float, Process]] = []
    with os.scandir(folder) as entries:
        numbers = [entry.name for entry in entries
                   if "0" <= entry.name[0] <= "9" and entry.name.isdecimal() and not entry.is_symlink()]
    for name in numbers:
        if name == own:
            continue
        text = read(name + "/stat", 4096, folder)
        at = clock()
        close, fields = after_name(text)
        if len(fields) < 20 or fields[0] in ENDED or number(fields[6]) & KERNEL_THREAD:
            continue
        comm = text[text.find(b"(") + 1:close]
        seen.append((text, at, Process(int(name), number(fields[19]), number(fields[1]), comm)))
    return seen


def second_look(
    folder: int, seen: list[tuple[bytes, float, Process]], clock: Callable[[], float]
) -> list[Process]:
    """The processes of the first look that are still the same ones, with their share of a core in between."""
    ticks = os.sysconf("SC_CLK_TCK")
    alive = []
    for before, at, process in seen:
        text = read(str(process.pid) + "/stat", 4096, folder)
        now = clock()
        if text != before:
            _, fields = after_name(text)
            if len(fields) < 20 or fields[0] in ENDED or number(fields[19]) != process.start:
                continue
            _, earlier = after_name(before)
            process.cpu = share(cpu_ticks(fields) - cpu_ticks(earlier), now - at, ticks)
        alive.append(process)
    return alive


def read_details(folder: int, process: Process) -> None:
    """Memory and command line. `smaps` would tell more, but stops the process while it is counted."""
    name = str(process.pid)
    pages = read(name + "/statm", 256, folder).split(b" ", 2)
    if len(pages) > 1:
        resident = number(pages[1])
        process.rss = resident * PAGE_SIZE if resident <= LARGEST_PAGES else 0
    process.cmdline = command(read(name + "/cmdline", LONGEST_COMMAND, folder))


def own_pid(folder: int) -> str:
    """The caller's number as this /proc counts; "" when it doesn't tell."""
    try:
        return os.readlink("self", dir_fd=folder)
    except OSError:
        return ""


def after_name(stat: bytes) -> tuple[int, list[bytes]]:
    """Where the process's own name ends, and the fields behind it, the state first. The name may hold
    anything, brackets and line ends too, but no later field holds a bracket."""
    close = stat.rfind(b")")
    return close, stat[close + 2:].split(b" ", 20) if close > 0 else []


def cpu_ticks(fields: list[bytes]) -> int:
    """User and system time of all threads, in clock ticks."""
    return number(fields[11]) + number(fields[12])


def share(ticks: int, seconds: float, ticks_per_second: int) -> float:
    """Percent of one core; 0 for a counter that ran backwards or a span of no length."""
    if ticks <= 0 or seconds <= 0:
        return 0.0
    return round(ticks / ticks_per_second / seconds * 100, 1)


def command(cmdline: bytes) -> bytes:
    """A command line without the NULs at its end; programs that write a title over their arguments leave
    many. One that was cut at the limit loses a character that was cut in two."""
    if len(cmdline) >= LONGEST_COMMAND:
        cmdline = whole_characters(cmdline)
    return cmdline.rstrip(b"\0")


def whole_characters(text: bytes) -> bytes:
    """The text without an unfinished UTF-8 sequence at its end."""
    for back in range(1, min(4, len(text)) + 1):
        byte = text[-back]
        if byte >= 0xC0:
            length = 2 if byte < 0xE0 else 3 if byte < 0xF0 else 4
            return text if length == back else text[:-back]
        if byte < 0x80:
            break
    return text
