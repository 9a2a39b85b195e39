# SPDX-License-Identifier: Apache-2.0
"""This machine's own schedulers as one lane: systemd timers of the user and of the system, and cron."""
from __future__ import annotations

import os

from ostrel_lib.automations.cron import cron_jobs
from ostrel_lib.automations.rows import Found
from ostrel_lib.automations.timers import Manager, read
from ostrel_lib.places import Places
from ostrel_lib.tools import Deadline, run

ALWAYS = "this machine · also while you are logged out"
LOGGED_IN = "this machine · only while you are logged in"


def machine_jobs(places: Places, seconds: float) -> Found:
    """The lane. A source that can't be seen leaves the others alone."""
    sources = []
    for scope in ("user", "system"):
        found = read(Manager(places, scope, Deadline(seconds / 3)))
        if scope == "user" and found.rows:
            where = lingering(places, Deadline(seconds / 3))
            for row in found.rows:
                row["location"] = where or row["location"]
        sources.append(found)
    sources.append(cron_jobs(places, Deadline(seconds / 3)))
    lane = Found(any(source.observed for source in sources))
    lane.note = "; ".join(dict.fromkeys(source.note for source in sources if source.note))
    for source in sources:
        lane.rows += source.rows
        lane.alerts += source.alerts
    return lane


def lingering(places: Places, deadline: Deadline) -> str:
    """Where the user's own timers run; "" when that can't be told. Without lingering they end with the
    login."""
    told = run(places, ["loginctl", "show-user", "--property=Linger", "--", str(os.getuid())],
               deadline.left())
    return {b"Linger=yes": ALWAYS, b"Linger=no": LOGGED_IN}.get(told.out.strip(), "")
