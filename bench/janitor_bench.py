#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What the janitor's calls cost on a home with many files, beside a bare Python and `find` over the same
files.

usage: janitor_bench.py [--runs N] [--files N] [--history N]

Makes a home in a temporary folder with that many files in the agents' folders, half of them old, and in their
session history. Prints CPU time, wall time and peak memory of each command, medians, and asserts nothing. The
kernel counts the memory of whoever starts a command too, so none shows less than this script has.
"""
from __future__ import annotations

import argparse
import os
import statistics
import sys
import tempfile
import time

sys.dont_write_bytecode = True
from figures import keep, run  # noqa: E402

PYTHON = "/usr/bin/python3"
COLLECTORS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "collectors")
SCRIPT = os.path.join(COLLECTORS, "ostrel_janitor.py")
FILES_PER_FOLDER = 1000
FINDINGS_MS = 3000.0
FINDINGS_MIB = 60.0
OLD_SECONDS = 30 * 86400


def commands(home: str) -> dict[str, list[str]]:
    """What is measured, by the name under which it is printed."""
    return {
        "python3 -c pass": [PYTHON, "-c", "pass"],
        "groups": [PYTHON, SCRIPT, "groups"],
        "receipts": [PYTHON, SCRIPT, "receipts"],
        "kill-preview": [PYTHON, SCRIPT, "kill-preview", "--pids=1"],
        "findings": [PYTHON, SCRIPT, "findings"],
        "preview": [PYTHON, SCRIPT, "preview", "--group=agents-light"],
        "find -mtime +14": ["/usr/bin/find", home + "/.claude/debug", "-type", "f", "-mtime", "+14"],
    }


def fill(folder: str, files: int) -> None:
    """Makes so many small files in folders of a thousand, every other one old."""
    old = time.time() - OLD_SECONDS
    for number in range(files):
        place = f"{folder}/{number // FILES_PER_FOLDER}"
        if number % FILES_PER_FOLDER == 0:
            os.makedirs(place)
        path = f"{place}/{number:06}-session-log.txt"
        os.close(os.open(path, os.O_CREAT | os.O_WRONLY, 0o600))
        if number % 2 == 0:
            os.utime(path, (old, old))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--files", type=int, default=200_000)
    parser.add_argument("--history", type=int, default=20_000)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as home:
        fill(home + "/.claude/debug", options.files)
        fill(home + "/.claude/projects", options.history)
        environment = {
            "HOME": home, "PATH": "/usr/bin:/bin:/usr/sbin:/sbin", "PYTHONPYCACHEPREFIX": home + "/byte-code",
        }
        results: dict[str, list[tuple[float, float, float]]] = {}
        for turn in range(options.runs + 1):
            for name, command in commands(home).items():
                result = run(command, environment)
                if turn:
                    results.setdefault(name, []).append(result)
        cleaning = run([PYTHON, SCRIPT, "clean", "--group=agents-light", "--apply"], environment)
        results[f"clean, {options.files // 2} files"] = [cleaning]
    print(f"{f'{options.files} files':<24}{'CPU ms':>10}{'wall ms':>10}{'peak MiB':>10}")
    for name, rows in results.items():
        print(f"{name:<24}" + "".join(f"{statistics.median(column):10.1f}" for column in zip(*rows)))
    middle = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in results.items()}
    group = f"the janitor, {options.files:,} files in the home"
    find = "`find` over the same"
    for name in ("findings", "preview"):
        keep(group, f"`{name}`, CPU", middle[name][0], "ms", beside=find, stands=middle["find -mtime +14"][0],
             most=FINDINGS_MS if name == "findings" else None)
    keep(group, "`findings`, peak memory", middle["findings"][2], "MiB", most=FINDINGS_MIB)
    return 0


if __name__ == "__main__":
    sys.exit(main())
