# SPDX-License-Identifier: Apache-2.0
"""Agent sessions and MCP servers: which servers have lost their agent, and which sessions nobody uses.

A session counts as idle by its terminal: the kernel notes, to eight seconds, when something was last typed
into or written to one. An agent at work writes. A session without a terminal, or with work that was started
lately below it, isn't called idle.
"""
from __future__ import annotations

import os
import stat

from ostrel_lib import families
from ostrel_lib.census import Kind
from ostrel_lib.files import fraction, number, read
from ostrel_lib.janitor.people import user_numbers
from ostrel_lib.janitor.uses import read_whole
from ostrel_lib.processes import after_name, first_look, read_details

TYPE_CHECKING = False
if TYPE_CHECKING:
    from ostrel_lib.processes import Process

IDLE_MINUTES = 90
MOST_ANCESTORS = 64
REAPERS = frozenset((b"systemd", b"init", b"tini", b"dumb-init", b"docker-init", b"catatonit"))
"""Programs that the children of an ended process are handed to, besides the first process."""
SHELLS = frozenset((b"sh", b"bash", b"dash", b"zsh", b"fish", b"busybox"))


class Crew:
    """The processes of one look with what each was recognised as. `stats` are their stat files, `user` the
    number of the user who looks, `root` where /proc is."""

    __slots__ = ("processes", "kinds", "stats", "root", "user")

    def __init__(self, proc_root: str) -> None:
        self.root = proc_root
        self.user = b"%d" % os.getuid()
        self.processes: dict[int, Process] = {}
        self.kinds: dict[int, Kind] = {}
        self.stats: dict[int, bytes] = {}
        try:
            folder = os.open(proc_root, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
        except OSError:
            return
        try:
            for text, _, process in first_look(folder, lambda: 0.0):
                read_details(folder, process)
                self.processes[process.pid] = process
                self.kinds[process.pid] = Kind(process.cmdline)
                self.stats[process.pid] = text
        finally:
            os.close(folder)

    def servers(self) -> list[Process]:
        """The MCP servers, the largest first."""
        found = [process for process in self.processes.values() if self.kinds[process.pid].mcp]
        return sorted(found, key=lambda process: (-process.rss, process.pid))

    def orphans(self) -> list[Process]:
        """The MCP servers whose parent is gone, the largest first."""
        return [server for server in self.servers() if self.is_orphan(server)]

    def is_orphan(self, server: Process) -> bool:
        """Whether a server, or the launcher that it was started through, was left behind. A server that is a
        service of its own was started by the service manager on purpose."""
        process = server
        for _ in range(MOST_ANCESTORS):
            if process.ppid == 1 and not self.is_at_work(1):
                return not self.is_service(server.pid)
            parent = self.processes.get(process.ppid)
            if parent is None:
                return False  # it can't be seen, which doesn't mean that it is gone
            if self.kinds[parent.pid].program in REAPERS:
                return not self.is_service(server.pid)
            if not self.only_launches(parent.pid):
                return False
            process = parent
        return False

    def is_at_work(self, pid: int) -> bool:
        """Whether a process is an agent or a server, as the first process of a container can be."""
        kind = self.kinds.get(pid)
        return kind is not None and (kind.agent != b"" or kind.mcp)

    def only_launches(self, pid: int) -> bool:
        """Whether a process does nothing but start another: a package launcher, or a shell that was given its
        command."""
        program = self.kinds[pid].program
        if program in SHELLS:
            second = self.processes[pid].cmdline.split(b"\0", 2)[1:2]
            return bool(second) and second[0][:1] == b"-" and b"c" in second[0]
        return program in families.LAUNCHERS

    def is_service(self, pid: int) -> bool:
        """Whether the service manager runs a process as a service's."""
        lines = read(f"{self.root}/{pid}/cgroup", 4096).split(b"\n")
        units = [line.split(b":", 2)[-1].rstrip(b"/").rsplit(b"/", 1)[-1] for line in lines]
        return any(unit.endswith(b".service") and not unit.startswith(b"user@") for unit in units)

    def owner(self, process: Process) -> int:
        """The pid of the agent that a process runs below, 0 for none."""
        for _ in range(MOST_ANCESTORS):
            parent = self.processes.get(process.ppid)
            if parent is None:
                return 0
            kind = self.kinds[parent.pid]
            if kind.agent and not kind.mcp:
                return parent.pid
            process = parent
        return 0

    def idle_sessions(self, now: float) -> dict[int, int]:
        """This user's agents that nobody has used for `IDLE_MINUTES`, by pid, with the minutes. `now` is in
        seconds since 1970."""
        ticks = os.sysconf("SC_CLK_TCK")
        uptime = fraction(read(self.root + "/uptime", 256).split(b" ", 1)[0])
        youngest: dict[int, int] = {}
        for process in self.processes.values():
            owner = self.owner(process)
            youngest[owner] = max(youngest.get(owner, 0), process.start)
        found = {}
        for pid, kind in self.kinds.items():
            if kind.session and user_numbers(read_whole(f"{self.root}/{pid}/status"))[:1] == [self.user]:
                start = max(self.processes[pid].start, youngest.get(pid, 0))
                seconds = min(self.terminal_silence(pid, now), uptime - start / ticks)
                if seconds >= IDLE_MINUTES * 60:
                    found[pid] = int(seconds) // 60
        return found

    def terminal_silence(self, pid: int, now: float) -> float:
        """Seconds since a process's terminal was last used; 0 when it has none, or none can be found."""
        _, fields = after_name(self.stats[pid])
        device = number(fields[4])
        for descriptor in ("0", "1", "2") if device else ():
            try:
                status = os.stat(f"{self.root}/{pid}/fd/{descriptor}")
            except OSError:
                continue
            if stat.S_ISCHR(status.st_mode) and status.st_rdev == device:
                return max(0.0, now - max(status.st_atime, status.st_mtime))
        return 0.0

    def starts_itself(self, pid: int) -> bool:
        """Whether an agent is the first of its session, and not what the same agent forked or started of
        itself."""
        parent = self.kinds.get(self.processes[pid].ppid)
        return parent is None or not parent.session or parent.agent != self.kinds[pid].agent


def offered(crew: Crew, depth: str, now: float) -> list[tuple[int, str]]:
    """The servers that a depth proposes to stop, each with the reason. "light" are those whose parent is
    gone, "deep" also those of idle sessions."""
    found = [(server.pid, "its parent is gone") for server in crew.orphans()]
    if depth == "deep":
        idle = crew.idle_sessions(now)
        for server in crew.servers():
            owner = crew.owner(server)
            if owner in idle:
                found.append((server.pid, f"its agent is idle for {idle[owner]} min"))
    return found
