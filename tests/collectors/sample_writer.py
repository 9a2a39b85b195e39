# SPDX-License-Identifier: Apache-2.0
"""Writes samples until it is killed, over and over. A program of its own, since forking a large one is slow.

usage: sample_writer.py collectors home

Each line "first enough" on standard input starts a process that appends the samples from `first` on, and
compacts after every fifth. Its pid is printed, then a line once it saved the sample `enough`, and after its
death the last sample that it saved for certain.
"""
import mmap
import os
import sys

sys.path.insert(0, sys.argv[1])

from ostrel_lib import history_file  # noqa: E402
from ostrel_lib.maintenance import history_clean  # noqa: E402


def write(home: str, number: int, enough: int, saved: mmap.mmap) -> None:
    while True:
        sample = {"ts": "2026-07-18T10:11:12+02:00", "swap": number, "load": 30, "mcp": 2}
        if history_file.append(home, sample, wait=60):
            return
        saved[:] = number.to_bytes(8, "little")
        if number == enough:
            os.write(1, b"enough\n")
        if number % 5 == 0:
            history_clean(home, apply=True)
        number += 1


saved = mmap.mmap(-1, 8)  # shared with the children
for line in sys.stdin:
    first, enough = map(int, line.split())
    pid = os.fork()
    if pid == 0:
        os.write(1, b"%d\n" % os.getpid())
        write(sys.argv[2], first, enough, saved)
        os._exit(1)
    os.waitpid(pid, 0)
    os.write(1, b"%d\n" % int.from_bytes(saved, "little"))
