# SPDX-License-Identifier: Apache-2.0
"""What the processes are to each other: which one stands for an agent's session, which ones are servers, and
which agent a server runs below.

A process whose parent isn't listed (ended, or not shown to this user) stands at the top of its tree.
"""
from __future__ import annotations

import os

from ostrel_lib.families import CONTAINER_SHIMS, Kind
from ostrel_lib.processes import Process

MOST_ANCESTORS = 64
"""Steps toward the root; more are a circle, made of numbers that were used again."""

SAME_START = 10 * os.sysconf("SC_CLK_TCK")
"""Clock ticks that a container's program may start after its client."""


class Tree:
    """The processes with their kinds, the largest first. `kinds` and `by_pid` go by process number."""

    __slots__ = ("processes", "by_pid", "kinds")

    def __init__(self, processes: list[Process]) -> None:
        self.processes = sorted(processes, key=lambda process: (-process.rss, process.pid))
        self.by_pid = {process.pid: process for process in self.processes}
        self.kinds = {process.pid: Kind(process.cmdline) for process in self.processes}

    def sessions(self) -> list[Process]:
        """The processes that stand for an agent's session each.

        A start script and the program it starts are one session, told by the program, which does the work; so
        are an agent and what it forks of itself, told by the first. An agent that was started through a shell
        of another one is a session of its own.
        """
        kinds = self.kinds
        candidates = [process for process in self.processes if kinds[process.pid].session]
        started = {
            (process.ppid, kinds[process.pid].agent)
            for process in candidates if not kinds[process.pid].scripted
        }
        found = []
        for process in candidates:
            kind = kinds[process.pid]
            parent = kinds.get(process.ppid)
            if kind.scripted and (process.pid, kind.agent) in started:
                continue
            if (parent is None or not parent.session or parent.agent != kind.agent
                    or (parent.scripted and not kind.scripted)):
                found.append(process)
        return found

    def servers(self) -> list[Process]:
        """The MCP servers, each once: not what a server starts of itself under its own name, and not what
        runs in a container for a client that is listed."""
        kinds = self.kinds
        servers = []
        for process in self.processes:
            kind, parent = kinds[process.pid], kinds.get(process.ppid)
            if kind.mcp and not (parent is not None and parent.mcp and parent.name() == kind.name()):
                servers.append(process)
        clients = sorted(process.start for process in servers if kinds[process.pid].client)
        if not clients:
            return servers
        contained = [process for process in servers if self.is_contained(process)]
        served = set()
        for process in sorted(contained, key=lambda process: (process.start, process.pid)):
            while clients and clients[0] < process.start - SAME_START:
                clients.pop(0)
            if clients and clients[0] <= process.start:
                clients.pop(0)
                served.add(process.pid)
        return [process for process in servers if process.pid not in served]

    def is_contained(self, process: Process) -> bool:
        """Whether a process runs in a container."""
        return any(self.kinds[parent.pid].program in CONTAINER_SHIMS for parent in self.ancestors(process))

    def owner(self, process: Process) -> Process | None:
        """The agent that a process runs below, the nearest one; None without one."""
        for parent in self.ancestors(process):
            kind = self.kinds[parent.pid]
            if kind.agent and not kind.mcp:
                return parent
        return None

    def ancestors(self, process: Process) -> list[Process]:
        """The processes above one, its parent first."""
        found: list[Process] = []
        for _ in range(MOST_ANCESTORS):
            parent = self.by_pid.get(process.ppid)
            if parent is None:
                break
            found.append(parent)
            process = parent
        return found
