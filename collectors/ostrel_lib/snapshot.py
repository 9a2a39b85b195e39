# SPDX-License-Identifier: Apache-2.0
"""One snapshot of the machine: every key that the panel reads."""
from __future__ import annotations

import os
import time

from ostrel_lib import machine, memory
from ostrel_lib.census import census
from ostrel_lib.files import network, read
from ostrel_lib.offenders import apps, offenders
from ostrel_lib.pressure import stall
from ostrel_lib.processes import look_twice
from ostrel_lib.services import services
from ostrel_lib.tree import Tree
from ostrel_lib.trend import record, trend
from ostrel_lib.units import scheduler
from ostrel_lib.verdict import Facts, verdict

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

ACCURACY = {
    "ram": "/proc/meminfo; used = total - free - buffers - (cached - shmem) - reclaimable slab",
    "memory": "/proc/<pid>/statm; resident pages, those shared with other processes in each of them",
    "swap": "/proc/meminfo; SwapTotal - SwapFree",
    "load": "/proc/loadavg; processors from sched_getaffinity",
    "cpu": "/proc/<pid>/stat; ticks between two looks 0.2 s apart, in percent of one core, in steps of 5",
    "processes": "/proc; processes visible to this user, kernel threads and the collector left out;"
                 " one process may count in several families",
    "mcp": "/proc/<pid>/cmdline; programs, scripts, packages and container images named mcp, each server"
           " once; owner: the nearest claude or codex above it",
    "sessions": "/proc/<pid>/cmdline; claude and codex programs at work, each with its start script and forks"
                " once, their helpers left out",
    "chromium": "/proc/<pid>/cmdline; processes with a Chromium --type= argument, by application",
    "duplicates": "/proc/<pid>/cmdline; MCP command lines that run more than once below one codex process;"
                  " memory: all but the largest of each",
    "groups": "/proc/<pid>/cmdline; number of processes by kind of program",
    "offenders": "/proc/<pid>/stat and statm; programs of 50 % of a core, or 10 % of memory, and more",
    "services": "running units of the user and the system from the control groups of systemd;"
                " without systemd those of this user's 100 largest processes that listen on TCP",
    "launchd": "systemd unit files that the user or the administrator switched on, and ~/.config/autostart;"
               " the distribution's own and crontabs left out",
    "trend": "the collector's saved samples of the last two hours; middle of three samples at either end",
    "verdict": "/proc/pressure/memory and MemAvailable, then trend, load, disk and duplicates",
    "disk": "statvfs of the home's file system; free to this user",
    "battery": "/sys/class/power_supply",
    "network": "/proc/net/dev; bytes since each interface came up",
}


def snapshot(
    script: str,
    home: str,
    root: str = "",
    user: int | None = None,
    clock: Callable[[], float] = time.monotonic,
    pause: Callable[[float], object] = time.sleep,
    now: Callable[[], float] = time.time,
) -> dict[str, object]:
    """The whole snapshot; takes about 0.2 s, and saves one sample of it in the home. What can't be read is 0
    or empty, and nothing raises.

    `script` is the absolute path of the collector as it was started, `home` the user's home directory, `root`
    what stands before /proc, /sys, /etc, /run and /usr, and `user` the user's number, this process's unless
    given.
    """
    proc_root, sys_root = root + "/proc", root + "/sys"
    tree = Tree(look_twice(proc_root, clock, pause))
    fields = memory.memory_fields(read(proc_root + "/meminfo"))
    at = int(now())
    found: dict[str, object] = {
        "ts": timestamp(at),
        "host": os.uname().nodename,
        "ram": memory.ram(fields, memory.compressed_kib(fields, sys_root)),
        "swap": memory.swap(fields, read(proc_root + "/swaps")),
        "load": machine.load(read(proc_root + "/loadavg"), machine.processor_count()),
        **census(tree),
    }
    programs = apps(tree)
    observed = observation(home, root)
    samples, state = record(home, {
        "ts": found["ts"], "t": at, "swap": found["swap"]["used_pct"], "load": found["load"]["pct"],
        "mcp": found["fan"]["mcp"],
    })
    found["trend"] = trend(samples, at)
    stalled = stall(read(proc_root + "/pressure/memory"))
    return {
        **found,
        "verdict": verdict(Facts(fields, stalled, programs, found, observed.get("disk"))),
        "offenders": offenders(programs, fields.get(b"MemTotal", 0) * 1024),
        "launchd": scheduler(root, home),
        "services": services(tree, root, home, os.getuid() if user is None else user),
        "meta": meta(script),
        "history": samples,
        "history_state": state,
        "system_observation": observed,
        "accuracy": ACCURACY,
    }


def timestamp(at: int) -> str:
    """A time in seconds as local time in ISO 8601 with its zone."""
    stamp = time.strftime("%Y-%m-%dT%H:%M:%S%z", time.localtime(at))
    return stamp[:-2] + ":" + stamp[-2:]


def observation(home: str, root: str) -> dict[str, object]:
    """Disk, battery and network; the first two are absent where there is nothing to tell."""
    parts = {"disk": machine.disk(home), "battery": machine.battery(root + "/sys")}
    found: dict[str, object] = {name: part for name, part in parts.items() if part is not None}
    found["network"] = machine.network(network(root + "/proc", "dev"))
    return found


def meta(script: str) -> dict[str, str]:
    """What the collector says about itself."""
    command = "python3 " + script + " "
    return {
        "backend": "on-demand local CLI",
        "code_path": script,
        "project_path": "",
        "native_app": installed_program(script),
        "history_path": "~/Library/Application Support/ostrel/mem-history.jsonl",
        "server_url": "",
        "data_endpoint": command + "json",
        "analyze_endpoint": command + "analyze",
        "cleanup_endpoint": command + "clean",
        "session_inspector_url": "",
        "native_refresh": "bar: native /proc readings on every tick",
        "panel_refresh": "panel: short-lived CLI snapshot while open",
        "server_model": "no listener or browser dashboard",
        "service_model": "local services",
    }


def installed_program(script: str) -> str:
    """The program that the script was installed with: {prefix}/bin beside {prefix}/share/ostrel/collectors.
    "" when there is none."""
    prefix, part = os.path.split(script)[0], "/share/ostrel/collectors"
    program = prefix[:-len(part)] + "/bin/ostrel"
    return program if prefix.endswith(part) and os.path.isfile(program) else ""
