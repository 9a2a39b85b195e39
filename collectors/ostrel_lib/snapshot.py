# SPDX-License-Identifier: Apache-2.0
"""One snapshot of the machine: every key that the panel reads."""
from __future__ import annotations

import os
import time

from ostrel_lib import machine, memory
from ostrel_lib.census import census
from ostrel_lib.files import read
from ostrel_lib.processes import look_twice

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

ACCURACY = {
    "ram": "/proc/meminfo; used = total - free - buffers - (cached - shmem) - reclaimable slab",
    "memory": "/proc/<pid>/statm; resident pages, those shared with other processes included",
    "swap": "/proc/meminfo; SwapTotal - SwapFree",
    "load": "/proc/loadavg; processors from sched_getaffinity",
    "cpu": "/proc/<pid>/stat; ticks between two looks 0.2 s apart, in percent of one core",
    "processes": "/proc; processes visible to this user, kernel threads and the collector left out",
    "mcp": "/proc/<pid>/cmdline; programs, scripts and packages named mcp, package launchers left out",
    "sessions": "/proc/<pid>/cmdline; claude and codex programs at work, their helpers left out",
    "chromium": "/proc/<pid>/cmdline; processes with a Chromium --type= argument, by program",
    "duplicates": "/proc/<pid>/cmdline; MCP command lines that run more than once below Codex",
    "disk": "statvfs of the home's file system; free to this user",
    "battery": "/sys/class/power_supply",
    "network": "/proc/net/dev; bytes since each interface came up",
}


def snapshot(
    script: str,
    home: str,
    proc_root: str = "/proc",
    sys_root: str = "/sys",
    clock: Callable[[], float] = time.monotonic,
    pause: Callable[[float], object] = time.sleep,
) -> dict[str, object]:
    """The whole snapshot; takes about 0.2 s. What can't be read is 0 or empty, and nothing raises.

    `script` is the absolute path of the collector as it was started, `home` the user's home directory.
    """
    processes = census(look_twice(proc_root, clock, pause))
    fields = memory.memory_fields(read(proc_root + "/meminfo"))
    return {
        "ts": timestamp(),
        "host": os.uname().nodename,
        "ram": memory.ram(fields, memory.compressed_kib(fields, sys_root)),
        "swap": memory.swap(fields, read(proc_root + "/swaps")),
        "load": machine.load(read(proc_root + "/loadavg"), machine.processor_count()),
        **processes,
        "offenders": [],
        "launchd": {"interval_jobs": 0, "runatload_interval": 0, "keepalive": 0, "shell_first": 0},
        "services": [],
        "trend": {
            "samples": 0,
            "summary": "history warming up",
            "direction": "flat",
            "swap_delta": 0,
            "load_delta": 0,
            "mcp_delta": 0,
        },
        "meta": meta(script),
        "history": [],
        "history_state": "unavailable",
        "system_observation": observation(home, proc_root, sys_root),
        "accuracy": ACCURACY,
    }


def timestamp() -> str:
    """The local time as ISO 8601 with its zone, to the second."""
    stamp = time.strftime("%Y-%m-%dT%H:%M:%S%z")
    return stamp[:-2] + ":" + stamp[-2:]


def observation(home: str, proc_root: str, sys_root: str) -> dict[str, object]:
    """Disk, battery and network; the first two are absent where there is nothing to tell."""
    parts = {"disk": machine.disk(home), "battery": machine.battery(sys_root)}
    found: dict[str, object] = {name: part for name, part in parts.items() if part is not None}
    found["network"] = machine.network(read(proc_root + "/net/dev"))
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
