# SPDX-License-Identifier: Apache-2.0
import json
import os
import pwd
import shutil
import signal
import socket
import subprocess
import time
import unittest

from schedulers import SETTINGS, Schedulers

from ostrel_lib.automations.server import server_timers

SSHD = "/usr/sbin/sshd"


def sshd_can_run() -> bool:
    # It wants a folder of its own to drop its rights in, when it has any.
    return os.access(SSHD, os.X_OK) and shutil.which("ssh") is not None and (
        os.getuid() != 0 or os.path.isdir("/run/sshd") or os.access("/run", os.W_OK))


@unittest.skipUnless(sshd_can_run(), "no sshd to log in to")
class ServerTest(unittest.TestCase):
    def setUp(self):
        self.box = box = Schedulers(self)
        for name in ("host", "other", "login"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-C", "", "-f",
                            f"{box.root}/{name}"], check=True,
                           stdin=subprocess.DEVNULL)
        shutil.copy(box.root + "/login.pub", box.root + "/authorized")
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        # The session finds the stub tools in front of the system's own.
        os.rename(box.root + "/bin", box.root + "/server")
        os.mkdir(box.root + "/bin")
        box.write("sshd", f"""
            Port {self.port}
            ListenAddress 127.0.0.1
            HostKey {box.root}/host
            AuthorizedKeysFile {box.root}/authorized
            PidFile none
            UsePAM no
            StrictModes no
            PasswordAuthentication no
            KbdInteractiveAuthentication no
            SetEnv HOME={box.home} PATH={box.root}/server:/usr/bin:/bin
        """)
        if os.getuid() == 0:
            os.makedirs("/run/sshd", mode=0o755, exist_ok=True)
        log = open(box.root + "/log", "wb")
        self.addCleanup(log.close)
        daemon = subprocess.Popen([SSHD, "-D", "-e", "-f", box.root + "/sshd"], stdin=subprocess.DEVNULL,
                                  stderr=log)
        self.addCleanup(daemon.wait)
        self.addCleanup(daemon.terminate)
        limit = time.monotonic() + 60
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port), 5).close()
                break
            except OSError:
                self.assertTrue(daemon.poll() is None and time.monotonic() < limit)
                time.sleep(0.02)
        self.trust("host")
        box.tool("ssh", f'exec /usr/bin/ssh -F "{box.root}/config" "$@"')
        box.write("config", f"""
            Host *
                HostName 127.0.0.1
                Port {self.port}
                User {pwd.getpwuid(os.getuid()).pw_name}
                IdentityFile {box.root}/login
                IdentitiesOnly yes
                UserKnownHostsFile {box.root}/known
                StrictHostKeyChecking yes
                RemoteCommand touch {box.root}/remote-command
                LocalCommand touch {box.root}/local-command
                PermitLocalCommand yes
                RequestTTY force
        """)
        box.write("home/" + SETTINGS, {"ostrel.server.alias": "srv.example"})

    def trust(self, name: str) -> None:
        with open(f"{self.box.root}/{name}.pub", encoding="ascii") as file:
            self.box.write("known", f"[127.0.0.1]:{self.port} {file.read()}")

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
        self.trust("other")
        self.assertIn("REMOTE HOST IDENTIFICATION HAS CHANGED", server_timers(box.places, 200).note)
        self.trust("host")
        box.write("authorized", "")
        self.assertIn("Permission denied", server_timers(box.places, 200).note)
        shutil.copy(box.root + "/login.pub", box.root + "/authorized")
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
