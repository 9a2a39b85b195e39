# SPDX-License-Identifier: Apache-2.0
"""The analyst's rules on load, busy processes, browsers and MCP servers."""
from __future__ import annotations

from ostrel_lib.facts import cores_of, memory, percent
from ostrel_lib.finding import (
    CRITICAL, INFO, WARNING, Finding, load_figures, mem, of_ram, processes, several,
)

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ostrel_lib.facts import Facts, Row

LOAD_HIGH = 150
LOAD_EXTREME = 300
"""Load of one minute, percent of the cores."""

BUSY = 90
"""Percent of one core from which a process does nothing but compute."""

LASTED = 0.8
"""The part of a process's own load that a load average shows once it has lasted 1.6 times the average's span,
since the kernel lets older load fade exponentially (1 - e^-1.6)."""

OTHERS = 2
"""How often the load may hold a program's own, until it says more of other programs."""

PARALLEL = 3
"""Busy processes of one name that look like a job split up rather than like one that ran away."""

MANY_HELPERS = 60
HEAVY_HELPERS = 25
HEAVY_SHARE = 25
"""Helpers that are many whatever they hold, and that are many once they hold such a percentage of memory."""

RAM_RAISED = 80
COPIES_LARGE = 256
"""MiB held by copies from which they are worth a warning."""


def load_pressure(facts: Facts) -> Finding | None:
    """More work than cores for minutes: real work, or processes that wait for the disk."""
    lasting = not facts.load_5 or facts.load_5 >= facts.cores
    if facts.load_pct < LOAD_HIGH or not lasting:
        return None
    extreme = facts.load_pct >= LOAD_EXTREME and facts.load_5 >= 2 * facts.cores
    families = facts.families(lambda family: family.cpu)
    working = cores_of(facts.rows)
    evidence = [load_figures(facts), f"the listed processes use {working:.1f} cores"]
    evidence += [f"{family.label} {family.cpu:.0f}% of a core" for family in families[:3]]
    if families and working * 2 >= facts.cores:
        first = families[0]
        cause = f"Most work is done by {first.label}, on {first.cpu / 100:.1f} cores."
        mb, label, target, reason = first.mb, first.label, first.label, first.advice
    else:
        cause = "Few cores do work, so the rest of the load waits, as a rule for the disk or for swap."
        mb, label, target = 0, "waiting processes", "load"  # a snapshot doesn't tell which ones wait
        reason = "Look for heavy reading and writing; more cores wouldn't help."
    return Finding(
        CRITICAL if extreme else WARNING, f"load is {facts.load_pct}% of the cores", cause, evidence, mb=mb,
        share=100, label=label, target=target, reason=reason, risk="stateful")


def runaway_process(facts: Facts) -> Finding | None:
    """The program that keeps most cores busy, if the load averages say that it has done so for minutes.

    One look at the processor can't tell a long job from a moment's work. It is a warning only when the load
    of five minutes is as high as the program alone would make it, and not so high that others must have.
    """
    busy: dict[str, list[Row]] = {}
    for row in facts.rows:
        if row.cpu >= BUSY:
            busy.setdefault(row.name, []).append(row)
    if not busy:
        return None
    name, rows = min(
        busy.items(), key=lambda entry: (len(entry[1]) >= PARALLEL, -cores_of(entry[1]), entry[0]))
    cores = cores_of(rows)
    job = len(rows) >= PARALLEL
    if facts.load_5 >= LASTED * cores:
        sure = not job and facts.load_5 <= OTHERS * cores
        span = "It has done so for minutes." if sure else "The load of the last minutes has other causes too."
    elif job or 0 < facts.load_1 < LASTED * cores:
        return None
    else:
        sure = False
        span = "It has done so for a minute or two." if facts.load_1 else "One look can't tell for how long."
    rows.sort(key=lambda row: (-row.cpu, row.pid))
    evidence = [f"{name} pid {row.pid or '?'} {row.cpu:.0f}% of a core, {mem(row.mb)}" for row in rows[:3]]
    likely = "That many look like one job split up." if job else "Unless it was given work, it has run away."
    return Finding(
        WARNING if sure else INFO,
        f"{name} keeps {cores:.1f} cores busy" if len(rows) == 1 else f"{len(rows)} × {name} keep cores busy",
        f"{span} {likely}", evidence + [load_figures(facts)], mb=memory(rows),
        share=percent(cores, facts.cores), label=name, target=rows[0].pid or name,
        reason=f"See what {name} works on; it may be doing what it was asked to.", risk="stateful")


def browser_helpers(facts: Facts) -> Finding | None:
    """Browsers run more helper processes than the machine has room for."""
    count = facts.helper_count
    helpers = facts.helpers()
    mb = memory(helpers)
    heavy = count >= HEAVY_HELPERS and facts.share(mb) >= HEAVY_SHARE
    if count < MANY_HELPERS and not heavy:
        return None
    evidence = [several(count, "helper")] + [f"{name} {number}" for name, number in facts.bundles]
    evidence.append(f"{processes(helpers)} listed, {mem(mb)}{of_ram(facts, mb)}")
    most = f", {facts.bundles[0][0]} with the most" if facts.bundles else ""
    return Finding(
        WARNING if heavy or facts.ram_pct >= RAM_RAISED else INFO, f"{count} browser helpers{most}",
        "Each open page, extension and embedded view keeps one. Closing pages gives them back; ending helpers"
        " breaks pages.",
        evidence, mb=mb, share=facts.share(mb), label="browser helpers", target="chromium",
        reason="Close pages and windows that aren't used, in the browser itself.", risk="stateful")


def duplicate_servers(facts: Facts) -> Finding | None:
    """One agent runs a server more than once, or a server has more copies than there are sessions."""
    groups = facts.fan["codex_mcp_duplicates"]
    copies: dict[str, list[Row]] = {}
    for row in facts.servers():
        if row.command:
            copies.setdefault(row.command, []).append(row)
    # A server that forked is listed more than once, though it is one server.
    apart = len(facts.servers()) <= facts.mcp
    surplus = [rows for rows in copies.values() if apart and len(rows) > max(1, facts.sessions)]
    if not groups and not surplus:
        return None
    surplus.sort(key=lambda rows: (-memory(rows), rows[0].name))
    held = facts.fan["codex_mcp_duplicate_mb"] if groups else 0
    mb = max(held, sum(memory(rows) - max(row.mb for row in rows) for rows in surplus))
    evidence = [several(facts.mcp, "mcp server"), sessions(facts)]
    if groups:
        evidence.append(f"{several(groups, 'server')} more than once below codex, the copies {mem(held)}")
    evidence += [f"{rows[0].name} × {len(rows)} {mem(memory(rows))}" for rows in surplus[:3]]
    return Finding(
        WARNING if mb >= COPIES_LARGE else INFO,
        several(max(groups, len(surplus)), "MCP server runs in copies", "MCP servers run in copies"),
        ("There are more copies than sessions: some were started twice or left behind." if surplus
         else "An agent has started the same server more than once.")
        + " A copy ends with the session that owns it.",
        evidence, mb=mb, share=facts.share(mb), label="MCP server copies", target="mcp",
        reason="Find the sessions that own the copies, and close those that aren't used.", risk="restartable")


def orphan_servers(facts: Facts) -> Finding | None:
    """MCP servers that run below no agent."""
    fan = facts.fan
    owned = fan["codex_mcp"] + fan["claude_mcp"]
    alone = facts.sessions_known and not facts.sessions and not owned
    count = facts.mcp if alone else fan["other_mcp"]
    if not count:
        return None
    rows = [] if owned else facts.servers()
    mb = memory(rows)
    evidence = [several(facts.mcp, "mcp server"), f"{fan['other_mcp']} below no agent", sessions(facts)]
    evidence.append(f"{processes(rows)} listed, {mem(mb)}" if rows else "their memory isn't told apart")
    return Finding(
        WARNING if alone else INFO, several(count, "MCP server") + " without an agent",
        ("No agent session is there to use them." if alone else
         "They run below neither claude nor codex: another program uses them, or their session is gone.")
        + " The MCP audit tells which ones lost their parent.",
        evidence, mb=mb, share=facts.share(mb), label="servers without an agent", target="mcp",
        reason="Run the MCP audit: it lists servers whose parent is gone, and stops none.",
        risk="restartable")


def sessions(facts: Facts) -> str:
    """How many agents are at work."""
    return f"{several(facts.claude, 'claude session')}, {facts.codex} codex"
