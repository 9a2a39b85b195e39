# SPDX-License-Identifier: Apache-2.0
"""The forms in which systemd's tools print, and what they say of a timer. No tool is run here.

The tools are asked in English and in UTC (`tools.SPOKEN`), and for properties, not for tables: their names
and forms have been the same since long before JSON came.
"""
from __future__ import annotations

from ostrel_lib.oneline import clean
from ostrel_lib.places import iso

TIMER_PROPERTIES = (
    "Id", "Description", "LoadState", "ActiveState", "UnitFileState", "FragmentPath", "Unit",
    "NextElapseUSecRealtime", "NextElapseUSecMonotonic", "LastTriggerUSec", "TimersCalendar",
    "TimersMonotonic",
)
JOB_PROPERTIES = (
    "Id", "LoadState", "ActiveState", "Result", "ExecMainStartTimestamp", "ExecMainExitTimestamp",
    "ExecMainCode", "ExecMainStatus", "ExecStart", "InvocationID", "CanStart", "RefuseManualStart", "User",
)

LONGEST_UNIT = 255
UNIT_LETTERS = frozenset("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789:_.\\@-")
UNIT_KINDS = ("service", "target", "socket", "mount", "path", "scope", "slice", "swap", "automount", "timer")
SWITCHABLE = ("enabled", "enabled-runtime", "disabled", "linked", "linked-runtime", "indirect")
"""States of a unit file in which `enable` and `disable` have something to change."""
ENABLED = ("enabled", "enabled-runtime")
NOT_HERE = (
    "not been booted with systemd", "Failed to connect to bus", "No medium found", "Failed to get D-Bus",
    "Connection refused", "org.freedesktop.systemd1",
)
"""What the tools say where no manager runs: that is no fault, there is just nothing to see."""

SPAN_UNITS = {
    "y": 31557600.0, "month": 2629800.0, "w": 604800.0, "d": 86400.0, "h": 3600.0, "min": 60.0, "s": 1.0,
    "ms": 1e-3, "us": 1e-6,
}


def valid_unit(name: str, kind: str = "") -> bool:
    """Whether this is a unit's name as systemd takes it, of the given kind or of any; no template."""
    stem, dot, suffix = name.rpartition(".")
    if not dot or not stem or len(name) > LONGEST_UNIT or stem.endswith("@"):
        return False
    return (suffix == kind if kind else suffix in UNIT_KINDS) and UNIT_LETTERS.issuperset(stem)


def unescaped(name: str) -> str:
    r"""A unit's name as people wrote it: "\x20" stands for a blank."""
    parts = name.split("\\x")
    text = parts[0].encode("utf-8", "replace")
    for part in parts[1:]:
        try:
            text += bytes((int(part[:2], 16),)) + part[2:].encode("utf-8", "replace")
        except ValueError:
            text += b"\\x" + part.encode("utf-8", "replace")
    return clean(text.decode("utf-8", "replace"))


def unit_files(text: bytes) -> tuple[list[str], bool]:
    """The timers that `list-unit-files` names, and whether every line could be read. Templates are left out:
    only their instances run."""
    names, sound = [], True
    for line in text.decode("utf-8", "replace").split("\n"):
        words = line.split()
        if not words:
            continue
        if len(words) in (2, 3) and words[0].endswith(".timer"):
            if valid_unit(words[0], "timer"):
                names.append(words[0])
        else:
            sound = False
    return names, sound


def blocks(text: bytes) -> dict[str, dict[str, str]]:
    """The properties of each unit that `show` printed, by the unit's id.

    Of a property that stands more than once the values are joined with "; ": timers have one for each rule.
    Where a unit was asked for twice the first answer counts, as does the first id in a block: a description
    may hold line ends.
    """
    found: dict[str, dict[str, str]] = {}
    for block in text.decode("utf-8", "replace").split("\n\n"):
        properties: dict[str, str] = {}
        for line in block.split("\n"):
            name, equals, value = line.partition("=")
            if not equals:
                continue
            if name.startswith("Timers") and name in properties:
                properties[name] += "; " + value
            else:
                properties.setdefault(name, value)
        identity = properties.get("Id", "")
        if identity and identity not in found:
            found[identity] = properties
    return found


def timestamp(text: str) -> float:
    """Seconds since 1970 of a time such as "Wed 2026-11-25 08:11:13 UTC"; 0 for anything else."""
    words = text.split(" ")
    if len(words) != 4 or words[3] != "UTC":
        return 0.0
    try:
        year, month, day = (int(part) for part in words[1].split("-"))
        hour, minute, second = (int(part) for part in words[2].split(":"))
    except ValueError:
        return 0.0
    if not (1970 <= year <= 9999 and 1 <= month <= 12 and 1 <= day <= 31):
        return 0.0
    return days_since_1970(year, month, day) * 86400.0 + hour * 3600 + minute * 60 + second


def days_since_1970(year: int, month: int, day: int) -> int:
    """Days of the civil calendar. The year is taken to begin in March, so that a leap day is its last."""
    year -= month <= 2
    of_year = (153 * ((month + 9) % 12) + 2) // 5 + day - 1
    return 365 * year + year // 4 - year // 100 + year // 400 + of_year - 719468


def span(text: str) -> float:
    """Seconds of a length such as "2d 14h 13min 34.293s"; -1 for "infinity", nothing, and anything else."""
    total = 0.0
    for word in text.split(" "):
        digits = word.rstrip("abcdefghijklmnopqrstuvwxyz")
        unit = word[len(digits):]
        if unit not in SPAN_UNITS or not digits.replace(".", "", 1).isdecimal() or len(digits) > 20:
            return -1.0
        total += float(digits) * SPAN_UNITS[unit]
    return total


def next_run(timer: dict[str, str], now: float, since_boot: float) -> float:
    """When the timer fires next, as seconds since 1970; 0 when it won't."""
    if timer.get("ActiveState") != "active":
        return 0.0
    at = timestamp(timer.get("NextElapseUSecRealtime", ""))
    after_boot = span(timer.get("NextElapseUSecMonotonic", ""))
    if after_boot > 0:
        other = now + max(0.0, after_boot - since_boot)
        at = min(at, other) if at else other
    return at


def state(timer: dict[str, str]) -> str:
    """The word for a timer's state."""
    load, active, file = (timer.get(name, "") for name in ("LoadState", "ActiveState", "UnitFileState"))
    if load != "loaded":
        return load or "unverified"
    if active == "failed" or file in ("masked", "bad"):
        return "failed" if active == "failed" else file
    if active == "active":
        return "enabled" if file not in ("disabled", "") else "started, not enabled"
    return "enabled, not started" if file in ENABLED else "disabled"


def result(job: dict[str, str]) -> str:
    """How the last run of a timer's job ended: "ok", "failed: …", "running", or "unobserved" for one that
    this boot hasn't seen."""
    active = job.get("ActiveState", "")
    if active in ("active", "activating", "reloading", "deactivating") and job.get("InvocationID"):
        return "running"
    reason = job.get("Result", "")
    if active == "failed" or reason not in ("success", ""):
        code = job.get("ExecMainStatus", "")
        return f"failed: {reason} {code}" if reason == "exit-code" else f"failed: {reason}"
    return "ok" if timestamp(job.get("ExecMainStartTimestamp", "")) else "unobserved"


def last_run(timer: dict[str, str], job: dict[str, str]) -> str:
    """When the job ran last, by the timer or by hand; "" when it never did."""
    at = max(timestamp(timer.get("LastTriggerUSec", "")), timestamp(job.get("ExecMainStartTimestamp", "")))
    return iso(at) if at else ""


def schedule(timer: dict[str, str]) -> str:
    """A timer's rules in words, as far as they are simple ones."""
    rules = []
    for line in (timer.get("TimersCalendar", "") + "; " + timer.get("TimersMonotonic", "")).split("; "):
        name, equals, rest = line.strip("{ }").partition("=")
        value = rest.split(" ;")[0].strip()
        if not equals or name == "next_elapse":
            continue
        rules.append(calendar_words(value) if name == "OnCalendar" else f"{value} {after_words(name)}")
    return " or ".join(rules) if rules else "never by itself"


def calendar_words(rule: str) -> str:
    """ "daily at 06:00" for "*-*-* 06:00:00"; a rule that isn't that simple stays as it is written."""
    date, _, clock = rule.rpartition(" ")
    digits = clock.split(":")
    if len(digits) == 3 and digits[2] == "00" and digits[1].isdecimal():
        if date == "*-*-*" and digits[0] == "*":
            return f"hourly at minute {digits[1]}" if digits[1] != "00" else "hourly"
        if digits[0].isdecimal():
            at = f"at {digits[0]}:{digits[1]}"
            if date == "*-*-*":
                return "daily " + at
            if date == "*-*-01":
                return "monthly on the 1st " + at
            days, _, rest = date.partition(" ")
            if rest == "*-*-*":
                return f"{days} {at}"
    return rule


def after_words(name: str) -> str:
    """What a monotonic rule counts from."""
    return {
        "OnBootUSec": "after boot", "OnStartupUSec": "after the manager's start",
        "OnActiveUSec": "after the timer's start", "OnUnitActiveUSec": "after the last start",
        "OnUnitInactiveUSec": "after the last end",
    }.get(name, "after " + name)


def startable(job: dict[str, str]) -> bool:
    """Whether a job may be started by hand."""
    return (job.get("LoadState") == "loaded" and job.get("CanStart") == "yes"
            and job.get("RefuseManualStart") != "yes")


def command(job: dict[str, str]) -> str:
    """The command line that a job runs, or ""."""
    _, found, rest = job.get("ExecStart", "").partition("argv[]=")
    return rest.split(" ; ")[0] if found else ""


def not_here(complaint: str) -> bool:
    """Whether a tool says that there is no manager to ask."""
    return any(words in complaint for words in NOT_HERE)
