# SPDX-License-Identifier: Apache-2.0
"""The analyst: says what is wrong in a snapshot, and nothing when nothing is. It reads the snapshot it is
given and never the machine, and it proposes looking only.

Each rule is a function from the facts to a finding or None. A finding names the figures of the snapshot that
it rests on, and how much resident memory it is about. Findings are ordered by level, then by the share of the
machine that they concern.
"""
from __future__ import annotations

import os

from ostrel_lib.facts import Facts, Row, mem, memory, percent, several, whole

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

MOST_BYTES = 16777216
"""Input that is read; ten times the largest snapshot that a machine gives."""

MOST_CONTAINERS = 400000
MOST_VALUES = 1500000
"""Objects and arrays, and commas, in the input: what a reader's memory goes into."""

CRITICAL, WARNING, INFO = "critical", "warning", "info"
LEVELS = (CRITICAL, WARNING, INFO)

RAM_FULL, RAM_HIGH, RAM_RAISED, RAM_EASY = 95, 85, 80, 75
"""Percent in use: where memory is all but gone, where it is short by itself, where it is short once swap is
short too, and below which nothing presses."""
RAM_HIGH_WITH_SWAP = 90
SWAP_TIGHT, SWAP_WORTH_A_WORD = 80, 50
LOAD_HIGH, LOAD_EXTREME = 150, 300

SAMPLES_FOR_A_TREND = 5
SWAP_GROWTH, SWAP_GROWTH_STEEP = 512, 2048
LOAD_GROWTH = 75
MCP_GROWTH = 4

COPIES_LARGE = 256
BUSY_CORE = 90
BUSY_AT_ONCE = 200
ENOUGH_LOAD = 0.8
"""Of what a busy process puts on the load average of five minutes, once it has lasted as long."""
PARALLEL = 3
"""Busy processes of one name that look like a job split up, not like one that ran away."""
HELPERS_MANY, HELPERS_HEAVY, HELPERS_HEAVY_SHARE = 60, 25, 25


class Finding:
    """One thing that is wrong. `share` is the percent of the machine that it concerns, for the order; `mb` the
    resident memory observed, MiB."""

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


def memory_pressure(facts: Facts) -> Finding | None:
    """Memory is short, and who holds most of it."""
    swap_short = facts.swap_total > 0 and facts.swap_pct >= SWAP_TIGHT
    level = ""
    if facts.ram_pct >= RAM_FULL or facts.ram_pct >= RAM_HIGH_WITH_SWAP and swap_short:
        level = CRITICAL
    elif facts.ram_pct >= RAM_HIGH or facts.ram_pct >= RAM_RAISED and (swap_short or swap_grows(facts)):
        level = WARNING
    if not level:
        return None
    evidence = [ram_evidence(facts)]
    if facts.swap_total:
        evidence.append(swap_evidence(facts))
    families = facts.families(lambda family: family.mb)
    if not families or not families[0].mb:
        return Finding(
            level, f"memory is {facts.ram_pct}% full",
            "The snapshot lists no process that holds it: see the kernel's own memory, shared memory and other"
            " users.",
            evidence, mb=0, share=facts.ram_pct, label="memory", target="ram",
            reason="Look at what holds memory outside the listed processes.", risk="none")
    first = families[0]
    evidence += [f"{family.label} {mem(family.mb)} in {processes(family.rows)}" for family in families[:3]]
    return Finding(
        level, f"memory is {facts.ram_pct}% full, most of it {first.label}",
        f"{first.label} hold{'' if first.label.endswith('s') else 's'} {mem(first.mb)}{of_ram(facts, first.mb)},"
        f" more than any other listed program.{unlisted(facts)}",
        evidence, mb=first.mb, share=facts.ram_pct, label=first.label, target=first.label,
        reason=f"Closing what isn't needed of {first.label} gives back most.", risk="stateful")


def unlisted(facts: Facts) -> str:
    """A sentence on memory that no listed process accounts for, when that is most of it."""
    seen = memory(facts.rows)
    if not facts.ram_used or seen * 2 >= facts.ram_used:
        return ""
    return (f" All listed processes together hold {mem(seen)} of the {mem(facts.ram_used)} in use; the rest is"
            " in small processes, shared memory or the kernel.")


def swap_residue(facts: Facts) -> Finding | None:
    """Swap is in use, though memory has room and swap isn't growing: left over from an earlier peak."""
    if not facts.swap_total or facts.swap_pct < SWAP_WORTH_A_WORD or swap_grows(facts):
        return None
    if not 0 < facts.ram_pct < RAM_EASY:
        return None
    tight = (" It leaves little room for the next peak, though." if facts.swap_pct >= SWAP_TIGHT else "")
    return Finding(
        INFO, "swap is residue, not pressure",
        f"{mem(facts.swap_used)} were put there at an earlier peak and wait until their owners want them."
        f" Memory has room now, so nothing needs to be done.{tight}",
        [swap_evidence(facts), ram_evidence(facts), trend_evidence(facts, "swap", " mb")],
        mb=facts.swap_used, share=0, label="swap residue", target="swap",
        reason="Old pages in swap cost nothing until they are used; they go as their programs end.", risk="none")


def duplicate_servers(facts: Facts) -> Finding | None:
    """An agent runs one MCP server several times, or there are more copies of one than sessions."""
    groups = facts.fan["codex_mcp_duplicates"]
    copies: dict[str, list[Row]] = {}
    for row in facts.servers():
        if row.command:
            copies.setdefault(row.command, []).append(row)
    surplus = {
        rows[0].pid: rows for rows in copies.values() if len(rows) > max(1, facts.sessions)}
    if not groups and not surplus:
        return None
    extra = sum(memory(rows) - max(row.mb for row in rows) for rows in surplus.values())
    mb = max(extra, facts.fan["codex_mcp_duplicate_mb"] if groups else 0)
    evidence = [f"{facts.fan['mcp'] or len(facts.servers())} mcp servers", sessions_evidence(facts)]
    if groups:
        held = mem(facts.fan["codex_mcp_duplicate_mb"])
        evidence.append(f"codex runs {several(groups, 'server')} more than once, the copies hold {held}")
    worst = sorted(surplus.values(), key=lambda rows: (-len(rows), -memory(rows)))[:3]
    evidence += [f"{rows[0].name} × {len(rows)} {mem(memory(rows))}" for rows in worst]
    count = max(groups, len(surplus))
    return Finding(
        WARNING if mb >= COPIES_LARGE or surplus else INFO,
        f"{several(count, 'MCP server runs', 'MCP servers run')} in several copies",
        ("There are more copies than agent sessions, so some were started twice or left behind."
         if surplus else "One agent has started the same server more than once.")
        + " Ending the session that owns a copy ends the copy.",
        evidence, mb=mb, share=facts.share(mb), label="duplicate MCP servers", target="mcp",
        reason="Find the sessions that own the copies and close those that aren't used.", risk="restartable")


def orphan_servers(facts: Facts) -> Finding | None:
    """MCP servers run below no agent."""
    total, other = facts.fan["mcp"], facts.fan["other_mcp"]
    abandoned = facts.sessions_known and not facts.sessions and total > 0
    if not other and not abandoned:
        return None
    count = total if abandoned else other
    rows = facts.servers() if abandoned or other >= total else []
    mb = memory(rows)
    evidence = [f"{total} mcp servers", f"{other} below no agent", sessions_evidence(facts)]
    if rows:
        evidence.append(f"{processes(rows)} listed, {mem(mb)}")
    body = ("No agent session runs that could use them." if abandoned else
            "They run below neither claude nor codex: another program uses them, or the session that started"
            " them is gone.")
    return Finding(
        WARNING if abandoned else INFO, f"{several(count, 'MCP server')} without an agent",
        body + " The MCP audit tells which of them lost their parent."
        + ("" if rows else " The snapshot doesn't tell their memory apart from that of the others."),
        evidence, mb=mb, share=facts.share(mb), label="MCP servers without an agent", target="mcp",
        reason="Run the MCP audit; it lists the servers whose parent is gone and stops none.",
        risk="restartable")


def runaway_process(facts: Facts) -> Finding | None:
    """A process keeps a core busy, and the load average says for minutes."""
    busy: dict[str, list[Row]] = {}
    for row in facts.rows:
        if row.cpu >= BUSY_CORE:
            busy.setdefault(row.name, []).append(row)
    known = facts.load_5 > 0
    lasting = {
        name: rows for name, rows in busy.items()
        if facts.load_5 >= ENOUGH_LOAD * cores_of(rows) or not known or max(row.cpu for row in rows) >= BUSY_AT_ONCE}
    if not lasting:
        return None
    name, rows = min(lasting.items(), key=lambda item: (len(item[1]) >= PARALLEL, -cores_of(item[1]), item[0]))
    first = max(rows, key=lambda row: row.cpu)
    sustained = known and facts.load_5 >= ENOUGH_LOAD * cores_of(rows)
    parallel = len(rows) >= PARALLEL
    evidence = [f"{row.name} pid {row.pid or '?'} {row.cpu:.0f}% of a core, {mem(row.mb)}" for row in rows[:3]]
    evidence.append(f"load {facts.load_1:.1f} now, {facts.load_5:.1f} over 5 minutes")
    share = percent(cores_of(rows), facts.cores)
    if parallel:
        title, what = f"{len(rows)} × {name} keep cores busy", "Several at once look like one job split up."
    else:
        title, what = f"{name} keeps {cores_of(rows):.1f} cores busy", ""
    when = (" The load over five minutes says that it has lasted." if sustained
            else " One look can't tell for how long.")
    return Finding(
        WARNING if sustained and not parallel else INFO, title,
        (what + when + " If no work is meant to run there, it has run away.").strip(),
        evidence, mb=memory(rows), share=share, label=name, target=first.pid or name,
        reason=f"See what {name} works on; a busy process may be doing what it was asked to.", risk="stateful")


def load_pressure(facts: Facts) -> Finding | None:
    """More work than cores for minutes: real work, or processes that wait for the disk."""
    if not facts.cores or facts.load_pct < LOAD_HIGH or facts.load_5 < facts.cores:
        return None
    extreme = facts.load_pct >= LOAD_EXTREME and facts.load_5 >= 2 * facts.cores
    working = sum(row.cpu for row in facts.rows) / 100
    families = facts.families(lambda family: family.cpu)
    evidence = [f"load {facts.load_1:.1f} now, {facts.load_5:.1f} over 5 minutes, {several(facts.cores, 'core')}"]
    if working * 2 >= facts.cores:
        first = families[0]
        evidence += [f"{family.label} {family.cpu:.0f}% of a core" for family in families[:3] if family.cpu]
        cause = f"Most of it is {first.label}, with {first.cpu / 100:.1f} cores."
        mb, label, target, reason = first.mb, first.label, first.label, f"See what {first.label} works on."
    else:
        swapping = facts.ram_pct >= RAM_HIGH and facts.swap_total > 0
        evidence.append(f"the listed processes use {working:.1f} cores")
        cause = ("The listed processes use few of the cores, so the rest waits, as a rule for the disk"
                 + (" and here for swap." if swapping else "."))
        mb, label, target = 0, "waiting processes", "load"
        reason = "Look for heavy reading and writing; more cores wouldn't help."
    return Finding(
        CRITICAL if extreme else WARNING, f"load is {facts.load_pct}% of the cores", cause, evidence,
        mb=mb, share=100, label=label, target=target, reason=reason, risk="stateful")


def browser_helpers(facts: Facts) -> Finding | None:
    """Browsers have more helpers than the machine likes."""
    count = facts.fan["chromium"] or sum(count for _, count in facts.bundles)
    helpers = facts.helpers()
    mb = memory(helpers)
    heavy = count >= HELPERS_HEAVY and facts.share(mb) >= HELPERS_HEAVY_SHARE
    if count < HELPERS_MANY and not heavy:
        return None
    evidence = [several(count, "helper")] + [f"{name} {number}" for name, number in facts.bundles[:3]]
    evidence.append(f"{processes(helpers)} listed, {mem(mb)}{of_ram(facts, mb)}")
    label = facts.bundles[0][0] + " helpers" if facts.bundles else "browser helpers"
    return Finding(
        WARNING if heavy or facts.ram_pct >= RAM_RAISED else INFO, f"{count} browser helpers",
        "Each open page, extension and embedded view keeps one. Closing pages, not processes, gives them back.",
        evidence, mb=mb, share=facts.share(mb), label=label, target="chromium",
        reason="Close pages and windows that aren't used, in the browser itself.", risk="stateful")


def growing_trend(facts: Facts) -> Finding | None:
    """Swap, load or servers grow over the saved samples, and not by one peak."""
    swap, load, servers = (
        grown(facts, key, least)
        for key, least in (("swap", SWAP_GROWTH), ("load", LOAD_GROWTH), ("mcp", MCP_GROWTH)))
    if not (swap or load or servers):
        return None
    what = [words for words, value in (("swap", swap), ("load", load), ("MCP servers", servers)) if value]
    evidence = [f"{facts.samples} samples"]
    evidence += [f"swap +{mem(swap)}"] * bool(swap) + [f"load +{load}% of the cores"] * bool(load)
    evidence += [f"mcp +{servers}"] * bool(servers)
    mb = swap or (memory(facts.servers()) if servers else memory(facts.rows))
    verb = "grow" if len(what) > 1 or servers and not swap and not load else "grows"
    return Finding(
        WARNING if swap >= SWAP_GROWTH_STEEP or len(what) > 1 else INFO, f"{' and '.join(what)} {verb}",
        "What grows over samples and doesn't come back is a leak, or sessions that aren't closed."
        + (" Swap has room for " + mem(max(0, facts.swap_total - facts.swap_used)) + " more." if swap else ""),
        evidence, mb=mb, share=facts.share(swap), label=" and ".join(what) + " growth", target=what[0].lower(),
        reason="Compare the largest processes now and in some minutes.", risk="none")


def swap_grows(facts: Facts) -> bool:
    """Whether swap grows over the saved samples."""
    return grown(facts, "swap", SWAP_GROWTH) > 0


def grown(facts: Facts, key: str, least: int) -> int:
    """By how much a figure grew over the saved samples; 0 for less than `least`, over too few samples, or when
    the samples themselves say that it was one peak: their later half must lie above the earlier one."""
    delta = facts.deltas[key]
    if facts.samples < SAMPLES_FOR_A_TREND or delta < least:
        return 0
    values = [whole(sample.get(key)) for sample in facts.history[-facts.samples:] if key in sample]
    half = len(values) // 2
    if half >= 2 and median(values[-half:]) - median(values[:half]) < least // 4:
        return 0
    return delta


def median(values: list[int]) -> int:
    """The middle one."""
    return sorted(values)[len(values) // 2]


def cores_of(rows: list[Row]) -> float:
    """Cores that processes keep busy."""
    return sum(row.cpu for row in rows) / 100


def processes(rows: list[Row]) -> str:
    """A count of processes."""
    return several(len(rows), "process", "processes")


def of_ram(facts: Facts, mebibytes: int) -> str:
    """", 12% of memory", where the machine's memory is known."""
    return f", {facts.share(mebibytes):.0f}% of memory" if facts.ram_total else ""


def ram_evidence(facts: Facts) -> str:
    sizes = f", {mem(facts.ram_used)} of {mem(facts.ram_total)}" if facts.ram_total else ""
    return f"ram {facts.ram_pct}%{sizes}"


def swap_evidence(facts: Facts) -> str:
    return f"swap {facts.swap_pct}%, {mem(facts.swap_used)} of {mem(facts.swap_total)}"


def sessions_evidence(facts: Facts) -> str:
    return f"{facts.claude} claude and {several(facts.codex, 'codex session')}"


def trend_evidence(facts: Facts, key: str, unit: str) -> str:
    return f"{key} {facts.deltas[key]:+d}{unit} over {several(facts.samples, 'sample')}"


RULES: tuple[Callable[[Facts], Finding | None], ...] = (
    memory_pressure, load_pressure, growing_trend, runaway_process, browser_helpers, duplicate_servers,
    orphan_servers, swap_residue,
)


def findings(snapshot: dict[str, object]) -> list[Finding]:
    """What the rules find, the weightiest first."""
    facts = Facts(snapshot)
    found = [finding for finding in (rule(facts) for rule in RULES) if finding]
    return sorted(found, key=lambda finding: (LEVELS.index(finding.level), -finding.share))


def analysis(snapshot: dict[str, object]) -> dict[str, object]:
    """The answer that the panel reads: a summary, one text for each finding, and one thing to look at."""
    found = findings(snapshot)
    counts = [(level, sum(finding.level == level for finding in found)) for level in LEVELS]
    plurals = {CRITICAL: "critical", WARNING: "warnings", INFO: "notes"}
    words = {CRITICAL: "critical", WARNING: "warning", INFO: "note"}
    summary = ", ".join(several(count, words[level], plurals[level]) for level, count in counts if count)
    return {
        "source": "local analyst",
        "summary": summary or "nothing stands out",
        "findings": [
            {
                "level": finding.level,
                "title": finding.title,
                "body": f"{finding.body}\nevidence: {' · '.join(finding.evidence)}\n"
                        f"observed footprint: {mem(finding.mb)}",
            }
            for finding in found
        ],
        "actions": [
            {
                "label": finding.label,
                "kind": "inspect",
                "target": finding.target,
                "est_mb": finding.mb,
                "reason": finding.reason,
                "risk": finding.risk,
            }
            for finding in found
        ],
    }


def analyze_input(descriptor: int) -> dict[str, object]:
    """The analysis of the snapshot that a descriptor gives; for one that can't be read, an answer that says
    why."""
    from ostrel_lib.jsontext import parse

    data = read_within(descriptor, MOST_BYTES)
    if data is None:
        return unreadable(f"it is larger than {MOST_BYTES >> 20} MiB")
    if data.count(b"{") + data.count(b"[") > MOST_CONTAINERS or data.count(b",") > MOST_VALUES:
        return unreadable("it holds more values than a snapshot does")
    try:
        snapshot = parse(data.decode("utf-8"))
    except ValueError as fault:
        return unreadable("it isn't UTF-8" if isinstance(fault, UnicodeError) else "it isn't JSON")
    if type(snapshot) is not dict:
        return unreadable("it isn't a JSON object")
    return analysis(snapshot)


def read_within(descriptor: int, most: int) -> bytes | None:
    """All that a descriptor gives, as far as it can be read; None for more than `most` bytes."""
    parts = []
    try:
        while part := os.read(descriptor, 1048576):
            most -= len(part)
            if most < 0:
                return None
            parts.append(part)
    except OSError:
        pass
    return b"".join(parts)


def unreadable(why: str) -> dict[str, object]:
    """The answer for an input that is no snapshot."""
    return {
        "source": "local analyst",
        "summary": "the snapshot can't be read",
        "findings": [{"level": WARNING, "title": "the snapshot can't be read", "body": f"Nothing was judged: {why}."}],
        "actions": [],
    }
