# SPDX-License-Identifier: Apache-2.0
"""How much of the Codex account's quota is left, as the newest session on this machine was told."""
from __future__ import annotations

import os

from ostrel_lib.automations.smallfile import parse_json
from ostrel_lib.automations.systemd import timestamp
from ostrel_lib.files import names
from ostrel_lib.places import Places, iso

NEWEST = 8
"""Sessions that are looked into: one that was just opened hasn't been told anything yet."""
TAIL = 256 << 10
"""Bytes from a session's end; the figures come with each answer."""
MARK = b'"rate_limits"'


def quotas(places: Places, guarded: bool) -> list[dict[str, object]]:
    """The quota rows of the inventory: one for this machine, none when no session tells it. `guarded` says
    that the user's registry asks for some quota before a job is switched on."""
    for path in newest_sessions(places.home + "/.codex/sessions"):
        found = last_limits(path)
        if found:
            at, limits = found
            windows = [window for name in ("primary", "secondary")
                       if (window := window_of(limits.get(name), at, places.clock()))]
            if windows:
                return [{
                    "host": places.host, "state": "observed", "checked_at": at, "windows": windows,
                    "scope": "shared account, as this machine's newest session was told",
                    "guard": "min_quota_pct in your registry" if guarded else "none",
                }]
    return []


def newest_sessions(folder: str) -> list[str]:
    """The files of the last sessions, newest first. Folders are named year, month and day, and files by their
    time."""
    paths: list[str] = []
    for year in reversed(names(folder)):
        for month in reversed(names(f"{folder}/{year}")):
            for day in reversed(names(f"{folder}/{year}/{month}")):
                within = f"{folder}/{year}/{month}/{day}"
                paths += [f"{within}/{name}" for name in reversed(names(within)) if name.endswith(".jsonl")]
                if len(paths) >= NEWEST:
                    return paths[:NEWEST]
    return paths


def last_limits(path: str) -> tuple[float, dict[str, object]] | None:
    """The time and the limits of the last event that has both."""
    for line in reversed(tail(path).split(b"\n")):
        if MARK not in line:
            continue
        event, _ = parse_json(line)
        payload = event.get("payload") if type(event) is dict else None
        limits = payload.get("rate_limits") if type(payload) is dict else None
        if type(limits) is dict:
            at = utc(event.get("timestamp"))  # type: ignore[union-attr]
            if at:
                return at, limits
    return None


def tail(path: str) -> bytes:
    """The end of a regular file; b"" when it can't be read."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC)
    except OSError:
        return b""
    try:
        size = os.fstat(file).st_size
        return os.pread(file, TAIL, max(0, size - TAIL))
    except OSError:
        return b""
    finally:
        os.close(file)


def utc(text: object) -> float:
    """Seconds since 1970 of a time such as "2026-11-18T10:45:22.123Z"; 0 for anything else."""
    if type(text) is not str or len(text) < 20 or text[-1] != "Z" or text[10] != "T":
        return 0.0
    return timestamp(f"- {text[:10]} {text[11:19]} UTC")


def window_of(limit: object, at: float, now: float) -> dict[str, object] | None:
    """One quota window. One that has begun anew since it was told of is full again."""
    used = limit.get("used_percent") if type(limit) is dict else None
    if type(used) not in (int, float):
        return None
    minutes = limit.get("window_minutes")  # type: ignore[union-attr]
    resets = limit.get("resets_at")  # type: ignore[union-attr]
    if type(resets) not in (int, float):
        after = limit.get("resets_in_seconds")  # type: ignore[union-attr]
        resets = at + after if type(after) in (int, float) else 0
    left = max(0.0, min(100.0, 100.0 - used))  # type: ignore[operator]
    window: dict[str, object] = {
        "remaining": 100.0 if 0 < resets <= now else left,
        "minutes": minutes if type(minutes) is int and 0 <= minutes < 10**7 else 0,
    }
    if resets > now:
        window["resets_at"] = iso(resets)
    return window
