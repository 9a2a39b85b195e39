# SPDX-License-Identifier: Apache-2.0
"""What the kernel tells of a running program: processor time, wake-ups, memory."""
import os
import signal
import statistics
import subprocess


def processor_ms(pid: int) -> float:
    """Processor time of all threads that live, in milliseconds."""
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/schedstat", encoding="ascii") as file:
            total += int(file.read().split()[0])
    return total / 1e6


def switches(pid: int) -> int:
    """How often its threads went to sleep so far."""
    return sum(_field(pid, f"task/{task}/status", "voluntary_ctxt_switches")
               for task in os.listdir(f"/proc/{pid}/task"))


def memory_mb(pid: int) -> tuple[float, float]:
    """Its memory with a share of what others use as well, and what it alone has written to, in megabytes."""
    pss, dirty = (_field(pid, "smaps_rollup", key) / 1024 for key in ("Pss", "Private_Dirty"))
    return pss, dirty


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
