# SPDX-License-Identifier: Apache-2.0
"""Programs that take much of the machine now, each with its processes together."""
from __future__ import annotations

from ostrel_lib.census import label, mib
from ostrel_lib.families import BROWSERS, TOOLS, Kind, bundle
from ostrel_lib.processes import Process
from ostrel_lib.tree import Tree

HOT = 50
"""Percent of one core from which a program is busy."""

HEAVY_SHARE = 0.10
HEAVY_LEAST = 512 << 20
"""A program is heavy that holds such a share of memory, and such a number of bytes at least."""

MOST = 8
SOURCE = "/proc/<pid>/stat and statm, all processes of the program together"

ADVICE = {
    "agent": ("protected", "finish or close the session in its own terminal"),
    "mcp": ("restartable", "close the session that uses it; an agent starts its servers again"),
    "system": ("protected", "leave it; the desktop stands on it"),
    "browser": ("stateful", "close pages and windows that aren't used, in the browser itself"),
    "runtime": ("unknown", "see what the script works on before anything else"),
    "tool": ("transient", "wait for it to end, or stop what started it"),
    "app": ("stateful", "save what is open in it, then close it there"),
}
"""By sort of program: what a stop would put at risk, and what to do instead."""


class App:
    """A program with all its processes. `rss` is in bytes, `cpu` in percent of one core."""

    __slots__ = ("label", "sort", "rss", "cpu", "count")

    def __init__(self, label: str, sort: str) -> None:
        self.label = label
        self.sort = sort
        self.rss = 0
        self.cpu = 0.0
        self.count = 0

    def size(self) -> str:
        """How much memory in how many processes, in words."""
        return memory_text(self.rss) + (f" in {self.count} processes" if self.count > 1 else "")


def apps(tree: Tree) -> list[App]:
    """All programs, the largest first."""
    found: dict[tuple[str, str], App] = {}
    for process in tree.processes:
        kind = tree.kinds[process.pid]
        key = (label_of(process, kind), sort_of(kind))
        app = found.get(key)
        if app is None:
            app = found[key] = App(*key)
        app.rss += process.rss
        app.cpu += process.cpu
        app.count += 1
    return sorted(found.values(), key=lambda app: (-app.rss, app.label, app.sort))


def label_of(process: Process, kind: Kind) -> str:
    """What a program is called: an agent by its name, a script by its own, a helper by its application."""
    if kind.helper:
        return label(bundle(kind, process.comm, process.cmdline))
    return label(kind.agent or kind.name() or process.comm)


def sort_of(kind: Kind) -> str:
    """The row of `ADVICE` for a process."""
    if kind.browser or kind.helper and kind.program in BROWSERS:
        return "browser"
    if kind.agent and not kind.mcp:
        return "app" if kind.helper else "agent"
    return "tool" if kind.group == "app" and kind.program in TOOLS else kind.group


def offenders(programs: list[App], total: int) -> list[dict[str, object]]:
    """The programs that are too much on a machine with `total` bytes of memory: the busy ones by their share
    of the processors, then those that are only heavy by their memory."""
    heavy_from = max(HEAVY_LEAST, int(total * HEAVY_SHARE))
    busy = sorted((app for app in programs if app.cpu >= HOT), key=lambda app: (-app.cpu, app.label))
    heavy = [app for app in programs if app.rss >= heavy_from and app.cpu < HOT]
    rows = []
    for app in (busy + heavy)[:MOST]:
        risk, action = ADVICE[app.sort]
        rows.append({
            "label": app.label,
            "cpu": round(app.cpu, 1),
            "rss": mib(app.rss),
            "source": SOURCE,
            "risk": risk,
            "action": action,
            "reason": reason(app, total, app.rss >= heavy_from),
        })
    return rows


def reason(app: App, total: int, heavy: bool) -> str:
    """Why a program is in the list."""
    parts = []
    if app.cpu >= HOT:
        parts.append(f"keeps {app.cpu / 100:.1f} cores busy")
    if heavy and total:
        parts.append(f"holds {app.rss * 100 // total}% of memory")
    return f"{app.label} " + " and ".join(parts or ["holds much memory"]) + f" ({app.size()})"


def memory_text(size: int) -> str:
    """Bytes as the panel writes sizes."""
    mebibytes = mib(size)
    return f"{mebibytes / 1024:.1f} gb" if mebibytes >= 1024 else f"{mebibytes} mb"
