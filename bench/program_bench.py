#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Measures the whole program on a private desktop, each figure beside what stands for the least, in one run:
one reading, the start, a background tick, wake-ups and memory. Prints figures, asserts nothing.

Usage: program_bench.py BUILD_FOLDER [SECONDS_IN_THE_BACKGROUND]
"""
import json
import os
import shutil
import statistics
import subprocess
import sys
import time

sys.dont_write_bytecode = True
PROJECT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, f"{PROJECT}/tests/desktop")

import bus  # noqa: E402
from measure import end, memory_mb, processor_ms, switches, switches_since  # noqa: E402
from private_desktop import PrivateDesktop  # noqa: E402

SETTINGS = ".config/zol-mini-apps/dev.quent.ostrel.json"
TICK = 3.0  # seconds, at the fast profile
CONKY = """conky.config = { out_to_console = true, out_to_x = false, update_interval = 3 }
conky.text = [[ ${cpu} ${memperc} ${swapperc} ${loadavg 1} ]]"""


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


def background(desktop: PrivateDesktop, commands: dict, seconds: float) -> None:
    """Lets all programs run beside each other and prints what each took."""
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    running = {name: subprocess.Popen(command, env=desktop.env, **quiet)
               for name, command in commands.items()}
    time.sleep(5)
    before = {name: (processor_ms(one.pid), switches(one.pid)) for name, one in running.items()}
    begin = time.monotonic()
    time.sleep(seconds)
    lasted = time.monotonic() - begin
    print(f"in the background for {lasted:.0f} s   CPU per {TICK:.0f} s   switches/s   PSS MB   own dirty MB")
    for name, one in running.items():
        cpu = processor_ms(one.pid) - before[name][0]
        woken = switches_since(one.pid, before[name][1])
        pss, dirty = memory_mb(one.pid)
        print(f"  {name:26} {cpu / lasted * TICK:8.2f} ms {woken / lasted:12.2f} {pss:8.1f} {dirty:18.1f}")
    for one in running.values():
        end(one)


def main(arguments: list) -> int:
    build = os.path.abspath(arguments[0])
    seconds = float(arguments[1]) if len(arguments) > 1 else 30
    ostrel, core, widgets = f"{build}/ostrel", f"{build}/bench/bare_core", f"{build}/bench/bare_widgets"
    with PrivateDesktop() as desktop:
        home = desktop.env["HOME"]
        os.makedirs(os.path.dirname(f"{home}/{SETTINGS}"), exist_ok=True)
        with open(f"{home}/{SETTINGS}", "w", encoding="utf-8") as file:
            json.dump({"dev.quent.ostrel.refresh": "fast"}, file)
        reading = wall_ms([ostrel, "--readings"], desktop.env, 15) - 200
        print(f"one reading, wall            {reading:8.2f} ms beyond 200")
        print(f"  beside: an empty Qt Core   {wall_ms([core], desktop.env, 15):8.2f} ms")
        print(f"  beside: /bin/true          {wall_ms(['/bin/true'], desktop.env, 15):8.2f} ms")
        item = start_ms(desktop, [ostrel, "--background"],
                        lambda one: bus.item_of(desktop.env, one.pid) is not None, 7)
        bare = start_ms(desktop, [widgets], lambda one: one.stdout.readline() == b"ready\n", 7)
        print(f"start to the item, CPU       {item:8.2f} ms")
        print(f"  beside: an empty Qt window {bare:8.2f} ms   ratio {item / bare:.2f}")
        commands = {"ostrel --background": [ostrel, "--background"], "an empty Qt window": [widgets]}
        if shutil.which("conky"):
            with open(f"{home}/conky.conf", "w", encoding="ascii") as file:
                file.write(CONKY)
            commands["conky, no process list"] = ["conky", "-c", f"{home}/conky.conf"]
        background(desktop, commands, seconds)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
