# SPDX-License-Identifier: Apache-2.0
"""The services at work: units of the service manager by its control groups, or, on a machine without one,
the processes that listen on a port."""
from __future__ import annotations

import os

from ostrel_lib.census import display_name, mib, text
from ostrel_lib.files import network, number, read_list
from ostrel_lib.processes import Process
from ostrel_lib.tree import Tree
from ostrel_lib.units import folders, has_systemd, listing, locate

DEEPEST = 8
"""Levels of control groups that are gone down."""

MOST_SERVICES = 300
MOST_HOLDERS = 100
MOST_LINKS = 20000
"""Processes, the largest, and files open in them, that are looked at in search of the sockets' owners."""

LISTENING = b"0A"  # the state of a socket in /proc/net/tcp


def services(tree: Tree, root: str, home: str, user: int) -> list[dict[str, object]]:
    """The snapshot's `services`, those of the user `user` first, each scope by name."""
    if not has_systemd(root):
        return listeners(tree, root + "/proc", user)
    groups = hierarchy(root + "/sys/fs/cgroup")
    places = (
        ("user", f"{groups}/user.slice/user-{user}.slice/user@{user}.service"),
        ("system", groups + "/system.slice"),
    )
    rows = []
    for scope, place in places:
        found: dict[str, list[int]] = {}
        gather(place, found, 0)
        listings = listing(folders(root, home, scope)) if found else []
        for unit in sorted(found):
            if found[unit]:
                rows.append(unit_row(tree, scope, unit, found[unit], locate(unit, listings)))
    return rows[:MOST_SERVICES]


def hierarchy(mount: str) -> str:
    """The control groups that the service manager keeps, which older systems have beside others."""
    for place in (mount, mount + "/systemd", mount + "/unified"):
        if os.path.isdir(place + "/system.slice"):
            return place
    return mount


def gather(folder: str, found: dict[str, list[int]], depth: int) -> None:
    """The services below a slice, with their processes."""
    for name in subfolders(folder):
        if name.endswith(".service"):
            found[name] = members(folder + "/" + name, 0)
        elif name.endswith(".slice") and depth < DEEPEST:
            gather(folder + "/" + name, found, depth + 1)


def members(folder: str, depth: int) -> list[int]:
    """The processes of a control group and of those below it."""
    words = read_list(folder + "/cgroup.procs").split()
    pids = [int(word) for word in words if word.isdigit() and len(word) < 10]
    if depth < DEEPEST:
        for name in subfolders(folder):
            pids += members(folder + "/" + name, depth + 1)
    return pids


def subfolders(folder: str) -> list[str]:
    """The folders in a folder, links left out; none when it can't be listed."""
    try:
        with os.scandir(folder) as entries:
            return [entry.name for entry in entries if entry.is_dir(follow_symlinks=False)]
    except OSError:
        return []


def unit_row(tree: Tree, scope: str, unit: str, pids: list[int], file: str) -> dict[str, object]:
    """One unit. Its oldest process is the main one."""
    listed = [tree.by_pid[pid] for pid in pids if pid in tree.by_pid]
    main = min(listed, key=lambda process: (process.start, process.pid), default=None)
    return {
        "name": unescaped(unit[:-len(".service")]),
        "scope": scope,
        "state": "running",
        "url": "",
        "pid": main.pid if main else min(pids),
        "rss": mib(sum(process.rss for process in listed)),
        "cpu": round(sum(process.cpu for process in listed), 1),
        "path": program_path(main) if main else "",
        "launch_agent": file or unit,
        "note": (f"{len(pids)} processes" if len(pids) > 1 else "") if main else "not shown to this user",
    }


def unescaped(name: str) -> str:
    """A unit's name with the signs that it is given for, told as \\x2d."""
    first, *rest = name.split("\\x")
    for part in rest:
        code = part[:2]
        plain = len(code) == 2 and all(sign in "0123456789abcdef" for sign in code) and int(code, 16) >= 32
        first += chr(int(code, 16)) + part[2:] if plain else "\\x" + part
    return first


def program_path(process: Process) -> str:
    """The program as it was started."""
    return text(process.cmdline.split(b"\0", 1)[0])


def listeners(tree: Tree, proc_root: str, user: int) -> list[dict[str, object]]:
    """The processes that listen on TCP ports, by name. Those of other users don't show what they hold, but to
    the superuser. Of several that share a socket the largest is told."""
    sockets: dict[bytes, str] = {}
    for name in ("tcp", "tcp6"):
        for line in network(proc_root, name).split(b"\n")[1:]:
            words = line.split()
            if len(words) > 9 and words[3] == LISTENING and user in (0, number(words[7])):
                address = endpoint(words[1])
                if address:
                    sockets[words[9]] = address
    rows = []
    left = MOST_LINKS
    for process in tree.processes[:MOST_HOLDERS]:
        if not sockets or left <= 0:
            break
        links = held(proc_root, process.pid)[:left]
        left -= len(links)
        found = [sockets.pop(link) for link in links if link in sockets]
        if found:
            rows.append(listener_row(tree, process, sorted(found, key=lambda at: (port(at), at))))
    return sorted(rows, key=lambda row: (row["name"], row["pid"]))[:MOST_SERVICES]


def held(proc_root: str, pid: int) -> list[bytes]:
    """What a process holds open: the number of a socket, and b"" for anything else. The links of its table
    are read and never opened."""
    folder = f"{proc_root}/{pid}/fd".encode()
    found = []
    try:
        for name in os.listdir(folder):
            target = os.readlink(folder + b"/" + name)
            found.append(target[8:-1] if target.startswith(b"socket:[") else b"")
    except OSError:  # another user's, or gone meanwhile
        pass
    return found


def listener_row(tree: Tree, process: Process, addresses: list[str]) -> dict[str, object]:
    """One process that listens."""
    kind = tree.kinds[process.pid]
    others = sorted({port(address) for address in addresses[1:]} - {port(addresses[0])})
    return {
        "name": text(kind.script) or display_name(process.comm, kind.program),
        "scope": "user",
        "state": "listening",
        "url": "tcp://" + addresses[0],
        "pid": process.pid,
        "rss": mib(process.rss),
        "cpu": process.cpu,
        "path": program_path(process),
        "launch_agent": "",
        "note": "also " + ", ".join(map(str, others)) if others else "",
    }


def endpoint(field: bytes) -> str:
    """Address and port from the kernel's form, words of four bytes turned around; "" for another form."""
    address, _, number = field.partition(b":")
    try:
        raw = bytes.fromhex(address.decode("ascii"))
        place = int(number, 16)
    except ValueError:
        return ""
    if len(raw) not in (4, 16):
        return ""
    raw = b"".join(raw[at:at + 4][::-1] for at in range(0, len(raw), 4))
    if len(raw) == 4:
        return ".".join(map(str, raw)) + f":{place}"
    words = [f"{raw[at] << 8 | raw[at + 1]:x}" for at in range(0, 16, 2)]
    if words[:7] == ["0"] * 7:
        return f"[::{'' if words[7] == '0' else words[7]}]:{place}"
    return f"[{':'.join(words)}]:{place}"


def port(address: str) -> int:
    """The port of an address."""
    return int(address.rpartition(":")[2])
