# SPDX-License-Identifier: Apache-2.0
"""A close look at single processes, and why one must not be stopped."""
from __future__ import annotations

import os

from ostrel_lib import families
from ostrel_lib.census import Kind, display_name, mib, text
from ostrel_lib.files import number, read
from ostrel_lib.janitor.protection import protecting_rule
from ostrel_lib.janitor.uses import own_pid, read_whole
from ostrel_lib.processes import ENDED, KERNEL_THREAD, PAGE_SIZE, after_name

LARGEST_PID = 2**31 - 1
LONGEST_COMMAND = 262144
"""Bytes of a command line that is judged. A longer one is refused, since a protected word may stand
behind."""

DESKTOP_NAMES = frozenset((
    b"gnome-session", b"gnome-session-binary", b"gnome-session-service", b"xfce4-session", b"lxqt-session",
    b"mate-session", b"cinnamon-session", b"cinnamon", b"budgie-wm", b"startplasma-x11",
    b"startplasma-wayland", b"ksmserver", b"ksmserver-launcher", b"plasma_session", b"openbox",
    b"openbox-session", b"i3", b"sway", b"Hyprland", b"labwc", b"wayfire", b"kwin_wayland_wrapper", b"mutter",
    b"marco", b"muffin", b"xinit", b"startx", b"Xvfb", b"Xephyr", b"Xvnc", b"gdm-x-session",
    b"gdm-wayland-session", b"sddm-helper", b"lightdm", b"ssh-agent", b"gpg-agent", b"gnome-keyring-daemon",
    b"tmux: server", b"screen", b"SCREEN",
))
"""Programs that others of the session live and end with. Those of the system itself `families` knows."""
SERVICE_SLICES = (b"/session.slice/", b"/system.slice/")


class Person:
    """One process as a stop would meet it. `start` is its start time in clock ticks since the machine's,
    `cmd` its whole command line, `uids` the four user numbers that the kernel checks, empty when it doesn't
    tell."""

    __slots__ = (
        "pid", "start", "ppid", "comm", "cmdline", "rss", "kernel", "uids", "executable", "service", "kind",
    )

    @property
    def name(self) -> str:
        """The short name, as the lists of the snapshot have it."""
        return display_name(self.comm, self.kind.program)

    @property
    def cmd(self) -> str:
        """The command line as text, blanks between the arguments."""
        return text(self.cmdline.replace(b"\0", b" "))


def look_at(pid: int, proc_root: str) -> Person | None:
    """The process of that number; None when there is none, or it has ended. All is read through the process's
    own folder, which goes on being that of this process when the number is used again."""
    try:
        folder = os.open(f"{proc_root}/{pid}", os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    except OSError:
        return None
    try:
        stat = read("stat", 4096, folder)
        close, fields = after_name(stat)
        if len(fields) < 20 or fields[0] in ENDED:
            return None
        person = Person()
        person.pid, person.ppid, person.start = pid, number(fields[1]), number(fields[19])
        person.comm = stat[stat.find(b"(") + 1:close]
        person.kernel = number(fields[6]) & KERNEL_THREAD != 0
        person.uids = user_numbers(read_whole("status", folder))
        person.cmdline = read_whole("cmdline", folder, LONGEST_COMMAND + 1).rstrip(b"\0")
        person.kind = Kind(person.cmdline)
        pages = read("statm", 256, folder).split()
        person.rss = number(pages[1]) * PAGE_SIZE if len(pages) > 1 else 0
        person.service = service_of(read("cgroup", 4096, folder))
        try:
            person.executable = os.readlink("exe", dir_fd=folder)
        except OSError:
            person.executable = ""
        return person if read("stat", 4096, folder) else None
    finally:
        os.close(folder)


def user_numbers(status: bytes) -> list[bytes]:
    """Real, effective, saved and file system user, from the text of a status file."""
    for line in status.split(b"\n"):
        if line.startswith(b"Uid:"):
            return line[4:].split()
    return []


def service_of(cgroup: bytes) -> bytes:
    """The service of the system or of the desktop session that a process belongs to, from the text of a
    cgroup file; b"" for none."""
    for line in cgroup.split(b"\n"):
        path = line.split(b":", 2)[-1]
        if any(part in path + b"/" for part in SERVICE_SLICES):
            return path
    return b""


def own_line(proc_root: str) -> set[int]:
    """This process and all that it runs below: the panel, and what the panel was started by, up to the first
    one or one that this user isn't shown. Empty when one of them can't be read."""
    pid = number(own_pid(proc_root).encode("ascii", "replace"))
    line: set[int] = set()
    while pid > 0 and pid not in line:
        line.add(pid)
        _, fields = after_name(read(f"{proc_root}/{pid}/stat", 4096))
        if len(fields) < 2 and os.path.lexists(f"{proc_root}/{pid}"):
            return set()
        pid = number(fields[1]) if len(fields) > 1 else 0
    return line


def refusal(person: Person, ours: set[int], own_service: bytes, rows: list[str]) -> str:
    """Why this process must not be stopped; "" when it may. `ours` is `own_line`."""
    user = b"%d" % os.getuid()
    if person.pid == 1:
        return "the first process of the system"
    if person.kernel:
        return "a kernel thread"
    if person.uids != [user] * 4:
        return "belongs to another user" if person.uids else "its user can't be told"
    if not ours:
        return "what this program runs below can't be told"
    if person.pid in ours:
        return "this program runs in it or below it"
    if len(person.cmdline) > LONGEST_COMMAND:
        return "its command line is too long to be judged"
    if person.kind.agent:
        return "an agent"
    comm = text(person.comm)
    first = text(person.cmdline.split(b"\0", 1)[0])
    looks = ((person.name, person.cmd), (comm, person.cmd), (comm, first), (comm, person.executable))
    for name, command in looks:
        rule = protecting_rule(name, command, rows)
        if rule:
            return "protected: " + rule
    if person.kind.group == "system" or person.comm in families.SYSTEM_NAMES:
        return "part of the system"
    if person.kind.program in DESKTOP_NAMES or person.comm in DESKTOP_NAMES:
        return "part of the desktop session"
    if person.service and person.service != own_service:
        return "a service of the system or of the desktop session"
    return ""


def row(person: Person, reason: str) -> dict[str, object]:
    """One process as an element of `allowed` or `refused`."""
    return {
        "pid": person.pid, "name": person.name, "rss_mb": mib(person.rss), "cmd": person.cmd,
        "reason": reason, "start": person.start,
    }


def judged(
    wanted: list[tuple[int, str]], rows: list[str], proc_root: str
) -> dict[str, list[dict[str, object]]]:
    """The reply of `kill-preview` and `mcp-preview`: the wanted pids, each with the reason to list it, as
    `allowed` and `refused`, the largest first. What has ended is in neither."""
    ours = own_line(proc_root)
    own_service = service_of(read(proc_root + "/self/cgroup", 4096))
    allowed, refused = [], []
    for pid, reason in dict(reversed(wanted)).items():
        person = look_at(pid, proc_root) if 0 < pid <= LARGEST_PID else None
        if person is not None:
            why_not = refusal(person, ours, own_service, rows)
            (refused if why_not else allowed).append(row(person, why_not or reason))
        elif not 0 < pid <= LARGEST_PID:
            refused.append({"pid": pid, "name": "", "rss_mb": 0, "cmd": "",
                            "reason": "no number of a process", "start": 0})
    for found in (allowed, refused):
        found.sort(key=lambda element: (-element["rss_mb"], element["pid"]))
    return {"allowed": allowed, "refused": refused}
