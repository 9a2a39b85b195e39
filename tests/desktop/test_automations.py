# SPDX-License-Identifier: Apache-2.0
"""The automations tab on the real program and the real bridge; the tools behind it are stand-ins."""
import glob
import json
import os
import re
import subprocess
import sys
import unittest

import screen
from desktop_case import SOURCE
from test_panel import PanelCase

sys.path.append(f"{SOURCE}/tests/collectors")

from schedulers import RECEIPTS, Schedulers  # noqa: E402

MAIN = """
import os, sys
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from ostrel_lib.automations.bridge import main
from ostrel_lib.places import Places
root = {root!r}
folders = {{name: f"{{root}}/{{name}}" for name in ("home", "etc", "spool", "proc")}}
places = Places(path=root + "/bin", **folders)
places.host = "box"
sys.exit(main(sys.argv, places))
"""
SENTENCES = {
    "run": "Request one run; this can consume the owning provider quota. Verify its journal afterwards.",
    "disable": "Pause future scheduled runs. Existing sessions stay open.",
    "enable": "Resume this schedule after its registry and quota checks.",
    "plan": "Save a local transfer checklist. No scheduler or session is changed.",
}
USER_TIMERS, SYSTEM_TIMERS = "systemd user timers", "systemd system timers"
REPORT = "a-report · A report"


class Automations(PanelCase):
    DESKTOP = {"accessible": True}
    machine: Schedulers

    def machine_with_jobs(self) -> None:
        """Two timers of the user, one of the system, a line of cron, and a job that is only declared."""
        self.machine = Schedulers(self)
        self.machine.timer("a-report.timer", Description="A report")
        self.machine.timer("b-mail.timer", Description="B mail", UnitFileState="disabled",
                           ActiveState="inactive")
        self.machine.timer("c-disk.timer", "system", Description="C disk")
        self.machine.write("etc/crontab", "17 * * * * root  /bin/hourly\n")
        lines = [{"__REALTIME_TIMESTAMP": str(1795593600000000 + at), "MESSAGE": text, "_COMM": "work",
                  "_SYSTEMD_INVOCATION_ID": f"r{at}"}
                 for at, text in ((60000000, "all is well"), (0, "<b>as ever</b>"))]
        self.machine.write("journal-a-report.service", "\n".join(map(json.dumps, lines)))
        self.machine.registry({"lane": "cloud", "id": "triage", "title": "Triage issues", "host": "cloud"})

    def start_on_machine(self) -> subprocess.Popen:
        """Starts a copy of the program whose bridge works on the made-up machine, and goes to the tab."""
        scripts = {"automations_bridge.py": MAIN.format(root=self.machine.root)}
        process = self.start_with_scripts(scripts, self.machine.home)
        self.wait_for_keyboard()
        screen.press(self.desktop, "7")
        return process

    def confirm(self, process: subprocess.Popen, button: str, op: str, answer: str = "") -> None:
        """Presses the report's button, checks the question word by word, and answers it."""
        self.press(process, button)
        self.said(process, re.escape(f"{op} · {REPORT}"))
        self.said(process, re.escape(
            f"scheduler {USER_TIMERS} · box\nschedule daily at 06:00\n\n{SENTENCES[op]}\n"
            "the action writes a receipt into Ostrel/receipts"))
        # In the question: the card has buttons of the same name.
        self.press(process, answer or op, f"{op} · {REPORT}")

    def receipts(self) -> list:
        """All that the bridge has left, oldest first."""
        found = []
        for path in sorted(glob.glob(f"{self.home}/{RECEIPTS}/*.jsonl")):
            with open(path, encoding="ascii") as file:
                found += map(json.loads, file)
        return found

    def test_jobs_are_read_run_switched_and_planned_each_after_a_question_that_names_it(self):
        self.machine_with_jobs()
        process = self.start_on_machine()
        self.said(process, r"5 entries · 2 enabled")
        self.press(process, "open", f"{REPORT}, {USER_TIMERS}, enabled")
        self.said(process, r"2026-11-25 08:01 · .*all is well")
        self.said(process, r"2026-11-25 08:00 · .*<b>as ever</b>")

        self.confirm(process, "run once", "run", answer="cancel")
        self.said(process, f"cancelled · {REPORT}")
        self.assertEqual(self.receipts(), [])
        self.confirm(process, "run once", "run")
        self.said(process, r"✓ run · a-report\.service · .* · receipt \d{4}-\d\d-\d\d\.jsonl")
        self.confirm(process, "disable", "disable")
        self.said(process, r"✓ disable · a-report\.timer · now inactive, disabled · receipt .*")
        self.said(process, r"5 entries · 1 enabled")
        self.assertEqual(self.machine.unit("a-report.timer")["UnitFileState"], "disabled")
        self.confirm(process, "enable", "enable")
        self.said(process, r"✓ enable · a-report\.timer · now active, enabled · receipt .*")
        self.confirm(process, "transfer plan", "plan")
        self.said(process, r"✓ .*plan.* · receipt .*")
        self.assertEqual([(receipt["op"], receipt["id"], receipt["result"]) for receipt in self.receipts()],
                         [(op, "user:a-report.timer", "done") for op in ("run", "disable", "enable", "plan")])
        self.press(process, "hide", f"{REPORT}, {USER_TIMERS}, enabled")

        self.press(process, "open", f"c-disk · C disk, {SYSTEM_TIMERS}, enabled")
        self.said(process, "switched only in its own interface")
        names = self.names(process)
        self.assertIn("transfer plan", names)
        self.assertNotIn("disable", names)
        self.end(process)

    def test_tools_that_fail_are_a_warning_and_a_bridge_that_ends_badly_a_line(self):
        self.machine_with_jobs()
        self.machine.state["mode"]["user"] = "garbage"
        self.machine.save()
        process = self.start_on_machine()
        self.said(process, "△ user timers: systemctl printed something that isn't a list of timers")
        self.press(process, "timers + cron · 2")
        self.said(process, "2 matches · page 1/1")
        self.press(process, "unverified")
        self.said(process, "systemctl printed something that isn't a list of timers")
        with open(f"{self.collectors}/automations_bridge.py", "w", encoding="ascii") as file:
            file.write("print('{}')\nexit(3)\n")
        self.press(process, "refresh inventory")
        self.said(process, "inventory: inventory unavailable")
        self.said(process, "0 entries · 0 enabled")
        screen.press(self.desktop, "1")
        self.said(process, "Quota not read yet · open automations to refresh")
        self.end(process)


if __name__ == "__main__":
    unittest.main()
