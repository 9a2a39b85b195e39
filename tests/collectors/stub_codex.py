#!/usr/bin/python3 -S
# SPDX-License-Identifier: Apache-2.0
"""An agent's program on a server: the first word of its task says what it does."""
import json
import mmap
import os
import resource
import signal
import subprocess
import sys
import time
from pathlib import Path


def stay(folder: str, then) -> None:
    """Works until it is stopped; what it started has left its group and listens to nobody."""
    child = subprocess.Popen(["sh", "-c", "trap '' TERM HUP; sleep 600; :"], start_new_session=True)
    Path(folder, "pids").write_text(f"{os.getpid()} {child.pid}", "ascii")
    os.rename(folder + "/pids", folder + "/running")
    then()
    time.sleep(600)


def cut() -> None:
    """Ends the connection that it was started through."""
    pid = os.getpid()
    while pid > 1:
        head, _, tail = Path(f"/proc/{pid}/stat").read_text("ascii").rpartition(")")
        if head.endswith("(sshd"):
            os.kill(pid, signal.SIGKILL)
            return
        pid = int(tail.split()[1])


def main() -> int:
    folder = os.environ["HOME"]
    Path(folder, "started").touch()
    task = sys.stdin.read()
    word = task.split(" ", 1)[0]
    if word == "eat":
        held = []
        while len(held) < 32:
            # Asked for and never touched, which is as much to the cap, and quicker.
            held.append(mmap.mmap(-1, 64 << 20, mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS))
            print("held", len(held) * 64, flush=True)
    elif word == "loud":
        print("\x1b[31mfirst\x1b[0m\n" + "ä" * 3_000_000 + "\n\x1b]0;title\x07\x1b[1mlast\x1b[0m")
    elif word in ("stay", "cut"):
        stay(folder, cut if word == "cut" else lambda: None)
    else:
        limits = [resource.getrlimit(kind)[0] for kind in (resource.RLIMIT_DATA, resource.RLIMIT_CPU)]
        print(json.dumps([sys.argv[1:], os.getcwd(), task, limits, os.nice(0)]))
        return 3
    return 0


sys.exit(main())
