# SPDX-License-Identifier: Apache-2.0
"""The recent runs of one job, from the journal of the machine that it runs on."""
from __future__ import annotations

import json

from ostrel_lib.automations import systemd
from ostrel_lib.automations.rows import LANE_KEYS, text_of, usable_id
from ostrel_lib.automations.timers import Manager, ask, show
from ostrel_lib.oneline import clean
from ostrel_lib.places import Places, iso
from ostrel_lib.tools import Deadline

SECONDS = 45.0
"""For all calls together; the reader waits for 60."""
MOST_ENTRIES = 400
MOST_RUNS = 20
FIELDS = (
    "MESSAGE", "MESSAGE_ID", "INVOCATION_ID", "USER_INVOCATION_ID", "_SYSTEMD_INVOCATION_ID", "UNIT_RESULT",
    "JOB_RESULT", "_COMM", "_PID",
)
FAILED_RESULT = "d9b373ed55a64feb8242e02dbe79a49c"  # "Failed with result", the result in UNIT_RESULT
FAILED_START = "be02cf6855d2428ba40df7e9d022f03d"
DEACTIVATED = "7ad2d189f7e94e70a38c781354912448"
STARTED = "39f53479d3a045ac8e11786248231fbf"  # also "Finished", of a job that is over when it has started
SYSTEMD = "systemd"


def journal(places: Places, options: dict[str, str]) -> dict[str, object]:
    """The answer to `journal`: the runs, newest first, and for timers the times and the result as they are
    now. A reason for having nothing stands as the only line of the journal."""
    lane, identity = options.get("--lane", ""), options.get("--id", "")
    if lane not in LANE_KEYS or not usable_id(identity):
        return told("there is no such job")
    if lane == "launchd" and identity.startswith("cron:"):
        return cron_runs(places, identity)
    if lane in ("codex", "orca"):
        from ostrel_lib.automations.agents import codex_runs, orca_runs

        found, problem = (codex_runs if lane == "codex" else orca_runs)(places, identity)
        return {"journal": found} if found else told(problem)
    if lane not in ("launchd", "systemd"):
        return told("no journal can be read here for jobs of this lane")
    scope, _, unit = identity.partition(":")
    if scope not in ("user", "system") or not systemd.valid_unit(unit, "timer"):
        return told("no journal can be read here for this job")
    alias = ""
    if lane == "systemd":
        from ostrel_lib.automations.server import stored_alias

        alias, problem = stored_alias(places)
        if not problem and alias != options.get("--target", ""):
            problem = "the server in the settings is another one now; refresh the inventory"
        if problem:
            return told(problem)
    return timer_runs(Manager(places, scope, Deadline(SECONDS), alias), unit)


def told(reason: str) -> dict[str, object]:
    """An answer without runs that says why."""
    return {"journal": [{"at": "", "status": "", "line": clean(reason)}]}


def timer_runs(manager: Manager, unit: str) -> dict[str, object]:
    """The runs of what a timer starts."""
    timers, problem = show(manager, [unit], systemd.TIMER_PROPERTIES)
    timer = timers.get(unit, {})
    job_unit = timer.get("Unit", "")
    if problem or not timer:
        return told(problem or "systemctl doesn't tell of this timer")
    if not systemd.valid_unit(job_unit):
        return told("the timer doesn't say what it starts")
    jobs, _ = show(manager, [job_unit], systemd.JOB_PROPERTIES)
    job = jobs.get(job_unit, {})
    if manager.alias:
        # The boot's age is told by another call, for timers that count from it alone.
        from ostrel_lib.automations.server import seconds_of

        manager.since_boot = seconds_of(ask(manager, "cat", ["/proc/uptime"]).out)
    at = systemd.next_run(timer, manager.places.clock(), manager.since_boot)
    answer: dict[str, object] = {"next_run": iso(at) if at else "", "last_run": systemd.last_run(timer, job)}
    if job:
        answer["last_result"] = systemd.result(job)
    entries, problem = entries_of(manager, "--user-unit" if manager.scope == "user" else "--unit", job_unit)
    if entries:
        answer["journal"] = runs(entries)
    else:
        answer["journal"] = told(problem
                                 or "the journal holds nothing of this job that you may see")["journal"]
    return answer


def entries_of(manager: Manager, option: str, value: str) -> tuple[list[dict[str, object]], str]:
    """Journal entries, the newest first, and why there are none."""
    options = ["--no-pager", "--quiet", "--reverse", f"--lines={MOST_ENTRIES}", "--output=json",
               "--output-fields=" + ",".join(FIELDS)]
    if manager.alias:
        # A value that a remote shell could read travels to xargs, as the word behind the option.
        from ostrel_lib.automations.timers import remote

        outcome = remote(manager, ["journalctl", *options, option], [value])
    else:
        from ostrel_lib.tools import run

        outcome = run(manager.places, ["journalctl", *options, f"{option}={value}"], manager.deadline.left())
    entries = []
    for line in outcome.out.split(b"\n"):
        if line[:1] != b"{":
            continue
        try:
            entry = json.loads(line)
        except (ValueError, RecursionError):
            continue
        if type(entry) is dict:
            entries.append(entry)
    problem = outcome.failure
    if not entries and not problem and outcome.out.strip():
        problem = "journalctl printed something that isn't a journal"
    return entries, problem


def message(entry: dict[str, object]) -> str:
    """The text of an entry. Bytes that aren't text come as a list of numbers."""
    value = entry.get("MESSAGE")
    if type(value) is list:
        numbers = [number for number in value[:4096] if type(number) is int and 0 <= number < 256]
        return clean(bytes(numbers).decode("utf-8", "replace"))
    return clean(text_of(value))


def at_of(entry: dict[str, object]) -> str:
    """When an entry was written."""
    stamp = text_of(entry.get("__REALTIME_TIMESTAMP"))
    return iso(int(stamp) / 1e6) if stamp.isdecimal() and len(stamp) < 18 else ""


def runs(entries: list[dict[str, object]]) -> list[dict[str, object]]:
    """One line for each run: its beginning, how it ended, and the last thing that the job itself said."""
    groups: dict[str, list[dict[str, object]]] = {}
    for entry in entries:
        names = ("USER_INVOCATION_ID", "INVOCATION_ID", "_SYSTEMD_INVOCATION_ID")
        if entry.get("_COMM") != SYSTEMD:
            names = names[2:]
        run = next((text_of(entry[name]) for name in names if text_of(entry.get(name))), "")
        groups.setdefault(run, []).append(entry)
    if len(groups) > 1 and len(entries) >= MOST_ENTRIES:
        groups.popitem()  # the list was cut somewhere in it
    told_runs = []
    for identity, group in groups.items():
        own = [entry for entry in group if entry.get("_COMM") != SYSTEMD]
        if identity:
            told_runs.append({
                "at": at_of(group[-1]), "status": status(group), "line": message((own or group)[0])})
        else:
            told_runs += [{"at": at_of(entry), "status": "", "line": message(entry)} for entry in group]
    told_runs.sort(key=lambda run: run["at"], reverse=True)
    return told_runs[:MOST_RUNS]  # type: ignore[return-value]


def status(group: list[dict[str, object]]) -> str:
    """How a run ended, as far as the manager said so."""
    ended = ""
    for entry in group:
        if entry.get("_COMM") != SYSTEMD:
            continue
        kind = entry.get("MESSAGE_ID")
        if kind == FAILED_RESULT:
            return clean("failed: " + text_of(entry.get("UNIT_RESULT")))
        if kind == FAILED_START:
            return "failed to start"
        if kind == DEACTIVATED or (kind == STARTED and message(entry).startswith("Finished ")):
            ended = "ok"
    return ended or "started"


def cron_runs(places: Places, identity: str) -> dict[str, object]:
    """When cron started a job, as cron told the journal."""
    from ostrel_lib.automations.cron import tables

    deadline = Deadline(SECONDS)
    line = next(
        (line for source, lines, _ in tables(places, deadline) for line in lines
         if f"cron:{source}:{line.id}" == identity), None)
    if line is None:
        return told("the table doesn't hold this job any more")
    entries, problem = entries_of(Manager(places, "system", deadline), "--identifier", "CRON")
    more, _ = entries_of(Manager(places, "system", deadline), "--identifier", "CROND")
    started = []
    for entry in entries + more:
        user, found, command = text_of(entry.get("MESSAGE")).partition(") CMD (")
        if found and command[-1:] == ")" and command[:-1].strip() == line.command.strip() \
                and line.user in ("", user[1:]):
            started.append({"at": at_of(entry), "status": "started", "line": clean(command[:-1].strip())})
    if not started:
        return told(problem or "the journal holds no start of this job that you may see")
    started.sort(key=lambda run: run["at"], reverse=True)
    return {"last_run": started[0]["at"], "journal": started[:MOST_RUNS]}
