# SPDX-License-Identifier: Apache-2.0
"""What a rule of the analyst gives, and the words that several rules use."""
from __future__ import annotations

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ostrel_lib.facts import Facts, Family, Row

CRITICAL, WARNING, INFO = "critical", "warning", "info"
LEVELS = (CRITICAL, WARNING, INFO)
"""The gravest first."""


class Finding:
    """One thing that is wrong. `evidence` are figures of the snapshot, `mb` the resident memory observed in
    MiB, `share` the percent of the machine that it concerns, for the order. The rest is for whoever looks
    into it: what to look at, why, and what would be lost by ending it."""

    __slots__ = ("level", "share", "title", "body", "evidence", "mb", "label", "target", "reason", "risk")

    def __init__(
        self, level: str, title: str, body: str, evidence: list[str], *, mb: int, share: float, label: str,
        target: str, reason: str, risk: str
    ) -> None:
        self.level = level
        self.title = title
        self.body = body
        self.evidence = evidence
        self.mb = mb
        self.share = min(100.0, share)
        self.label = label
        self.target = target
        self.reason = reason
        self.risk = risk


def mem(mebibytes: float) -> str:
    """A size as the panel writes it."""
    return f"{mebibytes / 1024:.1f} gb" if mebibytes >= 1024 else f"{int(mebibytes)} mb"


def several(count: int, one: str, more: str = "") -> str:
    """A count with its word."""
    return f"{count} {one if count == 1 else more or one + 's'}"


def held(family: Family) -> str:
    """A family with its memory."""
    count = f" in {several(family.count, 'process', 'processes')}" if family.count > 1 else ""
    return f"{family.label} {mem(family.mb)}{count}"


def processes(rows: list[Row]) -> str:
    """A count of processes."""
    return several(len(rows), "process", "processes")


def of_ram(facts: Facts, mebibytes: int) -> str:
    """", 12% of memory", where the size of memory is known."""
    return f", {facts.share(mebibytes):.0f}% of memory" if facts.ram_total else ""


def ram_figures(facts: Facts) -> str:
    """How full memory is."""
    sizes = f", {mem(facts.ram_used)} of {mem(facts.ram_total)}" if facts.ram_total else ""
    return f"ram {facts.ram_pct}%{sizes}"


def swap_figures(facts: Facts) -> str:
    """How full swap is."""
    return f"swap {facts.swap_pct}%, {mem(facts.swap_used)} of {mem(facts.swap_total)}"


def load_figures(facts: Facts) -> str:
    """The load averages, and the cores where their number is known."""
    cores = f", {several(facts.cores, 'core')}" if facts.cores else ""
    lasting = f", {facts.load_5:.1f} over 5 minutes" if facts.load_5 else ""
    return f"load {facts.load_1:.1f} now{lasting}{cores}"
