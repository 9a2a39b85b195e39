# SPDX-License-Identifier: Apache-2.0
"""Timers behind a real ssh server, whose tools are stubs, and those of a real systemd: the stubs print what
its tools were seen to print, which are asked where that disturbs nobody, as root of a container in which no
systemd runs."""
import json
import os
import shutil
import signal
import subprocess
import unittest
from pathlib import Path

from loopback_server import LoopbackServer, sshd_can_run
from schedulers import SCRIPT, SETTINGS, Schedulers

from ostrel_lib.automations.server import server_timers

INSIDE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "systemd_inside.py")
UNSHARE = ["unshare", "--mount", "--pid", "--fork", "--mount-proc", "--kill-child"]
ACTS = (
    ("enable good.timer", True, "enable · good.timer · now active, enabled"),
    ("enable good.timer", True, "good.timer is enabled already"),
    ("run good.timer", True, "run · good.service · ran to its end"),
    ("run bad.timer", False, "bad.service ran once and failed: exit-code 3"),
    ("run long.timer", True, "run · long.service · is running"),
    ("run long.timer", False, "long.service is running already"),
    ("disable long.timer", False, "long.timer is static: it is switched only in its own interface"),
    ("enable broken.timer", False, "broken.timer can't be loaded: bad-setting"),
    ("disable bad.timer", True, "disable · bad.timer · now inactive, disabled"),
    ("enable esc\\x20aped.timer", True, "enable · esc\\x20aped.timer · now active, enabled"),
    ("disable inst@x.timer", True, "disable · inst@x.timer · now inactive, disabled"),
    ("disable passing.timer", False, "passing.timer is transient: it is switched only in its own interface"),
    ("run nothere.timer", False, "nothere.timer can't be loaded: not-found"))


@unittest.skipUnless(sshd_can_run(), "no sshd to log in to")
class ServerTest(unittest.TestCase):
    def setUp(self):
        self.box = box = Schedulers(self)
        # The session finds the stub tools in front of the system's own.
        os.rename(box.root + "/bin", box.root + "/server")
        self.server = LoopbackServer(self.addCleanup, box.root, box.home, box.root + "/server:/usr/bin:/bin")
        box.write("home/" + SETTINGS, {"ostrel.server.alias": "srv.example"})

    def test_the_servers_timers_and_journals_are_read_and_never_switched(self):
        box = self.box
        box.timer("esc\\x20aped.timer", "system", job={"User": "deploy"})
        box.timer("boot.timer", "system", TimersCalendar="", NextElapseUSecRealtime="",
                  NextElapseUSecMonotonic="900y", TimersMonotonic="{ OnBootUSec=15min ; next_elapse=1h }")
        box.timer("own.timer")
        box.write("journal-esc\\x20aped.service", json.dumps({
            "__REALTIME_TIMESTAMP": "1795593600000000", "MESSAGE": "it's $HOME `x` \"done\"",
            "_SYSTEMD_INVOCATION_ID": "r"}))
        found = server_timers(box.places, 200)
        rows = {row["id"]: row for row in found.rows}
        self.assertEqual(found.alerts, [])
        self.assertEqual(set(rows), {"system:boot.timer", "system:esc\\x20aped.timer", "user:own.timer"})
        told = {"lane": "systemd", "host": "srv.example", "owner": "deploy", "last_result": "ok",
                "target": "srv.example", "toggles": False, "can_run": False}
        self.assertLessEqual(told.items(), rows["system:esc\\x20aped.timer"].items())
        self.assertTrue(rows["system:boot.timer"]["next_run"].startswith("29"))
        words = ("journal", "--lane", "systemd", "--id", "system:esc\\x20aped.timer", "--target")
        answer = box.bridge(*words, "srv.example")
        self.assertEqual(answer["journal"][0]["line"], "it's $HOME `x` \"done\"")
        self.assertIn("another one now", box.bridge(*words, "old.example")["journal"][0]["line"])
        self.assertFalse(box.act("disable", "system:esc\\x20aped.timer", "systemd")["ok"])
        self.assertEqual([name for name in os.listdir(box.root) if "command" in name], [])

    def test_a_server_that_cannot_be_read_is_a_note_and_never_a_question(self):
        box = self.box
        self.server.trust("other")
        self.assertIn("REMOTE HOST IDENTIFICATION HAS CHANGED", server_timers(box.places, 200).note)
        self.server.trust("host")
        box.write("authorized", "")
        self.assertIn("Permission denied", server_timers(box.places, 200).note)
        self.server.admit()
        absent = "#!/bin/sh\necho 'System has not been booted with systemd' >&2; exit 1\n"
        box.write("server/systemctl", absent, 0o755)
        self.assertEqual(server_timers(box.places, 200).note, "no system systemd runs on srv.example")
        # The server's side doesn't hear of an end here, so it is ended by its number.
        box.write("server/systemctl", f"#!/bin/sh\necho $$ > {box.root}/pid\nexec /bin/sleep 300\n", 0o755)
        found = server_timers(box.places, 5)
        if (pid := Path(box.root, "pid")).exists():
            os.kill(int(pid.read_text("ascii")), signal.SIGKILL)
        self.assertIn("gave no answer within", found.note)


def can_have_its_own_systemd() -> bool:
    tools = ("/lib/systemd/systemd", "/lib/systemd/systemd-journald", "dbus-daemon")
    return os.getuid() == 0 and not os.path.exists("/run/systemd/system") and all(map(shutil.which, tools)) \
        and subprocess.run([*UNSHARE, "true"], capture_output=True, check=False).returncode == 0


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
        asked = json.dumps([asked for asked, _, _ in ACTS])
        done = subprocess.run([*UNSHARE, "/usr/bin/python3", "-B", INSIDE, SCRIPT, box.home, asked],
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=250, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        seen = json.loads(done.stdout)
        keys = ("state", "active", "toggles", "can_run")
        rows = {row["id"]: row for row in seen["before"]["automations"]}
        for unit, expected in (
            ("good", ["disabled", False, True, True]), ("bad", ["enabled", True, True, True]),
            ("long", ["enabled", True, False, True]), ("inst@x", ["enabled", True, True, True]),
            ("broken", ["bad-setting", False, False, False]), ("passing", ["enabled", True, False, True]),
            ("esc\\x20aped", ["disabled", False, True, True])):
            row = rows[f"user:{unit}.timer"]
            self.assertEqual(([row[key] for key in keys], row["last_result"]), (expected, "unobserved"), unit)
        self.assertEqual((rows["user:bad.timer"]["schedule"], rows["user:bad.timer"]["next_run"][11:16]),
                         ("Mon at 09:05", "09:05"))
        self.assertIn("2d 3h after the last start", rows["user:long.timer"]["schedule"])
        self.assertTrue(rows["user:long.timer"]["next_run"] > "2028")
        self.assertEqual(("user:inst@.timer" in rows, seen["before"]["alerts"]), (False, []))
        said = [(answer["ok"], answer.get("message") or answer["error"]) for answer in seen["acts"]]
        self.assertEqual(said, [(ok, words) for _, ok, words in ACTS])
        self.assertEqual(seen["states"], {"good.timer": "enabled", "bad.timer": "disabled",
                                          "esc\\x20aped.timer": "enabled", "inst@x.timer": "disabled"})
        for unit, result in (("good.timer", "ok"), ("bad.timer", "failed: exit-code")):
            run, = seen[unit]["journal"]
            self.assertEqual((run["status"], run["at"]), (result, seen[unit]["last_run"]))
            self.assertTrue(seen[unit]["last_result"].startswith(result))
        after = {row["id"]: row for row in seen["after"]["automations"]}
        self.assertEqual((after["user:bad.timer"]["state"], after["user:bad.timer"]["last_result"]),
                         ("disabled", "failed: exit-code 3"))
