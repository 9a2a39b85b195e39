# SPDX-License-Identifier: Apache-2.0
"""The processes as the snapshot tells them: rows, agent sessions and counts by family."""
from __future__ import annotations

from ostrel_lib import families
from ostrel_lib.families import Kind
from ostrel_lib.processes import Process
from ostrel_lib.tree import Tree

TOP = 40
"""Rows that a list by memory, and one by processor share, hold at least."""

BYTES_PER_MIB = 1048576
LONGEST_COMM = 15
LONGEST_LABEL = 40
MAIN_THREADS = (b"MainThread", b"node-MainThread")
"""What some runtimes call themselves; it doesn't tell one program from another."""

UNPRINTABLE = bytes(63 if byte < 32 or byte == 127 else byte for byte in range(256))
REPL_WORDS = (b"node_repl", b"node-repl", b"js_repl", b"js-repl")


def census(tree: Tree) -> dict[str, object]:
    """The keys of the snapshot that come from the list of processes."""
    kinds = tree.kinds
    sessions = tree.sessions()
    counts = {"claude": 0, "codex": 0}
    for process in sessions:
        counts[kinds[process.pid].agent.decode()] += 1
    grouped = {"claude": 0, "runtime": 0, "app": 0}
    for kind in kinds.values():
        if kind.group in grouped:
            grouped[kind.group] += 1
    return {
        "fan": fan(tree),
        "sessions": counts,
        "procs": [row(process, kinds[process.pid]) for process in top(tree.processes)],
        "live_sessions": [
            {**row(process, kinds[process.pid]), "name": kinds[process.pid].agent.decode()}
            for process in sessions
        ],
        "groups": grouped,
    }


def top(by_rss: list[Process]) -> list[Process]:
    """The largest and the busiest processes together, the largest first."""
    busiest = sorted(by_rss, key=lambda process: -process.cpu)[:TOP]
    chosen = {process.pid for process in busiest}
    return [process for place, process in enumerate(by_rss) if place < TOP or process.pid in chosen]


FAMILIES = {
    "browser": lambda kind: kind.browser,
    "node": lambda kind: families.runtime_name(kind.program) in (b"node", b"nodejs")
    and not kind.agent and not kind.helper,
    "python3": lambda kind: families.runtime_name(kind.program) == b"python",
    "claude": lambda kind: kind.agent == b"claude" and not kind.helper,
    "codex": lambda kind: kind.agent == b"codex" and not kind.helper,
    "chromium": lambda kind: kind.helper,
    "qmd": lambda kind: kind.name() == b"qmd",
}
"""What is counted by the program alone. A process may be in several, and a server is in its runtime's too."""

FAMILIES_IF_ANY = ("qmd", "codex_node_repl")
"""Families that most machines don't have; they are told only where there are some."""


def fan(tree: Tree) -> dict[str, object]:
    """Processes by family. An MCP server belongs to the agent that it runs below."""
    kinds = tree.kinds
    servers = [(server, tree.owner(server)) for server in tree.servers()]
    by_agent = {b"codex": 0, b"claude": 0, b"": 0}
    for _, owner in servers:
        by_agent[kinds[owner.pid].agent if owner else b""] += 1
    groups, mebibytes = duplicates(
        [(server, owner.pid) for server, owner in servers if owner and kinds[owner.pid].agent == b"codex"])
    counts = {name: sum(map(belongs, kinds.values())) for name, belongs in FAMILIES.items()}
    counts["codex_node_repl"] = sum(is_codex_repl(tree, process) for process in tree.processes)
    bundles: dict[str, int] = {}
    for process in tree.processes:
        kind = kinds[process.pid]
        if kind.helper:
            name = label(families.bundle(kind, process.comm, process.cmdline))
            bundles[name] = bundles.get(name, 0) + 1
    return {
        "mcp": len(servers),
        "codex_mcp": by_agent[b"codex"],
        "claude_mcp": by_agent[b"claude"],
        "other_mcp": by_agent[b""],
        "codex_mcp_duplicates": groups,
        "codex_mcp_duplicate_mb": mebibytes,
        **{name: count for name, count in counts.items() if count or name not in FAMILIES_IF_ANY},
        "chromium_bundles": dict(sorted(bundles.items(), key=lambda bundle: (-bundle[1], bundle[0]))),
    }


def is_codex_repl(tree: Tree, process: Process) -> bool:
    """Whether a process is the interpreter of scripts that Codex keeps beside a session."""
    kind = tree.kinds[process.pid]
    if families.runtime_name(kind.program) not in families.SCRIPT_RUNTIMES or kind.agent:
        return False
    if not any(word in process.cmdline for word in REPL_WORDS):
        return False
    owner = tree.owner(process)
    return owner is not None and tree.kinds[owner.pid].agent == b"codex"


def duplicates(servers: list[tuple[Process, int]]) -> tuple[int, int]:
    """How many servers run more than once below one and the same agent, and the memory of their copies, the
    largest of each left out, in MiB. Takes each server with its agent's number, the largest first; a server
    is known by its command line."""
    copies: dict[tuple[int, bytes], list[int]] = {}
    for server, agent in servers:
        copies.setdefault((agent, server.cmdline), []).append(server.rss)
    several = [sizes for sizes in copies.values() if len(sizes) > 1]
    return len(several), mib(sum(sum(sizes[1:]) for sizes in several))


def row(process: Process, kind: Kind) -> dict[str, object]:
    """One process as an element of `procs`."""
    return {
        "rss": mib(process.rss),
        "pid": str(process.pid),
        "name": display_name(process.comm, kind.program),
        "grp": kind.group,
        "cmd": text(process.cmdline.replace(b"\0", b" ")),
        "cpu": process.cpu,
    }


def display_name(comm: bytes, program: bytes) -> str:
    """The short name of a process: the kernel's, unless that is cut short or says nothing of the program."""
    cut_short = len(comm) >= LONGEST_COMM and program.startswith(comm)
    if program and (cut_short or not comm or comm in MAIN_THREADS):
        comm = program
    return text(comm.translate(UNPRINTABLE)) or "?"


def label(name: bytes) -> str:
    """A program's name as it stands within texts: in one line, and not longer than names are meant to be."""
    shown = text(name.translate(UNPRINTABLE))
    return (shown if len(shown) <= LONGEST_LABEL else shown[:LONGEST_LABEL - 1] + "…") or "?"


def text(raw: bytes) -> str:
    """Bytes of a name or command line as text; what isn't UTF-8 becomes replacement characters."""
    return raw.decode("utf-8", "replace")


def mib(size: int) -> int:
    """Bytes as whole MiB, to the nearest."""
    return (size + BYTES_PER_MIB // 2) // BYTES_PER_MIB
