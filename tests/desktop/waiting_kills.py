# SPDX-License-Identifier: Apache-2.0
"""The program and its children killed without a warning, and what it leaves where everybody may read.

OSTREL_SEED begins another row of moments, OSTREL_KILLS says how many.
"""
import errno
import json
import os
import random
import re
import signal
import stat
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Optional

import bus
import screen
from desktop_case import ACCESSIBLE, POINTS, RECEIPTS, SAMPLES, SETTINGS_FILE, SOURCE, PanelCase
from marked_processes import children, having

FAULTS = "tests/faults/libostrel_faults.so"
KEPT = 200
LONGEST_LIFE = 1.0  # seconds, of a program that is to be killed
# A script that hangs as long as there is a file of that name, else the real one.
HANGING = """
import os, sys, time
while os.path.exists(os.environ["HOME"] + "/hang"):
    time.sleep(0.02)
real = {source!r} + "/collectors/" + os.path.basename(__file__)
os.execv(sys.executable, [sys.executable, real, *sys.argv[1:]])
"""
SCRIPTS = ("ostrel.py", "ostrel_janitor.py", "automations_bridge.py", "session_bridge.py", "ostrel_remote.py")
OTHERS_OWN = (".cache/fontconfig", ".cache/mesa_shader_cache", ".config/dconf", ".cache/dconf")


class Kills(PanelCase):
    def setUp(self) -> None:
        self.home = tempfile.mkdtemp(dir=self.desktop.folder)

    def put(self, path: str, *lines: str) -> None:
        """A file of the home, for its user alone."""
        os.makedirs(os.path.dirname(f"{self.home}/{path}"), mode=0o700, exist_ok=True)
        Path(self.home, path).write_text("".join(line + "\n" for line in lines), "ascii")

    def objects(self, path: str) -> list[dict]:
        """The lines of a file of the home, each of which must be whole."""
        text = Path(self.home, path).read_text("ascii")
        self.assertTrue(text.endswith("\n"), text[-200:])
        return [json.loads(line) for line in text.splitlines() if line]

    def test_a_program_that_is_killed_at_any_moment_loses_nothing_and_starts_again_at_once(self):
        moments = random.Random(int(os.environ.get("OSTREL_SEED", "1")))
        minute = int(time.time()) // 60
        self.put(SETTINGS_FILE, '{"kept": "yes"}')
        self.put(POINTS, *(f'{{"m":{minute - 2 * KEPT + n},"cpu":1,"swap":2,"ram":3,"load":0.50}}'
                           for n in range(KEPT)))
        self.put(SAMPLES, *(f'{{"swap": 1, "load": 2, "mcp": 3, "t": {n}}}' for n in range(KEPT)))
        self.put(f"{RECEIPTS}/2026-01-01.jsonl", '{"ts": "2026-01-01 08:00:00", "kind": "stop"}')
        for _ in range(int(os.environ.get("OSTREL_KILLS", "6"))):
            process = self.start_to_be_killed(moments)
            process.kill()
            self.assertEqual(process.wait(20), -signal.SIGKILL, self.desktop.log("ostrel"))
            self.wait_for("end of its children", lambda: not having("HOME", self.home))
            self.assertEqual(self.settings()["kept"], "yes")
            self.assertGreaterEqual(len(self.objects(POINTS)), KEPT)
            self.assertEqual([row["t"] for row in self.objects(SAMPLES)][:KEPT], list(range(KEPT)))
            self.assertEqual(len(self.objects(f"{RECEIPTS}/2026-01-01.jsonl")), 1)
        process = self.start_again()
        self.panel()
        self.wait_for("a minute and a sample", lambda: (
            len(self.objects(POINTS)) > KEPT and len(self.objects(SAMPLES)) > KEPT))
        self.end(process)
        for path in (POINTS, SETTINGS_FILE):
            left = [name for name in os.listdir(os.path.dirname(f"{self.home}/{path}")) if ".tmp" in name]
            self.assertEqual(left, [])

    def start_to_be_killed(self, moments: random.Random) -> subprocess.Popen:
        """Starts the program and lets it do something until a moment that was drawn."""
        program = os.path.abspath(os.environ["OSTREL_PROGRAM"])
        what = moments.choice(("nothing", "panel", "tabs", "choices"))
        words = [program] + (["--background"] if what in ("nothing", "choices") else [])
        process = self.desktop.start("ostrel", words, self.desktop.home_environment(self.home))
        if moments.random() < 0.3:
            time.sleep(moments.random() * 0.2)  # in the middle of its start
            return process
        item = self.item(process)
        end = time.monotonic() + moments.random() * LONGEST_LIFE
        if what in ("panel", "tabs"):
            self.wait_for_keyboard()
        while time.monotonic() < end:
            if what == "tabs":
                screen.press(self.desktop, moments.choice("123456789"))
            elif what == "choices":
                bus.press_row(self.desktop.env, item, moments.choice(("theme: black", "theme: white")))
            else:
                time.sleep(0.01)
        return process

    def test_a_child_that_is_killed_costs_its_answer_and_no_later_one(self):
        scripts = {name: HANGING.format(source=SOURCE) for name in SCRIPTS}
        self.put("hang")
        self.put(SETTINGS_FILE, '{"ostrel.server.alias": "srv.invalid"}')
        process = self.start_with_scripts(scripts, self.home)
        self.wait_for_keyboard()
        for key, script, button, heard, answered in (
            ("7", "automations_bridge.py", "refresh inventory", "inventory: .+",
             r"\d+ entries · \d+ enabled"),
            ("4", "session_bridge.py", "refresh terminals", "Terminal source unavailable.*",
             r"\d+ terminal tabs · read .*|No terminal can be listed: .*"),
            ("5", "ostrel_janitor.py", "refresh findings", "collector unavailable · .*",
             r"\d+ findings · collected .*"),
            ("8", "ostrel_remote.py", "check capacity", "Server bridge stopped\\.",
             r"srv\.invalid can't be reached .*|ssh isn't installed .*"),
            ("1", "ostrel.py", "", "", "")):
            with self.subTest(script=script):
                self.put("hang")
                screen.press(self.desktop, key)
                child = self.running(process, script, button)
                os.kill(child, signal.SIGKILL)
                self.wait_for("end of the child", lambda: child not in children(process.pid))
                os.remove(f"{self.home}/hang")
                if button:
                    self.said(process, heard)
                    self.press(process, button)
                    self.said(process, answered)
        self.wait_for("sample of a snapshot", lambda: os.path.exists(f"{self.home}/{SAMPLES}"), limit=40)

    def running(self, process: subprocess.Popen, script: str, button: str) -> int:
        """Waits until a script hangs. Its button, which goes while it runs, is pressed where its tab doesn't
        start it by itself."""
        press = [sys.executable, ACCESSIBLE, "press", str(process.pid), button]

        def found() -> Optional[int]:
            child = next(iter(children(process.pid, script)), None)
            if not child and button:
                self.desktop.run(press)
            return child

        return self.wait_for(script, found, limit=40)

    def test_children_that_can_not_be_started_cost_their_answers_and_no_later_one(self):
        library = f"{os.path.dirname(os.path.abspath(os.environ['OSTREL_PROGRAM']))}/{FAULTS}"
        if not os.path.exists(library):
            self.skipTest("no such library beside a program with sanitizers")
        for kind, number in (("spawn", errno.EAGAIN), ("descriptor", errno.EMFILE)):
            self.home, told = tempfile.mkdtemp(dir=self.desktop.folder), f"{self.desktop.folder}/{kind}"
            self.environ = {"LD_PRELOAD": library, "OSTREL_FAULT_KIND": kind, "OSTREL_FAULT_AT": "1",
                            "OSTREL_FAULT_COUNT": "3", "OSTREL_FAULT_DO": str(number),
                            "OSTREL_FAULT_TOLD": told}
            self.put(SETTINGS_FILE, '{"dev.quent.ostrel.refresh": "fast"}')
            process = self.start_again()
            self.go_to("7")
            self.wait_for("failures", lambda: self.spent(told, process))
            self.press(process, "refresh inventory")
            self.said(process, r"\d+ entries · \d+ enabled")
            self.wait_for("sample of a snapshot", lambda: os.path.exists(f"{self.home}/{SAMPLES}"), limit=40)
            self.end(process)

    def spent(self, told: str, process: subprocess.Popen) -> bool:
        """Whether all failures were met; presses for one more where they weren't."""
        if os.path.exists(told) and Path(told).read_bytes().count(b"\n") == 3:
            return True
        self.desktop.run([sys.executable, ACCESSIBLE, "press", str(process.pid), "refresh inventory"])
        return False

    def test_with_no_umask_at_all_everything_that_is_written_is_for_its_user_alone(self):
        before = os.umask(0)
        try:
            self.put(".claude/logs/old.log", "x")
            os.utime(f"{self.home}/.claude/logs/old.log", (1, 1))
            laid = set(self.written())
            process = self.start_again()
        finally:
            os.umask(before)
        item = self.item(process)
        self.assertTrue(bus.press_row(self.desktop.env, item, "theme: black"))
        self.go_to("7")
        self.said(process, r"\d+ entries · \d+ enabled")
        screen.press(self.desktop, "6")
        self.press(process, "review old files")
        self.said(process, "delete 1 files · .*")
        self.press(process, "delete")
        self.said(process, r"✓ 1 files removed · .*")
        self.wait_for("all its files", lambda: all(
            os.path.exists(f"{self.home}/{path}") for path in (POINTS, SAMPLES, RECEIPTS)))
        runtime = f"{self.desktop.home_environment(self.home)['XDG_RUNTIME_DIR']}/ostrel"
        self.assertEqual(os.listdir(runtime), [str(process.pid)])
        for path in [*self.written(), runtime, f"{runtime}/{process.pid}"]:
            status = os.lstat(path)
            if path not in laid and not stat.S_ISLNK(status.st_mode):
                mode = 0o700 if stat.S_ISDIR(status.st_mode) else 0o600
                self.assertEqual(stat.S_IMODE(status.st_mode), mode, path)

    def test_no_call_over_the_bus_acts_without_a_question(self):
        self.put(SAMPLES, *(f'{{"swap": 1, "load": 2, "mcp": 3, "t": {n}}}' for n in range(KEPT)))
        process = self.start_again("--background")
        item = self.item(process)
        for action in ("compact", "clean", "stop", "quit", "run", "", "../x"):
            bus.call(self.desktop.env, *bus.APPLICATION, f"{bus.OPEN}.ActivateAction", action, "[]", "{}")
        self.route("ostrel://clean", "ostrel://stop?pid=1", "ostrel:?command=quit",
                   "ostrel://show?command=run")
        for method, words in (("Activate", ["1", "1"]), ("SecondaryActivate", ["1", "1"]),
                              ("Scroll", ["120", "vertical"]), ("ContextMenu", ["1", "1"])):
            bus.call(self.desktop.env, item.service, item.path, f"{bus.ITEM}.{method}", *words)
        self.assertTrue(bus.press_row(self.desktop.env, item, "compact own history…"))
        self.said(process, "Compact OSTREL history\\?")
        self.assertEqual([row["t"] for row in self.objects(SAMPLES)][:KEPT], list(range(KEPT)))
        self.press(process, "Cancel")
        self.assertFalse(os.path.exists(f"{self.home}/{RECEIPTS}"))
        self.assertEqual([name for name in os.listdir(os.path.dirname(f"{self.home}/{SAMPLES}"))
                          if "backup" in name], [])

    def written(self) -> list[str]:
        """All that lies in the home but what libraries keep for themselves."""
        found = [f"{path}/{name}" for path, folders, files in os.walk(self.home) for name in folders + files]
        return [path for path in found if not re.match(
            "|".join(map(re.escape, OTHERS_OWN)), os.path.relpath(path, self.home))]
