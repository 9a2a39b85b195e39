# SPDX-License-Identifier: Apache-2.0
"""The tabs behind the real bridges: agents in a real tmux whose client is an xterm, automations whose tools
are stand-ins, and a server over a real ssh on the loopback."""
import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import screen
from desktop_case import RECEIPTS, PanelCase, script_with, write_tool
from loopback_server import LoopbackServer, sshd_can_run
from marked_processes import alive, children
from schedulers import Schedulers
from terminals import Terminals

TASK = "Task handoff – goal, context, next step"
NOTE = ("Terminal tabs and operating-system processes are separate observations. Session stopping is "
        "protected by your current policy.")
# Ahead of other servers' panes, which are listed too, those of this test at work elsewhere among them.
SESSION = f"a-test-{os.getpid()}"
FIRST, SECOND = f"{SESSION}:0.0 · plain", f"{SESSION}:1.0 · agent"
SENTENCES = {
    "run": "Request one run; this can consume the owning provider quota. Verify its journal afterwards.",
    "disable": "Pause future scheduled runs. Existing sessions stay open.",
    "enable": "Resume this schedule after its registry and quota checks.",
    "plan": "Save a local transfer checklist. No scheduler or session is changed."}
USER_TIMERS, SYSTEM_TIMERS = "systemd user timers", "systemd system timers"
REPORT = "a-report · A report"
# An agent that waits until it is let go, and tells what it was given.
CODEX = """#!/bin/sh
echo "$*" >> "$HOME/started"
task=$(cat)
while [ ! -e "$HOME/go" ]; do sleep 0.05; done
printf 'in %s\\n%s\\n' "$PWD" "$task"
exit 3
"""
ALIAS, REPO = "SSH host alias", "Remote repository path"
START, PREVIEW = "start on server", "preview task"
READY = ("READY · mill · capped by prlimit and timeout\nWorkspace: repo\nCPU: on average {cpu} of one core "
         "· memory: no soft / {most} MB per process hard · 300s\nHandoff: {length} characters. Starts a new "
         "Codex task.")


@unittest.skipUnless(all(map(shutil.which, ("tmux", "xterm"))), "no terminals")
class Sessions(PanelCase):
    def setUp(self) -> None:
        self.bench = bench = Terminals(self, {name: self.desktop.env[name] for name in (
            "DISPLAY", "XAUTHORITY") if name in self.desktop.env})
        self.environ = {"TMUX_TMPDIR": bench.root}
        self.server = bench.session(SESSION, "-n", "plain", "sleep 300")
        bench.tmux("new-window", "-d", "-n", "agent", "bash -c 'bash -c \"exec -a claude sleep 300\"; :'")
        self.wait_for("agent", lambda: any("agentIdentity" in row for row in bench.rows().values()))

    def xterm(self, *words: str) -> int:
        """A terminal in front of all others. Gives its window."""
        before = screen.active_window(self.desktop)
        self.bench.start("xterm", "-e", *words)
        return self.wait_for("terminal", lambda: (
            window := screen.active_window(self.desktop)) not in (before, 0, None) and window)

    def start_on_tab(self) -> subprocess.Popen:
        process = self.start()
        self.go_to("4")
        self.said(process, r"\d+ terminal tabs · read \d\d:\d\d")
        return process

    def present(self) -> str:
        """The window that the session shows now."""
        return self.bench.tmux("display-message", "-p", "-t", SESSION, "#{window_name}")

    def test_a_terminal_is_brought_to_the_front_and_nothing_is_typed_into_it(self):
        shown = self.xterm("tmux", "attach", "-t", SESSION)
        self.wait_for("client", lambda: self.bench.tmux("list-clients"))
        self.xterm("sleep", "300")
        process = self.start_on_tab()
        names = list(self.names(process))
        at = names.index(SECOND)
        self.assertIn(f"claude · local · connected · {self.bench.root}", names[at:at + 5])
        self.assertIn(NOTE, names)
        self.assertEqual(self.present(), "plain")
        self.press(process, "open terminal", SECOND)
        self.wait_for("its window in front", lambda: screen.active_window(self.desktop) == shown)
        self.assertEqual(self.present(), "agent")
        # Looks for it in front, where the panel would be next.
        self.wait_for("the script's end", lambda: not children(process.pid, "session_bridge.py"))
        self.route("ostrel://show?command=show")
        self.said(process, re.escape(f"Brought to the front: {SECOND}, in the window “tmux”."))
        self.assertIn(FIRST, self.names(process))
        self.assertEqual(self.bench.tmux("capture-pane", "-p", "-t", f"{SESSION}:1"), "")

        self.bench.tmux("kill-window", "-t", f"{SESSION}:1")
        self.press(process, "open terminal", SECOND)
        self.said(process, "That terminal doesn't exist any more\\. Refresh to read the list anew\\.")
        self.bench.tmux("kill-server")
        self.wait_for("the server's end", lambda: not alive(self.server))
        self.press(process, "refresh terminals")
        self.wait_for("no such row", lambda: FIRST not in self.names(process))

    def test_a_terminal_that_nobody_sees_cant_be_opened_and_details_can_be_copied(self):
        process = self.start_on_tab()
        names = list(self.names(process))
        self.assertIn(f"claude · local · disconnected · {self.bench.root}", names)
        self.act("off", process, "open terminal", SECOND)
        row = self.said(process, r"claude · pid \d+ · \d+ mb · \d+% CPU")
        pid = row.split()[3]
        self.press(process, "details", row)
        self.said(process, re.escape(f"claude · pid {pid}"))
        self.press(process, "Copy details")
        self.go_to("8")
        self.act("focus", process, TASK)
        screen.press(self.desktop, "ctrl+v")
        self.wait_for("what was copied", lambda: re.fullmatch(
            r"\d+ mb RSS · [\d.]+% CPU\n\n.*\n\nTo continue: open the matching named terminal above\.",
            self.typed(process, "Task handoff – goal, context, next step")))


class Automations(PanelCase):
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

    def bridge(self) -> dict[str, str]:
        """The bridge as it works on the made-up machine."""
        folders = {name: f"{self.machine.root}/{name}" for name in ("home", "etc", "spool", "proc")}
        places = f"Places(path={self.machine.root + '/bin'!r}, **{folders!r})"
        return {"automations_bridge.py": script_with("automations.bridge", places)}

    def start_on_machine(self) -> subprocess.Popen:
        """Starts a copy of the program whose bridge works on the made-up machine, and goes to the tab."""
        process = self.start_with_scripts(self.bridge(), self.machine.home)
        self.go_to("7")
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
        paths = sorted(Path(self.home, RECEIPTS).glob("*.jsonl"))
        return [json.loads(line) for path in paths for line in path.read_text("ascii").splitlines()]

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
        Path(self.collectors, "automations_bridge.py").write_text("print('{}')\nexit(3)\n", "ascii")
        self.press(process, "refresh inventory")
        self.said(process, "inventory: inventory unavailable")
        self.said(process, "0 entries · 0 enabled")
        screen.press(self.desktop, "1")
        self.said(process, "Quota not read yet · open automations to refresh")


@unittest.skipUnless(sshd_can_run(), "no sshd to log in to")
class Server(PanelCase):
    def server_with(self, codex: str) -> dict[str, str]:
        """Makes a server with a repository and that agent, and gives the script that knows the way to it."""
        self.root = root = os.path.realpath(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, root, ignore_errors=True)
        for folder in ("away/repo/.git", "tools", "home"):
            os.makedirs(f"{root}/{folder}")
        LoopbackServer(self.addCleanup, root, root + "/away", root + "/tools:/usr/bin:/bin")
        write_tool(f"{root}/tools/codex", codex)
        write_tool(f"{root}/tools/systemctl", "#!/bin/sh\nexit 1\n")
        # The `ssh` that knows the server lies in a folder of its own.
        places = f"Places(path={root + '/bin:/usr/bin:/bin'!r})"
        return {"ostrel_remote.py": script_with("remote.bridge", places)}

    def setUp(self) -> None:
        self.process = self.start_with_scripts(self.server_with(CODEX), self.root + "/home")
        self.go_to("8")

    def started(self) -> list:
        """What the agent was started with, each time."""
        told = Path(self.root, "away/started")
        return told.read_text("ascii").splitlines() if told.exists() else []

    def preview(self, said: str) -> None:
        self.press(self.process, PREVIEW)
        self.said(self.process, re.escape(said))

    def test_a_task_is_previewed_edited_started_and_found_finished_at_the_next_opening(self):
        process = self.process
        self.said(process, "server · on demand")
        self.preview("Name the server by its SSH alias.")
        self.type(process, ALIAS, "mill")
        self.press(process, "check capacity")
        self.said(process, r"CONNECTED · \d+ cores · load \d+\.\d · available (\d+ mb|\d+\.\d gb)")
        self.said(process, "Read-only server check complete\\.")
        self.type(process, REPO, "repo")
        self.type(process, TASK, "goal $(touch X)")
        ready = dict(cpu="100%", most=3072, length=15)
        self.preview(READY.format(**ready))
        self.type(process, TASK, "!")
        self.act("off", process, START)
        self.preview(READY.format(**{**ready, "length": 16}))
        self.press(process, "eco")
        self.said(process, "profile: eco · sets the cpu and memory caps of the next server task")
        self.act("off", process, START)
        self.preview(READY.format(**{**ready, "cpu": "50%", "most": 1536, "length": 16}))
        self.assertEqual(self.started(), [], "an edit and a profile closed the start")
        self.press(process, START)
        self.said(process, "Server task running · up to 5 minutes\\. You can close this panel\\.")
        self.said(process, "server · working")
        self.wait_for("agent", self.started)
        self.close_panel()
        os.mkdir(self.root + "/away/go")
        self.wait_for("end of the task", lambda: not self.desktop.run(
            ["pgrep", "-f", f"{self.collectors}/ostrel_remote.py"]).stdout)
        self.route("ostrel://show?command=show")
        self.said(process, re.escape(
            f"Server task finished · exit 3\nin {self.root}/away/repo\ngoal $(touch X)!"))
        self.assertEqual(self.started(), ["exec -"])
        stored = self.settings()
        self.assertEqual((stored["ostrel.server.alias"], stored["ostrel.server.repo"]), ("mill", "repo"))
        self.assertFalse([value for value in stored.values() if "goal" in str(value)], "the task isn't kept")
        self.assertEqual(self.typed(process, TASK), "goal $(touch X)!")
        screen.press(self.desktop, "1")
        self.said(process, "server · connected")
