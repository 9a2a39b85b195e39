#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Measures the whole program on a private desktop, each figure beside what stands for the least, in one run:
one reading, the start, a background tick, wake-ups and memory. Prints figures, asserts nothing.

Usage: program_bench.py BUILD_FOLDER [SECONDS_IN_THE_BACKGROUND]
"""
import os
import signal
import statistics
import subprocess
import sys
import time
from typing import NamedTuple, Union

sys.dont_write_bytecode = True
PROJECT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, f"{PROJECT}/tests/desktop")

import bus  # noqa: E402
from figures import fill_up, keep  # noqa: E402
from measure import end, memory_mb, processor_ms, resident_mb, switches, switches_since  # noqa: E402
from peers import peers, plugin_process, settings, start, tray_with_load  # noqa: E402
from private_desktop import PrivateDesktop  # noqa: E402

TICK = 5  # seconds, at the normal profile
PROCESSES = 300
OURS, BARE = "ostrel --background", "an empty Qt window"


class Watched(NamedTuple):
    """A program that somebody else started."""
    pid: int


Program = Union[subprocess.Popen, Watched]


def wall_ms(command: list, env: dict, runs: int) -> float:
    times = []
    for _ in range(runs):
        begin = time.monotonic()
        subprocess.run(command, env=env, stdout=subprocess.DEVNULL, check=True)
        times.append((time.monotonic() - begin) * 1000)
    return statistics.median(times)


def start_ms(desktop: PrivateDesktop, command: list, ready, runs: int) -> float:
    """Median processor time from the start of a program until `ready(process)`."""
    times = []
    for _ in range(runs):
        process = subprocess.Popen(command, env=desktop.env, stdout=subprocess.PIPE)
        desktop.wait_for("start", lambda one=process: ready(one))
        times.append(processor_ms(process.pid))
        end(process)
        process.stdout.close()
    return statistics.median(times)


def background(programs: dict[str, Program], seconds: float) -> dict[str, list[float]]:
    """Lets all programs run beside each other. Gives for each processor milliseconds a tick, switches a
    second, resident and shared-out memory and what it alone has written, in megabytes."""
    time.sleep(5)
    before = {name: (processor_ms(one.pid), switches(one.pid)) for name, one in programs.items()}
    begin = time.monotonic()
    time.sleep(seconds)
    lasted = time.monotonic() - begin
    taken = {}
    print(f"in the background for {lasted:.0f} s   CPU per {TICK} s   switches/s   RSS MB   PSS MB   own MB")
    for name, one in programs.items():
        cpu = (processor_ms(one.pid) - before[name][0]) / lasted * TICK
        woken = switches_since(one.pid, before[name][1]) / lasted
        taken[name] = [cpu, woken, resident_mb(one.pid), *memory_mb(one.pid)]
        print(f"  {name:26} {cpu:8.2f} ms {woken:12.2f} {taken[name][2]:8.1f} {taken[name][3]:8.1f} "
              f"{taken[name][4]:12.1f}")
    return taken


def keep_background(taken: dict[str, list[float]], minutes: float) -> None:
    """Keeps the instrument's figures, each beside each of the others'."""
    ours = taken[OURS]
    after = f"after {minutes:g} min"
    for name, theirs in taken.items():
        if name == OURS:
            continue
        bare = name == BARE
        group = f"in the background, {PROCESSES} processes, a look every {TICK} s"
        keep(group, "CPU a tick", ours[0], "ms", beside=name, stands=theirs[0], most=0.5 if bare else None)
        keep(group, "voluntary switches a second", ours[1], "", beside=name, stands=theirs[1],
             most=1.5 if bare else None)
        keep(group, f"resident memory {after}", ours[2], "MB", beside=name, stands=theirs[2])
        keep(group, f"proportional memory {after}", ours[3], "MB", beside=name, stands=theirs[3],
             most_ratio=1.2 if bare else None)
        keep(group, f"own memory {after}", ours[4], "MB", beside=name, stands=theirs[4],
             most=5 if bare else None)


def main(arguments: list) -> int:
    build = os.path.abspath(arguments[0])
    seconds = float(arguments[1]) if len(arguments) > 1 else 60
    ostrel, core, widgets = f"{build}/ostrel", f"{build}/bench/bare_core", f"{build}/bench/bare_widgets"
    with PrivateDesktop(tray=tray_with_load(TICK)) as desktop:
        env = desktop.env
        settings(desktop.home, refresh="normal")
        reading = wall_ms([ostrel, "--readings"], env, 15) - 200
        empty = wall_ms([core], env, 15)
        print(f"one reading, wall            {reading:8.2f} ms beyond 200")
        print(f"  beside: an empty Qt Core   {empty:8.2f} ms")
        print(f"  beside: /bin/true          {wall_ms(['/bin/true'], env, 15):8.2f} ms")
        item = start_ms(desktop, [ostrel, "--background"],
                        lambda one: bus.item_of(env, one.pid) is not None, 7)
        bare = start_ms(desktop, [widgets], lambda one: one.stdout.readline() == b"ready\n", 7)
        print(f"start to the item, CPU       {item:8.2f} ms")
        print(f"  beside: an empty Qt window {bare:8.2f} ms   ratio {item / bare:.2f}")
        keep("the start", "`--readings` beyond its 0.2 s, wall", reading, "ms",
             beside="an empty Qt Core program", stands=empty, most=20)
        keep("the start", "`--background` to the item, CPU", item, "ms", beside=BARE, stands=bare,
             most_ratio=1.5)
        started = [*(subprocess.Popen(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                     for command in ([ostrel, "--background"], [widgets]))]
        programs: dict[str, Program] = dict(zip((OURS, BARE), started))
        for peer in peers(desktop.home, TICK):
            started.append(start(peer, env))
            programs[peer.name] = started[-1]
        plugin = plugin_process()
        if plugin:
            programs["the load plugin of Xfce"] = Watched(plugin)
        sleepers = fill_up(PROCESSES)
        keep_background(background(programs, seconds), seconds / 60)
        for pid in sleepers:
            os.kill(pid, signal.SIGKILL)
            os.waitpid(pid, 0)
        for one in started:
            end(one)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
