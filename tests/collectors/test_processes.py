# SPDX-License-Identifier: Apache-2.0
import os
import shutil
import unittest
from pathlib import Path

from fabricated_machine import TICKS, Machine

KERNEL_THREAD = 0x00200000


def rows(snapshot: dict) -> dict:
    return {row["pid"]: row for row in snapshot["procs"]}


class ProcessesTest(unittest.TestCase):
    def test_a_share_is_the_time_between_the_looks_in_percent_of_one_core(self):
        box = Machine(self)
        for pid in (10, 11, 12, 13):
            box.process(pid, "work", ticks=1000)

        def between():
            box.process(10, "work", ticks=1000 + TICKS // 10)  # half of the 0.2 s
            box.process(11, "work", ticks=1000 + TICKS * 6 // 10)  # three cores
            box.process(12, "work", ticks=900)  # a counter that ran backwards

        found = rows(box.snapshot(between))
        self.assertEqual([found[str(pid)]["cpu"] for pid in (10, 11, 12, 13)], [50.0, 300.0, 0.0, 0.0])

    def test_what_was_read_of_a_process_is_never_told_of_the_next_with_its_pid(self):
        box = Machine(self)
        for pid in (10, 11, 12):
            box.process(pid, "first", ticks=10, start=50)

        def between():
            box.process(10, "second", ticks=5000, start=999)
            shutil.rmtree(box.root + "/proc/11")

        self.assertEqual(list(rows(box.snapshot(between))), ["12"])

    def test_a_hostile_process_is_listed_without_harm(self):
        box = Machine(self)
        box.process(10, "a b", "\udcff\udcfe", "", "tail", comm=b") S 1 (x\n) (", ticks=4, mib=30)
        box.process(11, "n" * 9000, comm=b"long")
        box.write("proc/12/stat", b"12 (cut) S 1")
        box.process(13, comm=b"nonsense")
        box.write("proc/13/statm", b"-4 999999999999999999999999 x\n")
        box.process(18, "hidden")
        for name in ("cmdline", "statm"):
            os.remove(os.path.join(box.root, "proc/18", name))
        box.write("proc/20", b"no folder")
        found = rows(box.snapshot())
        self.assertEqual(sorted(found), ["10", "11", "13", "18"])
        row = [30, "10", ") S 1 (x?) (", "app", "a b \ufffd\ufffd  tail", 0.0]
        self.assertEqual(list(found["10"].values()), row)
        self.assertEqual(found["11"]["cmd"], "n" * 4096)
        self.assertEqual((found["13"]["rss"], found["13"]["cmd"]), (0, ""))
        self.assertEqual((found["18"]["rss"], found["18"]["cmd"]), (0, ""))

    def test_a_link_below_proc_is_never_followed(self):
        box = Machine(self)
        box.process(10, "kept")
        for name in ("stat", "statm", "cmdline"):
            box.write("elsewhere/12/" + name, Path(box.root, "proc/10", name).read_bytes())
        box.link("proc/12", box.root + "/elsewhere/12")
        for pid, linked in ((13, "stat"), (14, "cmdline")):
            box.process(pid, "kept")
            os.remove(f"{box.root}/proc/{pid}/{linked}")
            box.link(f"proc/{pid}/{linked}", f"{box.root}/elsewhere/12/{linked}")
        box.link("proc/net", box.root + "/elsewhere/net")
        box.write("elsewhere/net/dev", b"head\nhead\neth0: 9 0 0 0 0 0 0 0 9\n")
        snapshot = box.snapshot()
        self.assertEqual({pid: row["cmd"] for pid, row in rows(snapshot).items()}, {"10": "kept", "14": ""})
        self.assertEqual(snapshot["system_observation"]["network"], [])

    def test_a_command_line_is_never_cut_inside_a_character(self):
        box = Machine(self)
        for pid, lead in ((10, ""), (11, "a"), (12, "ab"), (13, "abc")):
            box.process(pid, lead + "\U0001f600" * 2000)
        for row in rows(box.snapshot()).values():
            self.assertTrue("\ufffd" not in row["cmd"] and len(row["cmd"]) > 1020)

    def test_kernel_threads_ended_processes_and_the_collector_itself_are_left_out(self):
        box = Machine(self)
        box.process(2, flags=KERNEL_THREAD, comm=b"kthreadd")
        box.process(10, "claude", state=b"Z")
        box.process(11, "python3", "ostrel.py", "json")
        box.process(12, "kept")
        os.symlink("11", os.path.join(box.root, "proc/self"))
        box.write("proc/1a/stat", b"1 (x) S " + b"0 " * 40)
        self.assertEqual(list(rows(box.snapshot())), ["12"])

    def test_the_list_holds_the_forty_largest_and_the_forty_busiest(self):
        box = Machine(self)
        for pid in range(100, 300):
            box.process(pid, "work", mib=pid)

        def between():
            for pid in range(100, 140):
                box.process(pid, "work", mib=pid, ticks=TICKS)

        listed = [int(row["pid"]) for row in box.snapshot(between)["procs"]]
        self.assertEqual(listed, list(range(299, 259, -1)) + list(range(139, 99, -1)))

    def test_the_name_is_the_kernels_unless_that_is_cut_short_or_says_nothing(self):
        box = Machine(self)
        cases = ((b"gnome-terminal-", "/usr/libexec/gnome-terminal-server", "gnome-terminal-server"),
                 (b"MainThread", "/usr/bin/node", "node"), (b"", "", "?"),
                 (b"fifteen-letters", "/usr/bin/other", "fifteen-letters"))
        for pid, (comm, argument, _) in enumerate(cases, 10):
            box.process(pid, argument, comm=comm)
        found = rows(box.snapshot())
        self.assertEqual([found[pid]["name"] for pid in sorted(found)], [name for _, _, name in cases])
