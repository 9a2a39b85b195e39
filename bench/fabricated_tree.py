# SPDX-License-Identifier: Apache-2.0
"""A made-up /proc of any size, with the mixture of a desktop on which agents work."""
from __future__ import annotations

import os

CHROME = "/opt/google/chrome/chrome"
MIXTURE = (
    # processes of a hundred, what the kernel calls them, their command line with "|" between arguments
    (30, "chrome", CHROME + " --type=renderer --crashpad-handler-pid=1234 --lang=en-US --no-zygote"),
    (8, "code", "/usr/share/code/code|--type=utility|--utility-sub-type=node.mojom.NodeService|--lang=en-US"),
    (4, "claude", "claude|--resume"),
    (2, "codex", "codex"),
    (12, "node", "node|/home/user/.npm/_npx/5f1c/node_modules/.bin/mcp-server-files|/home/user/work"),
    (4, "npm exec notes-", "npm exec notes-mcp"),
    (6, "python3", "/usr/bin/python3|/home/user/.local/bin/notes-mcp"),
    (10, "bash", "bash"),
    (20, "gvfsd", "/usr/libexec/gvfsd|--spawner|:1.8|/org/gtk/gvfs/exec_spaw/0"),
    (4, "systemd", "/usr/lib/systemd/systemd|--user"),
)


def fabricate(root: str, processes: int) -> None:
    """Lays down `root`/proc with so many processes, the servers below the agents."""
    agents = [100]
    commands = [(comm, command) for share, comm, command in MIXTURE for _ in range(share)]
    for place in range(processes):
        pid = 100 + place
        comm, command = commands[place * 37 % len(commands)]
        agent = comm in ("claude", "codex")
        parent = 1 if agent else agents[place % len(agents)]
        fields = [parent, 0, 0, 0, -1, 0, 0, 0, 0, 0, 40 + place, 20, 0, 0, 20, 0, 1, 0, 1000 + place]
        fields += [0] * 30
        folder = f"{root}/proc/{pid}"
        os.makedirs(folder)
        for name, text in (
            ("stat", f"{pid} ({comm}) S {' '.join(map(str, fields))}\n"),
            ("statm", f"99999 {500 + place % 97 * 300} 300 400 0 500 0\n"),
            ("cmdline", command.replace("|", "\0") + "\0"),
        ):
            with open(f"{folder}/{name}", "w", encoding="ascii") as file:
                file.write(text)
        if agent:
            agents.append(pid)
