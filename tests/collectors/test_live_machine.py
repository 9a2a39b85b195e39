# SPDX-License-Identifier: Apache-2.0
import json
import os
import shutil
import subprocess
import time
import unittest
from pathlib import Path

from fabricated_machine import COLLECTORS, fresh_folder, put, started, waiting

from ostrel_lib import history_file
from ostrel_lib.files import read_list
from ostrel_lib.processes import look_twice

SCRIPT = os.path.join(COLLECTORS, "ostrel.py")
SYSTEM_PATH = "/usr/bin:/bin:/usr/sbin:/sbin"
COMMAND = ["/usr/bin/python3", "-B", SCRIPT]

AGENT = """
import os, sys
children = [os.posix_spawn("/bin/sleep", [name, "600"], {}) for name in sys.argv[1:]]
print(flush=True)
sys.stdin.read()
for child in children:
    os.kill(child, 9)
"""
"""Starts a server for each argument, as an agent does, until its input ends."""


def run(*arguments: str, script: str = "ostrel.py", **environment: str) -> subprocess.CompletedProcess:
    """A real script, started as the panel does, with nothing but these variables."""
    return subprocess.run(
        ["/usr/bin/python3", "-B", os.path.join(COLLECTORS, script), *arguments], stdin=subprocess.DEVNULL,
        capture_output=True, timeout=60, env=environment, check=False)


def answer(*arguments: str, **environment: str) -> dict:
    """The script's answer, which is one line of JSON."""
    done = run(*arguments, **environment)
    if done.returncode or done.stderr or done.stdout.count(b"\n") != 1:
        raise AssertionError((arguments, done))
    return json.loads(done.stdout)


def start_agent(name: str, *servers: str) -> subprocess.Popen:
    """A process that looks like an agent with its servers; they have started."""
    agent = subprocess.Popen(
        [name, "-c", AGENT, *servers], executable="/usr/bin/python3", stdin=subprocess.PIPE,
        stdout=subprocess.PIPE)
    agent.stdout.readline()
    return agent


def kernel_field(path: str, name: str) -> int:
    lines = Path(path).read_text("ascii", "replace").splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith(name + ":"))


class LiveMachineTest(unittest.TestCase):
    def setUp(self):
        self.home = fresh_folder(self)

    def test_the_script_answers_in_any_environment_with_one_line_that_agrees_with_the_kernel(self):
        for environment in ({}, {"PATH": SYSTEM_PATH, "LC_ALL": "C", "PYTHONSAFEPATH": "1"}):
            snapshot = answer("json", HOME=self.home, **environment)
            ram = snapshot["ram"]
            total = kernel_field("/proc/meminfo", "MemTotal") / 1048576
            self.assertAlmostEqual(ram["total"], total, delta=0.001)
            self.assertTrue(0 < ram["used"] < ram["total"] - ram["free"] + 0.01, ram)
            self.assertEqual(snapshot["load"]["ncpu"], len(os.sched_getaffinity(0)))
            self.assertEqual(snapshot["meta"]["code_path"], SCRIPT)

    def test_real_agents_and_their_servers_are_counted(self):
        def counts() -> list:
            found = answer("json", HOME=self.home)
            keys = ("mcp", "codex_mcp", "claude_mcp", "codex_mcp_duplicates", "claude", "codex")
            return [found["fan"][key] for key in keys] + [*found["sessions"].values()]

        for _ in range(20):  # until no other agent of this machine starts or ends something meanwhile
            before = counts()
            agents = [start_agent("claude", "notes-mcp", "grep"),
                      start_agent("codex", "notes-mcp", "notes-mcp", "mcp-server-files")]
            during = counts()
            for agent in agents:
                agent.communicate()
            if counts() == before:
                break
        self.assertEqual([now - then for now, then in zip(during, before)], [4, 3, 1, 1, 1, 1, 1, 1])

    def test_collectors_at_once_all_answer_while_processes_come_and_go_and_save_what_they_say(self):
        started(self, "/bin/sh", "-c", "while :; do /bin/true; done")
        running = [subprocess.Popen([*COMMAND, "json"], env={"HOME": self.home}, stdout=subprocess.PIPE)
                   for _ in range(8)]
        answers = [json.loads(child.communicate()[0]) for child in running]
        self.assertEqual({child.returncode for child in running}, {0})
        recorded = [answer["ts"] for answer in answers if answer["history_state"] == "recorded"]
        saved = [sample["ts"] for sample in history_file.samples(self.home, 100)]
        self.assertEqual((sorted(saved), len(recorded) > 0), (sorted(recorded), True))

    def test_a_childs_memory_and_command_line_are_the_kernels(self):
        work = "x = b'x' * (64 << 20); print(flush=True); input()"
        command = ["/usr/bin/python3", "-c", work, "marked"]
        child = waiting(self, *command)
        listed = {process.pid: process for process in look_twice("/proc", time.monotonic, lambda _: None)}
        self.assertNotIn(os.getpid(), listed)
        found = listed[child.pid]
        resident = kernel_field(f"/proc/{child.pid}/status", "VmRSS")
        self.assertAlmostEqual(found.rss / 1024, resident, delta=1024)
        maps = f"/proc/{child.pid}/maps"  # of which the kernel gives a page at a time
        self.assertEqual(read_list(maps), Path(maps).read_bytes())
        self.assertEqual((found.cmdline.decode().split("\0"), found.ppid), (command, os.getpid()))

    def test_a_command_that_does_not_exist_is_refused_in_one_line_and_does_nothing(self):
        kept = put(self.home + "/.claude/debug/a", b"")
        os.utime(kept, (1, 1))
        for script, *commands in (
            ("ostrel.py", [], ["json", "more"], ["two\nlines \udcff"]),
            ("session_bridge.py", [], ["lists"], ["list", "x"]),
            ("ostrel_janitor.py", [], ["json"], ["clean", "--group=agents-light"], ["clean", "--apply"],
             ["preview"], ["clean", "--group=agents-light", "--apply=no"], ["groups", "--protected=a"],
             ["clean", "--group", "agents-light", "--apply"], ["kill-preview", "\udcff\n"])):
            for arguments in commands:
                done = run(*arguments, script=script, PATH=SYSTEM_PATH, HOME=self.home)
                told = done.returncode, done.stdout, done.stderr.count(b"\n")
                self.assertEqual(told, (2, b"", 1), (script, arguments))
        self.assertTrue(os.path.exists(kept))

    def test_a_module_that_can_not_be_read_is_told_in_one_line(self):
        copy = shutil.copytree(COLLECTORS, self.home + "/scripts", ignore=lambda *_: {"__pycache__"})
        for module in ("output", "jsontext"):  # of which some import one only when they need it
            path = f"{copy}/ostrel_lib/{module}.py"
            os.rename(path, path + ".kept")
            os.symlink("/proc/self/mem", path)  # a file that opens, and gives an error when it is read
            for script, *words in (("ostrel.py", "clean"), ("ostrel_janitor.py", "groups"),
                                   ("ostrel_remote.py",), ("session_bridge.py", "list"),
                                   ("automations_bridge.py", "act")):
                done = run(*words, script=f"{copy}/{script}", HOME=self.home)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (
                    1, b"", f"{script}: OSError: '[Errno 5] Input/output error'\n".encode()))
            os.rename(path + ".kept", path)
