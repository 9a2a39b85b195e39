#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Measures the panel on a private desktop: from the press on the item to its picture on the screen, what an
opening costs and what is left awake and in memory afterwards. Beside it a window of the toolkit of the same
size with nothing in it, in the same run. Prints figures, asserts nothing.

Usage: panel_bench.py BUILD_FOLDER [SECONDS_OF_IDLENESS [OPENINGS]]
"""
import mmap
import os
import signal
import statistics
import struct
import subprocess
import sys
import time
from typing import Callable, NamedTuple

from gi.repository import Gio, GLib

sys.dont_write_bytecode = True
PROJECT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, f"{PROJECT}/tests/desktop")

import bus  # noqa: E402
import screen  # noqa: E402
from figures import keep  # noqa: E402
from measure import end, median_and_high, memory_mb, processor_ms, switches, switches_since  # noqa: E402
from private_desktop import PrivateDesktop  # noqa: E402

FIRSTS = 9  # programs, each opened for the first time
LATERS = 30
GROUND = b"\xff\xff\xff"  # of the panel in the light theme, and of the bare window
LIMIT = 20.0  # seconds for a picture


class Subject(NamedTuple):
    """A program with a panel."""
    name: str
    command: list[str]
    ready: Callable[[subprocess.Popen], object]  # gives what `press` needs, or something false
    press: Callable[[subprocess.Popen, object], None]


class Opening(NamedTuple):
    """What an opening took, in milliseconds."""
    wall: float  # from the press to the picture
    processor: float  # of the program up to then


class Figures(NamedTuple):
    """What a program's openings came to: milliseconds to the first and to a later picture, megabytes of its
    own after half of all openings, and after all."""
    first: float
    later: float
    dirty_half: float
    dirty: float


class Watched:
    """Some pixels of the screen, read straight from the screen's memory."""

    def __init__(self, desktop: PrivateDesktop, box: screen.Box) -> None:
        with open(f"{desktop.folder}/Xvfb_screen0", "rb") as file:
            self.memory = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        header = struct.unpack(">25I", self.memory[:100])
        start, line = header[0] + header[19] * 12, header[12]
        right, bottom = box.x + box.width - 3, box.y + box.height - 3
        middle = box.x + box.width // 2, box.y + box.height // 2
        places = ((box.x + 2, middle[1]), (right, middle[1]), (middle[0], box.y + 2), (middle[0], bottom))
        self.offsets = [start + y * line + x * 4 for x, y in places]

    def all_ground(self) -> bool:
        """Whether every one of them has the ground's colour."""
        return all(self.memory[at:at + 3] == GROUND for at in self.offsets)

    def none_ground(self) -> bool:
        """Whether the panel has gone."""
        return not any(self.memory[at:at + 3] == GROUND for at in self.offsets)


def until(condition: Callable[[], bool]) -> float:
    """Waits closely and gives the moment, in seconds."""
    limit = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > limit:
            raise TimeoutError("the picture didn't come")
        time.sleep(0.0002)
    return time.monotonic()


def settle(pid: int) -> None:
    """Waits until the program has nothing to do for a while."""
    before, now = -1.0, processor_ms(pid)
    while now - before > 0.5:
        time.sleep(0.7)
        before, now = now, processor_ms(pid)


def start(desktop: PrivateDesktop, subject: Subject) -> tuple[subprocess.Popen, object]:
    """Starts the program, which is at rest then, and what `press` needs."""
    process = subprocess.Popen(subject.command, env=desktop.env, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL)
    handle = desktop.wait_for(subject.name, lambda: subject.ready(process))
    settle(process.pid)
    return process, handle


def open_once(subject: Subject, process: subprocess.Popen, handle: object, pixels: Watched) -> Opening:
    """Opens the closed panel."""
    used = processor_ms(process.pid)
    begin = time.monotonic()
    subject.press(process, handle)
    wall = until(pixels.all_ground) - begin
    return Opening(wall * 1000, processor_ms(process.pid) - used)


def close(subject: Subject, process: subprocess.Popen, handle: object, pixels: Watched) -> None:
    """Closes the panel. A press right afterwards would be taken for the one that closed it."""
    subject.press(process, handle)
    until(pixels.none_ground)
    time.sleep(0.7)


def place_of(desktop: PrivateDesktop, subject: Subject) -> screen.Box:
    """Where the program's window comes up."""
    process, handle = start(desktop, subject)
    subject.press(process, handle)
    found = desktop.wait_for("window", lambda: desktop.run(
        ["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)]).stdout.split())
    time.sleep(0.5)
    box = screen.window_box(desktop, int(found[0]))
    end(process)
    process.stdout.close()
    return box


def show(what: str, openings: list[Opening]) -> float:
    """Prints what the openings took and gives the median time to the picture, in milliseconds."""
    wall, high = median_and_high([one.wall for one in openings])
    used = statistics.median(one.processor for one in openings)
    print(f"    {what:12} {wall:8.1f} {high:10.1f} {used:12.1f}")
    return wall


def idle(what: str, pid: int, seconds: float) -> float:
    """Lets the program be, prints what it did by itself, and gives the megabytes that it alone has written
    to."""
    settle(pid)
    used, before, begin = processor_ms(pid), switches(pid), time.monotonic()
    time.sleep(seconds)
    lasted = time.monotonic() - begin
    woken, used = switches_since(pid, before), processor_ms(pid) - used
    pss, dirty = memory_mb(pid)
    print(f"    {what:12} {woken / lasted:8.2f} {used / lasted:10.2f} {pss:12.1f} {dirty:8.1f}")
    return dirty


def measure(desktop: PrivateDesktop, subject: Subject, seconds: float, openings: int) -> Figures:
    """All figures of one program."""
    pixels = Watched(desktop, place_of(desktop, subject))
    firsts = []
    for _ in range(FIRSTS):
        process, handle = start(desktop, subject)
        firsts.append(open_once(subject, process, handle, pixels))
        end(process)
        process.stdout.close()
        until(pixels.none_ground)
    process, handle = start(desktop, subject)
    laters = []
    open_once(subject, process, handle, pixels)
    time.sleep(2)
    for _ in range(LATERS):
        close(subject, process, handle, pixels)
        laters.append(open_once(subject, process, handle, pixels))
        time.sleep(0.3)
    print(f"{subject.name}\n    opening    median ms     p95 ms       CPU ms")
    first, later = show("first", firsts), show("later", laters)
    print("    idle       switches/s  CPU ms/s       PSS MB own dirty MB")
    idle("open", process.pid, seconds)
    dirty = []
    for half in (openings // 2, openings - openings // 2):
        for _ in range(half):
            close(subject, process, handle, pixels)
            open_once(subject, process, handle, pixels)
        close(subject, process, handle, pixels)
        dirty.append(idle("closed again", process.pid, seconds))
        open_once(subject, process, handle, pixels)
    end(process)
    process.stdout.close()
    return Figures(first, later, *dirty)


def item_subject(desktop: PrivateDesktop, program: str) -> Subject:
    """The instrument, whose item is pressed over a connection that stays."""
    kinds = Gio.DBusConnectionFlags
    connection = Gio.DBusConnection.new_for_address_sync(
        desktop.env["DBUS_SESSION_BUS_ADDRESS"],
        kinds.AUTHENTICATION_CLIENT | kinds.MESSAGE_BUS_CONNECTION, None, None)

    def press(_: subprocess.Popen, item: bus.Item) -> None:
        place = GLib.Variant("(ii)", (0, 0))
        connection.call(item.service, item.path, bus.ITEM, "Activate", place, None,
                        Gio.DBusCallFlags.NONE, -1, None, None)
        connection.flush_sync(None)

    return Subject("ostrel, pressed on its item", [program, "--background"],
                   lambda process: bus.item_of(desktop.env, process.pid), press)


def bare_subject(program: str) -> Subject:
    """The toolkit's empty window, which a signal shows."""
    return Subject("an empty Qt window, at a signal", [program, "--panel"],
                   lambda process: process.stdout.readline() == b"ready\n",
                   lambda process, _: process.send_signal(signal.SIGUSR1))


def main(arguments: list[str]) -> int:
    build = os.path.abspath(arguments[0])
    seconds = float(arguments[1]) if len(arguments) > 1 else 10
    openings = int(arguments[2]) if len(arguments) > 2 else 40
    with PrivateDesktop() as desktop:
        bare = measure(desktop, bare_subject(f"{build}/bench/bare_widgets"), seconds, 2)
        ours = measure(desktop, item_subject(desktop, f"{build}/ostrel"), seconds, openings)
    group, window = "the panel, on a screen", "an empty Qt window"
    keep(group, "press to picture, first", ours.first, "ms", beside=window, stands=bare.first, most=80)
    keep(group, "press to picture, later", ours.later, "ms", beside=window, stands=bare.later, most=20)
    keep(group, f"own memory after {openings} openings", ours.dirty, "MB", beside="after half of them",
         stands=ours.dirty_half, most=14)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
