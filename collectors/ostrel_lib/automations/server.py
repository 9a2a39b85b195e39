# SPDX-License-Identifier: Apache-2.0
"""The server's timers, read over ssh through the alias that the panel's settings hold."""
from __future__ import annotations

import os

from ostrel_lib.automations.rows import Found
from ostrel_lib.automations.smallfile import read_json
from ostrel_lib.automations.timers import Manager, ask, read
from ostrel_lib.places import Places
from ostrel_lib.ssh import valid_alias
from ostrel_lib.tools import Deadline

ALIAS_KEY = "ostrel.server.alias"


def stored_alias(places: Places) -> tuple[str, str]:
    """The alias from the settings, and why there is none."""
    if not os.path.lexists(places.settings):
        return "", "no server alias is stored in the settings"
    settings, problem = read_json(places.settings)
    if problem or type(settings) is not dict:
        return "", "the settings can't be read: " + (problem or "not an object")
    alias = settings.get(ALIAS_KEY, "")
    if alias == "":
        return "", "no server alias is stored in the settings"
    if not valid_alias(alias):
        return "", "the server alias in the settings isn't one that ssh may be given"
    return str(alias), ""


def server_timers(places: Places, seconds: float) -> Found:
    """The lane of the server: its system's timers, and those of the user whom the alias logs in."""
    alias, problem = stored_alias(places)
    if problem:
        return Found(False, problem)
    deadline = Deadline(seconds)
    manager = Manager(places, "system", deadline, alias)
    uptime = ask(manager, "cat", ["/proc/uptime"])
    if uptime.failure:
        found = Found(False, f"{alias} can't be read over ssh: {uptime.failure}")
        if not uptime.missing:
            found.alerts.append("server timers: " + found.note)
        return found
    manager.since_boot = seconds_of(uptime.out)
    found = read(manager)
    own = Manager(places, "user", deadline, alias)
    own.since_boot = manager.since_boot
    # A login that has no manager of its own is the usual thing on a server.
    theirs = read(own) if found.observed else Found(False)
    found.rows += theirs.rows
    found.alerts += theirs.alerts
    return found


def seconds_of(uptime: bytes) -> float:
    """The first figure of /proc/uptime; 0 for anything else."""
    word = uptime.split(b" ", 1)[0]
    return float(word) if word.replace(b".", b"", 1).isdigit() and len(word) < 20 else 0.0
