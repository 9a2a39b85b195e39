#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What one snapshot costs, beside a bare Python and a process list of the system, in one run.

usage: collector_bench.py [--runs N] [processes ...]

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

PYTHON = "/usr/bin/python3"
COLLECTORS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "collectors")
SCRIPT = os.path.join(COLLECTORS, "ostrel.py")
SCAN = {300: (5.0, 16.0), 1500: (32.0, 75.0)}
"""By processes: milliseconds of CPU that the same scan takes in C++, and `ps`, on the design machine. What
may be taken is a bare Python with the imports and four such scans; how fast another machine is shows in its
`ps`."""

COMMANDS = {
    "python3 -c pass": [PYTHON, "-c", "pass"],
    "ostrel.py (no command)": [PYTHON, SCRIPT],
    "ostrel.py, imports only": [
        PYTHON, "-c", f"import sys; sys.path.insert(0, {COLLECTORS!r}); "
        "import ostrel_lib.collector, ostrel_lib.snapshot, ostrel_lib.jsontext",
    ],
    "ostrel.py json": [PYTHON, SCRIPT, "json"],
    "ps -eo pid,rss,pcpu,args": ["/usr/bin/ps", "-eo", "pid,rss,pcpu,args"],
}


def run(command: list[str], environment: dict[str, str]) -> tuple[float, float]:
    """One run: CPU and wall time, in milliseconds."""
    actions = [(os.POSIX_SPAWN_OPEN, descriptor, os.devnull, os.O_RDWR, 0) for descriptor in (0, 1, 2)]
    begin = time.perf_counter()
    pid = os.posix_spawn(command[0], command, environment, file_actions=actions)
    _, _, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - begin
    return (usage.ru_utime + usage.ru_stime) * 1000, wall * 1000


def fill_up(wanted: int) -> list[int]:
    """Starts sleeping children until there are `wanted` processes that aren't kernel threads; gives their
    pids."""
    present = 0
    for name in os.listdir("/proc"):
        if name.isdecimal():
            try:
                with open(f"/proc/{name}/cmdline", "rb") as file:
                    present += bool(file.read(1))
            except OSError:
                continue
    return [os.posix_spawn("/bin/sleep", ["sleep", "3600"], {}) for _ in range(max(0, wanted - present))]


def measure(runs: int) -> dict[str, list[tuple[float, float]]]:
    """Runs every command so often, one after the other, once before the count to fill the caches."""
    results: dict[str, list[tuple[float, float]]] = {name: [] for name in COMMANDS}
    with tempfile.TemporaryDirectory() as caches:
        environment = {
            "PATH": "/usr/bin:/bin:/usr/sbin:/sbin", "PYTHONPYCACHEPREFIX": caches, "HOME": caches}
        for turn in range(runs + 1):
            for name, command in COMMANDS.items():
                result = run(command, environment)
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
    def cpu(name: str) -> float:
        return statistics.median(cpu for cpu, _ in results[name])

    imports = cpu("ostrel.py, imports only")
    scan, listing = SCAN[min(SCAN, key=lambda size: abs(size - processes))]
    allowed = imports + 4 * scan * cpu("ps -eo pid,rss,pcpu,args") / listing
    taken = cpu("ostrel.py json")
    print(f"snapshot {taken:.1f} ms of CPU beside {allowed:.1f} ({imports:.1f} and 4 scans as fast as ps"
          f" here); start {cpu('ostrel.py (no command)'):.1f}")


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
    parser.add_argument("--runs", type=int, default=15)
    parser.add_argument("processes", type=int, nargs="*", default=[300, 1500])
    options = parser.parse_args()
    children: list[int] = []
    try:
        for wanted in options.processes:
            children += fill_up(wanted)
            results = measure(options.runs)
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
