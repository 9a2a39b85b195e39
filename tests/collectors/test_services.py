# SPDX-License-Identifier: Apache-2.0
import os
import unittest

from fabricated_machine import Machine

TIMER = b"[Timer]\nOnCalendar=\nOnUnitActiveSec=5min\n"


def told(snapshot: dict, *keys: str) -> list:
    return [[row[key] for key in keys] for row in snapshot["services"]]


def with_systemd(box: Machine) -> Machine:
    os.makedirs(box.root + "/run/systemd/system")
    return box


class ServicesTest(unittest.TestCase):
    def test_a_unit_is_told_with_all_its_processes_and_its_oldest_one(self):
        box = with_systemd(Machine(self))
        user = "user.slice/user-1000.slice/user@1000.service/app.slice/"
        groups = {"system.slice/web.service": b"30\n31\n", "system.slice/web.service/inner": b"32\n",
                  "system.slice/a.mount": b"40\n", "system.slice/gone.service": b"", "init.scope": b"1\n",
                  "system.slice/other.service": b"999\n", user + "editor.scope": b"51\n",
                  user + "app-x.slice/sync\\x2dup@1.service": b"50\n",
                  "user.slice/user-1001.slice/user@1001.service/app.slice/theirs.service": b"52\n"}
        for group, pids in groups.items():
            box.write(f"sys/fs/cgroup/{group}/cgroup.procs", pids)
        for pid, ppid, start in ((30, 1, 60), (31, 30, 70), (32, 1, 65), (40, 1, 1), (50, 1, 1), (51, 1, 1),
                                 (52, 1, 1)):
            box.process(pid, "/opt/web", "-x", ppid=ppid, start=start, mib=10)
        box.write("usr/lib/systemd/system/web.service", b"")
        box.write("home/.config/systemd/user/sync\\x2dup@.service", b"")
        self.assertEqual(told(box.snapshot(), "name", "scope", "pid", "rss", "path", "note"), [
            ["sync-up@1", "user", 50, 10, "/opt/web", ""],
            ["other", "system", 999, 0, "", "not shown to this user"],
            ["web", "system", 30, 30, "/opt/web", "3 processes"]])
        files = [row[0][len(box.root):] or row[0] for row in told(box.snapshot(), "launch_agent")]
        self.assertEqual(files[0], "/home/.config/systemd/user/sync\\x2dup@.service")
        self.assertEqual(files[2], "/usr/lib/systemd/system/web.service")

    def test_without_systemd_services_are_the_processes_that_listen(self):
        box = Machine(self)
        rows = [b"  0: 0100007F:1F90 00000000:0000 0A 0:0 0:0 0 1000 0 7001 1",
                b"  1: 0100007F:A000 0100007F:1F90 01 0:0 0:0 0 1000 0 7002 1", b"nonsense",
                b"  2: 0100007F:0016 00000000:0000 0A 0:0 0:0 0 0 0 7006 1",
                b"2: zz:1 x 0A 0 0 0 0 0 7003"]
        tcp6 = b"head\n  0: 00000000000000000000000000000000:0050 0:0 0A 0:0 0:0 0 1000 0 7004 1\n" \
               b"  1: 00000000000000000000000001000000:0051 0:0 0A 0:0 0:0 0 1000 0 7005 1\n"
        box.write("proc/net/tcp", b"\n".join([b"head", *rows]))
        box.write("proc/net/tcp6", tcp6)
        box.process(10, "python3", "/srv/panel.py", comm=b"python3")
        box.process(11, "/usr/bin/nginx", comm=b"nginx")
        box.process(12, "quiet")
        box.process(13, "python3", "/srv/panel.py", ppid=10, mib=0)  # a fork that shares the socket
        box.process(14, "/opt/theirs")
        for pid, number in ((10, 7001), (10, 7002), (11, 7004), (11, 7005), (12, 7002),
                            (13, 7001), (14, 7006)):
            box.link(f"proc/{pid}/fd/{number}", f"socket:[{number}]")
        box.link("proc/12/fd/3", "/dev/null")
        self.assertEqual(told(box.snapshot(), "name", "state", "pid", "url", "note"), [
            ["nginx", "listening", 11, "tcp://[::]:80", "also 81"],
            ["panel", "listening", 10, "tcp://127.0.0.1:8080", ""]])

    def test_the_scheduler_counts_what_people_set_up_and_switched_on(self):
        user, system = "home/.config/systemd/user/", "etc/systemd/system/"
        files = {
            user + "poll.timer": TIMER, user + "poll.service": b"[Service]\nExecStart=-/bin/bash -c 'poll'\n",
            user + "storm.timer": TIMER + b"OnBootSec=1\nUnit=work.service\n",
            user + "once.timer": b"OnBootSec=9\nOnCalendar=daily\nOnCalendar=\n",
            user + "work.service": b"ExecStart=/opt/work\nRestart=no\n",
            user + "kept.service": b"# Restart=no\nRestart=on-failure\nExecStart=\\\n /bin/sh x\n",
            user + "off.service": b"Restart=always\nExecStart=/bin/sh x\n",
            user + "also.timer": TIMER, user + "also.service": b"ExecStart=/opt/also\n",
            system + "backup.timer": b"OnCalendar=daily\nPersistent=true\n",
            "usr/lib/systemd/system/vendor.timer": TIMER + b"OnBootSec=1\n",
            "usr/lib/systemd/user/sync.service": b"Restart=always\nExecStart=/usr/bin/sync\n",
            "home/.config/autostart/a.desktop": b"Exec=sh -c 'sleep 9; panel'\n",
            "home/.config/autostart/b.desktop": b"Exec=sh -c x\nHidden=true\n",
        }
        wanted = ((user + "timers.target.wants/", ("poll.timer", "storm.timer", "once.timer", "also.timer")),
                  (user + "default.target.wants/", ("kept.service", "sync.service", "also.service")),
                  (system + "timers.target.wants/", ("backup.timer", "vendor.timer", "nowhere.timer")))
        for systemd in (True, False):
            box = with_systemd(Machine(self)) if systemd else Machine(self)
            for path, text in files.items():
                box.write(path, text)
            for folder, names in wanted:
                for name in names:
                    box.link(folder + name, "/usr/lib/systemd/" + name)
            figures = list(box.snapshot()["launchd"].values())
            self.assertEqual(figures, [4, 2, 2, 3] if systemd else [0, 0, 0, 1])
