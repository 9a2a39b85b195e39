# SPDX-License-Identifier: Apache-2.0
import itertools
import json
import mmap
import os
import random
import resource
import signal
import subprocess
import time
import unittest
from pathlib import Path
from unittest import mock

from fabricated_machine import COLLECTORS
from saved_samples import BACKUP, Home, forked, line, lines, sample
from test_live_machine import COMMAND, answer

from ostrel_lib import history_file as history
from ostrel_lib import maintenance
from ostrel_lib.maintenance import SAMPLES_KEPT, history_clean

KILLS = 300
KILLS_OF_THE_SCRIPT = 40
CALLS = ("open", "read", "pread", "write", "fsync", "rename", "unlink", "close", "fstat", "lstat")


def limit_files_to(size: int) -> None:
    """From here on this process can't make a file larger; the kernel refuses like a full disk."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class HistoryFileTest(unittest.TestCase):
    def read(self, home: Home, most: int = 120) -> list:
        return [found["swap"] for found in history.samples(home.path, most)]

    def test_what_was_appended_is_read_back_the_latest_last(self):
        home = Home(self)
        self.assertEqual(self.read(home), [])
        for number in range(1500):  # several blocks of reading
            self.assertEqual(history.append(home.path, sample(number)), "")
        self.assertEqual(home.content(), lines(0, 1499))
        self.assertEqual(self.read(home, 1200), list(range(300, 1500)))
        self.assertEqual(os.stat(home.file).st_mode & 0o777, 0o600)

    def test_lines_that_are_no_samples_are_passed_over(self):
        good = line(1)
        for junk in (b"", b"{", b"[1]\n", b"null\n", b'{"swap":1,"load":2}\n', b"\xff\n", b"\0" * 9,
                     b'{"swap":true,"load":2,"mcp":3}\n', b'{"swap":1e99,"load":2,"mcp":3}\n',
                     b'{"swap":NaN,"load":2,"mcp":3}\n',
                     good[:-2] + b', "x": "' + b"x" * history.LONGEST_LINE + b'"}\n', good[:40] + b"\n",
                     b"x" * 3 * history.BLOCK + b"\n", b"\n" * 9, b"[" * 4000 + b"\n"):
            home = Home(self)
            home.write(junk + b"\n" + good + junk)
            self.assertEqual(self.read(home), [1], junk[:50])

    def test_a_line_that_was_left_unfinished_is_closed_by_the_next(self):
        home = Home(self)
        home.write(line(1) + line(2)[:20])
        self.assertEqual(history.append(home.path, sample(3)), "")
        self.assertEqual(self.read(home), [1, 3])

    def test_the_quick_reading_of_a_line_never_differs_from_json(self):
        chance = random.Random(3)
        pieces = [b'"', b"\\", b", ", b'": ', b"0", b"12", b"-", b".", b"e", b"{", b"}", b" ", b"a", b"null",
                  b"\xc3\xa9", b'", "', b"\x01", b"9" * 20]
        agreed = 0
        for _ in range(30000):
            text = line(chance.randrange(99))[:-1]
            for _ in range(chance.randrange(3)):
                at = chance.randrange(len(text))
                text = text[:at] + chance.choice(pieces) + text[at + chance.randrange(3):]
            found = history.plain_object(text)
            if found is not None:
                agreed += 1
                self.assertEqual(found, json.loads(text), text)
        self.assertGreater(agreed, 10000)

    def test_a_file_at_its_bound_loses_its_older_half(self):
        home = Home(self)
        room = history.MOST_BYTES // len(line(10000))
        home.write(lines(10000, 10000 + room - 1))
        self.assertEqual(history.append(home.path, sample(90000)), "")
        kept = home.saved()
        self.assertEqual(kept, [*range(10000 + room - len(kept) + 1, 10000 + room), 90000])
        self.assertAlmostEqual(len(home.content()), history.MOST_BYTES / 2, delta=200)
        self.assertEqual(home.names(), [history.NAME])

    def test_what_cannot_be_saved_is_refused_and_leaves_all_as_it_was(self):
        def full():
            limit_files_to(len(line(1)) + 9)
            assert history.append(home.path, sample(2)) == "the disk took half a line"
            limit_files_to(9)
            assert history.append(home.path, sample(2)) == "File too large"

        home = Home(self)
        home.write(line(1))
        self.assertEqual(os.waitpid(forked(full), 0)[1], 0)
        self.assertEqual(history.append(home.path, {"swap": 1, "load": None, "mcp": 2}), "not a sample")
        held = history.take_lock(home.folder, wait=0)
        self.assertEqual(history.append(home.path, sample(2), wait=0), "another program holds the history")
        os.close(held)
        self.assertEqual(home.content(), line(1))
        other = os.path.join(home.folder, "other")
        os.rename(home.file, other)
        for lay, why in ((lambda: os.symlink(other, home.file), "Too many levels of symbolic links"),
                         (lambda: os.mkfifo(home.file), "not a regular file"),
                         (lambda: os.mkdir(home.file), "Is a directory")):
            lay()
            self.assertEqual(history.append(home.path, sample(2)), why)
            self.assertEqual(self.read(home), [])
            (os.rmdir if os.path.isdir(home.file) else os.unlink)(home.file)

    def test_writers_at_once_lose_nothing_to_each_other(self):
        home = Home(self)
        home.write(lines(0, 150))

        def write(first: int):
            for number in range(first, first + 100):
                assert history.append(home.path, sample(number), wait=60) == ""
                if number % 10 == 0:
                    assert history_clean(home.path, apply=True)["status"] in ("compacted", "already compact")

        writers = [forked(lambda first=first: write(first)) for first in (1000, 2000, 3000)]
        self.assertEqual([os.waitpid(pid, 0)[1] for pid in writers], [0, 0, 0])
        written = {*range(151), *(first + n for first in (1000, 2000, 3000) for n in range(100))}
        self.assertEqual({*home.saved()} | home.backed_up(), written)
        for first in (1000, 2000, 3000):
            own = [number for number in home.saved() if first <= number < first + 100]
            self.assertEqual(own, list(range(first + 100 - len(own), first + 100)))


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
            self.assertEqual(Path(home.folder, name).read_bytes(), content)
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
        told = mmap.mmap(-1, 8)  # shared with the writer: the last sample that it saved for certain

        def write() -> None:
            """Saves samples, and compacts after every fifth, until it is killed."""
            for number in itertools.count(last + 1):
                assert history.append(home.path, sample(number), wait=60) == ""
                told[:] = number.to_bytes(8, "little")
                if number % 5 == 0:
                    history_clean(home.path, apply=True)

        for _ in range(KILLS):
            enough = last + chance.randrange(1, 9)
            pid = forked(write)
            while int.from_bytes(told, "little") < enough:
                time.sleep(0.0002)
            time.sleep(chance.uniform(0, 0.002))  # whatever it does then
            os.kill(pid, signal.SIGKILL)
            self.assertEqual(os.waitpid(pid, 0)[1], signal.SIGKILL)
            last = self.check_nothing_lost(home, int.from_bytes(told, "little"))
        self.assertGreater(len(home.backups), KILLS // 10)

    def test_the_script_killed_at_any_moment_loses_no_sample(self):
        home, chance = Home(self), random.Random(13)
        last = 149
        home.write(lines(0, last))
        for _ in range(KILLS_OF_THE_SCRIPT):
            script = subprocess.Popen([*COMMAND, "history-clean", "--apply"], env={"HOME": home.path},
                                      stdout=subprocess.DEVNULL)
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
            told = answer(*arguments, HOME=home.path)
            self.assertEqual((told["status"], told["before_bytes"], told["after_bytes"]), (status, *sizes))
