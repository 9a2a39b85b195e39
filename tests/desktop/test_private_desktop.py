# SPDX-License-Identifier: Apache-2.0
"""The private desktop itself: nothing of it stays behind."""
import os
import signal
import subprocess
import sys
import unittest

import private_desktop

# On a desktop: prints where it runs, then leaves a child that has lost its parent and its session, and waits.
LEAVE_AN_ORPHAN = ('(setsid sleep 600 & echo $!) | { read pid; echo "$pid $XDG_RUNTIME_DIR"; }; '
                   'trap "" TERM; while :; do sleep 1; done')
RUN = """import subprocess, sys, private_desktop
with private_desktop.PrivateDesktop() as desktop:
    subprocess.Popen(["sh", "-c", sys.argv[1]], env=desktop.env).wait()"""


class PrivateDesktopRules(unittest.TestCase):
    def test_a_signal_ends_all_that_ran_even_what_lost_its_parent_or_ignores_being_asked(self):
        command = [sys.executable, "-c", RUN, LEAVE_AN_ORPHAN]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              cwd=os.path.dirname(private_desktop.__file__)) as process:
            orphan, folder = process.stdout.readline().split()
            self.assertTrue(os.path.exists(f"/proc/{orphan}") and os.path.exists(folder))
            process.send_signal(signal.SIGTERM)
            process.wait(30)
        self.assertFalse(os.path.exists(f"/proc/{orphan}") or os.path.exists(os.path.dirname(folder)))
