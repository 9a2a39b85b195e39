# SPDX-License-Identifier: Apache-2.0
import os
import pty
import subprocess
import unittest
from pathlib import Path
from unittest import mock

from fabricated_machine import TICKS, Machine, started
from janitor_home import Home

from ostrel_lib.janitor import findings
from ostrel_lib.janitor.people import judged
from ostrel_lib.janitor.protection import effective, protecting_rule
from ostrel_lib.janitor.servers import Crew, offered

DEFAULT_ROWS = effective([], [])
NOW = 1_700_000_000
UPTIME = 500_000
MCP = "/opt/notes-mcp"


class Box(Machine):
    """Processes that the janitor may judge: with a user, and with what it reads beyond the collector."""

    def __init__(self, test) -> None:
        super().__init__(test)
        self.write("proc/uptime", b"%d.00 1.00\n" % UPTIME)
        self.write("proc/1/stat", b"")
        self.process(1, "/sbin/init", ppid=0)

    def process(self, pid, *argv, users=(), cgroup="/user.slice/session-2.scope", hours=100, **more):
        super().process(pid, *argv, start=int((UPTIME - hours * 3600) * TICKS), **more)
        users = users or [os.getuid()] * 4
        self.write(f"proc/{pid}/status", b"Name: x\nUid:\t" + "\t".join(map(str, users)).encode() + b"\n")
        self.write(f"proc/{pid}/cgroup", f"0::{cgroup}\n".encode())

    def terminal(self, test, pid, *argv, idle: float, **more):
        """A process on a terminal of its own that was last used so many minutes ago."""
        ends = pty.openpty()
        test.addCleanup(lambda: [os.close(end) for end in ends])
        path = os.ttyname(ends[1])
        os.utime(path, (NOW - idle * 60, NOW - idle * 60 - 5000))
        self.process(pid, *argv, **more)
        stat = Path(self.root, f"proc/{pid}/stat")
        name, close, fields = stat.read_bytes().rpartition(b") ")
        words = fields.split(b" ")
        words[4] = b"%d" % os.stat(path).st_rdev
        stat.write_bytes(name + close + b" ".join(words))
        self.link(f"proc/{pid}/fd/0", path)

    def judge(self, *pids, rows=DEFAULT_ROWS):
        return judged([(pid, "asked for") for pid in pids], rows, self.root + "/proc")

    def offers(self, depth):
        return dict(offered(Crew(self.root + "/proc"), depth, NOW))


class ProtectionTest(unittest.TestCase):
    def test_a_row_protects_as_a_whole_word_or_as_the_end_of_a_path(self):
        padding = "x" * 50000
        for name, command, rule in (
            ("Finder", "", "finder"), ("worker", "/usr/local/bin/claude --resume", "claude"),
            ("x", "node claude", "claude"), ("x", "claude-runner", ""), ("x", "/opt/claude/server", ""),
            ("x", "a\tCODEX\tb", "codex"), ("x", "run ostrel app now", "ostrel"), ("x", "orca", "orca"),
            ("x", f"{padding} claude {padding}", "claude"), ("x", "\ufffd claude\n\ufffd", "claude"),
            ("x", "claude" * 20000, ""), ("x", "xclaude claudex claude", "claude"),
            ("w", "/System/Library/x y", "/System/"), ("w", "/system/library/x", ""),
            ("w", "  /usr/libexec/x", "/usr/libexec/"), ("w", "/bin/sh /System/x", ""),
            ("com.apple.x", "", "com.apple."), ("Com.Apple.x", "", ""), ("worker", "tail -f a.log", "")):
            self.assertEqual(protecting_rule(name, command, DEFAULT_ROWS), rule, (name, command[:40]))

    def test_the_users_rows_come_and_go_and_the_locked_ones_stay(self):
        rows = effective(["My.Tool+", "a|b", "two words"], ["Finder", "claude", "ostrel app", "my.tool+x"])
        self.assertEqual(rows, ["claude", "codex", "ostrel", "ostrel app", "orca", "launchd", "loginwindow",
                                "windowserver", "kernel_task", "my.tool+", "a|b", "two words"])
        for command, protected in (("my.tool+", True), ("myxtooll", False), ("a", False), ("A|B x", True),
                                   ("x/two words y", True), ("two  words", False)):
            self.assertEqual(protecting_rule("x", command, rows) != "", protected, command)


class PeopleTest(unittest.TestCase):
    def test_only_processes_of_the_user_that_nothing_rests_on_are_allowed(self):
        user = os.getuid()
        cases = (
            (10, {}, ("/usr/bin/sleep", "60"), ""),
            (11, {"users": (user + 1,) * 4}, ("sleep",), "another user"),
            (12, {"users": (user, user + 1, user + 1, user + 1)}, ("sudo",), "another user"),
            (13, {"users": ("",)}, ("sleep",), "can't be told"),
            (14, {"flags": 0x00200000}, (), "kernel thread"),
            (15, {}, ("node", "/usr/lib/node_modules/claude-code/cli.js"), "an agent"),
            (16, {}, ("codex", "app-server"), "an agent"),
            (17, {}, ("/usr/libexec/thing",), "/usr/libexec/"),
            (18, {}, ("python3", "/opt/orca"), "orca"),
            (19, {}, ("dbus-daemon", "--session"), "part of the system"),
            (20, {"comm": b"tmux: server"}, ("tmux", "new"), "desktop session"),
            (21, {"cgroup": "/user.slice/u/session.slice/shell.service"}, ("shell",), "a service"),
            (22, {"cgroup": "/user.slice/u/app.slice/mine.service"}, ("mine",), ""),
            (23, {"comm": b"Claude"}, ("titled",), "claude"),
            (24, {}, ("x" * 300000, "claude"), "too long"),
            (25, {}, ("x" * 130000, "y" * 100000, "ostrel"), "ostrel"),
            (26, {"state": b"Z"}, ("gone",), None),
            (40, {}, ("desktop",), "runs in it or below it"),
            (41, {"ppid": 40}, ("python3", "script"), "runs in it or below it"),
            (1, {}, ("/sbin/init",), "the first process"))
        box = Box(self)
        box.link("proc/self", "41")
        for pid, more, argv, _ in cases:
            box.process(pid, *argv, **more)
        box.link("proc/10/exe", "/usr/bin/sleep")
        box.process(27, "disguised")
        box.link("proc/27/exe", "/home/u/bin/codex")
        answer = box.judge(*[case[0] for case in cases], 27, 999)
        reasons = {row["pid"]: row["reason"] for row in answer["refused"]}
        for pid, _, _, reason in (*cases, (27, {}, (), "codex")):
            if reason:
                self.assertIn(reason, reasons[pid], pid)
        self.assertEqual(sorted(row["pid"] for row in answer["allowed"]), [10, 22])
        self.assertFalse({26, 999} & set(reasons))

    def test_numbers_that_no_process_has_are_refused(self):
        box = Box(self)
        for pid in (0, -1, -2**31, 2**31, 2**62):
            answer = box.judge(pid)
            self.assertEqual([len(answer["allowed"]), answer["refused"][0]["pid"]], [0, pid])

    def test_a_row_has_what_the_alerts_and_the_signal_need_the_largest_first(self):
        box = Box(self)
        box.process(10, "small", "\udcff", mib=3, hours=1)
        box.process(11, "large", mib=200)
        answer = box.judge(10, 11, 10)
        start = int((UPTIME - 3600) * TICKS)
        self.assertEqual(answer["allowed"][1], {
            "pid": 10, "name": "tool", "rss_mb": 3, "cmd": "small \ufffd", "reason": "asked for",
            "start": start})
        self.assertEqual([row["pid"] for row in answer["allowed"]], [11, 10])

    def test_the_script_judges_real_processes(self):
        home = Home(self)
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        children = [started(self, "/usr/bin/tail", "-f", "/dev/null", word, **quiet)
                    for word in ("x", "spared")]
        pids = [str(child.pid) for child in children]
        pids += [str(os.getpid()), "1", "0", "x"]
        answer = home.run("kill-preview", "--pids=" + ",".join(pids), "--protected=Spared")
        self.assertEqual([row["pid"] for row in answer["allowed"]], [children[0].pid])
        start = int(Path(f"/proc/{pids[0]}/stat").read_bytes().rpartition(b")")[2].split()[19])
        self.assertEqual((answer["allowed"][0]["start"], answer["allowed"][0]["name"]), (start, "tail"))
        refused = {row["pid"]: row["reason"] for row in answer["refused"]}
        self.assertEqual(set(refused), {children[1].pid, os.getpid(), 1, 0})
        self.assertEqual(refused[children[1].pid], "protected: spared")
        self.assertEqual(home.run("mcp-preview", "--depth=light").keys(), {"allowed", "refused"})


class ServersTest(unittest.TestCase):
    def setUp(self):
        self.box = Box(self)

    def test_a_server_is_an_orphan_when_what_started_it_is_gone(self):
        box = self.box
        for pid, ppid, *argv in (
            (9, 1, "/usr/lib/systemd/systemd", "--user"), (10, 1, MCP), (11, 9, MCP), (30, 1, "-bash"),
            (20, 1, "npm exec notes-mcp"), (21, 20, "sh", "-c", "notes-mcp"),
            (22, 21, "node", "/opt/notes-mcp/index.js"), (31, 30, MCP), (32, 777, MCP), (40, 1, "claude"),
            (41, 40, MCP), (50, 1, "worker")):
            box.process(pid, *argv, ppid=ppid)
        box.process(12, MCP, ppid=9, cgroup="/user.slice/user@0.service/app.slice/notes.service")
        self.assertEqual(set(box.offers("light")), {10, 11, 22})
        box.process(1, "claude", ppid=0)
        self.assertEqual(set(box.offers("light")), {11})

    def test_servers_of_an_agent_go_with_deep_once_its_terminal_is_silent_for_long_enough(self):
        box = self.box
        box.terminal(self, 10, "claude", idle=95)
        box.process(11, MCP, ppid=10, hours=90)
        box.process(12, "sh", "-c", "x", ppid=10, hours=90)
        box.process(13, "python3", "-m", "mcp_server_git", ppid=12, hours=90)
        for pid, minutes, hours, child_hours in ((20, 89, 90, 90), (30, 95, 1, 1), (40, 95, 90, 1)):
            box.terminal(self, pid, "codex", idle=minutes, hours=hours)
            box.process(pid + 1, MCP, ppid=pid, hours=child_hours)
        box.process(50, "claude", "-p", "x")  # no terminal
        box.process(51, MCP, ppid=50)
        box.terminal(self, 60, "claude", idle=95, users=(os.getuid() + 1,) * 4)
        box.process(61, MCP, ppid=60)
        box.terminal(self, 70, "codex", "app-server", idle=95)
        box.process(71, MCP, ppid=70)
        box.process(80, MCP)
        offers = box.offers("deep")
        self.assertEqual(set(offers), {11, 13, 80})
        self.assertEqual((offers[11], offers[80]), ("its agent is idle for 95 min", "its parent is gone"))
        self.assertEqual(set(box.offers("light")), {80})

    def test_an_agents_own_server_and_a_protected_one_are_refused_with_their_reason(self):
        box = self.box
        box.process(10, "claude", "mcp", "serve")
        box.process(11, MCP, "orca")
        box.process(12, MCP)
        answer = judged(offered(Crew(box.root + "/proc"), "light", NOW), DEFAULT_ROWS, box.root + "/proc")
        self.assertEqual([row["pid"] for row in answer["allowed"]], [12])
        self.assertEqual([row["reason"] for row in answer["refused"]], ["an agent", "protected: orca"])


class FindingsTest(unittest.TestCase):
    def look(self, box: Box, home: Home) -> dict:
        answer = findings.findings(home.path, DEFAULT_ROWS, NOW * 10**9, box.root + "/proc")
        return {finding.pop("id"): finding for finding in answer["findings"] if finding["id"] != "disk"}

    def test_a_machine_inside_its_thresholds_has_no_findings(self):
        box, home = Box(self), Home(self)
        box.write("proc/meminfo", b"SwapTotal: 1000000 kB\nSwapFree: 510000 kB\n")
        box.terminal(self, 10, "claude", idle=80)
        for pid in (11, 12):
            box.process(pid, MCP, ppid=10)
        home.write(".claude/debug/a", days=9999)
        self.assertEqual(self.look(box, home), {})

    def test_each_finding_has_its_level_amount_and_action(self):
        box, home = Box(self), Home(self)
        box.write("proc/meminfo", b"SwapTotal: 2097152 kB\nSwapFree: 209716 kB\n")
        box.terminal(self, 10, "claude", idle=200, mib=1100)
        for pid, mib in ((11, 10), (12, 20), (13, 30)):
            box.process(pid, MCP, ppid=10, mib=mib)
        box.process(20, MCP, mib=7)
        box.process(21, MCP, "orca", mib=7)
        for number in range(501):
            home.write(f".claude/debug/{number}", days=9999, size=1)
        found = self.look(box, home)
        tab = {"kind": "open-tab", "group": "", "pids": []}
        self.assertEqual({name: (row["level"], row["est_mb"], row["count"], row["action"])
                          for name, row in found.items()}, {
            "swap": ("critical", 1843.2, 0, {**tab, "target": "system"}),
            "idle-sessions": ("warning", 1100.0, 1, {**tab, "target": "sessions"}),
            "orphan-mcp": ("info", 7.0, 1, {"kind": "kill", "target": "", "group": "", "pids": [20]}),
            "mcp-duplicates": ("info", 30.0, 2, {**tab, "target": "processes"}),
            "agent-leftovers": ("info", 1.96, 501, {"kind": "clean", "target": "cleanup",
                                                    "group": "agents-light", "pids": []})})
        self.assertEqual(list(found)[:2], ["swap", "idle-sessions"])
        self.assertEqual(found["swap"]["seen"], "1.8 of 2.0 gb in use \u00b7 90 %")
        texts = [row[key] for row in found.values() for key in ("title", "seen", "source", "proposal")]
        self.assertTrue(all(texts))

    def test_the_disk_is_judged_by_what_its_user_may_still_take(self):
        for free, available, level in ((150, 90, "warning"), (90, 36, "critical"), (150, 110, None)):
            values = list(os.statvfs("/"))
            values[1:5] = 4096, 1000, free, available
            with mock.patch.object(os, "statvfs", return_value=os.statvfs_result(values)):
                found = findings.disk("/")
            self.assertEqual(found and found["level"], level, free)

    def test_the_script_answers_on_this_machine(self):
        home = Home(self)
        answer = home.run("findings", "--protected=a,b", "--unprotected=finder")
        self.assertEqual(list(answer), ["findings"])
        self.assertEqual(home.files(), [])


class CommandLineTest(unittest.TestCase):
    def test_a_reader_that_has_gone_gets_its_receipt_all_the_same(self):
        home = Home(self)
        home.write(".claude/debug/a")
        reader, writer = os.pipe()
        os.close(reader)
        command = home.command("clean", "--group=agents-light", "--apply")
        done = subprocess.run(
            command, env=home.environment, stdout=writer, stderr=subprocess.PIPE, check=False)
        os.close(writer)
        self.assertEqual((done.returncode, done.stderr, home.receipts[0]["removed"]), (1, b"", 1))
