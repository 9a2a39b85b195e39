# SPDX-License-Identifier: Apache-2.0
"""The unit files of the service manager: where they lie, and what of them matters here. Only files are read;
asking the manager itself would start a program for each snapshot."""
from __future__ import annotations

import os

from ostrel_lib.files import names, read_setting

SHELLS = frozenset((b"sh", b"bash", b"dash", b"zsh", b"fish", b"ksh", b"env"))
MOST_UNITS = 400
"""Unit files that are read in one snapshot."""

AT_START = (b"OnBootSec", b"OnStartupSec", b"OnActiveSec")
REPEATING = (b"OnUnitActiveSec", b"OnUnitInactiveSec", b"OnCalendar")


def has_systemd(root: str) -> bool:
    """Whether the machine below `root` runs under systemd, by the folder that it makes for this question."""
    return os.path.isdir(root + "/run/systemd/system")


def folders(root: str, home: str, scope: str) -> list[str]:
    """Where the unit files of a scope lie, "user" or "system", those first that stand over the others."""
    common = [root + place + "/systemd/" + scope for place in ("/etc", "/run", "/usr/local/lib", "/usr/lib")]
    if scope == "system":
        return common
    return [home + "/.config/systemd/user", *common[:1], home + "/.local/share/systemd/user", *common[1:]]


def locate(unit: str, listings: list[tuple[str, frozenset[str]]]) -> str:
    """The path of a unit's file, or of the template that it is made from; "" when it has none."""
    at = unit.find("@")
    template = unit[:at + 1] + unit[unit.rfind("."):] if at >= 0 else unit
    for name in dict.fromkeys((unit, template)):
        for folder, present in listings:
            if name in present:
                return folder + "/" + name
    return ""


def listing(paths: list[str]) -> list[tuple[str, frozenset[str]]]:
    """Each folder with the names in it."""
    return [(path, frozenset(names(path))) for path in paths]


def scheduler(root: str, home: str) -> dict[str, int]:
    """The snapshot's `launchd`: what the user and the administrator set up and switched on.

    `interval_jobs` are timers that repeat, `runatload_interval` those of them that also fire when the machine
    or the session starts, `keepalive` the services that are started again when they end, and `shell_first`
    what shows as a shell in lists, since its command begins with one: services, and the session's autostart.
    """
    counts = {"interval_jobs": 0, "runatload_interval": 0, "keepalive": 0, "shell_first": 0}
    if has_systemd(root):
        for scope in ("user", "system"):
            listings = listing(folders(root, home, scope))
            enabled = switched_on(listings, scope)
            services = {unit for unit in enabled if unit.endswith(".service")}
            for unit in sorted(enabled - services)[:MOST_UNITS]:
                timer = directives(locate(unit, listings))
                if not any(timer.get(key) for key in REPEATING):
                    continue
                counts["interval_jobs"] += 1
                service = (timer.get(b"Unit") or [unit[:-6].encode() + b".service"])[-1]
                name = service.decode("utf-8", "replace")
                counts["runatload_interval"] += any(timer.get(key) for key in AT_START) or name in enabled
                services.add(name)
            for unit in sorted(services)[:MOST_UNITS]:
                service = directives(locate(unit, listings))
                counts["keepalive"] += unit in enabled and (service.get(b"Restart") or [b"no"])[-1] != b"no"
                counts["shell_first"] += begins_with_shell(service.get(b"ExecStart", []))
    folder = home + "/.config/autostart"
    for name in names(folder)[:MOST_UNITS]:
        if name.endswith(".desktop"):
            entry = directives(folder + "/" + name)
            hidden = (entry.get(b"Hidden") or [b""])[-1] == b"true"
            counts["shell_first"] += not hidden and begins_with_shell(entry.get(b"Exec", []))
    return counts


def switched_on(listings: list[tuple[str, frozenset[str]]], scope: str) -> set[str]:
    """The timers and services that somebody on this machine switched on. In /etc, where the distribution
    switches on its own, only those count whose file lies there as well."""
    found: set[str] = set()
    own = listings[:3] if scope == "user" else listings[:1]
    for folder, present in own:
        for name in sorted(present):
            if not name.endswith((".wants", ".requires")):
                continue
            for unit in names(folder + "/" + name):
                if not unit.endswith((".timer", ".service")):
                    continue
                place = locate(unit, listings)
                if scope == "user" and folder == listings[0][0] or is_file(place, own):
                    found.add(unit)
    return found


def is_file(path: str, own: list[tuple[str, frozenset[str]]]) -> bool:
    """Whether a unit's file is one of the given folders' own, rather than a link into the distribution's."""
    if not path.startswith(tuple(folder + "/" for folder, _ in own)):
        return False
    try:
        target = os.readlink(path)
    except OSError:
        return True
    return not target.startswith(("/usr/lib/", "/lib/"))


def directives(path: str) -> dict[bytes, list[bytes]]:
    """The settings of a unit file or a desktop entry, whatever their section; an empty one takes back those
    before it. None for a file that can't be read."""
    found: dict[bytes, list[bytes]] = {}
    if not path:
        return found
    for line in read_setting(path).replace(b"\\\n", b" ").split(b"\n"):
        key, equals, value = line.partition(b"=")
        key, value = key.strip(), value.strip()
        if equals and key[:1] not in (b"#", b";", b"["):
            if value:
                found.setdefault(key, []).append(value)
            else:
                found.pop(key, None)
    return found


def begins_with_shell(commands: list[bytes]) -> bool:
    """Whether the first of a unit's commands runs a shell. Signs before the path change how it is run."""
    words = commands[0].split(None, 1) if commands else []
    return bool(words) and words[0].lstrip(b"-@:+!\"'").rstrip(b"\"'").rsplit(b"/", 1)[-1] in SHELLS
