# SPDX-License-Identifier: Apache-2.0
"""Doing something to a job: run it once, switch it, or save a plan of its transfer.

Only the user's own systemd timers of this machine are ever touched. Whatever comes of it, a receipt says so,
and "ok" is only said of an effect that was looked for and found.
"""
from __future__ import annotations

import signal

from ostrel_lib.automations import systemd
from ostrel_lib.automations.receipts import Receipt
from ostrel_lib.automations.rows import LANE_KEYS, usable_id
from ostrel_lib.automations.timers import Manager, show
from ostrel_lib.oneline import clean
from ostrel_lib.places import Places
from ostrel_lib.tools import Deadline, Interrupted, Outcome, run

OPS = ("run", "disable", "enable", "plan")
SECONDS = 90.0
"""For all calls together; the reader waits for 130."""
COMMAND_SECONDS = 30.0
LOOK = 0.25
START_LOOKS = 40
"""Looks, a quarter of a second apart, in which a run must have begun."""
END_LOOKS = 12
"""Looks in which a short run may end, so that its result can be told."""
ELSEWHERE = "it is switched only in its own interface"
BUSY = ("active", "activating", "reloading", "deactivating")


class Done:
    """What came of an action: "done", "unchanged", "refused", "failed" or "interrupted", in words, and the
    states before and after as far as they were looked at."""

    __slots__ = ("result", "words", "stderr", "before", "after")

    def __init__(self, result: str, words: str, stderr: str = "", before: str = "", after: str = "") -> None:
        self.result = result
        self.words = words
        self.stderr = stderr
        self.before = before
        self.after = after


def act(places: Places, options: dict[str, str], problem: str) -> dict[str, object]:
    """The answer to `act`. `problem` is what is wrong with the command line; it is refused with a receipt
    like anything else."""
    op = options.get("--op", "")
    receipt = Receipt(places)
    try:
        if receipt.descriptor < 0:
            why = f"nothing was done, since no receipt can be written: {receipt.problem}"
            return answer(op, Done("refused", why), "")
        subject = {"op": clean(op, 40), "lane": clean(options.get("--lane", ""), 40),
                   "id": options.get("--id", "")[:400]}
        done = Done("interrupted", "the bridge was ended in the middle; look at the job before trying again")
        try:
            done = carry_out(places, options, problem)
        except Interrupted:
            pass
        except OSError as fault:
            words = f"this machine can't go on ({fault.strerror}); look at the job before trying again"
            done = Done("failed", words)
        finally:
            signal.signal(signal.SIGTERM, signal.SIG_IGN)
            written = receipt.write({**subject, "result": done.result, "detail": clean(done.words),
                                     "before": done.before, "after": done.after})
        return answer(op, done, written)
    finally:
        receipt.close()


def answer(op: str, done: Done, receipt: str) -> dict[str, object]:
    """What is printed."""
    ok = done.result in ("done", "unchanged")
    words = clean(done.words)
    said = {"message": words} if ok else {"error": words, "stderr": clean(done.stderr)}
    return {"ok": ok, "op": op, **said, "receipt": receipt}


def carry_out(places: Places, options: dict[str, str], problem: str) -> Done:
    """Checks what is asked for and does it."""
    lane, identity, op = (options.get(name, "") for name in ("--lane", "--id", "--op"))
    if problem:
        return Done("refused", problem)
    if op not in OPS:
        return Done("refused", "there is no such action")
    if "--confirm" not in options:
        return Done("refused", "nothing is done without a confirmation")
    if lane not in LANE_KEYS or not usable_id(identity):
        return Done("refused", "there is no such job")
    if op == "plan":
        from ostrel_lib.automations.plan import save

        return save(places, lane, identity)
    scope, _, unit = identity.partition(":")
    if lane != "launchd" or scope != "user":
        return Done("refused", ELSEWHERE)
    if not systemd.valid_unit(unit, "timer"):
        return Done("refused", "that isn't the name of a timer")
    manager = Manager(places, "user", Deadline(SECONDS))
    timers, problem = show(manager, [unit], systemd.TIMER_PROPERTIES)
    timer = timers.get(unit, {})
    if problem or timer.get("LoadState") != "loaded":
        return Done("failed", problem or f"{unit} can't be loaded: {timer.get('LoadState', 'it is unknown')}")
    return run_once(manager, unit, timer) if op == "run" else switch(manager, unit, timer, op)


def command(manager: Manager, *words: str) -> Outcome:
    """Runs systemctl for the user's manager. It never asks for a password."""
    return run(manager.places, ["systemctl", "--user", "--no-ask-password", "--no-pager", *words],
               manager.deadline.left(COMMAND_SECONDS))


def described(timer: dict[str, str]) -> str:
    """The two words that say whether a timer fires, now and after the next login."""
    return f"{timer.get('ActiveState') or 'unknown'}, {timer.get('UnitFileState') or 'unknown'}"


def reached(timer: dict[str, str], op: str) -> bool:
    """Whether a timer is in the state that the action leads to."""
    active = timer.get("ActiveState") == "active"
    enabled = timer.get("UnitFileState") in systemd.ENABLED
    return active and enabled if op == "enable" else not active and not enabled


def switch(manager: Manager, unit: str, timer: dict[str, str], op: str) -> Done:
    """Enables or disables a timer, and starts or stops it with that. What it started already goes on."""
    before = described(timer)
    if timer.get("UnitFileState") not in systemd.SWITCHABLE:
        return Done("refused", f"{unit} is {timer.get('UnitFileState') or 'unknown'}: {ELSEWHERE}",
                    before=before)
    if reached(timer, op):
        return Done("unchanged", f"{unit} is {op}d already", before=before, after=before)
    if op == "enable" and (refusal := objection(manager.places, unit)):
        return Done("refused", refusal, before=before, after=before)
    outcome = command(manager, op, "--now", "--", unit)
    timers, problem = show(manager, [unit], systemd.TIMER_PROPERTIES)
    seen = timers.get(unit, {})
    after = described(seen) if seen else "unknown"
    if seen and reached(seen, op):
        return Done("done", f"{op} · {unit} · now {after}", before=before, after=after)
    why = outcome.failure or problem or "systemctl reported no error"
    if not outcome.failure and op == "disable" and seen.get("UnitFileState") in systemd.ENABLED:
        why = "it is enabled for all users, which only root changes"
    return Done("failed", f"{op} had no full effect on {unit}, which is {after}: {why}", outcome.complaint,
                before, after)


def objection(places: Places, unit: str) -> str:
    """Why the user's registry or the quota speaks against switching a job on; "" when nothing does."""
    from ostrel_lib.automations import registry
    from ostrel_lib.automations.quota import quotas

    declared = registry.load(places)
    if declared.broken:
        return "the registry can't be asked: " + declared.note
    if declared.faults:
        return "the registry can't be asked for sure: " + declared.faults[0]
    entry = registry.entry_of(declared, "launchd", "user:" + unit)
    if entry.get("blocked") is True:
        return f"your registry has {unit} blocked"
    needed = entry.get("min_quota_pct")
    if type(needed) not in (int, float):
        return ""
    windows = [window for row in quotas(places, True)
               for window in row["windows"]]  # type: ignore[attr-defined]
    if not windows:
        return f"your registry asks for {needed}% of the quota, and no quota can be observed"
    left = min(window["remaining"] for window in windows)
    return f"your registry asks for {needed}% of the quota, and {left:.0f}% is left" if left < needed else ""


def run_once(manager: Manager, unit: str, timer: dict[str, str]) -> Done:
    """Starts what a timer starts, once, and looks whether it really began and, if it is short, how it
    ended."""
    job_unit = timer.get("Unit", "")
    if not systemd.valid_unit(job_unit):
        return Done("failed", f"{unit} doesn't say what it starts")
    job = look(manager, job_unit)
    before = job.get("ActiveState", "unknown")
    if not systemd.startable(job):
        return Done("refused", f"{job_unit} can't be started by hand", before=before)
    if before in BUSY:
        return Done("refused", f"{job_unit} is running already", before=before, after=before)
    outcome = command(manager, "start", "--no-block", "--", job_unit)
    if outcome.failure:
        return Done("failed", f"{job_unit} wasn't started: {outcome.failure}", outcome.complaint, before,
                    look(manager, job_unit).get("ActiveState", "unknown"))
    now = job
    for _ in range(START_LOOKS):
        now = look(manager, job_unit)
        if began(job, now) or not manager.deadline.left():
            break
        manager.places.pause(LOOK)
    if not began(job, now):
        return Done("failed", f"{job_unit} was asked for, and hasn't begun to run", "", before,
                    now.get("ActiveState", "unknown"))
    for _ in range(END_LOOKS):
        if now.get("ActiveState") not in BUSY or not manager.deadline.left():
            break
        manager.places.pause(LOOK)
        now = look(manager, job_unit) or now
    after = now.get("ActiveState", "unknown")
    ended = systemd.result(now)
    if ended.startswith("failed"):
        return Done("failed", f"{job_unit} ran once and {ended}", "", before, after)
    return Done("done", f"run · {job_unit} · " + ("is running" if ended == "running" else "ran to its end"),
                "",
                before, after)


def look(manager: Manager, unit: str) -> dict[str, str]:
    """A unit's properties as they are now; none when they can't be read."""
    found, _ = show(manager, [unit], systemd.JOB_PROPERTIES)
    return found.get(unit, {})


def began(before: dict[str, str], now: dict[str, str]) -> bool:
    """Whether another run has begun: each has an id of its own."""
    return now.get("InvocationID", "") not in ("", before.get("InvocationID", ""))
