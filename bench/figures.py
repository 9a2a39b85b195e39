# SPDX-License-Identifier: Apache-2.0
"""The figures of one run, kept as lines of JSON in the file that OSTREL_FIGURES names; without it they are
only printed. And what several benches need to get theirs."""
from __future__ import annotations

import json
import os
import resource
import time

CHILDREN_SLEEP = "3600"  # seconds, longer than any run


def keep(group: str, name: str, value: float, unit: str, *, beside: str = "", stands: float | None = None,
         most: float | None = None, most_ratio: float | None = None) -> None:
    """Keeps a figure. `stands` is what `beside` came to in the same run; `most` is what the figure may come
    to, `most_ratio` how many times what it stands beside."""
    path = os.environ.get("OSTREL_FIGURES")
    if not path:
        return
    row = {"group": group, "name": name, "value": value, "unit": unit, "beside": beside, "stands": stands,
           "most": most, "most_ratio": most_ratio}
    with open(path, "a", encoding="utf-8") as file:
        file.write(json.dumps({key: value for key, value in row.items() if value not in ("", None)}) + "\n")


def run(command: list[str], environment: dict[str, str]) -> tuple[float, float, float]:
    """One run of a command: CPU and wall time in milliseconds, peak memory in MiB. The kernel counts the
    memory of whoever starts a command too."""
    actions = [(os.POSIX_SPAWN_OPEN, descriptor, os.devnull, os.O_RDWR, 0) for descriptor in (0, 1, 2)]
    begin = time.perf_counter()
    pid = os.posix_spawn(command[0], command, environment, file_actions=actions)
    _, _, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - begin
    return processor(usage), wall * 1000, usage.ru_maxrss / 1024


def processor(usage: resource.struct_rusage) -> float:
    """User and system time in milliseconds."""
    return (usage.ru_utime + usage.ru_stime) * 1000


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
    return [os.posix_spawn("/bin/sleep", ["sleep", CHILDREN_SLEEP], {})
            for _ in range(max(0, wanted - present))]
