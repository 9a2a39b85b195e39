# SPDX-License-Identifier: Apache-2.0
"""The snapshot's judgement: a level, a headline, and one sentence on the cause."""
from __future__ import annotations

from ostrel_lib import pressure
from ostrel_lib.offenders import App, memory_text

OVERLOAD_NOW, OVERLOAD_LASTING = 200, 150
"""Percent of the processors, over one and over five minutes."""

DISK_FULL_SHARE, DISK_FULL_GB = 0.03, 2.0
SWAP_GROWTH, SWAP_ROOM = 15, 0.30
"""Points that swap grew in the trend, and the share of memory that must be left for it not to matter."""


class Facts:
    """What a verdict weighs. Memory is in KiB as in /proc/meminfo, the rest as in the snapshot."""

    __slots__ = ("fields", "stalled", "apps", "load", "disk", "trend", "fan", "sessions")

    def __init__(
        self, fields: dict[bytes, int], stalled: tuple[float, float] | None, apps: list[App],
        snapshot: dict[str, dict], disk: dict[str, float] | None,
    ) -> None:
        self.fields = fields
        self.stalled = stalled
        self.apps = apps
        self.load = snapshot["load"]
        self.trend = snapshot["trend"]
        self.fan = snapshot["fan"]
        self.sessions = sum(snapshot["sessions"].values())
        self.disk = disk

    def available(self) -> int:
        """Memory that can still be handed out."""
        return self.fields.get(b"MemAvailable", 0)


def verdict(facts: Facts) -> dict[str, object]:
    """The snapshot's `verdict`: the first rule that has something to say."""
    for rule in RULES:
        judged = rule(facts)
        if judged:
            break
    else:
        judged = ("ok", "Memory pressure is normal", normal(facts))
    level, headline, cause = judged
    servers = facts.fan["mcp"]
    return {
        "level": level,
        "headline": headline,
        "cause": cause,
        "per_sess": round(servers / facts.sessions, 2) if facts.sessions else 0.0,
    }


def short_memory(facts: Facts) -> tuple[str, str, str] | None:
    """Memory is short: by how much, and who holds the most."""
    level = pressure.level(facts.fields, facts.stalled)
    if level == pressure.UNKNOWN:
        return level, "Memory can't be read", "The system doesn't tell how much memory is left."
    if level == pressure.NORMAL:
        return None
    headline = "Memory is almost used up" if level == pressure.CRITICAL else "Memory is getting short"
    waited = ""
    if facts.stalled and facts.stalled[0] >= 1:
        waited = f" and programs waited for it {facts.stalled[0]:.0f}% of the last ten seconds"
    return level, headline, f"{room(facts)}{waited}; {holder(facts)}."


def growing_swap(facts: Facts) -> tuple[str, str, str] | None:
    """Swap keeps growing while little memory is left."""
    growth = facts.trend["swap_delta"]
    if growth < SWAP_GROWTH or facts.available() >= facts.fields.get(b"MemTotal", 0) * SWAP_ROOM:
        return None
    cause = f"Swap grew by {growth}% of its size in the last saved samples and {room(facts)};"
    return "warning", "Swap keeps growing", f"{cause} {holder(facts)}."


def overload(facts: Facts) -> tuple[str, str, str] | None:
    """More work than processors for minutes."""
    cores = max(1, facts.load["ncpu"])
    lasting = facts.load["l5"] * 100 / cores
    if facts.load["pct"] < OVERLOAD_NOW or lasting < OVERLOAD_LASTING:
        return None
    cause = f"{facts.load['l1']:.1f} programs want to run on {cores} cores and did so for minutes"
    busy = max(facts.apps, key=lambda app: app.cpu, default=None)
    used = sum(app.cpu for app in facts.apps) / 100
    if busy is None or used * 2 < cores:
        rest = ", yet few work: the rest waits, as a rule for the disk"
    elif busy.cpu * 2 >= cores * 100:
        rest = f"; {busy.label} does most of the work, on {busy.cpu / 100:.1f} cores"
    else:
        rest = f"; they share the work, {busy.label} with the most, {busy.cpu / 100:.1f} cores"
    return "warning", "The processors are overloaded", f"{cause}{rest}."


def full_disk(facts: Facts) -> tuple[str, str, str] | None:
    """The home's file system has no room."""
    disk = facts.disk
    if not disk or disk["free_gb"] >= DISK_FULL_GB or disk["free_gb"] >= disk["total_gb"] * DISK_FULL_SHARE:
        return None
    return "warning", "The disk is almost full", (
        f"Only {disk['free_gb']:.1f} of {disk['total_gb']:.0f} gb are free where the home lies;"
        " agents and builds fail when it is used up.")


def doubled_servers(facts: Facts) -> tuple[str, str, str] | None:
    """One agent runs the same servers several times, and that costs something."""
    held = facts.fan["codex_mcp_duplicate_mb"]
    if held < 512:
        return None
    servers = several(facts.fan["codex_mcp_duplicates"], "server")
    return "warning", "MCP servers run in copies", (
        f"Codex runs {servers} more than once in a session; the copies hold {memory_text(held << 20)}, and"
        " end with their session.")


RULES = (short_memory, growing_swap, overload, full_disk, doubled_servers)
"""The weightiest first."""


def normal(facts: Facts) -> str:
    """What there is to say when nothing is wrong."""
    if facts.sessions:
        servers = several(facts.fan["mcp"], "MCP server")
        agents = f"{several(facts.sessions, 'agent session')} and {servers} run"
    else:
        agents = "no agent session runs"
    return f"{room(facts)}, {agents}, and {holder(facts)}."


def room(facts: Facts) -> str:
    """How much memory is left."""
    total = facts.fields.get(b"MemTotal", 0)
    return f"{memory_text(facts.available() << 10)} of {memory_text(total << 10)} can still be handed out"


def holder(facts: Facts) -> str:
    """Who holds the most memory."""
    if not facts.apps or not facts.apps[0].rss:
        return "no listed program holds much of it"
    return f"{facts.apps[0].label} holds the most, {facts.apps[0].size()}"


def several(count: int, noun: str) -> str:
    """A count with its noun."""
    return f"{count} {noun}" + ("" if count == 1 else "s")
