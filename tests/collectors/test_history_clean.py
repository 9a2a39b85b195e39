# SPDX-License-Identifier: Apache-2.0
import itertools
import json
import os
import random
import select
import signal
import subprocess
import unittest
from unittest import mock

from fabricated_machine import COLLECTORS
from saved_samples import BACKUP, Home, forked, line, lines, sample
from test_history_file import limit_files_to
from test_live_machine import SCRIPT, SYSTEM_PATH, run

from ostrel_lib import history_file as history
from ostrel_lib import maintenance
from ostrel_lib.maintenance import SAMPLES_KEPT, history_clean

WRITER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "sample_writer.py")
KILLS = 300
KILLS_OF_THE_SCRIPT = 40
CALLS = ("open", "read", "pread", "write", "fsync", "rename", "unlink", "close", "fstat", "lstat")


class HistoryCleanTest(unittest.TestCase):
    def told(self, home: Home, apply: bool) -> tuple:
        answer = history_clean(home.path, apply)
        return answer["status"], answer["before_bytes"], answer["after_bytes"]

    def test_the_latest_samples_stay_as_they_were_and_the_whole_stands_in_the_backup(self):
        junk, size = b"junk\n{}\n", len(line(10))
        for content, kept in ((lines(0, 500), lines(381, 500)), (lines(1, 121), lines(2, 121)),
                              (junk + lines(10, 90), lines(10, 90)),
                              (lines(10, 20) + junk[:-1], lines(10, 20)),
                              (lines(100, 200) + junk * 9000 + lines(201, 240), lines(121, 240))):
            home = Home(self)
            home.write(content)
            expected = len(content), len(kept)
            self.assertEqual(self.told(home, apply=False), ("preview", *expected))
            self.assertEqual((home.content(), home.names()), (content, [history.NAME]))
            self.assertEqual(self.told(home, apply=True), ("compacted", *expected))
            self.assertEqual((home.content(), home.names()), (kept, [BACKUP, history.NAME]))
            name = next(name for name in os.listdir(home.folder) if name.startswith(BACKUP))
            with open(os.path.join(home.folder, name), "rb") as file:
                self.assertEqual(file.read(), content)
            self.assertLessEqual(len(kept), SAMPLES_KEPT * size + 200)

    def test_with_nothing_to_drop_nothing_is_written(self):
        for content in (b"", lines(1, 120), lines(1, 120)[:-1], lines(1, 3)):
            home = Home(self)
            home.write(content)
            before = os.stat(home.file)
            for apply in (False, True):
                self.assertEqual(self.told(home, apply), ("already compact", len(content), len(content)))
            self.assertEqual((os.stat(home.file), home.names()), (before, [history.NAME]))
        empty = Home(self)
        self.assertEqual([self.told(empty, apply) for apply in (False, True)], [("no history", 0, 0)] * 2)
        self.assertEqual(os.listdir(empty.path), [])

    def test_each_compaction_has_a_backup_of_its_own(self):
        home = Home(self)
        with mock.patch("time.gmtime", return_value=(2026, 7, 18, 10, 11, 12, 5, 199, 0)):
            for first in (0, 200, 400):
                home.write(lines(first, first + 150))
                self.assertEqual(history_clean(home.path, apply=True)["status"], "compacted")
        self.assertEqual(sorted(os.listdir(home.folder))[:3], [
            "mem-history.backup-20260718T101112Z-2.jsonl", "mem-history.backup-20260718T101112Z-3.jsonl",
            "mem-history.backup-20260718T101112Z.jsonl"])
        self.assertEqual(home.backed_up(), {first + n for first in (0, 200, 400) for n in range(151)})

    def test_without_a_backup_nothing_is_dropped(self):
        content = lines(0, 499)

        def full_disk(home):
            limit_files_to(len(content) - 1)

        def blocked(home):
            os.mkdir(os.path.join(home.folder, history.BESIDE))

        def grows(home):
            def appended(file):
                with open(home.file, "ab") as other:
                    other.write(line(500))
                return maintenance_blocks(file)
            mock.patch.object(maintenance, "blocks", appended).start()

        def replaced(home):
            def other(folder):
                os.rename(home.file, home.file + ".old")
                home.write(content)
            mock.patch.object(history, "flush_folder", other).start()

        def locked(home):
            mock.patch.object(maintenance, "LOCK_WAIT", 0).start()
            history.take_lock(home.folder, wait=0)

        def folder(home):
            os.rename(home.file, home.file + ".old")
            os.mkdir(home.file)

        maintenance_blocks = maintenance.blocks
        for spoil, why in ((full_disk, "the backup failed: File too large"),
                           (blocked, "the backup failed: Is a directory"),
                           (grows, "the history grew while it was backed up"),
                           (replaced, "changed by another program"), (folder, "not a regular file"),
                           (locked, "another program holds the history")):
            home = Home(self)
            home.write(content)

            def work():
                spoil(home)
                answer = history_clean(home.path, apply=True)
                assert answer["status"] == "unchanged, " + why, answer
                assert answer["before_bytes"] == answer["after_bytes"] > 0, answer

            self.assertEqual(os.waitpid(forked(work), 0)[1], 0, spoil.__name__)
            if spoil is not folder:
                self.assertEqual(home.content()[:len(content)], content)
            self.assertFalse(os.path.isfile(os.path.join(home.folder, history.BESIDE)), spoil.__name__)

    def test_a_death_before_any_call_of_the_system_loses_no_sample(self):
        for count in itertools.count():
            home = Home(self)
            home.write(lines(0, 199))

            def work():
                left = itertools.count(count, -1)

                def deadly(call):
                    def called(*arguments, **named):
                        if next(left) == 0:
                            os.kill(os.getpid(), signal.SIGKILL)
                        return call(*arguments, **named)
                    return called

                for name in CALLS:
                    mock.patch.object(os, name, deadly(getattr(os, name))).start()
                history_clean(home.path, apply=True)

            status = os.waitpid(forked(work), 0)[1]
            self.assertIn(home.saved(), ([*range(200)], [*range(80, 200)]), count)
            self.assertTrue(len(home.saved()) == 200 or home.backed_up() == {*range(200)}, count)
            if status == 0:
                break
            self.assertEqual(history.append(home.path, sample(200)), "")
            self.assertEqual(history_clean(home.path, apply=True)["status"], "compacted" if len(
                home.saved()) > 121 or home.names().count(BACKUP) else "already compact")
            self.assertEqual({*home.saved()} | home.backed_up(), {*range(201)})
            self.assertNotIn(history.BESIDE, home.names())
        self.assertGreater(count, 15)

    def check_nothing_lost(self, home: Home, last: int) -> int:
        """The samples up to `last` are all there, the latest of them in the history; gives the latest."""
        saved = home.saved()
        self.assertGreaterEqual(saved[-1], last)
        self.assertEqual(saved, list(range(saved[0], saved[-1] + 1)))
        self.assertGreaterEqual(len(saved), SAMPLES_KEPT)
        self.assertEqual(home.backed_up() | {*saved}, {*range(saved[-1] + 1)})
        return saved[-1]

    def test_a_kill_at_any_moment_loses_no_sample(self):
        home, chance = Home(self), random.Random(11)
        last = 149
        home.write(lines(0, last))
        writer = subprocess.Popen(["/usr/bin/python3", "-S", "-B", WRITER, COLLECTORS, home.path], bufsize=0,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(writer.communicate)
        for _ in range(KILLS):
            writer.stdin.write(b"%d %d\n" % (last + 1, last + chance.randrange(1, 9)))
            pid = int(writer.stdout.readline())
            self.assertEqual(writer.stdout.readline(), b"enough\n")
            select.select([], [], [], chance.uniform(0, 0.002))  # whatever it does then
            os.kill(pid, signal.SIGKILL)
            last = self.check_nothing_lost(home, int(writer.stdout.readline()))
        self.assertGreater(len(home.backups), KILLS // 10)

    def test_the_script_killed_at_any_moment_loses_no_sample(self):
        home, chance = Home(self), random.Random(13)
        last = 149
        home.write(lines(0, last))
        command = ["/usr/bin/python3", "-B", SCRIPT, "history-clean", "--apply"]
        for _ in range(KILLS_OF_THE_SCRIPT):
            script = subprocess.Popen(command, env={"HOME": home.path}, stdout=subprocess.DEVNULL)
            try:
                script.wait(timeout=chance.uniform(0.01, 0.06))
            except subprocess.TimeoutExpired:
                script.kill()
                script.wait()
            last = self.check_nothing_lost(home, last) + 1
            self.assertEqual(history.append(home.path, sample(last)), "")

    def test_saving_and_reading_samples_of_its_own_loads_no_json_reader(self):
        home = Home(self)
        code = ("import sys\nsys.path.insert(0, sys.argv[1])\nimport ostrel_lib.history_file as history\n"
                f"assert history.append(sys.argv[2], {sample(1)}) == ''\n"
                "assert len(history.samples(sys.argv[2], 9)) == 1\n"
                "assert 'json' not in sys.modules")
        subprocess.run(["/usr/bin/python3", "-B", "-c", code, COLLECTORS, home.path], check=True)

    def test_the_script_tells_what_it_did_in_one_line_of_json(self):
        home = Home(self)
        home.write(lines(0, 299))
        whole, kept = len(home.content()), len(lines(180, 299))
        for arguments, status, sizes in ((["history-clean"], "preview", (whole, kept)),
                                         (["history-clean", "--apply"], "compacted", (whole, kept)),
                                         (["history-clean"], "already compact", (kept, kept))):
            done = run(*arguments, HOME=home.path, PATH=SYSTEM_PATH)
            self.assertEqual((done.returncode, done.stderr, done.stdout.count(b"\n")), (0, b"", 1))
            answer = json.loads(done.stdout)
            told = answer["status"], answer["before_bytes"], answer["after_bytes"]
            self.assertEqual(told, (status, *sizes))
