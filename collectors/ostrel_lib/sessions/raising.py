# SPDX-License-Identifier: Apache-2.0
"""Bringing the window of a terminal to the front.

The window is one that says it belongs to a process which the terminal's viewer runs below: the terminal
emulator as a rule, or an editor with a terminal in it. Windows have no better bond to what runs in them.
"""
from __future__ import annotations

import os
import time

from ostrel_lib.oneline import clean
from ostrel_lib.processes import Process
from ostrel_lib.sessions.scene import Scene
from ostrel_lib.sessions.xdisplay import Display

LOOK = 0.05
LOOKS = 30
"""Looks in which a window manager must have done what it was asked for."""
REMOTE_LOGINS = (b"sshd", b"sshd-session", b"mosh-server", b"telnetd", b"in.telnetd")
NOT_A_PLACE = ("_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_WINDOW_TYPE_DESKTOP")
HINT = b"WINDOWID="
"""The variable in which most emulators tell what they start its window's number."""


def bring_forward(scene: Scene, viewers: list[tuple[int, int]]) -> tuple[str, str]:
    """Brings the window of the first viewer to the front that has one, and looks whether it got there. Gives
    the window's title and why it isn't in front, "" when it is."""
    try:
        display = Display(scene.environ, scene.places.home)
    except OSError as fault:
        return "", reason(fault)
    try:
        why = "no program shows it"
        for pid, given in viewers:
            window, problem = window_of(display, scene, pid, given)
            if window:
                title = display.text(window, "_NET_WM_NAME") or display.text(window, "WM_NAME")
                display.activate(window)
                return clean(title.decode("utf-8", "replace"), 100), in_front(display, window)
            why = why if why != "no program shows it" else problem
        return "", why
    except OSError as fault:
        return "", reason(fault)
    finally:
        display.close()


def reason(fault: OSError) -> str:
    """Why the display gives no answer."""
    if isinstance(fault, TimeoutError):
        return "the X display doesn't answer"
    return fault.args[0] if len(fault.args) == 1 else "the X display can't be reached"


def in_front(display: Display, window: int) -> str:
    """Waits until a window is the active one. Why it isn't, if it doesn't become so."""
    for _ in range(LOOKS):
        if window in display.numbers(display.root, "_NET_ACTIVE_WINDOW"):
            return ""
        time.sleep(LOOK)
    return "the window manager was asked for its window and didn't bring it"


def window_of(display: Display, scene: Scene, pid: int, given: int) -> tuple[int, str]:
    """The window that shows a process, and why none is known to. `given` is the window where it is known."""
    known = display.windows()
    if not known:
        return 0, "no window manager tells which windows there are"
    if given:
        return (given, "") if given in known else (0, "its window isn't on this display")
    tree = scene.tree
    viewer = tree.by_pid.get(pid)
    if not viewer:
        return 0, "the program that shows it has ended"
    line = [viewer, *tree.ancestors(viewer)]
    if any(process.comm in REMOTE_LOGINS for process in line):
        return 0, "it is attached from another machine"
    owners = owners_of(display, known)
    for process in line:
        theirs = owners.get(process.pid, [])
        if len(theirs) == 1:
            return theirs[0], ""
        if theirs:
            hinted = display.outer(hint(scene, viewer), known)
            if hinted in theirs:
                return hinted, ""
            name = clean(tree.kinds[process.pid].name().decode("utf-8", "replace"), 40)
            return 0, f"{name} has {len(theirs)} windows and doesn't tell which one shows it"
    return 0, "no window on this X display belongs to the program that shows it"


def owners_of(display: Display, known: tuple[int, ...]) -> dict[int, list[int]]:
    """The windows of each process of this machine, panels and desktops left out."""
    host = os.uname().nodename.encode("utf-8", "surrogateescape")
    unfit = {display.atom(name) for name in NOT_A_PLACE}
    found: dict[int, list[int]] = {}
    for window in known:
        pids = display.numbers(window, "_NET_WM_PID")
        machine = display.text(window, "WM_CLIENT_MACHINE").rstrip(b"\0")
        kinds = display.numbers(window, "_NET_WM_WINDOW_TYPE")
        if pids and machine in (b"", host) and unfit.isdisjoint(kinds):
            found.setdefault(pids[0], []).append(window)
    return found


def hint(scene: Scene, viewer: Process) -> int:
    """The window that a process was told it runs in; 0 when it wasn't."""
    from ostrel_lib.files import number, read_list

    for entry in read_list(f"{scene.places.proc}/{viewer.pid}/environ").split(b"\0"):
        if entry.startswith(HINT):
            return number(entry[len(HINT):]) & 0xFFFFFFFF
    return 0
