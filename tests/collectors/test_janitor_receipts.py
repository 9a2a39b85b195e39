# SPDX-License-Identifier: Apache-2.0
import json
import os
import subprocess
import time
import unittest

from janitor_home import DEBUG, Home

from ostrel_lib.janitor import receipts

FOLDER = "Library/Application Support/Ostrel/receipts"


class ReceiptsTest(unittest.TestCase):
    def setUp(self):
        self.home = Home(self)

    def put(self, name: str, *lines: bytes) -> None:
        path = self.home.write(f"{FOLDER}/{name}")
        with open(path, "wb") as file:
            file.write(b"\n".join(lines) + b"\n")

    def test_a_receipt_is_one_line_of_the_days_file_with_the_local_time(self):
        home = self.home
        home.environment["TZ"] = "Pacific/Kiritimati"
        home.write(DEBUG + "/a")
        begin = time.time()
        home.run("clean", "--group=agents-light", "--apply")
        for moment in (begin, time.time()):
            day = time.strftime("%Y-%m-%d", time.gmtime(moment + 14 * 3600))
            if os.path.exists(home.at(f"{FOLDER}/{day}.jsonl")):
                break
        with open(home.at(f"{FOLDER}/{day}.jsonl"), encoding="ascii") as file:
            text = file.read()
        receipt = json.loads(text)
        self.assertRegex(receipt.pop("ts"), day + r" \d\d:\d\d:\d\d$")
        self.assertRegex(receipt.pop("run"), r"^clean-\d+-\d+$")
        self.assertEqual(receipt, {"kind": "clean", "group": "agents-light", "removed": 1, "freed_mb": 0.0})
        self.assertTrue(text.endswith("}\n") and text.count("\n") == 1)

    def test_the_newest_come_first_over_all_days_and_what_is_no_receipt_is_passed_over(self):
        stop = b'{"ts":"2026-01-02 10:00:00","kind":"stop","pid":4,"name":"x\\u00e9","command":"\xff"}'
        self.put("2026-01-02.jsonl", stop, b'{"n":1}', b"", b"[1]", b"{torn", b'{"n":2,"x":' + b"[" * 9000,
                 b'{"n":3}', b'{"n":' + b"9" * 70000 + b"}")
        self.put("2025-12-31.jsonl", b'{"n":4}')
        self.put("2026-01-03.jsonl", b'{"n":5}', b'{"n":6}')
        self.put("notes.jsonl", b'{"n":7}')
        self.put("2026-01-04.jsonl.progress", b'{"n":8}')
        self.home.link(FOLDER + "/2026-01-05.jsonl", self.home.at(FOLDER + "/2026-01-03.jsonl"))
        os.mkfifo(self.home.at(FOLDER + "/2026-01-06.jsonl"))
        found = self.home.receipts
        self.assertEqual([row.get("n") for row in found], [6, 5, 3, 1, None, 4])
        self.assertEqual(found[4]["name"], "x\u00e9")

    def test_an_answer_holds_the_newest_two_hundred_however_long_the_log_is(self):
        lines = [b'{"n":%d,"pad":"%s"}' % (number, b"x" * 3000) for number in range(500)]
        self.put("2026-01-02.jsonl", *lines)
        found = self.home.receipts
        self.assertEqual([row["n"] for row in found], list(range(499, 299, -1)))

    def test_writers_at_the_same_time_lose_no_line(self):
        home, children = self.home, []
        folder = receipts.open_folder(home.path, make=True)
        for child in range(6):
            pid = os.fork()
            if pid == 0:
                try:
                    for number in range(200):
                        row = {"kind": "test", "writer": child, "n": number, "pad": "y" * 500}
                        receipts.append(folder, row)
                finally:
                    os._exit(0)
            children.append(pid)
        for number in range(3):
            home.write(f"{DEBUG}/{number}")
        command = home.command("clean", "--group=agents-light", "--apply")
        runs = [subprocess.Popen(command, env=home.environment, stdout=subprocess.DEVNULL) for _ in range(4)]
        for pid in children:
            os.waitpid(pid, 0)
        statuses = [run.wait() for run in runs]
        lines = []
        for name in receipts.day_files(folder):
            with open(home.at(f"{FOLDER}/{name}"), "rb") as file:
                lines += [json.loads(line) for line in file if line.strip()]
        os.close(folder)
        written = {(row["writer"], row["n"]) for row in lines if row["kind"] == "test"}
        self.assertEqual(len(written), 1200)
        cleans = [row["removed"] for row in lines if row["kind"] == "clean"]
        self.assertEqual((statuses, len(cleans), sum(cleans)), ([0] * 4, 4, 3))

    def test_a_line_that_was_never_finished_does_not_take_the_next_with_it(self):
        folder = receipts.open_folder(self.home.path, make=True)
        name = time.strftime("%Y-%m-%d") + ".jsonl"
        self.put(name, b'{"n":1}')
        with open(self.home.at(f"{FOLDER}/{name}"), "ab") as file:
            file.write(b'{"torn":')
        receipts.append(folder, {"n": 2})
        os.close(folder)
        self.assertEqual([row["n"] for row in self.home.receipts], [2, 1])

    def test_without_a_place_for_its_receipt_a_cleanup_does_not_begin(self):
        self.home.write("Library/Application Support/Ostrel")
        path = self.home.write(DEBUG + "/a")
        removed, _, error = self.home.clean("agents-light")
        self.assertEqual((removed, error != "", os.path.exists(path)), (0, True, True))
