# SPDX-License-Identifier: Apache-2.0
"""Lets each system call of the writers fail once, and looks whether they keep what they promise.

sweep.py LIBRARY WRITER [--rounds N] [--first N] [NAME …]

A run goes in a home of its own. Its n-th call of a kind fails, falls short, or is its last since the process
is killed there; n goes up until no call is hit. Then the same command runs once more, undisturbed, and has to
succeed. Which fault a call gets goes by the round, so that some rounds have tried each.
"""
import argparse
import concurrent.futures
import errno
import itertools
import os
import shutil
import subprocess
import sys
import tempfile
from typing import NamedTuple

from subjects import ANYWHERE, SUBJECTS, TOKEN, Run, Subject

LONGEST = 60  # seconds
MANY = "1000000"
WORKERS = 2
MOST_CALLS = 400
QUICK_STEP = 3
"""Of calls that aren't on the home's files, the first round takes each third."""
DEEDS: dict[str, tuple[str, ...]] = {
    "open": ("EIO", "kill", "EMFILE", "EACCES", "ENOSPC", "EINTR", "ENFILE from here on"),
    "read": ("EIO", "short", "EINTR", "kill", "EIO from here on"),
    "write": ("ENOSPC", "short", "kill", "EIO", "EINTR", "ENOSPC from here on"),
    "sync": ("EIO", "kill", "ENOSPC from here on"),
    "rename": ("EIO", "kill", "EACCES", "ENOSPC from here on"),
    "unlink": ("EIO", "kill", "EACCES from here on"),
    "mkdir": ("EACCES", "kill", "ENOSPC from here on"),
    "chmod": ("EIO", "kill"),
    "spawn": ("EAGAIN", "ENOMEM", "kill", "EAGAIN from here on"),
    "descriptor": ("EMFILE", "ENFILE", "EMFILE from here on")}


class Fault(NamedTuple):
    """The n-th call of a kind, and what happens there."""
    kind: str
    at: int
    deed: str
    below: str

    def environment(self, library: str, told: str) -> dict[str, str]:
        deed, _, lasting = self.deed.partition(" ")
        below = "" if self.below == ANYWHERE else self.below
        return {"LD_PRELOAD": library, "OSTREL_FAULT_KIND": self.kind, "OSTREL_FAULT_AT": str(self.at),
                "OSTREL_FAULT_DO": str(getattr(errno, deed, deed)), "OSTREL_FAULT_BELOW": below,
                "OSTREL_FAULT_TOLD": told, "OSTREL_FAULT_COUNT": MANY if lasting else "1"}


def run(subject: Subject, root: str, more: dict[str, str], umask: int = 0o077) -> Run:
    """One run of a subject's command in the home below the root."""
    environment = {"HOME": root + "/home", "PATH": root + "/bin", "TZ": "UTC", "TMUX_TMPDIR": root,
                   "PYTHONDONTWRITEBYTECODE": "1", **more}
    data = subject.stdin.replace(TOKEN.encode(), os.urandom(4).hex().encode())
    done = subprocess.run(subject.command, input=data, cwd=root, env=environment,
                          capture_output=True, timeout=LONGEST, check=False, umask=umask)
    return Run(done.returncode, done.stdout, done.stderr)


def attempt(subject: Subject, fault: Fault, library: str) -> tuple[bool, str]:
    """Whether the fault was met, and what was wrong then or afterwards."""
    root = tempfile.mkdtemp(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None)
    try:
        os.makedirs(root + "/home")
        os.makedirs(root + "/bin")
        subject.lay(root)
        told = root + "/told"
        below = fault.below or root + "/home"
        first = run(subject, root, fault._replace(below=below).environment(library, told))
        if not os.path.exists(told):
            return False, ""
        with open(told, encoding="utf-8", errors="replace") as file:
            place = file.readline().strip().replace(root, "")
        wrong = subject.wrong_after(root, first, fault.deed == "kill")
        if not wrong:
            again = run(subject, root, {})
            wrong = subject.wrong_in_the_end(root, again)
            wrong = wrong and f"in the second run {wrong} {again}"
        return True, wrong and f"{fault.kind} {fault.at} {fault.deed} ({place}): {wrong} {first}"
    except subprocess.TimeoutExpired:
        return True, f"{fault}: it didn't end"
    finally:
        shutil.rmtree(root, ignore_errors=True)


def sweep(subject: Subject, kind: str, below: str, turn: int, library: str) -> tuple[int, list[str]]:
    """All calls of one kind; how many there were at most, and what was wrong."""
    faults: list[str] = []
    step = QUICK_STEP if below and not turn else 1
    for at in itertools.count(1, step):
        deed = DEEDS[kind][(at + turn - 1) % len(DEEDS[kind])]
        if subject.reads_in_the_end and kind in ("open", "read"):
            deed = deed.partition(" ")[0]
        met, wrong = attempt(subject, Fault(kind, at, deed, below), library)
        if wrong:
            faults.append(wrong)
        if not met or at >= MOST_CALLS:
            return at - 1, faults
    return 0, faults


def main() -> int:
    parser = argparse.ArgumentParser(description="Lets system calls fail.")
    parser.add_argument("library")
    parser.add_argument("writer")
    parser.add_argument("--rounds", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="the first round, 0 is the quick one")
    parser.add_argument("names", nargs="*")
    asked = parser.parse_args()
    subjects = SUBJECTS(os.path.abspath(asked.writer))
    if unknown := set(asked.names) - set(subjects):
        parser.error(f"there is no {sorted(unknown)}; there are {' '.join(subjects)}")
    library = os.path.abspath(asked.library)
    wrong = 0
    with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
        jobs = {}
        for turn in range(asked.first, asked.first + asked.rounds):
            for name in asked.names or subjects:
                for kind, below in subjects[name].kinds:
                    job = pool.submit(sweep, subjects[name], kind, below, turn, library)
                    jobs[job] = f"{name}, {kind} {below}".rstrip()
        for job, name in jobs.items():
            calls, faults = job.result()
            print(f"faults: {name}, {calls} calls", flush=True)
            for fault in faults:
                print(f"  {fault}", file=sys.stderr, flush=True)
            wrong += len(faults)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
