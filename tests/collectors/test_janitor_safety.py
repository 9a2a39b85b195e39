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

        unlink, os.unlink = os.unlink, failing
        try:
            removed, _, error = self.home.clean("agents-light")
        finally:
            os.unlink = unlink
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
        with open(home.root + "/swaps", encoding="ascii") as file:
            self.assertGreater(int(file.read()), 2000)
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
        with open(home.root + "/swaps", "w", encoding="ascii") as file:
            file.write(str(swaps))


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


class KilledRunTest(unittest.TestCase):
    def test_a_killed_run_gets_a_receipt_of_what_really_went_and_a_running_one_gets_none(self):
        for size in (200, 8000, 30000):
            home = Home(self)
            for number in range(1500):
                home.write(f"{DEBUG}/{number % 7}/{number}", size=1)
            run = subprocess.Popen(home.command("clean", "--group=agents-light", "--apply"),
                                   env=home.environment, stdout=subprocess.DEVNULL)
            self.addCleanup(run.wait)
            self.addCleanup(run.kill)
            folder = home.at("Library/Application Support/Ostrel/receipts")
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
            unlink, os.unlink = os.unlink, lambda *_, **__: None
            try:
                record.finish()
            finally:
                os.unlink = unlink
            folder = home.at("Library/Application Support/Ostrel/receipts")
            day, = (name for name in os.listdir(folder) if name.endswith(".jsonl"))
            os.truncate(f"{folder}/{day}", os.path.getsize(f"{folder}/{day}") - torn)
            self.assertEqual([len(home.receipts) for _ in range(2)], [1, 1], torn)

    def test_what_is_no_record_beside_the_receipts_is_passed_over(self):
        home = Home(self)
        folder = "Library/Application Support/Ostrel/receipts/"
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

        os.write = full
        try:
            self.assertEqual(home.clean("agents-light"), (3, 0, ""))
        finally:
            os.write = write
        self.assertEqual(home.receipts[0]["removed"], 3)


def plan_of(test, home: Home, group: str):
    """The entries of a plan, one by one."""
    folder = open_home(home.path)
    test.addCleanup(folder.close)
    return plan(group, folder, [], KeepOut(folder), time.time_ns())
