#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Puts the figures of one run into one page: what was measured, what it stands beside, what it may come to.

Usage: report.py FIGURES PARTS > PAGE

FIGURES has the lines of JSON that the benches kept, PARTS is what the benchmark library wrote of the parts.
Ends with 1 when a figure is over its budget; the page says which.
"""
from __future__ import annotations

import datetime
import json
import os
import platform
import sys

# What a part may take, in milliseconds, by how its name begins: the 99th percentile, or the mean.
LIMITS = {"render body/": ("p99_ms", 8.0), "open for the first time": ("median_ms", 80.0),
          "open again": ("median_ms", 20.0), "live tick": ("median_ms", 1.0)}
TIMES = {"sceneAndPainting": 1.5, "historySave": 1.0, "startingAChild": 0.1}
READING = ("nativeReading", "barePread", 1.5)
UNITS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def parts(path: str) -> list[dict]:
    """The parts' times as figures like the others."""
    with open(path, encoding="utf-8") as file:
        found = json.load(file)["benchmarks"]
    times = {one["name"]: one["cpu_time"] * UNITS[one["time_unit"]] for one in found}
    rows = []
    for one in found:
        name = one["name"].removesuffix("/manual_time")
        row = {"group": "the parts", "name": name, "unit": "ms"}
        key, most = next((limit for begin, limit in LIMITS.items() if name.startswith(begin)), (None, None))
        if key or "median_ms" in one:
            key = key or "median_ms"
            row.update(value=one[key], name=f"{name}, {key.removesuffix('_ms')}")
        else:
            row.update(value=times[one["name"]])
            most = next((limit for begin, limit in TIMES.items() if name.startswith(begin)), None)
        if most:
            row["most"] = most
        if name == READING[0]:
            row.update(beside=READING[1], stands=times[READING[1]], most_ratio=READING[2])
        rows.append(row)
    return rows


def over(row: dict) -> bool:
    """Whether a figure is over what it may come to."""
    return (row["value"] > row.get("most", float("inf"))
            or "stands" in row and row["value"] > row.get("most_ratio", float("inf")) * row["stands"])


def number(value: float) -> str:
    """Three figures, as few places as they need."""
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.3g}"


def line(row: dict) -> str:
    """The figure as a row of its table."""
    unit = f" {row['unit']}" if row.get("unit") else ""
    beside = ratio = budget = ""
    if "stands" in row:
        beside = f"{row['beside']}: {number(row['stands'])}{unit}"
        ratio = f"{row['value'] / row['stands']:.2f}" if row["stands"] > 0 else ""
    if "most" in row:
        budget = f"{number(row['most'])}{unit}"
    elif "most_ratio" in row:
        budget = f"{row['most_ratio']:g} times"
    state = ("**over**" if over(row) else "kept") if budget else ""
    return f"| {row['name']} | {number(row['value'])}{unit} | {beside} | {ratio} | {budget} | {state} |"


def machine() -> str:
    """What it was measured on."""
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = next((text.partition(":")[2].strip() for text in file if text.startswith("model name")), "?")
    with open("/proc/meminfo", encoding="ascii") as file:
        memory = int(file.readline().split()[1]) / 2**20
    release = platform.freedesktop_os_release().get("PRETTY_NAME", "Linux")
    return (f"{datetime.date.today():%Y-%m-%d}, {os.cpu_count()} processors ({model}), {memory:.0f} GiB, "
            f"{release}, kernel {platform.release().partition('-')[0]}, Python {platform.python_version()}")


def main(arguments: list[str]) -> int:
    with open(arguments[0], encoding="utf-8") as file:
        rows = [json.loads(text) for text in file] + parts(arguments[1])
    groups: dict[str, list[dict]] = {}
    for row in rows:
        groups.setdefault(row["group"], []).append(row)
    exceeded = list(dict.fromkeys(row["name"] for row in rows if over(row)))
    print("# Benchmarks\n\nWritten by `script/bench`, in one run, on a release build. What stands beside a "
          "figure was measured in that run\nas well, so ratios say more than times. \"Own\" memory is what "
          "the program alone has written to.\n")
    print(f"{machine()}.\n")
    print(f"Over budget: {'; '.join(exceeded) if exceeded else 'nothing'}.")
    for group, members in groups.items():
        print(f"\n## {group[0].upper()}{group[1:]}\n\n| what | measured | beside | ratio | budget | |\n"
              "|---|--:|---|--:|--:|---|")
        print("\n".join(map(line, members)))
    return 1 if exceeded else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
