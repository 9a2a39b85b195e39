# SPDX-License-Identifier: Apache-2.0
"""The agents tab on the real program, the real bridge and a real tmux whose client is an xterm."""
import os
import re
import shutil
import subprocess
import sys
import unittest

import screen
from desktop_case import SOURCE
from marked_processes import alive, children
from test_panel import PanelCase

sys.path.append(f"{SOURCE}/tests/collectors")

from terminals import Terminals  # noqa: E402

NOTE = ("Terminal tabs and operating-system processes are separate observations. Session stopping is "
        "protected by your current policy.")
# Ahead of other servers' panes, which are listed too, those of this test at work elsewhere among them.
SESSION = f"a-test-{os.getpid()}"
FIRST, SECOND = f"{SESSION}:0.0 · plain", f"{SESSION}:1.0 · agent"


@unittest.skipUnless(all(map(shutil.which, ("tmux", "xterm"))), "no terminals")
class Sessions(PanelCase):
    DESKTOP = {"accessible": True}

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
        self.wait_for_keyboard()
        screen.press(self.desktop, "4")
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
        self.end(process)

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
        self.wait_for_keyboard()
        screen.press(self.desktop, "8")
        self.act("focus", process, "Task handoff – goal, context, next step")
        screen.press(self.desktop, "ctrl+v")
        self.wait_for("what was copied", lambda: re.fullmatch(
            r"\d+ mb RSS · [\d.]+% CPU\n\n.*\n\nTo continue: open the matching named terminal above\.",
            self.typed(process, "Task handoff – goal, context, next step")))
        self.end(process)


if __name__ == "__main__":
    unittest.main()
