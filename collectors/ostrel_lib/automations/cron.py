# SPDX-License-Identifier: Apache-2.0
"""Cron's jobs: the user's crontab, /etc/crontab, /etc/cron.d and anacron's table. All of it is only read."""
from __future__ import annotations

import os
import stat
from hashlib import blake2s

from ostrel_lib.automations import crontime
from ostrel_lib.automations.rows import Found, automation
from ostrel_lib.automations.smallfile import read_file
from ostrel_lib.files import names, read
from ostrel_lib.places import Places, iso
from ostrel_lib.tools import Deadline, find, run

MOST_LINES = 10000
MOST_FILE = 4 << 20
DAEMONS = (b"cron\n", b"crond\n", b"fcron\n")
NAME_LETTERS = frozenset("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-")
PERIODS = {"@daily": "1", "@weekly": "7"}
EVERY = {"1": "daily", "7": "weekly", "@monthly": "monthly"}


class Line:
    """One job of a table."""

    __slots__ = ("fields", "user", "command", "id")

    def __init__(self, fields: str, user: str, command: str) -> None:
        self.fields = fields
        self.user = user
        self.command = command
        self.id = ""


def cron_jobs(places: Places, deadline: Deadline) -> Found:
    """The rows of all tables on this machine."""
    found = Found()
    running = daemon_runs(places.proc)
    seen = False
    for source, lines, problem in tables(places, deadline):
        if problem:
            found.alerts.append(f"{source}: {problem}")
        for line in lines:
            seen = True
            found.rows.append(cron_row(places, source, line, running))
    anacron = anacron_jobs(places)
    found.rows += anacron.rows
    found.alerts += anacron.alerts
    if not (seen or running or found.rows or found.alerts):
        found.observed, found.note = False, "no cron here"
    return found


def daemon_runs(proc: str) -> bool:
    """Whether a cron daemon is among the processes. Its tables mean nothing without it."""
    return any(
        read(f"{proc}/{pid}/comm", 64) in DAEMONS for pid in names(proc) if pid.isdecimal()
    )


def tables(places: Places, deadline: Deadline) -> list[tuple[str, list[Line], str]]:
    """Every table that is there by its name, with its jobs and what is wrong with it."""
    found = [user_table(places, deadline)]
    found.append(system_table(places.etc + "/crontab", "/etc/crontab"))
    folder = places.etc + "/cron.d"
    for name in names(folder):
        # Cron itself passes over other names: package managers leave their copies beside the files.
        if NAME_LETTERS.issuperset(name):
            found.append(system_table(f"{folder}/{name}", "/etc/cron.d/" + name))
    return [table for table in found if table[1] or table[2]]


def user_table(places: Places, deadline: Deadline) -> tuple[str, list[Line], str]:
    """The user's own table; the spool it lies in is closed to the user, so cron's tool hands it out."""
    listed = run(places, ["crontab", "-l"], deadline.left())
    complaint = listed.failure.lower()
    if listed.missing or "no crontab for" in complaint or "no such file" in complaint:
        return "crontab", [], ""
    if listed.failure:
        return "crontab", [], listed.failure
    lines, problem = parse(listed.out, with_user=False)
    return "crontab", lines, problem


def system_table(path: str, shown: str) -> tuple[str, list[Line], str]:
    """One of the system's tables. Cron refuses one that others than its owner may write, so it is no job."""
    try:
        status = os.lstat(path)
    except OSError:
        return shown, [], ""
    if stat.S_ISREG(status.st_mode) and status.st_mode & 0o022:
        return shown, [], "others than its owner may write it, so cron passes over it"
    content, problem = read_file(path, MOST_FILE)
    if problem:
        return shown, [], problem
    lines, problem = parse(content, with_user=True)
    return shown, lines, problem


def parse(content: bytes, with_user: bool) -> tuple[list[Line], str]:
    """The jobs of a table, and which line can't be read first. Each job has an id that stays the same when
    other lines come and go."""
    lines: list[Line] = []
    problem = ""
    counts: dict[str, int] = {}
    if b"\0" in content:
        return [], "it holds bytes that are no text"
    for place, text in enumerate(content.decode("utf-8", "replace").split("\n"), 1):
        text = text.strip()
        if not text or text[0] == "#" or is_assignment(text):
            continue
        line = job_of(text, with_user)
        if line is None:
            problem = problem or f"line {place} can't be read"
        elif len(lines) >= MOST_LINES:
            return lines, f"it holds more than {MOST_LINES} jobs"
        else:
            digest = blake2s(text.encode("utf-8", "replace"), digest_size=5).hexdigest()
            counts[digest] = counts.get(digest, 0) + 1
            line.id = digest if counts[digest] == 1 else f"{digest}.{counts[digest]}"
            lines.append(line)
    return lines, problem


def is_assignment(text: str) -> bool:
    """Whether a line sets a variable: a name, then "=", before any blank that isn't beside it."""
    name, equals, _ = text.partition("=")
    name = name.strip().strip("\"'")
    return bool(equals) and bool(name) and name.replace("_", "a").isalnum() and not name[0].isdecimal()


def job_of(text: str, with_user: bool) -> Line | None:
    """The job of one line; nothing when it is none."""
    count = 1 if text[0] == "@" else 5
    words = text.split(None, count + with_user)
    if len(words) < count + with_user + 1:
        return None
    fields = " ".join(words[:count])
    if fields != "@reboot" and crontime.rhythm(fields) is None and not crontime.by_chance(fields):
        return None
    return Line(fields, words[count] if with_user else "", words[-1])


def cron_row(places: Places, source: str, line: Line, running: bool) -> dict[str, object]:
    """One job as a row. What cron doesn't tell, how a run ended, stays unobserved."""
    when = crontime.rhythm(line.fields)
    at = crontime.next_time(when, places.clock()) if when and running else 0.0
    # A bare percent sign ends the command: what follows is its standard input.
    command = line.command.replace("\\%", "\0").split("%", 1)[0].replace("\0", "%").strip()
    table = source[len("/etc/cron.d/"):] if source.startswith("/etc/cron.d/") else ""
    return automation(
        "launchd", "cron", f"cron:{source}:{line.id}", f"{table} · {command}" if table else command,
        schedule=crontime.words(line.fields),
        state="enabled" if running else "no cron daemon runs", active=running, executor=command,
        host=places.host, owner=line.user or "you", registry=source, tag="cron",
        observation="the table was read; cron tells no results", location="this machine", target=source,
        last_result="unobserved", next_run=iso(at) if at else "",
    )


def anacron_jobs(places: Places) -> Found:
    """Anacron's table, with the day of each last run where the user may see it. The table outlives the
    program when that is removed."""
    found = Found()
    installed = find("anacron", places.path) != ""
    path = places.etc + "/anacrontab"
    if not os.path.lexists(path):
        return found
    content, problem = read_file(path, MOST_FILE)
    if problem:
        found.alerts.append("/etc/anacrontab: " + problem)
        return found
    for place, text in enumerate(content.decode("utf-8", "replace").split("\n"), 1):
        text = text.strip()
        if not text or text[0] == "#" or is_assignment(text):
            continue
        words = text.split(None, 3)
        period = PERIODS.get(words[0], words[0])
        if len(words) < 4 or not words[1].isdecimal() or not (period.isdecimal() or period == "@monthly"):
            found.alerts.append(f"/etc/anacrontab: line {place} can't be read")
            continue
        found.rows.append(anacron_row(places, installed, period, words))
    return found


def anacron_row(places: Places, installed: bool, period: str, words: list[str]) -> dict[str, object]:
    """One of anacron's jobs as a row."""
    _, delay, name, command = words
    every = EVERY.get(period, f"every {period} days")
    stamp = b"" if "/" in name else read(f"{places.spool}/anacron/{name}", 64).strip()
    day = stamp.decode("ascii", "replace")
    last = f"{day[:4]}-{day[4:6]}-{day[6:8]}" if len(day) == 8 and day.isdecimal() else ""
    return automation(
        "launchd", "anacron", "anacron:" + name, name, schedule=f"{every}, {delay} min after the start",
        state="enabled" if installed else "anacron isn't installed", active=installed, executor=command,
        host=places.host, owner="root",
        registry="/etc/anacrontab", tag="anacron", location="this machine", target="/etc/anacrontab",
        observation="the table was read; anacron tells no results", last_run=last, last_result="unobserved",
    )
