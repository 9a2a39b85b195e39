# SPDX-License-Identifier: Apache-2.0
"""The stub tools print what the real ones were seen to print; here the real ones are asked, where that
disturbs nobody: as root of a container in which no systemd runs."""
import json
import os
import shutil
import subprocess
import unittest

from schedulers import SCRIPT, Schedulers

INSIDE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "systemd_inside.py")
UNSHARE = ["unshare", "--mount", "--pid", "--fork", "--mount-proc", "--kill-child"]


def can_have_its_own_systemd() -> bool:
    return (
        os.getuid() == 0 and not os.path.exists("/run/systemd/system")
        and all(os.access(tool, os.X_OK) for tool in ("/lib/systemd/systemd",
                                                      "/lib/systemd/systemd-journald"))
        and shutil.which("dbus-daemon") is not None
        and subprocess.run([*UNSHARE, "true"], capture_output=True, check=False).returncode == 0
    )


def groups() -> set:
    return {path for path, _, _ in os.walk("/sys/fs/cgroup")}


def remove_new_groups(before: set) -> None:
    """The manager leaves empty control groups behind when it is killed with its namespace."""
    for path in sorted(groups() - before, reverse=True):
        try:
            os.rmdir(path)
        except OSError:
            pass  # somebody else's


@unittest.skipUnless(can_have_its_own_systemd(), "no systemd can be started without disturbing this machine")
class SystemdTest(unittest.TestCase):
    def test_the_bridge_reads_and_switches_a_real_user_manager(self):
        box = Schedulers(self)
        self.addCleanup(remove_new_groups, groups())
        done = subprocess.run([*UNSHARE, "/usr/bin/python3", "-B", INSIDE, SCRIPT, box.home],
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=250, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        seen = json.loads(done.stdout)
        keys = ("state", "active", "toggles", "can_run")
        rows = {row["id"]: row for row in seen["before"]["automations"]}
        for unit, expected in (
            ("good", ["disabled", False, True, True]), ("bad", ["enabled", True, True, True]),
            ("long", ["enabled", True, False, True]), ("inst@x", ["enabled", True, True, True]),
            ("broken", ["bad-setting", False, False, False]), ("passing", ["enabled", True, False, True]),
            ("esc\\x20aped", ["disabled", False, True, True]),
        ):
            row = rows[f"user:{unit}.timer"]
            self.assertEqual(([row[key] for key in keys], row["last_result"]), (expected, "unobserved"), unit)
        self.assertEqual((rows["user:bad.timer"]["schedule"], rows["user:bad.timer"]["next_run"][11:16]),
                         ("Mon at 09:05", "09:05"))
        self.assertIn("2d 3h after the last start", rows["user:long.timer"]["schedule"])
        self.assertTrue(rows["user:long.timer"]["next_run"] > "2028")
        self.assertEqual(("user:inst@.timer" in rows, seen["before"]["alerts"]), (False, []))
        for name, *expected in (
            ("enable good.timer", (True, "enable · good.timer · now active, enabled"),
             (True, "good.timer is enabled already")),
            ("run good.timer", (True, "run · good.service · ran to its end")),
            ("run bad.timer", (False, "bad.service ran once and failed: exit-code 3")),
            ("run long.timer", (True, "run · long.service · is running"),
             (False, "long.service is running already")),
            ("disable long.timer", (False, "long.timer is static: it is switched only in its own interface")),
            ("enable broken.timer", (False, "broken.timer can't be loaded: bad-setting")),
            ("disable bad.timer", (True, "disable · bad.timer · now inactive, disabled")),
            ("enable esc\\x20aped.timer", (True, "enable · esc\\x20aped.timer · now active, enabled")),
            ("disable inst@x.timer", (True, "disable · inst@x.timer · now inactive, disabled")),
            ("disable passing.timer",
             (False, "passing.timer is transient: it is switched only in its own interface")),
            ("run nothere.timer", (False, "nothere.timer can't be loaded: not-found")),
        ):
            said = [(answer["ok"], answer.get("message") or answer["error"]) for answer in seen["acts"][name]]
            self.assertEqual(said, expected)
        self.assertEqual(seen["states"], {"good.timer": "enabled", "bad.timer": "disabled",
                                          "esc\\x20aped.timer": "enabled",
                                          "inst@x.timer": "disabled"})
        for unit, result in (("good.timer", "ok"), ("bad.timer", "failed: exit-code")):
            run, = seen[unit]["journal"]
            self.assertEqual((run["status"], run["at"]), (result, seen[unit]["last_run"]))
            self.assertTrue(seen[unit]["last_result"].startswith(result))
        after = {row["id"]: row for row in seen["after"]["automations"]}
        self.assertEqual((after["user:bad.timer"]["state"], after["user:bad.timer"]["last_result"]),
                         ("disabled", "failed: exit-code 3"))
