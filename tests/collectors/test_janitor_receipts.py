# SPDX-License-Identifier: Apache-2.0
import json
import os
import signal
import subprocess
import time
import unittest
from pathlib import Path
from unittest import mock

from fabricated_machine import started
from janitor_home import DEBUG, RECEIPTS, Home
from saved_samples import forked

from ostrel_lib.janitor import progress, receipts
from ostrel_lib.janitor.folders import KeepOut, open_home
from ostrel_lib.janitor.plan import plan


class ReceiptsTest(unittest.TestCase):
    def setUp(self):
        self.home = Home(self)

    def put(self, name: str, *lines: bytes) -> None:
        Path(self.home.write(f"{RECEIPTS}/{name}")).write_bytes(b"\n".join(lines) + b"\n")

    def test_a_receipt_is_one_line_of_the_days_file_with_the_local_time(self):
        home = self.home
        home.environment["TZ"] = "Pacific/Kiritimati"
        home.write(DEBUG + "/a")
        begin = time.time()
        home.run("clean", "--group=agents-light", "--apply")
        for moment in (begin, time.time()):
            day = time.strftime("%Y-%m-%d", time.gmtime(moment + 14 * 3600))
            if os.path.exists(home.at(f"{RECEIPTS}/{day}.jsonl")):
                break
        text = Path(home.at(f"{RECEIPTS}/{day}.jsonl")).read_text("ascii")
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
        self.home.link(RECEIPTS + "/2026-01-05.jsonl", self.home.at(RECEIPTS + "/2026-01-03.jsonl"))
        os.mkfifo(self.home.at(RECEIPTS + "/2026-01-06.jsonl"))
        found = self.home.receipts
        self.assertEqual([row.get("n") for row in found], [6, 5, 3, 1, None, 4])
        self.assertEqual(found[4]["name"], "x\u00e9")

    def test_an_answer_holds_the_newest_two_hundred_however_long_the_log_is(self):
        lines = [b'{"n":%d,"pad":"%s"}' % (number, b"x" * 3000) for number in range(500)]
        self.put("2026-01-02.jsonl", *lines)
        found = self.home.receipts
        self.assertEqual([row["n"] for row in found], list(range(499, 299, -1)))

    def test_writers_at_the_same_time_lose_no_line(self):
        home = self.home
        folder = receipts.open_folder(home.path, make=True)

        def write(child: int) -> None:
            for number in range(200):
                receipts.append(folder, {"kind": "test", "writer": child, "n": number, "pad": "y" * 500})

        children = [forked(lambda child=child: write(child)) for child in range(6)]
        for number in range(3):
            home.write(f"{DEBUG}/{number}")
        command = home.command("clean", "--group=agents-light", "--apply")
        runs = [subprocess.Popen(command, env=home.environment, stdout=subprocess.DEVNULL) for _ in range(4)]
        statuses = [os.waitpid(pid, 0)[1] for pid in children] + [run.wait() for run in runs]
        lines = []
        for name in receipts.day_files(folder):
            text = Path(home.at(f"{RECEIPTS}/{name}")).read_bytes()
            lines += [json.loads(line) for line in text.splitlines() if line.strip()]
        os.close(folder)
        written = {(row["writer"], row["n"]) for row in lines if row["kind"] == "test"}
        self.assertEqual(len(written), 1200)
        cleans = [row["removed"] for row in lines if row["kind"] == "clean"]
        self.assertEqual((statuses, len(cleans), sum(cleans)), ([0] * 10, 4, 3))

    def test_a_line_that_was_never_finished_does_not_take_the_next_with_it(self):
        folder = receipts.open_folder(self.home.path, make=True)
        name = time.strftime("%Y-%m-%d") + ".jsonl"
        self.put(name, b'{"n":1}')
        with open(self.home.at(f"{RECEIPTS}/{name}"), "ab") as file:
            file.write(b'{"torn":')
        receipts.append(folder, {"n": 2})
        os.close(folder)
        self.assertEqual([row["n"] for row in self.home.receipts], [2, 1])

    def test_without_a_place_for_its_receipt_a_cleanup_does_not_begin(self):
        self.home.write("Library/Application Support/Ostrel")
        path = self.home.write(DEBUG + "/a")
        removed, _, error = self.home.clean("agents-light")
        self.assertEqual((removed, error != "", os.path.exists(path)), (0, True, True))


class KilledRunTest(unittest.TestCase):
    def test_a_killed_run_gets_a_receipt_of_what_really_went_and_a_running_one_gets_none(self):
        for size in (200, 8000, 30000):
            home = Home(self)
            for number in range(1500):
                home.write(f"{DEBUG}/{number % 7}/{number}", size=1)
            run = started(self, *home.command("clean", "--group=agents-light", "--apply"),
                          env=home.environment, stdout=subprocess.DEVNULL)
            folder = home.at(RECEIPTS)
            until = time.monotonic() + 30
            while time.monotonic() < until and run.poll() is None:
                records = [entry for entry in os.scandir(folder)] if os.path.isdir(folder) else []
                if records and records[0].stat().st_size > size:
                    break
            run.send_signal(signal.SIGSTOP)
            self.assertEqual(home.receipts, [])
            run.kill()
            run.wait()
            left = len(home.files())
            receipts = [home.receipts for _ in range(2)][1]
            self.assertTrue(0 < left < 1500, left)
            told = [(row["kind"], row["group"], row["removed"], row["freed_mb"]) for row in receipts]
            self.assertEqual(told, [("clean", "agents-light", 1500 - left, round((1500 - left) / 256, 2))])
            self.assertEqual([name for name in os.listdir(folder) if not name.endswith(".jsonl")], [])

    def test_an_attempt_without_an_outcome_is_settled_by_what_is_on_the_disk(self):
        for there, removed in ((True, 1), (False, 2)):
            home = Home(self)
            name = "two\n\udcff"
            path = home.write(f"{DEBUG}/{name}", size=1 << 20)
            record = progress.Progress(home.path, "agents-deep")
            for entry in plan_of(self, home, "agents-light"):
                record.trying(entry)
                record.tried(8192)
                record.trying(entry)
            os.close(record._file)  # as the end of its process does
            if not there:
                os.unlink(path)
            receipt = home.receipts[0]
            self.assertEqual((receipt["removed"], receipt["freed_mb"], receipt["group"]),
                             (removed, 0.01 if there else 1.01, "agents-deep"))

    def test_a_run_that_wrote_its_receipt_and_was_killed_gets_a_second_one_only_if_that_is_not_whole(self):
        for torn in (0, 1, 2, 40):
            home = Home(self)
            record = progress.Progress(home.path, "agents-deep")
            with mock.patch.object(os, "unlink"):
                record.finish()
            folder = home.at(RECEIPTS)
            day, = (name for name in os.listdir(folder) if name.endswith(".jsonl"))
            os.truncate(f"{folder}/{day}", os.path.getsize(f"{folder}/{day}") - torn)
            self.assertEqual([len(home.receipts) for _ in range(2)], [1, 1], torn)

    def test_what_is_no_record_beside_the_receipts_is_passed_over(self):
        home = Home(self)
        folder = RECEIPTS + "/"
        for name in ("clean-1.progress", "clean-2.progress", "else.progress"):
            home.write(folder + name, size=9000)
        home.link(folder + "clean-3.progress", home.write(home.outside + "/a"))
        os.mkfifo(home.at(folder + "clean-4.progress"))
        home.write(folder + "clean-5.progress", size=0)
        self.assertEqual(home.receipts, [])
        self.assertEqual((len(os.listdir(home.at(folder))), os.listdir(home.outside)), (5, ["a"]))

    def test_a_full_disk_does_not_stop_what_makes_room_on_it(self):
        home = Home(self)
        for number in range(3):
            home.write(f"{DEBUG}/{number}")
        write = os.write

        def full(descriptor, data):
            if b".claude" in data and len(home.files()) > 1:
                raise OSError(28, "No space left on device")
            return write(descriptor, data)

        with mock.patch.object(os, "write", full):
            self.assertEqual(home.clean("agents-light"), (3, 0, ""))
        self.assertEqual(home.receipts[0]["removed"], 3)


def plan_of(test, home: Home, group: str):
    folder = open_home(home.path)
    test.addCleanup(folder.close)
    return plan(group, folder, [], KeepOut(folder), time.time_ns())
