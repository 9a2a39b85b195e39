# SPDX-License-Identifier: Apache-2.0
"""The server tab on the real program and the real bridge, over a real ssh server on the loopback."""
import os
import re
import shutil
import sys
import tempfile
import unittest

import screen
from desktop_case import SOURCE
from test_panel import PanelCase

sys.path.append(f"{SOURCE}/tests/collectors")

from loopback_server import LoopbackServer, sshd_can_run  # noqa: E402

# The `ssh` that knows the server lies in a folder of its own.
MAIN = """
import os, sys
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from ostrel_lib.remote.bridge import main
from ostrel_lib.places import Places
sys.exit(main(sys.argv, Places(path={root!r} + "/bin:/usr/bin:/bin")))
"""
# An agent that waits until it is let go, and tells what it was given.
CODEX = """#!/bin/sh
echo "$*" >> "$HOME/started"
task=$(cat)
while [ ! -e "$HOME/go" ]; do sleep 0.05; done
printf 'in %s\\n%s\\n' "$PWD" "$task"
exit 3
"""
ALIAS, REPO = "SSH host alias", "Remote repository path"
TASK = "Task handoff – goal, context, next step"
START, PREVIEW = "start on server", "preview task"
READY = ("READY · mill · capped by prlimit and timeout\nWorkspace: repo\nCPU: on average {cpu} of one core "
         "· memory: no soft / {most} MB per process hard · 300s\nHandoff: {length} characters. Starts a new "
         "Codex task.")


@unittest.skipUnless(sshd_can_run(), "no sshd to log in to")
class Server(PanelCase):
    DESKTOP = {"accessible": True}

    def setUp(self) -> None:
        self.root = root = os.path.realpath(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, root, ignore_errors=True)
        for folder in ("away/repo/.git", "tools", "home"):
            os.makedirs(f"{root}/{folder}")
        LoopbackServer(self.addCleanup, root, root + "/away", root + "/tools:/usr/bin:/bin")
        for name, text in (("codex", CODEX), ("systemctl", "#!/bin/sh\nexit 1\n")):
            with open(f"{root}/tools/{name}", "w", encoding="ascii") as file:
                file.write(text)
            os.chmod(f"{root}/tools/{name}", 0o755)
        self.process = self.start_with_scripts(
            {"ostrel_remote.py": MAIN.format(root=root)}, root + "/home")
        self.wait_for_keyboard()
        screen.press(self.desktop, "8")

    def started(self) -> list:
        """What the agent was started with, each time."""
        try:
            with open(self.root + "/away/started", encoding="ascii") as file:
                return file.read().splitlines()
        except OSError:
            return []

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
        with open(self.root + "/away/go", "w", encoding="ascii"):
            pass
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
        self.end(process)


if __name__ == "__main__":
    unittest.main()
