# SPDX-License-Identifier: Apache-2.0
"""The jobs that two agent programs keep for themselves. Their files are read and never written: both programs
hold them open and would overwrite a change."""
from __future__ import annotations

import os
import sys

from ostrel_lib.automations.rows import Found, automation, text_of, usable_id
from ostrel_lib.automations.smallfile import read_file, read_json, texts
from ostrel_lib.files import names
from ostrel_lib.oneline import clean
from ostrel_lib.places import Places, iso

MOST_JOBS = 5000
MOST_RUNS = 20
MOST_DEFINITION = 1 << 20
MOST_ORCA = 32 << 20
"""Orca keeps everything that it knows in one file."""
MILLISECOND = 0.001

RRULE_WORDS = {"MINUTELY": "minute", "HOURLY": "hour", "DAILY": "day", "WEEKLY": "week", "MONTHLY": "month"}


def rrule_words(rule: str) -> str:
    """The rhythm of an iCalendar rule in words, as far as it is a simple one."""
    parts = dict(part.partition("=")[::2] for part in rule.strip().removeprefix("RRULE:").upper().split(";"))
    unit = RRULE_WORDS.get(parts.get("FREQ", ""))
    if unit is None:
        return rule
    interval = parts.get("INTERVAL", "1")
    every = f"every {unit}" if interval == "1" else f"every {interval} {unit}s"
    hours, minute = parts.get("BYHOUR", ""), parts.get("BYMINUTE", "0")
    if len(rule) < 200 and minute.isdecimal() and hours.replace(",", "").isdecimal():
        every += " at " + ", ".join(f"{int(hour):02}:{int(minute):02}" for hour in hours.split(",") if hour)
    elif unit == "hour" and minute.isdecimal() and minute != "0":
        every += f" at minute {minute}"
    days = parts.get("BYDAY", "")
    return f"{every} on {days}" if days else every


def when(value: object) -> str:
    """A time in milliseconds since 1970 as text; "" for none."""
    if type(value) not in (int, float) or not 0 < value < 1e14:  # type: ignore[operator]
        return ""
    return iso(value * MILLISECOND)  # type: ignore[operator]


def codex_jobs(places: Places) -> Found:
    """The Codex app's automations: one folder each with an `automation.toml`; the times are in its
    database."""
    folder = places.home + "/.codex/automations"
    if not os.path.isdir(folder):
        return Found(False, "the Codex app keeps no automations here")
    found = Found()
    times = codex_times(places)
    for name in names(folder):
        path = f"{folder}/{name}/automation.toml"
        if not os.path.lexists(path):
            continue
        if len(found.rows) >= MOST_JOBS:
            found.alerts.append(f"codex: more than {MOST_JOBS} automations")
            break
        job, problem = read_toml(path)
        identity = text_of(job.get("id")) or name
        if not problem and not usable_id(identity):
            problem = "its id can't be used"
        if problem:
            found.alerts.append(f"codex: {clean(name, 60)}/automation.toml: {problem}")
            continue
        found.rows.append(codex_row(places, path, identity, job, times.get(identity, {})))
    return found


def read_toml(path: str) -> tuple[dict[str, object], str]:
    """A TOML file's table, and why there is none."""
    content, problem = read_file(path, MOST_DEFINITION)
    if problem:
        return {}, problem
    if sys.version_info < (3, 11):
        return {}, "reading it needs Python 3.11"
    import tomllib

    try:
        return tomllib.loads(content.decode("utf-8-sig")), ""
    except (ValueError, RecursionError):
        return {}, "it isn't TOML"


def codex_row(
    places: Places, path: str, identity: str, job: dict[str, object], times: dict[str, object]
) -> dict[str, object]:
    """One automation of the Codex app."""
    status = text_of(job.get("status")).lower()
    result = text_of(times.get("status")).lower()
    return automation(
        "codex", "codex", identity, clean(text_of(job.get("name")) or identity),
        schedule=rrule_words(text_of(job.get("rrule"))),
        state={"active": "enabled", "": "unverified"}.get(status, status), active=status == "active",
        executor=" · ".join(["Codex", *([model] if (model := text_of(job.get("model"))) else [])]),
        host=places.host, owner="you", registry=shortened(places, path), tag="codex",
        observation="the app's files", location=", ".join(texts(job.get("cwds"))[:3]) or "this machine",
        last_run=when(times.get("last")), next_run=when(times.get("next")) if status == "active" else "",
        last_result={"failed": "failed", "running": "running"}.get(result, "ok" if result else "unobserved"),
    )


def codex_times(places: Places) -> dict[str, dict[str, object]]:
    """Last and next run and the last result by id, from the app's database; none when it can't be read."""
    found: dict[str, dict[str, object]] = {}
    for identity, last, following in query(
            places, "SELECT id, last_run_at, next_run_at FROM automations LIMIT ?", (MOST_JOBS,)):
        found[identity] = {"last": last, "next": following}
    # With a single max() the other columns come from the same, newest row.
    for identity, status, _ in query(
            places,
            "SELECT automation_id, status, max(created_at) FROM automation_runs GROUP BY automation_id"
                    " LIMIT ?", (MOST_JOBS,)):
        found.setdefault(identity, {})["status"] = status
    return found


def query(places: Places, statement: str, values: tuple[object, ...]) -> list[tuple[object, ...]]:
    """The rows that the Codex app's database answers; none when it can't. It is opened for reading only and
    hardly waited for, since the app may be writing."""
    path = places.home + "/.codex/sqlite/codex-dev.db"
    if not os.path.isfile(path) or os.path.islink(path):
        return []
    try:
        import sqlite3
    except ImportError:
        return []
    try:
        base = sqlite3.connect("file:" + quoted_path(path) + "?mode=ro", uri=True, timeout=0.5)
        try:
            return base.execute(statement, values).fetchall()
        finally:
            base.close()
    except sqlite3.Error:
        return []


def codex_runs(places: Places, identity: str) -> tuple[list[dict[str, object]], str]:
    """The last runs of a Codex automation, newest first, and why there are none."""
    rows = query(places, "SELECT created_at, status, inbox_title, inbox_summary FROM automation_runs"
                         " WHERE automation_id = ? ORDER BY created_at DESC LIMIT ?", (identity, MOST_RUNS))
    return [
        {"at": when(at), "status": clean(text_of(status).lower().replace("_", " ")),
         "line": clean(text_of(summary) or text_of(title))}
        for at, status, title, summary in rows
    ], "" if rows else "the app's database holds no run of it"


def quoted_path(path: str) -> str:
    """A path as a part of a file address."""
    return "".join(
        letter if letter.isascii() and (letter.isalnum() or letter in "/._-") else
        "".join(f"%{byte:02X}" for byte in letter.encode("utf-8", "surrogateescape")) for letter in path)


def orca_states(places: Places) -> list[tuple[str, dict[str, object], str]]:
    """The files in which Orca keeps its state, one for each of its profiles: path, contents, and what is
    wrong with them."""
    folder = places.home + "/.config/orca"
    paths = [folder + "/orca-data.json"]
    paths += [f"{folder}/profiles/{name}/orca-data.json" for name in names(folder + "/profiles")]
    found: list[tuple[str, dict[str, object], str]] = []
    for path in paths:
        if os.path.lexists(path):
            state, problem = read_json(path, MOST_ORCA)
            sound = type(state) is dict and type(state.get("automations", [])) is list
            problem = problem or ("" if sound else "it holds no list of automations")
            found.append((path, {} if problem else state, problem))  # type: ignore[arg-type]
    return found


def orca_jobs(places: Places) -> Found:
    """Orca's automations of all profiles; each id once."""
    states = orca_states(places)
    if not states:
        return Found(False, "Orca keeps no state here")
    found = Found(observed=False)
    seen: set[str] = set()
    for path, state, problem in states:
        if problem:
            found.note = f"{shortened(places, path)}: {problem}"
            found.alerts.append("orca: " + found.note)
            continue
        found.observed = True
        runs = last_runs(state.get("automationRuns"))
        for job in state.get("automations", [])[:MOST_JOBS]:  # type: ignore[index]
            identity = job.get("id") if type(job) is dict else None
            if not usable_id(identity):
                found.alerts.append(f"orca: {shortened(places, path)}: an automation without an id")
            elif identity not in seen:
                seen.add(identity)
                found.rows.append(orca_row(places, path, job, runs.get(identity, {})))
    return found


def orca_runs(places: Places, identity: str) -> tuple[list[dict[str, object]], str]:
    """The last runs of an Orca automation, newest first, and why there are none."""
    runs = [run for _, state, _ in orca_states(places) for run in listed_runs(state.get("automationRuns"))
            if run.get("automationId") == identity]
    runs.sort(key=started, reverse=True)
    return [
        {"at": when(started(run)), "status": run_result(text_of(run.get("status"))),
         "line": clean(text_of(run.get("error")) or text_of(run.get("title")))}
        for run in runs[:MOST_RUNS]
    ], "" if runs else "Orca's state holds no run of it"


def listed_runs(runs: object) -> list[dict[str, object]]:
    """The runs of a state, without what isn't one."""
    return [run for run in runs if type(run) is dict] if type(runs) is list else []


def last_runs(runs: object) -> dict[str, dict[str, object]]:
    """The newest run of each automation by its id."""
    newest: dict[str, dict[str, object]] = {}
    for run in listed_runs(runs):
        identity = text_of(run.get("automationId"))
        if identity and started(run) >= started(newest.get(identity, {})):
            newest[identity] = run
    return newest


def started(run: dict[str, object]) -> float:
    """When a run began, in milliseconds; 0 when it doesn't tell."""
    for key in ("startedAt", "createdAt", "scheduledFor"):
        value = run.get(key)
        if type(value) in (int, float):
            return float(value)  # type: ignore[arg-type]
    return 0.0


def run_result(status: str) -> str:
    """Orca's word for a run's state in ours."""
    if status == "completed":
        return "ok"
    if status in ("pending", "dispatching", "dispatched"):
        return "running"
    return "failed: dispatch" if status == "dispatch_failed" else status.replace("_", " ") or "unobserved"


def orca_row(
    places: Places, path: str, job: dict[str, object], run: dict[str, object]
) -> dict[str, object]:
    """One automation of Orca."""
    enabled = job.get("enabled") is True
    remote = text_of(job.get("executionTargetType")) == "ssh"
    return automation(
        "orca", "orca", str(job["id"]), clean(text_of(job.get("name")) or str(job["id"])),
        schedule=rrule_words(text_of(job.get("rrule"))), state="enabled" if enabled else "paused",
        active=enabled, executor=text_of(job.get("agentId")), host=places.host, owner="you",
        registry=shortened(places, path), tag="orca", observation="Orca's own state file",
        location="over ssh from this machine" if remote else "this machine",
        last_run=when(job.get("lastRunAt")) or when(started(run)),
        last_result=run_result(text_of(run.get("status"))),
        next_run=when(job.get("nextRunAt")) if enabled else "",
    )


def shortened(places: Places, path: str) -> str:
    """A path with "~" for the home."""
    return "~" + path[len(places.home):] if path.startswith(places.home + "/") else path
