# SPDX-License-Identifier: Apache-2.0
"""The analyst's rules on memory, swap and what grows over the saved samples."""
from __future__ import annotations

from ostrel_lib.facts import SERVERS, memory, number
from ostrel_lib.finding import (
    CRITICAL, INFO, WARNING, Finding, held, mem, of_ram, ram_figures, several, swap_figures,
)

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ostrel_lib.facts import Facts

RAM_FULL = 95
RAM_FULL_WITH_SWAP = 90
"""Percent in use from which memory is all but gone, alone and together with a full swap."""

RAM_HIGH = 85
RAM_HIGH_WITH_SWAP = 80
"""Percent in use from which memory is short, alone and together with a full or growing swap."""

RAM_EASY = 75
"""Percent in use below which swap says nothing about the present."""

SWAP_FULL = 80
SWAP_NOTABLE = 50

FEWEST_SAMPLES = 5
GROWTH = {"swap": 15, "load": 75, "mcp": 4}
"""What counts as growth over the saved samples: percent of swap, percent of the cores, servers."""

STEEP_SWAP_GROWTH = 30


def memory_pressure(facts: Facts) -> Finding | None:
    """Memory is short; the cause is the family of processes that holds most of it."""
    full = facts.swap_total > 0 and facts.swap_pct >= SWAP_FULL
    if facts.ram_pct >= RAM_FULL or full and facts.ram_pct >= RAM_FULL_WITH_SWAP:
        level = CRITICAL
    elif facts.ram_pct >= (RAM_HIGH_WITH_SWAP if full or grown(facts, "swap") else RAM_HIGH):
        level = WARNING
    else:
        return None
    evidence = [ram_figures(facts)] + [swap_figures(facts)] * (facts.swap_total > 0)
    families = facts.families(lambda family: family.mb)
    if not families:
        return Finding(
            level, f"memory pressure: {facts.ram_pct}% in use, by nothing that is listed",
            "No listed process holds it. Look at shared memory, the kernel and other users.",
            evidence, mb=0, share=facts.ram_pct, label="memory", target="ram",
            reason="See what holds memory outside the listed processes.", risk="none")
    first = families[0]
    evidence += map(held, families[:3])
    rest = unlisted(facts)
    cause = "mostly by what isn't listed" if rest else f"{first.label} with the most"
    return Finding(
        level, f"memory pressure: {facts.ram_pct}% in use, {cause}",
        f"Of the listed programs {first.label} hold{'' if first.label == SERVERS else 's'} most:"
        f" {mem(first.mb)}{of_ram(facts, first.mb)}.{rest}",
        evidence, mb=first.mb, share=facts.ram_pct, label=first.label, target=first.label,
        reason=first.advice, risk=first.risk)


def unlisted(facts: Facts) -> str:
    """A sentence on memory that no listed process accounts for, when that is most of it."""
    seen = memory(facts.rows)
    if seen * 2 >= facts.ram_used:
        return ""
    return (f" All listed processes together hold {mem(seen)} of the {mem(facts.ram_used)} in use; the rest"
            " is in small processes, shared memory or the kernel.")


def swap_residue(facts: Facts) -> Finding | None:
    """Swap is in use though memory has room and swap isn't growing: left there by an earlier peak."""
    if not facts.swap_total or facts.swap_pct < SWAP_NOTABLE or not 0 < facts.ram_pct < RAM_EASY:
        return None
    if grown(facts, "swap") or facts.verdict in (CRITICAL, WARNING):
        return None
    evidence = [swap_figures(facts), ram_figures(facts)]
    if facts.samples:
        change = f"swap {facts.deltas['swap']:+d} points over {several(facts.samples, 'sample')}"
        evidence.append(change)
    full = " The next peak finds little room there, though." if facts.swap_pct >= SWAP_FULL else ""
    return Finding(
        INFO, f"swap is {facts.swap_pct}% full, of residue only",
        f"An earlier peak put {mem(facts.swap_used)} there, and they stay until their owners want them."
        f" Memory has room now, so this is no pressure and needs nothing done.{full}",
        evidence, mb=facts.swap_used, share=0, label="swap residue", target="swap",
        reason="Pages at rest in swap cost nothing; they go when their programs end.", risk="none")


def growing_trend(facts: Facts) -> Finding | None:
    """Swap, load or the number of servers grows over the saved samples."""
    growth = {key: grown(facts, key) for key in GROWTH}
    if not any(growth.values()):
        return None
    more = min(facts.swap_used, facts.swap_total * growth["swap"] // 100)
    words = {"swap": f"swap +{mem(more)}", "load": f"load +{growth['load']}% of the cores",
             "mcp": f"mcp servers +{growth['mcp']}"}
    evidence = [words[key] for key, value in growth.items() if value]
    title = " and ".join(evidence)
    evidence.append(f"over {several(facts.samples, 'sample')}")
    room = ""
    if growth["swap"] and facts.swap_total:
        room = f" Swap has room for another {mem(max(0, facts.swap_total - facts.swap_used))}."
    mb = more or memory(facts.servers() if growth["mcp"] else facts.rows)
    return Finding(
        WARNING if growth["swap"] >= STEEP_SWAP_GROWTH or len(evidence) > 2 else INFO,
        f"growing: {title}",
        f"What grows and doesn't come back is a leak, or sessions that nobody closes.{room}",
        evidence, mb=mb, share=facts.share(more), label="growth", target="trend",
        reason="Compare the largest processes now and in some minutes.", risk="none")


def grown(facts: Facts, key: str) -> int:
    """By how much a figure grew over the saved samples; 0 for less than counts as growth, for too few
    samples, and when the samples show that it was one peak: their later half must lie above the earlier."""
    delta, least = facts.deltas[key], GROWTH[key]
    if facts.samples < FEWEST_SAMPLES or delta < least:
        return 0
    values = [number(sample.get(key)) for sample in facts.history[-facts.samples:]]
    half = len(values) // 2
    if half >= 2 and median(values[-half:]) - median(values[:half]) < least / 4:
        return 0
    return delta


def median(values: list[float]) -> float:
    """The one in the middle."""
    return sorted(values)[len(values) // 2]
