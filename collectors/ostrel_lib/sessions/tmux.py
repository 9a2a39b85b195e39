# SPDX-License-Identifier: Apache-2.0
"""The panes of this user's tmux servers.

A server is asked through its own client, with nothing on the command line but fixed words, the path of a
socket that was found on this machine, and numbers. A pane is known by its server (process, time of start,
socket) and its number there, which that server never gives twice.
"""
from __future__ import annotations

import os
import stat

from ostrel_lib.files import network
from ostrel_lib.oneline import clean
from ostrel_lib.places import Places
from ostrel_lib.sessions.scene import GONE, PATIENCE, Listed, Scene, Selected, Terminal, key_of, owner_of
from ostrel_lib.tools import Outcome, find, run

PREFIX = "tmux"
MOST_SERVERS = 64
SERVER_NAME = b"tmux: server"
LISTENING = 0x10000  # the kernel's flag of a socket that takes connections

PANES = (
    "#{pid} #{start_time} #{session_id} #{window_id} #{pane_id} #{pane_pid} #{session_attached} "
    "#{window_index} #{pane_index} #{window_active} #{pane_active} "
    "#{session_name}:#{?#{==:#{pane_title},#{host}},#{window_name},#{pane_title}}"
)
"""One line for each pane of each session. A session's name holds no colon, and neither a name nor a title
can hold a line end. A pane that nobody gave a title bears the host's name, which says nothing."""
NUMBERS = 11
SIGILS = (b"", b"", b"$", b"@", b"%")

CLIENTS = "#{client_activity} #{client_pid} #{client_control_mode} #{session_id}"


class Server:
    """A tmux server that takes connections. `program` is the folder of the tmux that it was started from,
    whose client speaks its language; "" when that isn't known."""

    __slots__ = ("path", "pid", "program")

    def __init__(self, path: str, pid: int, program: str) -> None:
        self.path = path
        self.pid = pid
        self.program = program

    @property
    def name(self) -> str:
        """What the user called it."""
        return clean(os.path.basename(self.path), 60)


class Pane:
    """One pane in one session."""

    __slots__ = ("birth", "session", "window", "pane", "pid", "attached", "place", "shown", "title")

    def __init__(self, fields: list[bytes], session_name: str, title: str) -> None:
        self.birth = f"{int(fields[0])}.{int(fields[1])}"
        self.session, self.window, self.pane = (field.decode("ascii") for field in fields[2:5])
        self.pid = int(fields[5])
        self.attached = fields[6] != b"0"
        self.place = f"{clean(session_name, 60)}:{int(fields[7])}.{int(fields[8])}"
        self.shown = fields[9:11] == [b"1", b"1"]
        self.title = clean(title, 200)


def listed(scene: Scene) -> Listed:
    """The panes of all servers. One that is in several sessions is listed once, in a session that is looked
    at if there is one."""
    result = Listed()
    found, result.faults = servers(scene)
    if not found and not result.faults and not find("tmux", scene.places.path):
        result.absent = "tmux isn't installed"
    for server in found:
        panes, problem = panes_of(scene, server)
        if problem:
            result.faults.append(f"the tmux server “{server.name}”: {problem}")
        chosen: dict[str, Pane] = {}
        for pane in panes:
            if pane.pane not in chosen or (pane.attached and not chosen[pane.pane].attached):
                chosen[pane.pane] = pane
        result.terminals += [
            Terminal(handle_of(server, pane), label(server, pane), pane.pid, pane.attached)
            for pane in chosen.values()]
    return result


def select(scene: Scene, handle: str) -> Selected:
    """Makes a pane the present one of its window, and the window that of the session which was looked at
    last. Nothing is typed, and no client is moved to another session."""
    words = handle.split(":")
    server = next((server for server in servers(scene)[0] if words[3:] == [key_of(server.path)]), None)
    if not server:
        return Selected(problem=GONE)

    def ours() -> tuple[dict[str, Pane], str]:
        panes, problem = panes_of(scene, server)
        return {pane.session: pane for pane in panes if [pane.birth, pane.pane] == words[1:3]}, problem

    places, problem = ours()
    if problem or not places:
        return Selected(problem=f"The tmux server “{server.name}”: {problem}." if problem else GONE)
    clients = sorted((client for client in clients_of(scene, server) if client[2] in places), reverse=True)
    result = Selected(label(server, next(iter(places.values()))))
    if not clients:
        result.problem = f"No terminal is attached to {result.label} any more, so nothing was selected."
        return result
    session = clients[0][2]
    outcome = tmux(scene, server, "select-window", "-t", f"{session}:{places[session].window}", ";",
                   "select-pane", "-Z", "-t", places[session].pane)
    after, problem = ours()
    if session not in after or not after[session].shown:
        why = outcome.failure or problem or "it shows another one"
        result.problem = f"tmux didn't select {result.label}: {clean(why, 200)}."
    result.viewers = [(pid, 0) for _, pid, seen in clients if seen == session]
    return result


def handle_of(server: Server, pane: Pane) -> str:
    """What a pane is called from outside."""
    return f"{PREFIX}:{pane.birth}:{pane.pane}:{key_of(server.path)}"


def label(server: Server, pane: Pane) -> str:
    """What a pane is called for people."""
    place = pane.place if server.name == "default" else f"{server.name}/{pane.place}"
    return f"{place} · {pane.title}" if pane.title else place


def tmux(scene: Scene, server: Server, *words: str) -> Outcome:
    """Runs the client. Without -u it would spoil every letter beyond ASCII."""
    places = scene.places
    path = server.program + ":" + places.path if server.program else places.path
    asked = Places(home=places.home, path=path)
    asked.reader = places.reader
    return run(asked, ["tmux", "-u", "-S", server.path, *words], scene.deadline.left(PATIENCE))


def panes_of(scene: Scene, server: Server) -> tuple[list[Pane], str]:
    """A server's panes, session by session, and why there are none."""
    outcome = tmux(scene, server, "list-panes", "-a", "-F", PANES)
    if outcome.failure:
        return [], clean(outcome.failure, 200)
    panes = [pane for pane in map(parsed, outcome.out.split(b"\n")) if pane]
    if outcome.out.strip() and not panes:
        return [], "it printed something that isn't a list of panes"
    return panes, ""


def parsed(line: bytes) -> Pane | None:
    """A pane from its line; None for anything else."""
    fields = line.split(b" ", NUMBERS)
    names = fields[NUMBERS:]
    if not names or b":" not in names[0]:
        return None
    for place in range(NUMBERS):
        sigil = SIGILS[place] if place < len(SIGILS) else b""
        digits = fields[place][len(sigil):]
        if not (fields[place].startswith(sigil) and digits.isdigit() and len(digits) < 16):
            return None
    session, _, title = names[0].decode("utf-8", "replace").partition(":")
    return Pane(fields, session, title)


def clients_of(scene: Scene, server: Server) -> list[tuple[int, int, str]]:
    """Who looks at a server: when each was last used, its process, and the session. Programs that control
    tmux and draw their own windows aren't among them."""
    found = []
    for line in tmux(scene, server, "list-clients", "-F", CLIENTS).out.split(b"\n"):
        fields = line.split(b" ")
        if len(fields) == 4 and fields[0].isdigit() and fields[1].isdigit() and fields[2] in (b"0", b""):
            found.append((int(fields[0]), int(fields[1]), fields[3].decode("utf-8", "replace")))
    return found


def servers(scene: Scene) -> tuple[list[Server], list[str]]:
    """The servers that take connections, the default one first, and what is wrong with others. What a
    server left behind when it ended is passed over."""
    found: list[Server] = []
    faults = []
    for path in sockets(scene):
        pid, problem = owner_of(path)
        if problem:
            faults.append(f"the tmux server “{clean(os.path.basename(path), 60)}” {problem}")
        elif pid and len(found) < MOST_SERVERS:
            found.append(Server(path, pid, folder_of_program(scene, pid)))
    return found, faults


def sockets(scene: Scene) -> list[str]:
    """Where servers of this user may listen: in the folder that tmux itself uses, and wherever else a process
    of that name does."""
    base = scene.environ.get("TMUX_TMPDIR") or "/tmp"
    folder = f"{os.path.realpath(base)}/tmux-{os.getuid()}"
    found = []
    try:
        status = os.lstat(folder)
        if stat.S_ISDIR(status.st_mode) and status.st_uid == os.getuid():
            names = sorted(os.listdir(folder), key=lambda name: (name != "default", name))
            found = [f"{folder}/{name}" for name in names]
    except OSError:
        pass
    elsewhere = listening(scene)
    return list(dict.fromkeys(found + sorted(elsewhere)))


def listening(scene: Scene) -> list[str]:
    """The paths on which this user's processes of the server's name listen."""
    inodes = set()
    for process in scene.tree.processes:
        if process.comm != SERVER_NAME:
            continue
        folder = f"{scene.places.proc}/{process.pid}/fd/"
        try:
            for name in os.listdir(folder):
                target = os.readlink(folder + name)
                if target.startswith("socket:["):
                    inodes.add(target[8:-1].encode("ascii"))
        except OSError:
            continue
    found = []
    for line in network(scene.places.proc, "unix").split(b"\n") if inodes else ():
        fields = line.split(None, 7)
        if len(fields) == 8 and fields[6] in inodes and takes_connections(fields[3]):
            if fields[7][:1] == b"/":
                found.append(os.fsdecode(fields[7]))
    return found


def takes_connections(flags: bytes) -> bool:
    """Whether the kernel's flags of a socket say that it listens."""
    try:
        return bool(int(flags, 16) & LISTENING)
    except ValueError:
        return False


def folder_of_program(scene: Scene, pid: int) -> str:
    """The folder of the tmux that a server was started from; "" when it isn't one that is still there."""
    try:
        program = os.readlink(f"{scene.places.proc}/{pid}/exe")
    except OSError:
        return ""
    folder, _, name = program.rpartition("/")
    return folder if name == "tmux" and ":" not in folder and os.access(program, os.X_OK) else ""
