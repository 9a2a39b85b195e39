# SPDX-License-Identifier: Apache-2.0
"""A plan as a list to be shown."""
from __future__ import annotations

import heapq
import os

from ostrel_lib.janitor import groups
from ostrel_lib.janitor.plan import NANOSECONDS_PER_DAY, is_folder, plan, problem
from ostrel_lib.janitor.folders import IN_HISTORY, KeepOut, home_is_history, open_chain, open_home

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable

    from ostrel_lib.janitor.folders import Entry, Folder

MOST_FILES = 500
"""Files that a preview names, the largest; it counts and measures all."""
BYTES_PER_MIB = 1048576

UNPRINTABLE = {code: "?" for code in (*range(32), *range(127, 160), *range(0x202A, 0x202F), 0x2028, 0x2029,
                                      *range(0x2066, 0x206A))}
"""Signs that could make one name look like two lines, or like another name."""


class Total:
    """How many files, and the disk space that comes free with them. Space that several names share counts
    when the last of them is met."""

    __slots__ = ("count", "size", "_names")

    def __init__(self) -> None:
        self.count = 0
        self.size = 0
        self._names: dict[tuple[int, int], int] = {}

    def add(self, status: os.stat_result) -> None:
        """Counts one name of a file."""
        self.count += 1
        if status.st_nlink > 1:
            identity = (status.st_dev, status.st_ino)
            self._names[identity] = self._names.get(identity, 0) + 1
            if self._names[identity] < status.st_nlink:
                return
        self.size += status.st_blocks * 512


def total_of(entries: Iterable[Entry]) -> Total:
    """Files and space of a whole plan."""
    total = Total()
    for entry in entries:
        if not is_folder(entry):
            total.add(entry.status)
    return total


def preview(home_path: str, group: str, selected: list[str], now: int) -> dict[str, object]:
    """The reply of `preview`; `now` in nanoseconds since 1970. Changes nothing and doesn't raise OSError:
    what went wrong is its `error`."""
    total = Total()
    files: list[dict[str, object]] = []
    try:
        home = open_home(home_path)
        try:
            error = problem(group, home, selected)
            keep = KeepOut(home)
            if not error and home_is_history(home, keep):
                error = IN_HISTORY
            if not error:
                files = largest(plan(group, home, selected, keep, now), total, now)
        finally:
            home.close()
    except OSError as failure:
        error = "can't be listed: " + (failure.strerror or "unknown reason")
        total, files = Total(), []
    return {
        "group": group,
        "title": groups.TITLES.get(group, group),
        "count": total.count,
        "size_mb": mib(total.size),
        "files": files,
        "error": shown(error),
    }


def largest(entries: Iterable[Entry], total: Total, now: int) -> list[dict[str, object]]:
    """The largest files of a plan as rows, the largest first, and at equal size in the order of the walk.
    Adds all of them to the total."""
    heap: list[tuple[int, int, str, int]] = []
    for entry in entries:
        if is_folder(entry):
            continue
        total.add(entry.status)
        size = entry.status.st_blocks * 512
        if len(heap) < MOST_FILES:
            heapq.heappush(heap, (size, -total.count, entry.path, entry.status.st_mtime_ns))
        elif size > heap[0][0]:
            heapq.heapreplace(heap, (size, -total.count, entry.path, entry.status.st_mtime_ns))
    return [
        {
            "path": shown("~/" + path),
            "mb": mib(size),
            "age_days": max(0, now - modified) // NANOSECONDS_PER_DAY,
        }
        for size, _, path, modified in sorted(heap, reverse=True)
    ]


def caches(home_path: str) -> dict[str, object]:
    """The reply of `caches`: what `app-caches` could empty, the biggest first."""
    candidates: list[dict[str, object]] = []
    try:
        home = open_home(home_path)
        try:
            keep = KeepOut(home)
            for name in cache_names(home, keep):
                size = total_of(plan("app-caches", home, [name], keep, 2**63)).size
                if size:
                    candidates.append({"name": name, "size_mb": mib(size)})
        finally:
            home.close()
    except OSError:
        candidates = []
    candidates.sort(key=lambda row: (-row["size_mb"], row["name"]))
    return {"candidates": candidates}


def cache_names(home: Folder, keep: KeepOut) -> list[str]:
    """The names below the cache folder that can be picked. The panel joins picked names with commas, and
    shows them: a name that it can't pass on or show as it is can't be picked."""
    folder = None if home_is_history(home, keep) else open_chain(home, groups.CACHES, keep)
    if folder is None:
        return []
    try:
        names = os.listdir(folder.fd)
    finally:
        folder.close()
    return [name for name in names if groups.cache_name(name) and "," not in name and shown(name) == name
            and name.isprintable()]


def shown(text: str) -> str:
    """A text as it may stand in a line."""
    return text.translate(UNPRINTABLE)


def mib(size: int) -> float:
    """Bytes as MiB, to hundredths."""
    return round(size / BYTES_PER_MIB, 2)
