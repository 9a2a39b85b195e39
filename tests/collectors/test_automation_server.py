# SPDX-License-Identifier: Apache-2.0
import json
import os
import signal
import unittest

from loopback_server import LoopbackServer, sshd_can_run
from schedulers import SETTINGS, Schedulers

from ostrel_lib.automations.server import server_timers


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
                  NextElapseUSecMonotonic="900y",
                  TimersMonotonic="{ OnBootUSec=15min ; next_elapse=1h }")
        box.timer("own.timer")
        box.write("journal-esc\\x20aped.service", json.dumps({
            "__REALTIME_TIMESTAMP": "1795593600000000", "MESSAGE": "it's $HOME `x` \"done\"",
            "_SYSTEMD_INVOCATION_ID": "r"}))
        found = server_timers(box.places, 200)
        rows = {row["id"]: row for row in found.rows}
        self.assertEqual((sorted(rows), found.alerts), (["system:boot.timer", "system:esc\\x20aped.timer",
                                                         "user:own.timer"], []))
        row = rows["system:esc\\x20aped.timer"]
        self.assertEqual([row[key] for key in ("lane", "host", "owner", "last_result", "target", "toggles",
                                               "can_run")],
                         ["systemd", "srv.example", "deploy", "ok", "srv.example", False, False])
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
        if os.path.exists(box.root + "/pid"):
            with open(box.root + "/pid", encoding="ascii") as file:
                os.kill(int(file.read()), signal.SIGKILL)
        self.assertIn("gave no answer within", found.note)
