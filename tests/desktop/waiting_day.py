# SPDX-License-Identifier: Apache-2.0
"""A day with the instrument: one home, one program with its real scripts, and all that a person does in turn.
Only the schedulers' tools, the way to the server and the kernel's memory figures are stand-ins."""
import os
import re
import subprocess
import unittest
from pathlib import Path

import screen
import test_bridges
import test_janitor
from desktop_case import SOURCE
from waiting_hints import CALM, COVER, CRITICAL, HintCase, covers


@unittest.skipUnless(test_bridges.sshd_can_run() and covers(), "no sshd, or no mounts of one's own")
class Day(HintCase):
    # By their modules: a class that is named here would be run here once more.
    lay, actions = test_janitor.Janitor.lay, test_janitor.Janitor.receipts
    start_servers, question = test_janitor.Janitor.start_servers, test_janitor.Janitor.question
    gone, server_with = test_janitor.Janitor.gone, test_bridges.Server.server_with
    machine_with_jobs = test_bridges.Automations.machine_with_jobs
    confirm, bridge = test_bridges.Automations.confirm, test_bridges.Automations.bridge

    def start_program(self, *command: str) -> subprocess.Popen:
        """In the background, under the kernel that says what the test wants."""
        return super().start_program(*covers(), "sh", "-c", COVER, "sh", self.cover, *command, "--background")

    def start_day(self) -> subprocess.Popen:
        self.cover = f"{self.desktop.folder}/kernel"
        os.makedirs(self.cover, exist_ok=True)
        self.say(CALM)
        self.machine_with_jobs()
        janitor = Path(SOURCE, "collectors/ostrel_janitor.py").read_text("utf-8")
        scripts = {**self.bridge(), **self.server_with("#!/bin/sh\nexit 1\n"), "ostrel_janitor.py": janitor}
        return self.start_with_scripts(scripts, self.machine.home)

    def test_a_day_from_the_start_in_the_background_to_the_next_morning(self):
        process = self.start_day()
        self.item(process)
        self.assertFalse(screen.panel_window(self.desktop), "it was to start in the background")
        server, = self.start_servers("one")
        logs = [self.lay(f".claude/logs/{number}.log", 40) for number in range(3)]

        self.say(CRITICAL)
        self.shown_card()
        self.press(process, "inspect")
        self.ended("presented", "acknowledged")
        self.say(CALM)

        # The hint has led to the processes.
        self.press(process, "mcp procs")
        self.press(process, "stop…", f"python3 · pid {server}")
        self.question(process, f"stop python3 · pid {server}", [server])
        self.press(process, "stop")
        self.gone(server)

        self.go_to("6")
        self.press(process, "review old files")
        self.said(process, "delete 3 files · 3 mb")
        self.press(process, "delete")
        self.said(process, r"✓ 3 files removed · 3 mb freed · receipt [\d-]+\.jsonl")
        self.assertFalse([path for path in logs if os.path.exists(path)])

        self.go_to("7")
        self.press(process, "open", f"{test_bridges.REPORT}, {test_bridges.USER_TIMERS}, enabled")
        self.confirm(process, "disable", "disable")
        self.said(process, r"✓ disable · a-report\.timer · now inactive, disabled · receipt .*")

        self.go_to("8")
        self.type(process, test_bridges.ALIAS, "mill")
        self.type(process, test_bridges.REPO, "repo")
        self.type(process, test_bridges.TASK, "go on")
        self.press(process, test_bridges.PREVIEW)
        self.said(process, re.escape(test_bridges.READY.format(repo="repo", cpu="100%", most=3072, length=5)))

        self.press(process, "settings")
        for control in ("black", "hotkey choice · ⌃⌥m", "keep panel open"):
            self.press(process, control)
        self.said(process, "panel: ⌃⌥m · opens and closes from anywhere")
        self.end(process)

        # The next morning.
        process = self.start_program(f"{os.path.dirname(self.collectors)}/../../ostrel")
        self.item(process)
        screen.press(self.desktop, "ctrl+alt+m")
        self.panel()
        self.wait_for_keyboard()
        for key, told in (("1", "server · not checked"), ("7", "5 entries · 1 enabled"),
                          ("6", rf".* · stop python3 pid {server} · .* · sent"),
                          ("9", "panel: ⌃⌥m · opens and closes from anywhere")):
            screen.press(self.desktop, key)
            self.said(process, told)
        self.said(process, "unpin panel")
        screen.press(self.desktop, "8")
        self.wait_for("alias", lambda: self.typed(process, test_bridges.ALIAS) == "mill")
        self.assertEqual(self.typed(process, test_bridges.TASK), "", "a task is held in memory only")
        stored = self.settings()
        self.assertEqual(stored["dev.quent.ostrel.theme"], "dark")
        self.assertTrue(stored["dev.quent.ostrel.pinned"])
        self.assertEqual([receipt["kind"] for receipt in self.actions()], ["stop", "clean", "automation"])
        self.assertEqual(self.receipts(), ["presented", "acknowledged"])
