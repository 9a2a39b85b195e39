# SPDX-License-Identifier: Apache-2.0
"""The processes as the snapshot tells them: rows, agent sessions and counts by family."""
from __future__ import annotations

from ostrel_lib import families
from ostrel_lib.processes import Process

TOP = 40
"""Rows that a list by memory, and one by processor share, hold at least."""

BYTES_PER_MIB = 1048576
LONGEST_COMM = 15
MAIN_THREADS = (b"MainThread", b"node-MainThread")
"""What some runtimes call themselves; it doesn't tell one program from another."""
MOST_ANCESTORS = 64

UNPRINTABLE = bytes(63 if byte < 32 or byte == 127 else byte for byte in range(256))


class Kind:
    """What one process was recognised as. `scripted` tells an agent's script from its program."""

    __slots__ = ("program", "agent", "scripted", "session", "mcp", "helper", "group")

    def __init__(self, cmdline: bytes) -> None:
        argv = cmdline.split(b"\0") if cmdline else []
        self.program = families.program(argv)
        self.agent, place = families.agent(argv, self.program)
        self.scripted = place > 1
        self.helper = families.is_chromium_helper(cmdline)
        self.mcp = families.mentions_mcp(cmdline) and families.is_mcp_server(argv, self.program)
        self.session = (
            self.agent != b"" and not self.mcp and not self.helper and families.is_session(argv, place)
        )
        self.group = families.group(argv, self.program, self.agent, self.mcp)


def census(processes: list[Process]) -> dict[str, object]:
    """The keys of the snapshot that come from the list of processes."""
    by_rss = sorted(processes, key=lambda process: (-process.rss, process.pid))
    kinds: dict[int, Kind] = {process.pid: Kind(process.cmdline) for process in by_rss}
    by_pid = {process.pid: process for process in by_rss}
    sessions = [process for process in by_rss if stands_for_session(process, kinds, by_pid)]
    servers = [process for process in by_rss if kinds[process.pid].mcp]
    counts = {"claude": 0, "codex": 0}
    for process in sessions:
        counts[kinds[process.pid].agent.decode()] += 1
    return {
        "fan": fan(by_rss, servers, kinds, by_pid),
        "sessions": counts,
        "procs": [row(process, kinds[process.pid]) for process in top(by_rss)],
        "live_sessions": [
            {**row(process, kinds[process.pid]), "name": kinds[process.pid].agent.decode()}
            for process in sessions
        ],
        "groups": {
            name: sum(kind.group == name for kind in kinds.values()) for name in ("claude", "runtime", "app")
        },
        "verdict": {
            "level": "ok",
            "headline": "",
            "cause": "",
            "per_sess": round(len(servers) / len(sessions), 2) if sessions else 0.0,
        },
    }


def top(by_rss: list[Process]) -> list[Process]:
    """The largest and the busiest processes together, the largest first."""
    busiest = sorted(by_rss, key=lambda process: -process.cpu)[:TOP]
    chosen = {process.pid for process in busiest}
    return [process for place, process in enumerate(by_rss) if place < TOP or process.pid in chosen]


def stands_for_session(
    process: Process, kinds: dict[int, Kind], by_pid: dict[int, Process]
) -> bool:
    """Whether the process is the one that stands for an agent's session.

    A start script and the program it starts are one session, told by the program, which does the work; so are
    an agent and what it forks of itself, told by the first. An agent that was started through a shell of
    another one is a session of its own.
    """
    kind = kinds[process.pid]
    if not kind.session:
        return False
    parent = kinds.get(process.ppid)
    if parent and parent.session and parent.agent == kind.agent and (kind.scripted or not parent.scripted):
        return False
    if not kind.scripted:
        return True
    return not any(
        child.ppid == process.pid and kinds[child.pid].session and not kinds[child.pid].scripted
        and kinds[child.pid].agent == kind.agent
        for child in by_pid.values()
    )


def owner(process: Process, kinds: dict[int, Kind], by_pid: dict[int, Process]) -> bytes:
    """The agent that a process runs below; b"" for none."""
    for _ in range(MOST_ANCESTORS):
        parent = by_pid.get(process.ppid)
        if parent is None:
            return b""
        kind = kinds[parent.pid]
        if kind.agent and not kind.mcp:
            return kind.agent
        process = parent
    return b""


def fan(
    processes: list[Process],
    servers: list[Process],
    kinds: dict[int, Kind],
    by_pid: dict[int, Process],
) -> dict[str, object]:
    """Processes by family. An MCP server belongs to the agent that it runs below."""
    owners = {server.pid: owner(server, kinds, by_pid) for server in servers}
    groups, mebibytes = duplicates([server for server in servers if owners[server.pid] == b"codex"])
    bundles: dict[str, int] = {}
    counts = {"node": 0, "python3": 0, "claude": 0, "chromium": 0}
    for process in processes:
        kind = kinds[process.pid]
        runtime = families.runtime_name(kind.program)
        if kind.helper:
            counts["chromium"] += 1
            bundle = text(kind.program)
            bundles[bundle] = bundles.get(bundle, 0) + 1
        elif kind.agent == b"claude":
            counts["claude"] += 1
        elif runtime in (b"node", b"nodejs"):
            counts["node"] += 1
        elif runtime == b"python":
            counts["python3"] += 1
    return {
        "mcp": len(servers),
        "codex_mcp": sum(agent == b"codex" for agent in owners.values()),
        "claude_mcp": sum(agent == b"claude" for agent in owners.values()),
        "other_mcp": sum(not agent for agent in owners.values()),
        "codex_mcp_duplicates": groups,
        "codex_mcp_duplicate_mb": mebibytes,
        **counts,
        "chromium_bundles": bundles,
    }


def duplicates(servers: list[Process]) -> tuple[int, int]:
    """How many command lines run more than once, and the memory of their copies, the largest of each left
    out, in MiB. Takes the servers with the largest first."""
    copies: dict[bytes, list[int]] = {}
    for server in servers:
        copies.setdefault(server.cmdline, []).append(server.rss)
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


def text(raw: bytes) -> str:
    """Bytes of a name or command line as text; what isn't UTF-8 becomes replacement characters."""
    return raw.decode("utf-8", "replace")


def mib(size: int) -> int:
    """Bytes as whole MiB, to the nearest."""
    return (size + BYTES_PER_MIB // 2) // BYTES_PER_MIB
