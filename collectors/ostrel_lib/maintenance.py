# SPDX-License-Identifier: Apache-2.0
"""The two commands that look after things: the audit of MCP servers, which only reads, and the compaction of
the collector's own samples, which keeps all of them in a backup."""
from __future__ import annotations

import os
import time

from ostrel_lib import history_file as history
from ostrel_lib.history_file import reason
from ostrel_lib.owned import make_folder

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator

    from ostrel_lib.processes import Process
    from ostrel_lib.tree import Tree

SAMPLES_KEPT = 120
LOCK_WAIT = 3.0
"""Seconds that a compaction waits for a writer; a sample takes less than a millisecond."""

COPY_BLOCK = 1048576

INITS = frozenset((
    b"systemd", b"init", b"tini", b"dumb-init", b"docker-init", b"catatonit", b"runit", b"openrc-init",
    b"s6-svscan", b"launchd",
))
"""Programs that become the parent of what lost its own: the first process, or a user's service manager."""

LONGEST_COMMAND = 200


def clean(proc_root: str = "/proc") -> dict[str, object]:
    """The MCP servers that run, and those of them whose parent is gone. Reads; stops nothing."""
    from ostrel_lib.census import display_name, mib, text
    from ostrel_lib.processes import look_twice
    from ostrel_lib.tree import Tree

    tree = Tree(look_twice(proc_root, time.monotonic, lambda _: None, window=0))
    servers = tree.servers()
    detached = [server for server in servers if is_detached(server, tree, proc_root)]
    return {
        "mcp_processes": len(servers),
        "found": len(detached),
        "terminated": 0,
        "detached": [
            {
                "pid": server.pid,
                "name": display_name(server.comm, tree.kinds[server.pid].program),
                "rss": mib(server.rss),
                "cmd": text(server.cmdline.replace(b"\0", b" "))[:LONGEST_COMMAND],
            }
            for server in detached
        ],
    }


def is_detached(server: Process, tree: Tree, proc_root: str) -> bool:
    """Whether the one that started a server is gone.

    A launcher or a shell between the two is part of the start: it is their topmost that lost its parent. A
    server that a service manager started itself is where it belongs, and of a parent that this user isn't
    shown nothing can be said.
    """
    from ostrel_lib.families import LAUNCHERS
    from ostrel_lib.units import SHELLS

    top, parent = server, None
    for parent in tree.ancestors(server):
        kind = tree.kinds[parent.pid]
        if parent.pid == 1 or not (kind.mcp or kind.program in LAUNCHERS or kind.program in SHELLS):
            break
        top, parent = parent, None
    adopted = top.ppid == 1 if parent is None else tree.kinds[parent.pid].program in INITS
    return adopted and not is_service(top.pid, proc_root)


def is_service(pid: int, proc_root: str) -> bool:
    """Whether a process is the main one of a service unit: in the unit's control group, and leading a session
    of its own, as service managers start them."""
    from ostrel_lib.files import number, read
    from ostrel_lib.processes import after_name

    folder = f"{proc_root}/{pid}/"
    if not any(line.endswith(b".service") for line in read(folder + "cgroup").split(b"\n")):
        return False
    _, fields = after_name(read(folder + "stat"))
    return len(fields) > 3 and number(fields[3]) == pid


def history_clean(home: str, apply: bool) -> dict[str, object]:
    """Compacts the saved samples to the latest, or tells what that would come to. Before anything goes, the
    whole file stands in a backup beside it; without one nothing is changed. `status` says what was done."""
    folder = history.folder_of(home)
    answer: dict[str, object] = {"status": "no history", "before_bytes": 0, "after_bytes": 0}
    lock = None
    try:
        if not os.path.lexists(os.path.join(folder, history.NAME)):
            return answer
        if apply:
            make_folder(folder)
            lock = history.take_lock(folder, LOCK_WAIT)
            if lock is None:
                refusal = "unchanged, another program holds the history"
                return {**answer, **measured(folder), "status": refusal}
        return {**answer, **compacted(folder, apply)}
    except OSError as fault:
        return {**answer, **measured(folder), "status": "unchanged, " + reason(fault)}
    finally:
        if lock is not None:
            os.close(lock)


def compacted(folder: str, apply: bool) -> dict[str, object]:
    """What compacting comes to, and the deed if `apply`, under the caller's lock."""
    path = os.path.join(folder, history.NAME)
    file = history.open_regular(path)
    try:
        state = os.fstat(file)
        before = state.st_size
        lines = [line + b"\n" for line, _ in history.latest(file, SAMPLES_KEPT)]
        kept = b"".join(lines)
        after = len(kept)
        answer: dict[str, object] = {"before_bytes": before, "after_bytes": after, "samples": len(lines)}
        if after >= before:  # no line would go; the last may lack its end
            return {**answer, "status": "already compact", "after_bytes": before}
        if not apply:
            return {**answer, "status": "preview"}

        def changed() -> bool:
            now = os.lstat(path)
            return (now.st_ino, now.st_size, now.st_mtime_ns) != (state.st_ino, before, state.st_mtime_ns)

        unchanged = {"before_bytes": before, "after_bytes": before}
        try:
            name = backup_name(folder)
            if history.replace(folder, name, blocks(file)) != before:
                return {**unchanged, "status": "unchanged, the history grew while it was backed up"}
        except OSError as fault:
            return {**unchanged, "status": "unchanged, the backup failed: " + reason(fault)}
        try:
            history.replace(folder, history.NAME, [kept], unless=changed)
        except OSError as fault:
            return {**unchanged, "backup": name, "status": "unchanged, " + reason(fault)}
        return {**answer, "status": "compacted", "backup": name}
    finally:
        os.close(file)


def blocks(file: int) -> Iterator[bytes]:
    """The contents of an open file from its beginning."""
    place = 0
    while block := os.pread(file, COPY_BLOCK, place):
        yield block
        place += len(block)


def backup_name(folder: str) -> str:
    """A name that no backup has; the caller's lock keeps it so."""
    stem = "mem-history.backup-" + time.strftime("%Y%m%dT%H%M%SZ", time.gmtime())
    name, again = stem + ".jsonl", 1
    while os.path.lexists(os.path.join(folder, name)):
        again += 1
        name = f"{stem}-{again}.jsonl"
    return name


def measured(folder: str) -> dict[str, object]:
    """The sizes of a history that stays as it is."""
    try:
        size = os.lstat(os.path.join(folder, history.NAME)).st_size
    except OSError:
        size = 0
    return {"before_bytes": size, "after_bytes": size}
