# SPDX-License-Identifier: Apache-2.0
"""Terminals as they are printed, each with the agent that works in it and the folder it works in."""
from __future__ import annotations

import os

from ostrel_lib.files import number, read
from ostrel_lib.oneline import clean
from ostrel_lib.processes import Process, after_name
from ostrel_lib.sessions.scene import Scene, Terminal
from ostrel_lib.tree import Tree

HERE = "local"
"""The host of every terminal that is listed."""
LONGEST_PATH = 1000


def rows(scene: Scene, terminals: list[Terminal]) -> list[dict[str, object]]:
    """The records of terminals. One without an agent has no `agentIdentity`."""
    agents = agents_in(scene.tree, {terminal.pid for terminal in terminals if terminal.pid})
    worktrees: dict[str, str] = {}
    found = []
    for terminal in terminals:
        agent = agents.get(terminal.pid)
        folder = folder_of(scene.places.proc, terminal.pid, agent)
        if folder not in worktrees:
            worktrees[folder] = worktree(folder)
        row: dict[str, object] = {
            "title": terminal.title, "handle": terminal.handle, "executionHostId": HERE,
            "connected": terminal.connected, "worktreePath": clean(worktrees[folder], LONGEST_PATH),
        }
        if agent:
            row["agentIdentity"] = scene.tree.kinds[agent.pid].agent.decode("ascii")
        found.append(row)
    return found


def agents_in(tree: Tree, pids: set[int]) -> dict[int, Process]:
    """The agent at work below each of the processes, or that a process is itself. Of several the one that is
    fewest steps away, then the one that was there first."""
    best: dict[int, tuple[int, int, Process]] = {}
    for session in tree.sessions():
        for steps, process in enumerate([session, *tree.ancestors(session)]):
            if process.pid in pids:
                known = best.get(process.pid)
                if not known or (steps, session.start) < known[:2]:
                    best[process.pid] = (steps, session.start, session)
                break
    return {pid: found[2] for pid, found in best.items()}


def folder_of(proc: str, pid: int, agent: Process | None) -> str:
    """The folder that a terminal's agent works in, else that of what is in its foreground, else of what was
    started in it; "" when none is told."""
    if not pid:
        return ""
    _, fields = after_name(read(f"{proc}/{pid}/stat", 4096))
    foreground = number(fields[5]) if len(fields) > 5 else 0
    for candidate in (agent.pid if agent else 0, foreground, pid):
        try:
            if candidate:
                return os.readlink(f"{proc}/{candidate}/cwd")
        except OSError:
            continue
    return ""


def worktree(folder: str) -> str:
    """The git work tree that a folder lies in; the folder itself when it lies in none."""
    place = folder
    while place not in ("", "/"):
        if os.path.lexists(place + "/.git"):
            return place
        place = os.path.dirname(place)
    return folder
