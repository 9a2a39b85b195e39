# SPDX-License-Identifier: Apache-2.0
import json
import os
import subprocess
import time
import unittest

from fabricated_machine import COLLECTORS

from ostrel_lib.processes import look_twice

SCRIPT = os.path.join(COLLECTORS, "ostrel.py")
SYSTEM_PATH = "/usr/bin:/bin:/usr/sbin:/sbin"


def run(*arguments: str, **environment: str) -> subprocess.CompletedProcess:
    """The real script, started as the panel does, with nothing but these variables."""
    return subprocess.run(
        ["/usr/bin/python3", "-B", SCRIPT, *arguments], stdin=subprocess.DEVNULL, capture_output=True,
        timeout=60, env=environment, check=False)


def kernel_field(path: str, name: str) -> int:
    with open(path, encoding="ascii", errors="replace") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(name + ":"))


class LiveMachineTest(unittest.TestCase):
    def test_the_script_answers_in_any_environment_with_one_line_that_agrees_with_the_kernel(self):
        for environment in ({}, {"PATH": SYSTEM_PATH, "LC_ALL": "C", "PYTHONSAFEPATH": "1"}):
            done = run("json", **environment)
            self.assertEqual((done.returncode, done.stderr, done.stdout.count(b"\n")), (0, b"", 1))
            snapshot = json.loads(done.stdout)
            ram = snapshot["ram"]
            total = kernel_field("/proc/meminfo", "MemTotal") / 1048576
            self.assertAlmostEqual(ram["total"], total, delta=0.001)
            self.assertTrue(0 < ram["used"] < ram["total"] - ram["free"] + 0.01, ram)
            self.assertEqual(snapshot["load"]["ncpu"], len(os.sched_getaffinity(0)))
            self.assertEqual(snapshot["meta"]["code_path"], SCRIPT)

    def test_a_childs_memory_and_command_line_are_the_kernels(self):
        work = "x = b'x' * (64 << 20); print(flush=True); input()"
        command = ["/usr/bin/python3", "-c", work, "marked"]
        child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(child.communicate, b"\n")
        child.stdout.readline()
        listed = {process.pid: process for process in look_twice("/proc", time.monotonic, lambda _: None)}
        self.assertNotIn(os.getpid(), listed)
        found = listed[child.pid]
        resident = kernel_field(f"/proc/{child.pid}/status", "VmRSS")
        self.assertAlmostEqual(found.rss / 1024, resident, delta=1024)
        self.assertEqual((found.cmdline.decode().split("\0"), found.ppid), (command, os.getpid()))

    def test_a_command_that_does_not_exist_is_refused_in_one_line(self):
        for arguments in ([], ["json", "more"], ["two\nlines \udcff"]):
            done = run(*arguments, PATH=SYSTEM_PATH)
            self.assertEqual((done.returncode, done.stdout, done.stderr.count(b"\n")), (2, b"", 1), arguments)
