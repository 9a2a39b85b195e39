# SPDX-License-Identifier: Apache-2.0
import os
import unittest
from pathlib import Path

from fabricated_machine import TICKS, Machine

from ostrel_lib.history_file import FOLDER, NAME
from ostrel_lib.trend import trend
from ostrel_lib.verdict import Facts, verdict

GIB = 1048576  # in KiB
NOW = 1_800_000_000


def samples(swaps, load=50, mcp=4, step=60):
    """One sample a minute, the last of them now."""
    start = NOW - step * (len(swaps) - 1)
    return [{"t": start + place * step, "swap": swap, "load": load, "mcp": mcp}
            for place, swap in enumerate(swaps)]


def machine(test, available=8.0, swap_free=4.0, some=0.0, full=0.0, load=(1, 1)) -> Machine:
    """16 GiB of memory, 4 of swap."""
    box = Machine(test)
    fields = {"MemTotal": 16, "MemFree": 1, "MemAvailable": available, "SwapTotal": 4, "SwapFree": swap_free}
    lines = [f"{name}: {int(value * GIB)} kB\n" for name, value in fields.items()]
    box.write("proc/meminfo", "".join(lines).encode())
    stall = f"some avg10={some} avg60=0 avg300=0 total=1\nfull avg10={full} avg60=0 avg300=0 total=1\n"
    box.write("proc/pressure/memory", stall.encode())
    box.write("proc/loadavg", f"{load[0]} {load[1]} 1 1/2 3\n".encode())
    box.process(10, "/opt/chrome/chrome", mib=2048)
    return box


class JudgementTest(unittest.TestCase):
    def test_the_level_follows_what_is_left_and_how_long_programs_waited(self):
        for level, *given in (
            ("ok", 8.0, 4.0, 40.0, 0.0), ("ok", 1.7, 4.0, 9.9, 2.9), ("ok", 1.5, 1.0, 0.0, 0.0),
            ("warning", 7.9, 4.0, 10.0, 0.0), ("warning", 4.0, 4.0, 0.0, 3.0),
            ("warning", 1.5, 0.9, 0.0, 0.0), ("critical", 3.1, 4.0, 0.0, 10.0),
            ("critical", 0.6, 4.0, 0.0, 0.0), ("critical", 1.5, 0.3, 10.0, 0.0)):
            self.assertEqual(machine(self, *given).snapshot()["verdict"]["level"], level, given)
        self.assertEqual(
            machine(self, available=0.5, some=12.4).snapshot()["verdict"]["cause"],
            "512 mb of 16.0 gb can still be handed out and programs waited for it 12% of the last ten"
            " seconds; chrome holds the most, 2.0 gb.")

    def test_an_overload_is_one_that_lasts_and_is_told_with_its_worker(self):
        cores = len(os.sched_getaffinity(0))
        for share, lasting, level, cause in ((2.0, 1.5, "warning", "chrome does most"), (2.0, 1.4, "ok", ""),
                                             (1.9, 1.9, "ok", ""), (2.0, 2.0, "warning", "few work")):
            box = machine(self, load=(cores * share, cores * lasting))
            busy = TICKS * cores // 5 if "most" in cause else 0
            verdict = box.snapshot(lambda: box.process(10, "/opt/chrome/chrome", ticks=busy))["verdict"]
            self.assertEqual(verdict["level"], level, (share, lasting))
            self.assertIn(cause, verdict["cause"])

    def test_a_busy_program_comes_before_a_heavy_one(self):
        box = machine(self)
        box.process(23, "/opt/" + "n" * 99, mib=1800)

        def work(ticks: int = 0):
            for pid, name, share in ((20, "cc1plus", 4), (21, "cc1plus", 6), (22, "idle", 9)):
                box.process(pid, "/usr/bin/" + name, ticks=ticks * share // 100)

        work()
        rows = [list(row.values()) for row in box.snapshot(lambda: work(TICKS))["offenders"]]
        self.assertEqual([row[:3] + [row[4]] for row in rows],
                         [["cc1plus", 50.0, 2, "transient"], ["chrome", 0.0, 2048, "stateful"],
                          ["n" * 39 + "…", 0.0, 1800, "stateful"]])

    def test_the_disk_and_copies_of_servers_are_told_from_their_thresholds_on(self):
        for free, total, held, headline in (
            (1.9, 100.0, 0, "The disk is almost full"), (2.0, 100.0, 0, None), (1.9, 60.0, 0, None),
            (9.0, 100.0, 512, "MCP servers run in copies"), (9.0, 100.0, 511, None)):
            fan = {"mcp": 4, "codex_mcp_duplicates": 1, "codex_mcp_duplicate_mb": held}
            facts = Facts({b"MemTotal": 9, b"MemAvailable": 9}, None, [], {
                "load": {"l1": 0.0, "l5": 0.0, "ncpu": 1, "pct": 0}, "trend": {"swap_delta": 0}, "fan": fan,
                "sessions": {"claude": 0, "codex": 0}}, {"free_gb": free, "total_gb": total})
            told = verdict(facts)["headline"]
            self.assertEqual(told, headline or "Memory pressure is normal", (free, held))

    def test_a_trend_is_from_middle_to_middle_and_a_peak_is_none(self):
        for swaps, summary, direction, delta in (
            ([10, 10, 10, 10, 40, 40, 40], "swap +30 points of its size over 6 min", "up", 30),
            ([40, 40, 40, 10, 10], "swap -30 points of its size over 4 min", "down", -30),
            ([10, 10, 90, 10, 10, 14, 90], "steady over 6 min", "flat", 4),
            ([10, 10, 10, 90], "history warming up", "flat", 0)):
            found = trend(samples(swaps), NOW)
            told = (found["summary"], found["direction"], found["swap_delta"])
            self.assertEqual(told, (summary, direction, delta))
        # What is of yesterday or tomorrow, or without a time, is none.
        old = samples([90] * 9, step=3600)
        for foreign in ([{"swap": 90, "load": 1, "mcp": 1}], [{**old[-1], "t": NOW + 60}]):
            found = trend(old[:-3] + foreign * 9 + samples([5] * 5), NOW)
            self.assertEqual((found["samples"], found["swap_delta"]), (5, 0))

    def test_each_snapshot_saves_one_sample_and_growing_swap_is_told(self):
        box = machine(self, available=4.0, swap_free=4.0)
        for turn in range(9):
            box.time += 60
            swap_free = 4.0 if turn < 4 else 2.0
            grown = machine(self, available=4.0, swap_free=swap_free)
            box.write("proc/meminfo", Path(grown.root, "proc/meminfo").read_bytes())
            snapshot = box.snapshot()
        self.assertEqual([sample["swap"] for sample in snapshot["history"]], [0] * 4 + [50] * 5)
        self.assertEqual((snapshot["history_state"], snapshot["trend"]["samples"]), ("recorded", 9))
        self.assertEqual(snapshot["verdict"]["headline"], "Swap keeps growing")

    def test_a_history_that_cannot_be_saved_is_stale_or_unavailable(self):
        for old, state in ((b"", "unavailable"), (b'{"ts": "x", "swap": 1, "load": 2, "mcp": 3}\n', "stale")):
            box = Machine(self)
            if old:
                box.write(f"home/{FOLDER}/{NAME}", old)
            box.link(f"home/{FOLDER}/mem-history.lock", "/nowhere/at/all")
            snapshot = box.snapshot()
            self.assertEqual((snapshot["history_state"], len(snapshot["history"])), (state, bool(old)))
