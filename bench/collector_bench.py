#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What one snapshot costs, beside a bare Python and a process list of the system, in one run.

usage: collector_bench.py BUILD_FOLDER [--runs N] [processes ...]

For each number of processes (300 and 1500 unless told) the machine is filled up with sleeping children, and
each command runs in turn with the others, so that a busy moment hits all alike. Prints the median and the
least CPU time and the median wall time. Then the parts of a snapshot on a made-up /proc of the same size,
with agents and servers, which sleeping children aren't. Asserts nothing.
"""
from __future__ import annotations

import argparse
import os
import signal
import statistics
import sys
import tempfile
import time

sys.dont_write_bytecode = True
from figures import fill_up, keep, run  # noqa: E402

PYTHON = "/usr/bin/python3"
COLLECTORS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "collectors")
SCRIPT = os.path.join(COLLECTORS, "ostrel.py")
SCANS = 4
"""A snapshot may take a bare Python with the imports and so many times a raw scan of the same processes."""
START_MS = 20.0  # a script's own start, CPU
WALL_MS = 500.0  # a snapshot of 300 processes
PSUTIL = ("import psutil, time\nlist(psutil.process_iter(['pid', 'name', 'memory_info', 'cmdline', "
          "'cpu_times']))")

COMMANDS = {
    "python3 -c pass": [PYTHON, "-c", "pass"],
    "ostrel.py (no command)": [PYTHON, SCRIPT],
    "ostrel.py, imports only": [
        PYTHON, "-c", f"import sys; sys.path.insert(0, {COLLECTORS!r}); "
        "import ostrel_lib.collector, ostrel_lib.snapshot, ostrel_lib.jsontext",
    ],
    "ostrel.py json": [PYTHON, SCRIPT, "json"],
    "ps -eo pid,rss,pcpu,args": ["/usr/bin/ps", "-eo", "pid,rss,pcpu,args"],
    "psutil, one look": [PYTHON, "-c", PSUTIL],
}
SCAN = "a raw scan in C++, two looks"


def measure(commands: dict[str, list[str]], runs: int) -> dict[str, list[tuple[float, float]]]:
    """Runs every command so often, one after the other, once before the count to fill the caches."""
    results: dict[str, list[tuple[float, float]]] = {name: [] for name in commands}
    with tempfile.TemporaryDirectory() as caches:
        environment = {
            "PATH": "/usr/bin:/bin:/usr/sbin:/sbin", "PYTHONPYCACHEPREFIX": caches, "HOME": caches}
        for turn in range(runs + 1):
            for name, command in commands.items():
                result = run(command, environment)[:2]
                if turn:
                    results[name].append(result)
    return results


def report(processes: int, results: dict[str, list[tuple[float, float]]]) -> None:
    """Prints one table, times in milliseconds; the last column is CPU time beyond a bare Python's."""
    title = f"{processes} processes"
    print(f"\n{title:<30}{'CPU median':>12}{'least':>8}{'wall median':>13}{'beyond bare':>13}")
    bare = statistics.median(cpu for cpu, _ in results["python3 -c pass"])
    for name, rows in results.items():
        cpu = statistics.median(cpu for cpu, _ in rows)
        wall = statistics.median(wall for _, wall in rows)
        print(f"{name:<30}{cpu:12.1f}{min(cpu for cpu, _ in rows):8.1f}{wall:13.1f}{cpu - bare:+13.1f}")


def report_budget(processes: int, results: dict[str, list[tuple[float, float]]]) -> None:
    """Prints what the snapshot takes beside what it may take."""
    def median(name: str, column: int = 0) -> float:
        return statistics.median(row[column] for row in results[name])

    group = f"the collector, {processes} processes"
    taken, imports, scan = map(median, ("ostrel.py json", "ostrel.py, imports only", SCAN))
    allowed = imports + SCANS * scan
    bare = median("python3 -c pass")
    keep(group, "`ostrel.py json`, CPU", taken, "ms", beside=SCAN, stands=scan, most=allowed)
    psutil = median("psutil, one look")
    keep(group, "`ostrel.py json`, CPU, two looks", taken, "ms", beside="psutil, one look and no JSON",
         stands=psutil, most_ratio=1.0)
    keep(group, "`ostrel.py json`, wall", median("ostrel.py json", 1), "ms",
         most=WALL_MS if processes <= 300 else None)
    start = median("ostrel.py (no command)")
    keep(group, "a script's start, CPU", start, "ms", beside="bare Python", stands=bare, most=START_MS)
    print(f"snapshot {taken:.1f} ms of CPU beside {allowed:.1f} ({imports:.1f} and {SCANS} raw scans);"
          f" start {start:.1f}")


def report_parts(processes: int, runs: int) -> None:
    """Prints the CPU time of each part of a snapshot on a made-up tree, median of several runs."""
    sys.path.insert(0, COLLECTORS)
    from fabricated_tree import fabricate
    from ostrel_lib import history_file, jsontext
    from ostrel_lib.census import census
    from ostrel_lib.offenders import apps
    from ostrel_lib.processes import look_twice
    from ostrel_lib.snapshot import snapshot
    from ostrel_lib.tree import Tree

    def wait(_: float) -> None:
        pass

    with tempfile.TemporaryDirectory() as root:
        fabricate(root, processes)
        for load in range(240):
            sample = {"ts": "2026-01-01T00:00:00+00:00", "t": load, "swap": 10, "load": load, "mcp": 4}
            history_file.append(root, sample)
        listed = look_twice(root + "/proc", time.monotonic, wait)
        tree = Tree(listed)
        whole = snapshot("/ostrel.py", root, root, pause=wait)
        parts = {
            "two looks": lambda: look_twice(root + "/proc", time.monotonic, wait),
            "classification": lambda: Tree(listed),
            "counts and rows": lambda: census(tree),
            "programs": lambda: apps(tree),
            "240 samples": lambda: history_file.samples(root, 240),
            "JSON": lambda: jsontext.dump(whole),
            "the whole": lambda: jsontext.dump(snapshot("/ostrel.py", root, root, pause=wait)),
        }
        times: dict[str, list[float]] = {name: [] for name in parts}
        for _ in range(runs):
            for name, part in parts.items():
                begin = time.process_time()
                part()
                times[name].append((time.process_time() - begin) * 1000)
    print(f"made-up /proc of {processes}: " + ", ".join(
        f"{name} {statistics.median(values):.1f} ms" for name, values in times.items()))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("build")
    parser.add_argument("--runs", type=int, default=15)
    parser.add_argument("processes", type=int, nargs="*", default=[300, 1500])
    options = parser.parse_args()
    commands = {**COMMANDS, SCAN: [os.path.abspath(options.build) + "/bench/raw_scan"]}
    children: list[int] = []
    try:
        for wanted in options.processes:
            children += fill_up(wanted)
            results = measure(commands, options.runs)
            report(wanted, results)
            report_budget(wanted, results)
            report_parts(wanted, options.runs)
    finally:
        for pid in children:
            os.kill(pid, signal.SIGKILL)
            os.waitpid(pid, 0)
    return 0


if __name__ == "__main__":
    sys.exit(main())
