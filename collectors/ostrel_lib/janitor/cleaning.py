# SPDX-License-Identifier: Apache-2.0
"""Carrying a plan out."""
from __future__ import annotations

import sys

from ostrel_lib.janitor import groups
from ostrel_lib.janitor.listing import mib, shown
from ostrel_lib.janitor.plan import is_folder, plan, problem
from ostrel_lib.janitor.progress import Progress
from ostrel_lib.janitor.removal import remove, remove_folder
from ostrel_lib.janitor.folders import IN_HISTORY, KeepOut, home_is_history, open_home

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterable

    from ostrel_lib.janitor.folders import Entry


def clean(home_path: str, group: str, selected: list[str], now: int) -> dict[str, object]:
    """The reply of `clean --apply`; `now` in nanoseconds since 1970. Its `error`, which isn't always there,
    says why nothing was begun or what stopped the batch; a batch that was begun has a receipt in any case."""
    reply: dict[str, object] = {
        "group": group, "title": groups.TITLES.get(group, group), "removed": 0, "freed_mb": 0.0,
        "failed_count": 0,
    }
    progress = None
    try:
        home = open_home(home_path)
        try:
            error = problem(group, home, selected)
            keep = KeepOut(home)
            if not error and home_is_history(home, keep):
                error = IN_HISTORY
            if not error:
                progress = Progress(home_path, group)
                try:
                    reply["failed_count"] = carry_out(plan(group, home, selected, keep, now), progress)
                finally:
                    finish(progress)
        finally:
            home.close()
    except OSError as failure:
        error = "stopped: " + (failure.strerror or "unknown reason")
    if progress is not None:
        reply["removed"] = progress.removed
        reply["freed_mb"] = mib(progress.freed)
    if error:
        reply["error"] = shown(error)
    return reply


def carry_out(entries: Iterable[Entry], progress: Progress) -> int:
    """Removes the entries one by one and gives how many were left alone. Raises OSError when the machine
    can't go on; `progress` then knows what went."""
    refused = 0
    for entry in entries:
        if is_folder(entry):
            remove_folder(entry)
            continue
        progress.trying(entry)
        freed = remove(entry)
        progress.tried(freed)
        refused += freed is None
    return refused


def finish(progress: Progress) -> None:
    """The receipt. When it can't be written the record stays, and the next call makes the receipt."""
    try:
        progress.finish()
    except OSError as failure:
        print("the receipt waits: " + ascii(failure.strerror), file=sys.stderr)
