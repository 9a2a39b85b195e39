# SPDX-License-Identifier: Apache-2.0
import json
import os
import random
import resource
import signal
import unittest

from saved_samples import Home, forked, line, lines, sample

from ostrel_lib import history_file as history
from ostrel_lib.maintenance import history_clean


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
