# SPDX-License-Identifier: Apache-2.0
"""What the kernel tells of a running program: processor time, wake-ups, memory."""
import os
import signal
import statistics
import subprocess
import time


def processor_ms(pid: int) -> float:
    """Processor time of all its threads, also of those that have ended, in milliseconds."""
    processor_clock = ~pid << 3 | 2  # as clock_getcpuclockid(3) makes it
    return time.clock_gettime_ns(processor_clock) / 1e6


def switches(pid: int) -> dict[str, int]:
    """How often each of its threads went to sleep so far."""
    return {task: _field(pid, f"task/{task}/status", "voluntary_ctxt_switches")
            for task in os.listdir(f"/proc/{pid}/task")}


def switches_since(pid: int, before: dict[str, int]) -> int:
    """How often its threads went to sleep since then; those that have ended are left out."""
    return sum(count - before.get(task, 0) for task, count in switches(pid).items())


def memory_mb(pid: int) -> tuple[float, float]:
    """Its memory with a share of what others use as well, and what it alone has written to, in megabytes."""
    os.sync()  # pages of a program that was just built count as written to until the disk has them
    pss, dirty = (_field(pid, "smaps_rollup", key) / 1024 for key in ("Pss", "Private_Dirty"))
    return pss, dirty


def resident_mb(pid: int) -> float:
    """All of its memory that is present, shared or not, in megabytes."""
    return _field(pid, "smaps_rollup", "Rss") / 1024


def median_and_high(values: list[float]) -> tuple[float, float]:
    """The median, and what 95 of 100 stay below."""
    return statistics.median(values), sorted(values)[int(0.95 * (len(values) - 1))]


def end(process: subprocess.Popen) -> None:
    """Asks the program to end, and kills it when it doesn't."""
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def _field(pid: int, name: str, key: str) -> int:
    """A number from a file of /proc/PID with lines "key: number"; the sum when there are several."""
    with open(f"/proc/{pid}/{name}", encoding="ascii") as file:
        return sum(int(line.split()[1]) for line in file if line.startswith(key + ":"))
