# SPDX-License-Identifier: Apache-2.0
import json
import os
import subprocess
import tempfile
import unittest

from schedulers import SCRIPT, Schedulers

ROWS = 10000
BARE = 0.009
START_BUDGET = 0.020
"""Seconds of processor time: what a bare interpreter takes where the budget was set, and what may come on
top of it. A busy or slow machine stretches both alike."""
HEAVY = {"json", "re", "subprocess", "typing", "pathlib", "hashlib", "select", "signal", "collections",
         "datetime", "zlib"}
PYTHON = "/usr/bin/python3"


class BudgetTest(unittest.TestCase):
    def setUp(self):
        self.box = Schedulers(self)
        self.box.registry(*({"lane": "cloud", "id": f"job {number}", "title": f"Job {number} of the list",
                             "schedule": "daily at 09:00", "executor": "claude -p"}
                            for number in range(ROWS)))
        for tool in os.listdir(self.box.root + "/bin"):
            os.remove(f"{self.box.root}/bin/{tool}")
        compiled = tempfile.TemporaryDirectory()
        self.addCleanup(compiled.cleanup)
        self.environment = {"HOME": self.box.home, "PATH": "/nowhere", "PYTHONPYCACHEPREFIX": compiled.name}

    def run_python(self, *words):
        return subprocess.run([PYTHON, *words], stdin=subprocess.DEVNULL, capture_output=True,
                              env=self.environment, check=True)

    def processor_time(self, *words) -> float:
        """The least that several runs took, so that a busy machine doesn't count."""
        times = []
        for _ in range(15):
            child = subprocess.Popen([PYTHON, *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                     env=self.environment)
            _, status, usage = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(child.returncode, 0)
            times.append(usage.ru_utime + usage.ru_stime)
        return min(times)

    def test_ten_thousand_jobs_come_whole_from_the_cache_without_a_parser(self):
        first = json.loads(self.run_python(SCRIPT, "list").stdout)
        kept = self.run_python("-X", "importtime", SCRIPT, "list")
        again = json.loads(kept.stdout)
        self.assertEqual((len(again["automations"]) >= ROWS, again["automations"]),
                         (True, first["automations"]))
        loaded = {line.rsplit("|", 1)[-1].strip() for line in kept.stderr.decode().split("\n")}
        self.assertIn("ostrel_lib.automations.cache", loaded)
        self.assertEqual(loaded & HEAVY, set())

    def test_an_answer_from_the_cache_costs_little_more_than_pythons_own_start(self):
        self.run_python(SCRIPT, "list")
        bare = self.processor_time("-c", "pass")
        spent = self.processor_time(SCRIPT, "list") - bare
        self.assertLess(spent, START_BUDGET * bare / BARE, f"bare python took {bare:.3f} s")
