# SPDX-License-Identifier: Apache-2.0
"""Throws spoilt input at the scripts, each run in a home of its own and with no tool on its search path.

scripts.py [--seconds N | --runs N] [--seed N] [NAME …]

A run must end by itself, with one of the script's exit codes and no traceback, and print nothing or one JSON
object. What fails is told with its seed and kept in build/fuzz/found.
"""
import argparse
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable
from typing import Any, NamedTuple

PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FOUND = os.path.join(PROJECT, "build/fuzz/found")
CODES = (0, 1, 2)
LONGEST = 30  # seconds
SPOILERS = (b"\0", b"\xff\xfe", b"\xed\xa0\x80", b"[" * 3000, b'{"a":' * 500, b"1e999", b"-", b"\n", b"\r\n",
            b"9" * 400, b'"', b"\\u0000", b"NaN", b"../" * 50, b"\x1b[31m", b"--", b",,")
ODD: tuple[Any, ...] = (
    None, True, False, 0, -1, 2**63, 1e308, 0.5, "", "\0", "\ud800", "x" * 5000, [], {}, [[]], {"a": {}},
    "-rf", "$(id)", "a\nb", ";#{x}")


class Target(NamedTuple):
    """A command of a script: its words, its input and the files of its home, all by chance."""
    words: Callable[[random.Random], list[str]]
    data: Callable[[random.Random], bytes]
    files: Callable[[random.Random], dict[str, bytes]]


def nothing(_: random.Random) -> Any:
    return {}


def silence(_: random.Random) -> bytes:
    return b""


def odd_value(rng: random.Random, value: Any, chance: float) -> Any:
    """The same value, with parts of it in the place of which others stand."""
    if rng.random() < chance:
        return rng.choice(ODD)
    if isinstance(value, dict):
        return {key: odd_value(rng, part, chance) for key, part in value.items() if rng.random() > chance / 2}
    if isinstance(value, list):
        return [odd_value(rng, part, chance) for part in value] * rng.choice((1, 1, 1, 40))
    return value


def spoilt(rng: random.Random, data: bytes) -> bytes:
    """The bytes with some of them cut, doubled, turned or put in."""
    for _ in range(rng.choice((0, 1, 1, 2, 5))):
        at = rng.randrange(len(data) + 1)
        end = min(len(data), at + rng.choice((1, 3, 50)))
        put_in = rng.choice(SPOILERS)
        data = rng.choice((
            data[:at], data[:at] + data[end:], data[:end] + data[at:], data[:at] + put_in + data[at:],
            data[:at] + bytes([rng.randrange(256)]) + data[at + 1:]))
    return data


def message(value: Any) -> Callable[[random.Random], bytes]:
    """That value as JSON, spoilt in its types or in its bytes."""
    def made(rng: random.Random) -> bytes:
        return spoilt(rng, json.dumps(odd_value(rng, value, rng.choice((0.0, 0.05, 0.3)))).encode())
    return made


def words_of(script: str, *commands: str) -> Callable[[random.Random], list[str]]:
    """The script with one of the commands, whose values are spoilt."""
    def chosen(rng: random.Random) -> list[str]:
        words = [script]
        for word in rng.choice(commands).split(" "):
            flag, is_value, value = word.partition("=")
            if is_value or rng.random() < 0.1:
                value = spoilt(rng, (value if is_value else word).encode()).replace(b"\0", b"")
                text = value.decode("utf-8", "replace")
                word = f"{flag}={text}" if is_value else text
            words.append(word)
        return words
    return chosen


def lines(*seeds: Any) -> Callable[[random.Random], bytes]:
    """Those values, a line each, spoilt."""
    def made(rng: random.Random) -> bytes:
        return b"".join(message(rng.choice(seeds))(rng) + b"\n" for _ in range(rng.randrange(1, 30)))
    return made


SNAPSHOT = {
    "ts": "x", "ram": {"total": 16, "used_pct": 60}, "swap": {"used_pct": 24}, "load": {"l1": 2.4, "ncpu": 8},
    "fan": {"mcp": 4}, "sessions": {"claude": 1}, "verdict": {"level": "ok"},
    "live_sessions": [{"name": "claude", "pid": 101, "rss": 250}],
    "procs": [{"name": "a", "pid": "102", "rss": 512, "cpu": 4, "grp": "app", "cmd": "a"}]}
SAMPLE = {"swap": 20, "load": 30, "mcp": 4, "ts": "2026-11-25T08:00:00", "t": 1000}
TASK = {"id": "ID", "command": "execute", "payload": {
    "sshAlias": "srv", "repoPath": "~/repo", "task": "go on", "kind": "codex_continuation",
    "jobId": "ostrel-0a1b2c3d", "timeoutSeconds": 60, "profile": "balanced", "apply": False}}
REGISTRY = {"version": 1, "automations": [
    {"lane": "registry", "id": "a", "title": "A", "host": "h", "schedule": "daily", "active": True,
     "family": "dot"},
    {"lane": "cloud", "id": "b", "min_quota_pct": 20, "blocked": False}]}
QUOTA = {"timestamp": "2026-11-25T07:59:00.000Z", "payload": {"type": "token_count", "rate_limits": {
    "primary": {"used_percent": 28, "window_minutes": 300, "resets_at": 1795600000}}}}
RECEIPT = {"ts": "2026-11-25 08:00:00", "kind": "clean", "group": "app-caches", "removed": 3, "freed_mb": 1.5}
ORCA = {"automations": [
    {"id": "r1", "name": "n", "enabled": True, "rrule": "FREQ=DAILY", "runs": [{"at": 1}]}]}

TARGETS = {
    "analyze": Target(words_of("ostrel.py", "analyze --stdin"), message(SNAPSHOT), nothing),
    "history": Target(
        words_of("ostrel.py", "history-clean", "history-clean --apply"), silence,
        lambda rng: {"Library/Application Support/ostrel/mem-history.jsonl": lines(SAMPLE)(rng)}),
    "janitor": Target(
        words_of("ostrel_janitor.py", "preview --group=agents-light", "preview --group=product-builds",
                 "clean --group=app-caches --apply --select=pip,npm", "receipts", "groups",
                 "kill-preview --pids=12,34 --protected=node,bun",
                 "mcp-preview --depth=deep --unprotected=orca"), silence,
        lambda rng: {".config/ostrel/product-roots": spoilt(rng, b"~/work\n/none\n"), ".cache/pip/a": b"x",
                     "Library/Application Support/Ostrel/receipts/2026-11-25.jsonl": lines(RECEIPT)(rng)}),
    "automations": Target(
        words_of("automations_bridge.py", "list --refresh", "list",
                 "journal --lane orca --id r1 --target ",  # of no server
                 "act --lane launchd --id user:a.timer --op plan --confirm"), silence,
        lambda rng: {".config/zol-mini-apps/ostrel-automations.json": message(REGISTRY)(rng),
                     ".config/orca/orca-data.json": message(ORCA)(rng),
                     ".codex/automations/a/automation.toml": spoilt(rng, b'name = "a"\nrrule = "X=Y"\n'),
                     ".codex/sessions/2026/11/25/rollout-2026-11-25T07-59-00-x.jsonl": lines(QUOTA)(rng),
                     ".codex/sqlite/codex-dev.db": spoilt(rng, b"SQLite format 3\0" + bytes(200))}),
    "sessions": Target(
        words_of("session_bridge.py", "list", "switch --handle tmux:1.2:%1:/tmp/x --confirm"), silence,
        nothing),
    "remote": Target(lambda _: ["ostrel_remote.py"], message(TASK), nothing)}


def fault_of(done: subprocess.CompletedProcess) -> str:
    """What is wrong with how a run ended; "" when nothing is."""
    if done.returncode not in CODES:
        return f"exit code {done.returncode}"
    if b"Traceback" in done.stderr or b"can't open file" in done.stderr:
        return "a traceback, or no script"
    if not done.stdout.strip():
        return "" if done.returncode or done.stderr else "nothing said"
    try:
        return "" if isinstance(json.loads(done.stdout), dict) else "no JSON object"
    except ValueError:
        # The collector's chores for people print lines.
        return "" if done.returncode == 0 and done.stdout.isascii() and b"{" not in done.stdout else "no JSON"


def run(target: Target, seed: int) -> str:
    """One run; what is wrong with it."""
    rng = random.Random(seed)
    home = tempfile.mkdtemp()
    try:
        for path, content in target.files(rng).items():
            os.makedirs(os.path.dirname(f"{home}/{path}"), exist_ok=True)
            with open(f"{home}/{path}", "wb") as file:
                file.write(content)
        script, *words = target.words(rng)
        environment = {
            "HOME": home, "PATH": f"{home}/none", "TMUX_TMPDIR": home, "PYTHONDONTWRITEBYTECODE": "1"}
        done = subprocess.run(
            ["/usr/bin/python3", f"{PROJECT}/collectors/{script}", *words], input=target.data(rng), cwd=home,
            env=environment, capture_output=True, timeout=LONGEST, check=False)
        fault = fault_of(done)
        return f"{fault}: {words} {done.stdout[-300:]!r} {done.stderr[-600:]!r}" if fault else ""
    except subprocess.TimeoutExpired:
        return "it didn't end"
    finally:
        shutil.rmtree(home, ignore_errors=True)


def main() -> int:
    parser = argparse.ArgumentParser(description="Throws spoilt input at the scripts.")
    parser.add_argument("--seconds", type=float, help="for each target")
    parser.add_argument("--runs", type=int, default=25, help="of each target, without --seconds")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("names", nargs="*", choices=[*TARGETS, []], metavar="NAME")
    asked = parser.parse_args()
    faults = 0
    for name in asked.names or TARGETS:
        seed, end = asked.seed, time.monotonic() + (asked.seconds or 0)
        while time.monotonic() < end if asked.seconds else seed < asked.seed + asked.runs:
            fault = run(TARGETS[name], seed)
            if fault:
                faults += 1
                print(f"{name} with seed {seed}: {fault}", file=sys.stderr)
                os.makedirs(FOUND, exist_ok=True)
                with open(f"{FOUND}/{name}-{seed}.txt", "w", encoding="utf-8", errors="replace") as file:
                    file.write(fault)
            seed += 1
        print(f"fuzz: {name}, {seed - asked.seed} runs")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
