# SPDX-License-Identifier: Apache-2.0
"""What the machine could do with less of. Each check has a threshold of its own and gives one finding or
none; looking changes nothing."""
from __future__ import annotations

import os

from ostrel_lib import memory
from ostrel_lib.census import mib as whole_mib
from ostrel_lib.files import read
from ostrel_lib.janitor.listing import BYTES_PER_MIB, mib, total_of
from ostrel_lib.janitor.people import judged
from ostrel_lib.janitor.plan import plan
from ostrel_lib.janitor.servers import IDLE_MINUTES, Crew, offered
from ostrel_lib.janitor.folders import KeepOut, home_is_history, open_home

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

SWAP_WARNING_PCT, SWAP_CRITICAL_PCT = 50, 80
LEAST_COPIES = 2
COPIES_WARNING_MIB = 500
SESSIONS_WARNING_MIB = 1024
LEFTOVERS_LEAST_FILES, LEFTOVERS_LEAST_MIB, LEFTOVERS_WARNING_MIB = 500, 50, 1024
ORPHANS_WARNING_MIB = 200
DISK_WARNING_PCT, DISK_CRITICAL_PCT = 10, 4
"""Of the file system that holds the home, free to its user."""

LEVELS = ("critical", "warning", "info")


def findings(home: str, rows: list[str], now: int, proc_root: str = "/proc") -> dict[str, object]:
    """The reply of `findings`, the most pressing first. `rows` protect from being offered for a stop; `now`
    is in nanoseconds since 1970."""
    crew = Crew(proc_root)
    seconds = now / 1e9
    checks: list[Callable[[], dict[str, object] | None]] = [
        lambda: swap(read(proc_root + "/meminfo")),
        lambda: disk(home),
        lambda: orphans(crew, seconds, rows),
        lambda: duplicates(crew),
        lambda: idle_sessions(crew, seconds),
        lambda: leftovers(home, now),
    ]
    found = [finding for finding in (check() for check in checks) if finding is not None]
    found.sort(key=lambda finding: LEVELS.index(finding["level"]))
    return {"findings": found}


def finding(
    name: str, level: str, title: str, seen: str, source: str, proposal: str,
    action: dict[str, object], est_mb: float = 0.0, count: int = 0,
) -> dict[str, object]:
    """One finding. `action` has the keys that aren't at their defaults."""
    return {
        "id": name, "level": level, "title": title, "seen": seen, "source": source, "proposal": proposal,
        "action": {"kind": "none", "target": "", "group": "", "pids": [], **action},
        "est_mb": est_mb, "count": count,
    }


def swap(meminfo: bytes) -> dict[str, object] | None:
    """Swap that is half full or more."""
    fields = memory.memory_fields(meminfo)
    total = fields.get(b"SwapTotal", 0)
    used = max(0, total - fields.get(b"SwapFree", total))
    percent = memory.percent(used, total)
    if percent < SWAP_WARNING_PCT:
        return None
    return finding(
        "swap", "critical" if percent >= SWAP_CRITICAL_PCT else "warning", "swap is filling up",
        f"{used / 1048576:.1f} of {total / 1048576:.1f} gb in use · {percent} %",
        "/proc/meminfo · SwapTotal, SwapFree",
        "end what holds the most memory; swapped pages come back only when their owner needs them or ends",
        {"kind": "open-tab", "target": "system"}, est_mb=round(used / 1024, 2))


def disk(home: str) -> dict[str, object] | None:
    """A file system of the home with little room left."""
    try:
        system = os.statvfs(home)
    except OSError:
        return None
    usable = system.f_blocks - system.f_bfree + system.f_bavail  # without what is set aside for root
    free = system.f_bavail * system.f_frsize
    percent = system.f_bavail * 100 / usable if usable > 0 else 100
    if percent >= DISK_WARNING_PCT:
        return None
    return finding(
        "disk", "critical" if percent < DISK_CRITICAL_PCT else "warning", "the disk is nearly full",
        f"{free / 1073741824:.1f} of {usable * system.f_frsize / 1073741824:.1f} gb free · {percent:.0f} %",
        "statvfs of the home's file system", "the cleanup tab lists what can go, before anything goes",
        {"kind": "open-tab", "target": "cleanup"})


def orphans(crew: Crew, now: float, rows: list[str]) -> dict[str, object] | None:
    """MCP servers that were left behind and may be stopped."""
    allowed = judged(offered(crew, "light", now), rows, crew.root)["allowed"]
    if not allowed:
        return None
    size = sum(row["rss_mb"] for row in allowed)
    return finding(
        "orphan-mcp", "warning" if size >= ORPHANS_WARNING_MIB else "info", "MCP processes without a parent",
        several(len(allowed), "server") + f" left behind by ended agents · {size} mb",
        "/proc/<pid>/stat, cmdline · parent is the first process or a session's reaper",
        "stop them; nothing can talk to them any more",
        {"kind": "kill", "pids": [row["pid"] for row in allowed]},
        est_mb=float(size), count=len(allowed))


def duplicates(crew: Crew) -> dict[str, object] | None:
    """Servers that run more than once below one agent, the largest copy of each left out."""
    copies: dict[tuple[int, bytes], list[int]] = {}
    for server in crew.servers():
        owner = crew.owner(server)
        if owner:
            copies.setdefault((owner, server.cmdline), []).append(server.rss)
    count = sum(len(sizes) - 1 for sizes in copies.values())
    if count < LEAST_COPIES:
        return None
    size = whole_mib(sum(sum(sizes[1:]) for sizes in copies.values()))
    return finding(
        "mcp-duplicates", "warning" if size >= COPIES_WARNING_MIB else "info", "MCP servers that run twice",
        several(count, "copy", "copies") + f" of servers that the same agent runs already · {size} mb",
        "/proc/<pid>/cmdline · the same command line below one agent",
        "restart the session; which copy it talks to can't be seen from outside",
        {"kind": "open-tab", "target": "processes"}, est_mb=float(size), count=count)


def idle_sessions(crew: Crew, now: float) -> dict[str, object] | None:
    """Agent sessions whose terminal nobody has used for a while."""
    idle = crew.idle_sessions(now)
    sessions = [pid for pid in idle if crew.starts_itself(pid)]
    if not sessions:
        return None
    size = whole_mib(sum(crew.processes[pid].rss for pid in idle))
    longest = max(idle.values())
    return finding(
        "idle-sessions", "warning" if size >= SESSIONS_WARNING_MIB else "info", "agent sessions nobody uses",
        several(len(sessions), "session") + f" silent for {IDLE_MINUTES} min or more, the longest for"
        f" {longest} min · {size} mb",
        "access and change time of the sessions' terminals",
        "look at them; an agent is never stopped from here, its idle MCP servers can be",
        {"kind": "open-tab", "target": "sessions"}, est_mb=float(size), count=len(sessions))


def leftovers(home_path: str, now: int) -> dict[str, object] | None:
    """Old files that agents left behind: what the group agents-light would remove."""
    try:
        home = open_home(home_path)
        try:
            keep = KeepOut(home)
            if home_is_history(home, keep):
                return None
            total = total_of(plan("agents-light", home, [], keep, now))
        finally:
            home.close()
    except OSError:
        return None
    size = total.size / BYTES_PER_MIB
    if total.count < LEFTOVERS_LEAST_FILES and size < LEFTOVERS_LEAST_MIB:
        return None
    return finding(
        "agent-leftovers", "warning" if size >= LEFTOVERS_WARNING_MIB else "info", "old files of the agents",
        f"{total.count} logs, snapshots and pastes older than 14 days · {size:.0f} mb",
        "file ages below ~/.claude and ~/.codex, session history left out",
        "review the list in the cleanup tab", {"kind": "clean", "target": "cleanup", "group": "agents-light"},
        est_mb=mib(total.size), count=total.count)


def several(count: int, one: str, more: str = "") -> str:
    """A count with its word."""
    return f"{count} {one if count == 1 else more or one + 's'}"
