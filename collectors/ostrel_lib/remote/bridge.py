# SPDX-License-Identifier: Apache-2.0
"""One request of `ostrel_remote.py`, from its input to its answer."""
from __future__ import annotations

import os

from ostrel_lib.files import read_within
from ostrel_lib.jsontext import dump
from ostrel_lib.oneline import clean
from ostrel_lib.output import put
from ostrel_lib.places import Places
from ostrel_lib.remote.caps import MANNERS, effective, words
from ostrel_lib.remote.program import COMMAND, conversation
from ostrel_lib.remote.request import MOST_BYTES, Request, taken
from ostrel_lib.ssh import SSH
from ostrel_lib.tools import Interrupted, Outcome, end_on_request, end_without_reader, run

QUICK = 16.0
"""Seconds for what starts nothing; the reader waits for 18."""
GRACE = 15.0
"""Seconds beyond the task's own limit in which its end must be told; the reader waits for 25."""
MOST_OUTPUT = 1 << 20
EXCERPT = 8000

OPTIONS = (
    "-o", "StrictHostKeyChecking=yes", "-o", "NoHostAuthenticationForLocalhost=no", "-o", "UpdateHostKeys=no",
)
"""Beyond what every call to a server has: a key that isn't known is never taken."""

FAILURES = {
    "folder": "There is no such folder on {alias}: {repo}.",
    "closed": "The folder can't be entered on {alias}: {repo}.",
    "repository": "The folder on {alias} isn't in a git repository: {repo}.",
    "tool": "codex isn't installed on {alias}.",
    "caps": "{alias} has neither a systemd that sets caps nor prlimit and timeout, so the caps can't be set.",
    "disk": "The disk of the repository on {alias} is full: {rest} MB are left.",
}


def main(argv: list[str], places: Places | None = None) -> int:
    """Answers the request on the standard input and gives the exit status: 0 whenever there is an answer,
    also one that tells an error; 1 when it was asked to end, or the reader has gone."""
    try:
        end_on_request()
        answer = answered(read_within(0, MOST_BYTES), places or Places())
        return 0 if put(1, dump(answer) + "\n") else 1
    except Interrupted:
        return 1


def answered(data: bytes | None, places: Places) -> dict[str, object]:
    """The answer to a request; no data stands for more than is read."""
    request, problem = taken(data)
    result: dict[str, object] = {}
    if not problem:
        result, problem = carried_out(places, request)
    if problem:
        return {"id": request.identity, "ok": False, "error": {"message": problem}}
    return {"id": request.identity, "ok": True, "result": result}


def carried_out(places: Places, request: Request) -> tuple[dict[str, object], str]:
    """The result, and in a sentence why there is none."""
    payload = request.payload
    start = payload.get("apply") is True and request.command == "execute"
    if not start:
        end_without_reader(places)
    if request.command == "health":
        told = asked(places, request, QUICK, "health")
        return (health(told), "") if not told.problem else ({}, told.problem)
    seconds = int(str(payload["timeoutSeconds"]))
    profile = str(payload["profile"])
    told = asked(
        places, request, seconds + GRACE if start else QUICK, "start" if start else "preview",
        str(payload["repoPath"]), str(payload["jobId"]), str(seconds), *words(profile, seconds),
        str(payload["task"]) if start else "")
    if told.problem:
        return {}, told.problem
    manner = told.words.get("manner", "")
    result: dict[str, object] = {
        "host": f"{request.alias} · {MANNERS.get(manner, 'capped')}", "repoPath": payload["repoPath"],
        "effectiveCaps": effective(profile, seconds, manner),
    }
    if not start:
        return {**result, "taskChars": len(str(payload["task"]))}, ""
    status = told.words.get("exit", "")
    return {**result, "exitCode": int(status) if status.isdecimal() else -1,
            "outputExcerpt": excerpt(told.output, seconds, status == "124")}, ""


class Told:
    """What the server told: its words by name, the output of the task, and why that isn't all."""

    __slots__ = ("words", "output", "problem")

    def __init__(self) -> None:
        self.words: dict[str, str] = {}
        self.output = b""
        self.problem = ""


def asked(places: Places, request: Request, seconds: float, mode: str, *values: str) -> Told:
    """Runs the program on the server. The mark in front of its words is new each time, so nothing that the
    login or the task prints is taken for one."""
    mark = os.urandom(16).hex()
    outcome = run(
        places, [*SSH, *OPTIONS, "--", request.alias, COMMAND], seconds, conversation(mark, mode, *values),
        MOST_OUTPUT, hold=True)
    told = understood(outcome.out, mark.encode("ascii"))
    told.problem = problem_of(request, outcome, told)
    return told


def understood(out: bytes, mark: bytes) -> Told:
    """The words and the output. All lines between "started" and "exit" are the task's."""
    told = Told()
    _, started, rest = out.partition(b"\n" + mark + b" started\n")
    heard = out
    if started:
        output, ended, last = rest.rpartition(b"\n" + mark + b" exit ")
        told.output = output if ended else rest
        heard = out[:len(out) - len(rest)] + (mark + b" exit " + last if ended else b"")
    for line in heard.split(b"\n"):
        if line.startswith(mark + b" "):
            word, _, value = line[len(mark) + 1:].partition(b" ")
            told.words[word.decode("ascii", "replace")] = value.strip().decode("ascii", "replace")
    return told


def problem_of(request: Request, outcome: Outcome, told: Told) -> str:
    """One sentence on why there is no result; "" when there is one."""
    alias = request.alias
    if "end" in told.words:
        reason, _, rest = told.words.get("fail", "").partition(" ")
        repo = clean(str(request.payload.get("repoPath", "")), 200)
        return FAILURES[reason].format(alias=alias, repo=repo, rest=rest) if reason in FAILURES else ""
    said = (outcome.problem or outcome.complaint).rstrip(".")
    lost = outcome.problem and outcome.started and request.payload.get("apply") is True
    if "started" in told.words or lost:
        why = said or "it was closed"
        return (f"The connection to {alias} was lost while the task ran ({why}); the task ends with it, or "
                f"at its limit of {request.payload['timeoutSeconds']} s.")
    if outcome.missing:
        return "ssh isn't installed on this machine."
    if "hello" in told.words:
        return f"The connection to {alias} was lost ({said or 'it was closed'})."
    return f"{alias} can't be reached over ssh: {said or 'it gives no shell'}."


def health(told: Told) -> dict[str, object]:
    """The server's capacity, as far as it tells."""
    found: dict[str, object] = {}
    cpus, load, available = (told.words.get(word, "") for word in ("cpus", "load", "available"))
    if cpus.isdecimal() and len(cpus) < 8:
        found["cpuCount"] = int(cpus)
    if load.replace(".", "", 1).isdecimal() and len(load) < 16:
        found["load1"] = float(load)
    if available.isdecimal() and len(available) < 16:
        found["memory"] = {"availableMB": int(available) >> 10}
    return found


def excerpt(output: bytes, seconds: int, stopped: bool) -> str:
    """The end of what the task printed, without what only a terminal understands."""
    text = output.decode("utf-8", "replace").strip("\n")
    if "\x1b" in text:
        import re

        text = re.sub(r"\x1b(\[[0-9;?]*[ -/]*[@-~]|\][^\x07\x1b]*(\x07|\x1b\\)?|[@-Z\\^_])", "", text)
    text = "".join([letter for letter in text if letter.isprintable() or letter in "\n\t"])
    if stopped:
        text += f"\nstopped at its limit of {seconds} s"
    return text[-EXCERPT:]
