# SPDX-License-Identifier: Apache-2.0
"""What would go: the one stream of entries that a preview lists and a cleanup carries out.

Nothing is gathered first. An entry is looked at and handed on at once, so a cleanup acts on what it saw a
moment ago, and memory doesn't grow with the number of files. In a stream every entry with a status goes; of
folders that go as a whole the folders themselves come too, each after what it holds.
"""
from __future__ import annotations

import os
import stat

from ostrel_lib.janitor import groups
from ostrel_lib.janitor.folders import Entry, open_below, open_chain, walk

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable, Iterator

    from ostrel_lib.janitor.folders import Folder, KeepOut

NANOSECONDS_PER_DAY = 86400 * 1000000000
CLOCK_STEP = 20000000
"""Nanoseconds that the clock of file times may lag behind, so that what is new is known as new."""


def problem(group: str, home: Folder, selected: list[str]) -> str:
    """Why there can't be a plan for this group; "" when there can."""
    if group not in groups.TITLES:
        return "there is no cleanup group of this name"
    if group == "app-caches" and not all(groups.cache_name(name) for name in selected):
        return "a selected cache is no plain name, so nothing is listed"
    if group == "product-builds":
        from ostrel_lib.janitor.builds import projects

        return projects(home)[1]
    return ""


def plan(group: str, home: Folder, selected: list[str], keep: KeepOut, now: int) -> Iterator[Entry]:
    """The entries of one group; for one that has a `problem`, none. `now` is in nanoseconds since 1970: what
    was modified later than the group's age before it stays. Raises OSError when the machine can't go on."""
    if problem(group, home, selected):
        return
    limit = now - groups.DAYS[group] * NANOSECONDS_PER_DAY - CLOCK_STEP
    if group == "agent-screenshots":
        yield from old_files(groups.SCREENSHOT_FOLDERS, home, keep, limit, groups.PICTURES)
    elif group == "app-caches":
        for name in dict.fromkeys(selected):
            yield from cache(name, home, keep, limit)
    elif group == "product-builds":
        from ostrel_lib.janitor.builds import build_outputs

        yield from build_outputs(home, keep, limit)
    else:
        yield from old_files(groups.AGENT_FOLDERS, home, keep, limit)
        if group == "agents-deep":
            yield from packages(home, keep, limit)


def old_files(
    roots: tuple[str, ...], home: Folder, keep: KeepOut, limit: int, endings: tuple[str, ...] = ()
) -> Iterator[Entry]:
    """Regular files that were last modified before `limit`, with one of the endings if there are any."""
    for path in roots:
        root = open_chain(home, path, keep)
        if root is None:
            continue
        try:
            for entry in walk(root, keep, whole=False):
                if is_older(entry, limit) and (not endings or entry.name.lower().endswith(endings)):
                    yield entry
        finally:
            root.close()


def cache(name: str, home: Folder, keep: KeepOut, limit: int) -> Iterator[Entry]:
    """What one cache holds, but for what came or changed since `limit`; the cache's own folder stays, and so
    does one that a process works in."""
    root = open_chain(home, groups.CACHES + "/" + name, keep)
    if root is None:
        return
    try:
        for entry in walk(root, keep, whole=True):
            in_use = is_folder(entry) and keep.uses.holds(entry.folder.real + "/" + entry.name)
            if is_older(entry, limit) and not in_use:
                yield entry
    finally:
        root.close()


def packages(home: Folder, keep: KeepOut, limit: int) -> Iterator[Entry]:
    """The folders of downloaded packages that no process loads, each whole."""
    folder = open_chain(home, groups.PACKAGES, keep)
    if folder is None:
        return
    try:
        for name in sorted(os.listdir(folder.fd)):
            yield from whole_folder(folder, name, keep, limit, "_npx/" + name, folders_count=True)
    finally:
        folder.close()


def whole_folder(
    parent: Folder,
    name: str,
    keep: KeepOut,
    limit: int,
    needle: str,
    judged: Callable[[], bool] = lambda: True,
    folders_count: bool = False,
) -> Iterator[Entry]:
    """All of a folder and then the folder, or nothing.

    It goes when all that it holds may go and was last modified before `limit` (folders are asked for their
    time only where `folders_count`), when no process uses anything in it or has `needle` among its arguments,
    and when it is `judged` so, which is asked last.
    """
    unit = open_below(parent, name, keep)
    if unit is None:
        return
    try:
        newest = unit.status.st_mtime_ns if folders_count else 0
        for entry in walk(unit, keep, whole=True):
            if entry.status is None or entry.name == ".git":
                return
            if folders_count or not is_folder(entry):
                newest = max(newest, entry.status.st_mtime_ns)
        if not 0 < newest < limit or keep.uses.holds_below(unit.real, needle) or not judged():
            return
        for entry in walk(unit, keep, whole=True):
            if is_folder(entry) or is_older(entry, limit):
                yield entry
        yield Entry(parent, name, unit.status)
    finally:
        unit.close()


def is_folder(entry: Entry) -> bool:
    """Whether the entry is a folder, which comes after what it holds."""
    return entry.status is not None and stat.S_ISDIR(entry.status.st_mode)


def is_older(entry: Entry, limit: int) -> bool:
    """Whether the entry may go and was last modified before `limit`."""
    return entry.status is not None and entry.status.st_mtime_ns < limit
