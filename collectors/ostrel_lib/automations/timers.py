# SPDX-License-Identifier: Apache-2.0
"""Asking a systemd manager, of this machine or of the server, for its timers."""
from __future__ import annotations

import time

from ostrel_lib.automations import systemd
from ostrel_lib.automations.rows import Found, automation
from ostrel_lib.places import Places, iso
from ostrel_lib.ssh import SSH
from ostrel_lib.tools import Deadline, Outcome, run

MOST_TIMERS = 20000
NAMES_PER_CALL = 400
"""Names of up to 255 bytes, well below what one command line may hold."""
SSH_PATIENCE = 25.0

REMOTE_ENVIRONMENT = ("env", "LC_ALL=C", "TZ=UTC", "SYSTEMD_PAGER=", "SYSTEMD_COLORS=0", "SYSTEMD_URLIFY=0")


class Manager:
    """One systemd manager: "user" or "system", on this machine or on the host behind an alias."""

    __slots__ = ("places", "scope", "alias", "deadline", "since_boot")

    def __init__(self, places: Places, scope: str, deadline: Deadline, alias: str = "") -> None:
        self.places = places
        self.scope = scope
        self.alias = alias
        self.deadline = deadline
        self.since_boot = time.clock_gettime(time.CLOCK_MONOTONIC)


def ask(manager: Manager, tool: str, options: list[str], names: list[str] | None = None) -> Outcome:
    """Runs a tool for a manager, with units as its last words."""
    words = [tool, *options, *(["--"] if names else [])]
    if manager.alias:
        return remote(manager, words, names or [])
    return run(manager.places, [*words, *(names or [])], manager.deadline.left())


def remote(manager: Manager, words: list[str], values: list[str]) -> Outcome:
    """Runs a tool on the server. Only our own fixed words are in the command line, which a shell reads there;
    the values come through the standard input to `xargs`."""
    fed = ("xargs", "-0", "-r") if values else ()
    stdin = "\0".join([*values, ""]).encode("utf-8") if values else b""
    return run(manager.places, [*SSH, "--", manager.alias, *REMOTE_ENVIRONMENT, *fed, *words],
               manager.deadline.left(SSH_PATIENCE), stdin)


def show(
    manager: Manager, names: list[str], properties: tuple[str, ...]
) -> tuple[dict[str, dict[str, str]], str]:
    """The properties of units by id, and why some are missing."""
    options = ["--" + manager.scope, "show", "--no-pager", "--property=" + ",".join(properties)]
    found: dict[str, dict[str, str]] = {}
    for start in range(0, len(names), NAMES_PER_CALL):
        outcome = ask(manager, "systemctl", options, names[start:start + NAMES_PER_CALL])
        found.update(systemd.blocks(outcome.out))
        # One unit that it doesn't like makes it end with an error behind good answers.
        if outcome.problem or (outcome.failure and not found):
            return found, outcome.failure
    if names and not found:
        return found, "systemctl printed something that isn't a list of properties"
    return found, ""


def read(manager: Manager) -> Found:
    """All timers of a manager as rows, those that are switched off too."""
    listed = ask(manager, "systemctl", [
        "--" + manager.scope, "list-unit-files", "--type=timer", "--no-legend", "--no-pager", "--full",
        "--plain"])
    if listed.missing or systemd.not_here(listed.failure):
        return Found(False, nobody(manager))
    names, sound = systemd.unit_files(listed.out)
    if listed.problem or not names and (listed.failure or not sound):
        why = listed.failure or "systemctl printed something that isn't a list of timers"
        found = Found(False, why)
        found.alerts.append(f"{manager.scope} timers: {why}")
        return found
    found = Found()
    if not sound:
        found.alerts.append(f"{manager.scope} timers: some lines of the list can't be read")
    if len(names) > MOST_TIMERS:
        found.alerts.append(f"{manager.scope} timers: the first {MOST_TIMERS} of {len(names)} are shown")
    # The pattern finds what has no file of its own: instances of templates and transient timers.
    timers, problem = show(manager, ["*.timer", *names[:MOST_TIMERS]], systemd.TIMER_PROPERTIES)
    timers = {name: timer for name, timer in timers.items() if systemd.valid_unit(name, "timer")}
    jobs: dict[str, dict[str, str]] = {}
    if not problem:
        units = dict.fromkeys(timer.get("Unit", "") for timer in timers.values())
        jobs, problem = show(manager, [unit for unit in units if systemd.valid_unit(unit)],
                             systemd.JOB_PROPERTIES)
    if systemd.not_here(problem) and not timers:
        return Found(False, nobody(manager))  # the list is made of files, so it came without a manager
    if problem and names:
        found.alerts.append(f"{manager.scope} timers: {problem}")
    if problem and names and not timers:
        found.observed, found.note = False, problem
        return found
    now = manager.places.clock()
    found.rows = [row(manager, timer, jobs.get(timer.get("Unit", ""), {}), now) for timer in timers.values()]
    return found


def nobody(manager: Manager) -> str:
    """That there is no manager to ask."""
    return f"no {manager.scope} systemd runs " + ("on " + manager.alias if manager.alias else "here")


def row(manager: Manager, timer: dict[str, str], job: dict[str, str], now: float) -> dict[str, object]:
    """One timer as a job of the inventory. Only the user's own timers of this machine are switched here."""
    name = timer["Id"]
    local = not manager.alias
    own = local and manager.scope == "user"
    unit = timer.get("Unit", "")
    stem = systemd.unescaped(name[:-len(".timer")])
    words = timer.get("Description", "")
    at = systemd.next_run(timer, now, manager.since_boot)
    loaded = timer.get("LoadState") == "loaded"
    user = job.get("User") or ("root" if manager.scope == "system" else "you")
    place = "this machine" if local else "server " + manager.alias
    switched = "by root with systemctl" if local else "on the server"
    return automation(
        "launchd" if local else "systemd",
        f"systemd {manager.scope} timers" if local else f"{manager.alias} {manager.scope} timers",
        f"{manager.scope}:{name}",
        stem if words in ("", name) else f"{stem} · {words}",
        schedule=systemd.schedule(timer), state=systemd.state(timer),
        active=timer.get("ActiveState") == "active",
        executor=" · ".join(part for part in (unit, systemd.command(job)) if part),
        host=manager.places.host if local else manager.alias,
        owner=user, registry=timer.get("FragmentPath", ""), tag=manager.scope + "-timer",
        can_run=own and systemd.startable(job) and systemd.valid_unit(unit),
        observation="systemctl" + (" over ssh" if not local else "") if loaded else "systemctl · unverified",
        location=place if own else f"{place} · switched elsewhere, {switched}",
        toggles=own and loaded and timer.get("UnitFileState") in systemd.SWITCHABLE,
        target=unit if local else manager.alias,
        last_run=systemd.last_run(timer, job), last_result=systemd.result(job) if job else "unobserved",
        next_run=iso(at) if at else "",
    )
