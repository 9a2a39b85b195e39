# SPDX-License-Identifier: Apache-2.0
"""What a cleanup must never do, whatever lies in its folders and whoever works in them at the same time."""
import ctypes
import fcntl
import os
import signal
import socket
import subprocess
import time
import unittest
from pathlib import Path
from unittest import mock

from janitor_home import CACHE, DEBUG, Home

from ostrel_lib.janitor import cleaning, groups, progress
from ostrel_lib.janitor.folders import KeepOut, open_home
from ostrel_lib.janitor.plan import plan

RENAME_EXCHANGE = 2
AT_FDCWD = -100
ATTACK_SECONDS, PAIRS = 5, 30


class SafetyTest(unittest.TestCase):
    def setUp(self):
        self.home = Home(self)
        self.refused = 0

    def step_through(self, group: str, *selected: str):
        """A cleanup that stops before each entry, so that a test can change something in between."""
        home = open_home(self.home.path)
        record = progress.Progress(self.home.path, group)
        for entry in plan(group, home, list(selected), KeepOut(home), time.time_ns()):
            yield entry
            self.refused += cleaning.carry_out([entry], record)
        record.finish()
        home.close()

    def test_no_link_leads_a_cleanup_out_of_its_folders(self):
        for link in (".claude", DEBUG, DEBUG + "/sub", ".cache", CACHE, CACHE + "/sub", ".npm", ".npm/_npx",
                     ".npm/_npx/0f", ".codex"):
            home = Home(self)
            for path in ("a", "debug/a", "sub/a", "pip/a", "_npx/0f/a", "0f/a", "logs/a"):
                home.write(home.outside + "/" + path)
            home.link(link, home.outside)
            for group in groups.TITLES:
                if group != "product-builds":
                    listed = [path for path in home.listed(group, "pip") if path != link]
                    self.assertEqual((listed, home.clean(group, "pip")[1:]), ([], (0, "")), (link, group))
            self.assertEqual(len(home.files(home.outside)), 7, link)

    def test_the_session_history_is_left_alone_under_every_name(self):
        history, codex = ".claude/projects", ".codex/sessions"

        def links_in(home: Home) -> None:
            home.link(history + "/p/link", home.at(CACHE + "/moved"))

        def second_name(home: Home) -> None:
            os.link(home.at(history + "/p/a.jsonl"), home.at(CACHE + "/name"))

        def is_a_link(home: Home) -> None:
            os.rename(home.at(history), home.at(CACHE + "/history"))
            home.link(history, "../" + CACHE + "/history")

        def holds_the_cache(home: Home) -> None:
            os.rename(home.at(codex), home.at(".codex/other"))
            home.link(codex, home.at(".cache"))

        def holds_the_home(home: Home) -> None:
            os.rename(home.at(codex), home.at(".codex/other"))
            home.link(codex, home.root)

        for arrange, kept in ((links_in, "moved/b"), (second_name, "name"), (is_a_link, "history/p/a.jsonl"),
                              (holds_the_cache, "pip"), (holds_the_home, "pip")):
            home = Home(self)
            for path in (history + "/p/a.jsonl", codex + "/a.jsonl", CACHE + "/moved/b", CACHE + "/pip"):
                home.write(path)
            arrange(home)
            before = home.files()
            listed = home.preview("app-caches", "pip")["files"]
            self.assertFalse([row for row in listed if row["path"] == f"~/{CACHE}/{kept}"], arrange)
            home.clean("app-caches", "pip")
            gone = sorted(set(before) - set(home.files()))
            self.assertEqual(gone, sorted(row["path"][2:] for row in listed), arrange)
            self.assertTrue(all(path.startswith(CACHE) for path in gone), gone)

    def test_history_that_is_moved_into_a_folder_while_it_is_cleaned_stays(self):
        home = self.home
        home.write(".claude/projects/p/a")
        for number in range(3):
            home.write(f"{CACHE}/{number}/a")
        steps = self.step_through("app-caches", "pip")
        first = next(steps)
        for number in range(3):
            if f"/{number}" not in first.folder.path:
                os.rename(home.at(f"{CACHE}/{number}/a"), home.at(f"{CACHE}/{number}/b"))
                os.rename(home.at(".claude/projects"), home.at(f"{CACHE}/{number}/projects"))
                break
        list(steps)
        self.assertEqual(home.files(), [f"{CACHE}/{number}/projects/p/a"])

    def test_an_entry_that_is_not_what_was_planned_stays_and_counts_as_refused(self):
        def write_to(path: str) -> None:
            with open(path, "ab") as file:
                file.write(b"new")

        def swap_for_link(path: str) -> None:
            os.unlink(path)
            os.symlink(self.home.outside + "/a", path)

        def put_another(path: str) -> None:
            os.rename(self.home.age(self.home.write(self.home.root + "/b")), path)

        for change in (write_to, os.utime, os.unlink, swap_for_link, put_another):
            self.home.write(self.home.outside + "/a")
            path = self.home.write(DEBUG + "/a")
            for _ in self.step_through("agents-light"):
                change(path)
            self.assertEqual((os.path.lexists(path), self.refused), (change is not os.unlink, 1), change)
            self.setUp()

    def test_what_comes_into_a_cache_while_it_is_emptied_stays(self):
        for number in range(3):
            self.home.age(os.path.dirname(self.home.write(f"{CACHE}/{number}/a")))
        fresh = []
        for entry in self.step_through("app-caches", "pip"):
            if not fresh:
                os.makedirs(entry.folder.real + "/new/empty")
                fresh.append(self.home.write(entry.folder.real + "/new/b", days=0))
        self.assertEqual([os.path.join(self.home.path, path) for path in self.home.files()], fresh)
        self.assertTrue(os.path.isdir(os.path.dirname(fresh[0]) + "/empty"))

    def test_a_folder_that_is_carried_out_of_its_root_takes_its_files_with_it(self):
        for number in range(5):
            self.home.write(f"{DEBUG}/sub/{number}")
        steps = self.step_through("agents-light")
        next(steps)
        os.rename(self.home.at(DEBUG + "/sub"), self.home.outside + "/sub")
        list(steps)
        self.assertEqual(len(os.listdir(self.home.outside + "/sub")), 5)

    def test_what_is_locked_open_or_no_file_is_neither_listed_nor_taken(self):
        home = self.home
        flocked, posix, opened = (home.write(f"{CACHE}/{name}") for name in ("flock", "posix", "open"))
        with open(flocked, "rb") as first, open(posix, "rb+") as second, open(opened, "rb") as third, \
                socket.socket(socket.AF_UNIX) as server:
            fcntl.flock(first, fcntl.LOCK_SH)
            fcntl.lockf(second, fcntl.LOCK_EX)
            server.bind(home.at(CACHE + "/socket"))
            os.mkfifo(home.at(CACHE + "/pipe"))
            home.write(CACHE + "/free")
            with subprocess.Popen(["/bin/cat"], stdin=subprocess.PIPE, stdout=third) as child:
                third.close()
                self.assertEqual(home.listed("app-caches", "pip"), [CACHE + "/free"])
                child.communicate(b"")
            self.assertEqual(home.clean("app-caches", "pip"), (2, 0, ""))
        self.assertEqual(sorted(os.listdir(home.at(CACHE))), ["flock", "pipe", "posix", "socket"])

    def test_a_lock_that_is_taken_after_the_plan_holds(self):
        for take in (fcntl.flock, fcntl.lockf):
            path = self.home.write(DEBUG + "/a")
            with open(path, "rb+") as file:
                for _ in self.step_through("agents-light"):
                    take(file, fcntl.LOCK_EX)
                self.assertEqual((os.path.exists(path), self.refused), (True, 1), take)
            self.setUp()

    def test_names_of_any_kind_go_and_are_shown_on_one_line(self):
        home = self.home
        names = ["two\nlines", "\udcff\udcfe", "-rf", " ", "a\u202eb", "\x1b[31m", "n" * 255]
        for name in names:
            home.write(f"{DEBUG}/{name}/{name}")
        rows = home.run("preview", "--group=agents-light")["files"]
        shown = "".join(row["path"] for row in rows)
        self.assertEqual(len(rows), len(names))
        self.assertFalse(set("\n\x1b\u202e") & set(shown), ascii(shown))
        self.assertEqual(home.clean("agents-light"), (len(names), 0, ""))
        self.assertEqual(home.files(), [])

    def test_a_folder_that_may_not_be_written_to_keeps_its_files_and_the_rest_goes(self):
        home = self.home
        home.write(DEBUG + "/a")
        home.write(DEBUG + "/shut/b")
        os.chmod(home.at(DEBUG + "/shut"), 0o555)
        self.addCleanup(os.chmod, home.at(DEBUG + "/shut"), 0o755)
        powers = "-dac_override,-dac_read_search,-fowner"
        prefix = ("/usr/bin/setpriv", "--bounding-set", powers) if os.getuid() == 0 else ()
        answer = home.run("clean", "--group=agents-light", "--apply", prefix=prefix)
        self.assertEqual((answer["removed"], answer["failed_count"]), (1, 1))
        self.assertEqual(home.files(), [DEBUG + "/shut/b"])

    def test_nothing_behind_a_mount_point_is_listed_or_taken(self):
        home = self.home
        mounts = ["/usr/bin/unshare", "--user", "--map-root-user", "--mount", "/bin/sh", "-ec"]
        if subprocess.run([*mounts, "true"], capture_output=True, check=False).returncode:
            self.skipTest("this system doesn't let its users mount")
        for path in (CACHE + "/free", CACHE + "/file", home.outside + "/a", home.outside + "/sub/b"):
            home.write(path)
        for path in (CACHE + "/folder", CACHE + "/a b", ".cache/all", ".npm/_npx/pack"):
            os.makedirs(home.at(path))
        home.write(".npm/_npx/pack/a")
        os.mkdir(home.at(".npm/_npx/pack/in"))
        for path in ("in", ""):
            home.age(".npm/_npx/pack/" + path)
        script = """
            mount --bind "$0/sub" folder; mount -t tmpfs none 'a b'; touch 'a b/c'; mount --bind "$0/a" file
            mount --bind "$0" ../all; mount --bind "$0/sub" ../../.npm/_npx/pack/in; exec "$@" """
        prefix = (*mounts, f"cd '{home.at(CACHE)}';" + script, home.outside)
        select = "--select=pip,all"
        listed = home.run("preview", "--group=app-caches", select, prefix=prefix)
        self.assertEqual([row["path"] for row in listed["files"]], [f"~/{CACHE}/free"])
        for group in ("app-caches", "agents-deep"):
            home.run("clean", f"--group={group}", "--apply", select, prefix=prefix)
        self.assertEqual(home.files(home.outside), ["a", "sub/b"])
        self.assertEqual(home.files(), [CACHE + "/file", ".npm/_npx/pack/a"])

    def test_a_deep_tree_neither_ends_the_script_nor_is_half_known(self):
        path, levels = self.home.at(CACHE), 600
        os.makedirs(path)
        folder = os.open(path, os.O_RDONLY)
        for level in range(levels):
            os.mkdir("d", dir_fd=folder)
            below = os.open("d", os.O_RDONLY, dir_fd=folder)
            os.close(folder)
            folder = below
        os.close(os.open("deepest", os.O_CREAT | os.O_WRONLY, dir_fd=folder))
        os.close(folder)
        self.home.write(CACHE + "/a")
        self.assertEqual(self.home.listed("app-caches", "pip"), [CACHE + "/a"])
        self.assertEqual(self.home.clean("app-caches", "pip"), (1, 0, ""))

    def test_an_error_of_the_machine_stops_the_batch_and_the_receipt_tells_what_went(self):
        for number in range(4):
            self.home.write(f"{DEBUG}/{number}")
        calls = []

        def failing(path, **more):
            calls.append(path)
            if len(calls) == 3:
                raise OSError(5, "Input/output error")
            return unlink(path, **more)

        unlink = os.unlink
        with mock.patch.object(os, "unlink", failing):
            removed, _, error = self.home.clean("agents-light")
        self.assertEqual((removed, error), (2, "stopped: Input/output error"))
        self.assertEqual([len(self.home.files()), self.home.receipts[0]["removed"]], [2, 2])

    def test_nothing_outside_is_lost_to_attackers_who_swap_folders_for_links(self):
        home = self.home
        names = ["a", "b", "sub/c"]
        kept = [home.write(f"{home.outside}/{name}", size=1) for name in names]
        for pair in range(PAIRS):
            os.makedirs(home.at(f"{DEBUG}/{pair}/sub"))
            home.link(f"{DEBUG}/link-{pair}", home.outside)
        attackers = [start(swap, home), start(refill, home, names)]
        removed, until = 0, time.monotonic() + ATTACK_SECONDS
        try:
            while time.monotonic() < until:
                removed += home.clean("agents-light")[0]
        finally:
            for attacker in attackers:
                os.kill(attacker, signal.SIGTERM)
                os.waitpid(attacker, 0)
        self.assertEqual([path for path in kept if not os.path.exists(path)], [])
        self.assertGreater(int(Path(home.root, "swaps").read_text("ascii")), 2000)
        self.assertGreater(removed, 20)


def start(work, *arguments) -> int:
    """A child that does one step of some work after the other until it is told to end; gives its pid."""
    pid = os.fork()
    if pid:
        return pid
    ends = []
    signal.signal(signal.SIGTERM, lambda *_: ends.append(True))
    try:
        steps = work(*arguments)
        while not ends:
            next(steps)
        steps.close()
    finally:
        os._exit(0)


def swap(home: Home):
    """Exchanges each folder and its link, over and over. Leaves the number of exchanges."""
    rename = ctypes.CDLL(None, use_errno=True).renameat2
    base = home.at(DEBUG).encode()
    swaps = 0
    try:
        while True:
            for pair in range(PAIRS):
                one, other = b"%s/%d" % (base, pair), b"%s/link-%d" % (base, pair)
                swaps += rename(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE) == 0
                yield
    finally:
        Path(home.root, "swaps").write_text(str(swaps), "ascii")


def refill(home: Home, names: list[str]):
    """Puts old files with the names of those outside into the folders, whatever these are called just
    then."""
    paths = [[home.at(f"{DEBUG}/{name}{pair}") for name in ("", "link-")] for pair in range(PAIRS)]
    folders: dict[int, int] = {}
    while True:
        for pair, either in enumerate(paths):
            for path in either if pair not in folders else ():
                try:
                    folders[pair] = os.open(path, os.O_DIRECTORY | os.O_NOFOLLOW)
                except OSError:
                    continue
            for name in names if pair in folders else ():
                try:
                    flags = os.O_CREAT | os.O_EXCL | os.O_WRONLY
                    file = os.open(name, flags, dir_fd=folders[pair])
                except OSError:
                    continue
                os.utime(file, (1, 1))
                os.close(file)
            yield
