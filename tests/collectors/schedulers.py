# SPDX-License-Identifier: Apache-2.0
"""A made-up machine with schedulers: a home, cron's tables, and stub tools on a search path of its own."""
import json
import os
import signal
import sys
import tempfile
import time
from pathlib import Path

from fabricated_machine import COLLECTORS, fresh_folder, put

SCRIPT = os.path.join(COLLECTORS, "automations_bridge.py")
STUB = os.path.join(os.path.dirname(os.path.abspath(__file__)), "stub_scheduler.py")
SETTINGS = ".config/zol-mini-apps/dev.quent.ostrel.json"
REGISTRY = ".config/zol-mini-apps/ostrel-automations.json"
RECEIPTS = "Library/Application Support/Ostrel/receipts"
NOW = 1795593600.0  # 2026-11-25 08:00:00 UTC, a Wednesday

TIMER = {
    "LoadState": "loaded", "ActiveState": "active", "UnitFileState": "enabled",
    "TimersCalendar": "{ OnCalendar=*-*-* 06:00:00 ; next_elapse=Thu 2026-11-26 06:00:00 UTC }",
    "NextElapseUSecRealtime": "Thu 2026-11-26 06:00:00 UTC", "NextElapseUSecMonotonic": "infinity",
    "LastTriggerUSec": "Wed 2026-11-25 06:00:01 UTC", "FragmentPath": "/home/u/.config/systemd/user/x.timer"}
JOB = {
    "LoadState": "loaded", "ActiveState": "inactive", "Result": "success", "CanStart": "yes",
    "RefuseManualStart": "no", "InvocationID": "0" * 32, "ExecMainStatus": "0",
    "ExecMainStartTimestamp": "Wed 2026-11-25 06:00:01 UTC",
    "ExecStart": "{ path=/bin/work ; argv[]=/bin/work --all ; ignore_errors=no ; pid=58 ; status=0 }"}


class Schedulers:
    """Units, tables and files that a test lays down, and the bridge run on them. Time stands still."""

    def __init__(self, test) -> None:
        from ostrel_lib.places import Places

        previous = os.environ.get("TZ")
        os.environ["TZ"] = "UTC"
        time.tzset()
        test.addCleanup(time.tzset)
        test.addCleanup(lambda: os.environ.pop("TZ") if previous is None else os.environ.update(TZ=previous))
        self.root = fresh_folder(test)
        self.state = {"mode": {}, "linger": "yes", "user": {}, "system": {}}
        for folder in ("bin", "home", "etc", "proc", "spool"):
            os.mkdir(f"{self.root}/{folder}")
        self.home = self.root + "/home"
        for tool in ("systemctl", "journalctl", "loginctl"):
            self.tool(tool, f'exec /usr/bin/python3 -S -E "{STUB}" "{self.root}" {tool} "$@"')
        self.save()
        self.now = NOW
        self.places = Places(
            home=self.home, etc=self.root + "/etc", spool=self.root + "/spool", proc=self.root + "/proc",
            path=self.root + "/bin", clock=lambda: self.now, pause=lambda _: None)
        self.places.host = "box"

    def tool(self, name: str, script: str) -> None:
        """An executable on the search path."""
        self.write("bin/" + name, "#!/bin/sh\n" + script + "\n")
        os.chmod(f"{self.root}/bin/{name}", 0o755)

    def write(self, path: str, content, mode: int = 0o644) -> str:
        """A file below the root, with its folders. What isn't text or bytes is written as JSON."""
        if not isinstance(content, (bytes, str)):
            content = json.dumps(content)
        path = put(os.path.join(self.root, path), content.encode() if isinstance(content, str) else content)
        os.chmod(path, mode)
        return path

    def without_tools(self) -> None:
        """Leaves nothing on the search path."""
        for tool in os.listdir(self.root + "/bin"):
            os.remove(f"{self.root}/bin/{tool}")

    def save(self) -> None:
        self.write("state.json", self.state)

    def timer(self, name: str, scope: str = "user", job=None, **properties) -> None:
        """A timer and the job that it starts; `job` changes properties of the latter."""
        unit = name.replace(".timer", ".service")
        self.state[scope][name] = {**TIMER, "Unit": unit, "Description": name, **properties}
        self.state[scope][unit] = {**JOB, **(job or {})}
        self.save()

    def unit(self, name: str, scope: str = "user") -> dict:
        """A unit as the stub has it now."""
        return json.loads(Path(self.root, "state.json").read_bytes())[scope][name]

    def registry(self, *entries, **document) -> None:
        self.write("home/" + REGISTRY, {"version": 1, "automations": list(entries), **document})

    def bridge(self, *words: str):
        """The answer of the bridge as this process would print it."""
        from ostrel_lib.automations.bridge import main

        with tempfile.TemporaryFile() as file:
            sys.stdout.flush()
            kept, handler = os.dup(1), signal.getsignal(signal.SIGTERM)
            os.dup2(file.fileno(), 1)
            try:
                status = main([SCRIPT, *words], self.places)
            finally:
                signal.signal(signal.SIGTERM, handler)
                os.dup2(kept, 1)
                os.close(kept)
            file.seek(0)
            text = file.read()
        assert status == 0 and text.isascii() and text.find(b"\n") == len(text) - 1 >= 0, (status, text)
        return json.loads(text)

    def rows(self, *words: str) -> dict:
        """The inventory's jobs by lane and id."""
        return {f"{row['lane']}/{row['id']}": row
                for row in self.bridge(*(words or ("list", "--refresh")))["automations"]}

    def act(self, op: str, identity: str, lane: str = "launchd") -> dict:
        return self.bridge("act", "--lane", lane, "--id", identity, "--op", op, "--confirm")

    def receipts(self) -> list:
        """All receipts, as they were written."""
        path = Path(self.home, RECEIPTS, "2026-11-25.jsonl")
        return list(map(json.loads, path.read_text("ascii").splitlines())) if path.exists() else []
