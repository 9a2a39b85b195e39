# SPDX-License-Identifier: Apache-2.0
"""Lets each system call of the writers fail once, and looks whether they keep what they promise.

sweep.py LIBRARY WRITER [--rounds N] [--first N] [NAME …]

A run goes in a home of its own. Its n-th call of a kind fails, falls short, hangs, or is its last since the
process is killed there; n goes up until no call is hit. Then the same command runs once more, undisturbed,
and has to succeed. Which fault a call gets goes by the round, so that some rounds have tried each.
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
from typing import NamedTuple, Optional

from subjects import ANYWHERE, ASKED, KILLED, SUBJECTS, TOKEN, Run, Subject

LONGEST = 60  # seconds
LOOK = 0.005  # seconds between two looks whether a call hangs
GRACE = 0.5  # seconds that one which was asked to end has for it
LOOKS = 200  # at what is left of its tools, of some milliseconds each
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


HANGING = ("open", "read", "write", "sync", "rename", "spawn")
HANG_STEP = 6
"""The first round hangs one call in the middle, and six further ones each sixth, which is all of them."""


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


def begun(subject: Subject, root: str, more: dict[str, str], umask: int = 0o077) -> subprocess.Popen:
    """A subject's command, in the home below the root."""
    environment = {"HOME": root + "/home", "PATH": root + "/bin", "TZ": "UTC", "TMUX_TMPDIR": root,
                   "PYTHONDONTWRITEBYTECODE": "1", **more}
    return subprocess.Popen(subject.command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, cwd=root, env=environment, umask=umask)


def ended(process: subprocess.Popen, seconds: float, data: bytes = b"") -> Optional[Run]:
    """What a run came to; nothing while it goes on."""
    try:
        out, err = process.communicate(data.replace(TOKEN.encode(), os.urandom(4).hex().encode()), seconds)
    except subprocess.TimeoutExpired:
        return None
    return Run(process.returncode, out, err)


def run(subject: Subject, root: str, more: dict[str, str], umask: int = 0o077) -> Run:
    """One run of a subject's command."""
    with begun(subject, root, more, umask) as process:
        done = ended(process, LONGEST, subject.stdin)
        if not done:
            process.kill()
            raise TimeoutError
    return done


def hang(subject: Subject, root: str, more: dict[str, str], told: str) -> tuple[Run, str]:
    """A run that is asked to end when it hangs, and killed where that doesn't help, as the program does with
    what it starts; and what was wrong with another one meanwhile, which may wait for it, but not for good."""
    wrong = ""
    with begun(subject, root, more) as process:
        try:
            done = ended(process, LOOK, subject.stdin)
            while not done and not os.path.exists(told):
                done = ended(process, LOOK)
            if not done and not subject.alone:
                beside = run(subject, root, {})
                wrong = subject.wrong_after(root, beside)
                wrong = wrong and f"beside it {wrong} {beside}"
            process.terminate()
            done = done or ended(process, GRACE)
        finally:
            process.kill()
        return done or ended(process, LONGEST), wrong


def living(home: str) -> list[str]:
    """The processes with that home."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/environ", "rb") as file:
                if f"HOME={home}\0".encode() in file.read():
                    found.append(pid)
        except OSError:
            continue
    return found


def attempt(subject: Subject, fault: Fault, library: str) -> tuple[bool, str]:
    """Whether the fault was met, and what was wrong then or afterwards."""
    root = tempfile.mkdtemp(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None)
    try:
        os.makedirs(root + "/home")
        os.makedirs(root + "/bin")
        subject.lay(root)
        told = root + "/told"
        below = fault.below or root + "/home"
        environment = fault._replace(below=below).environment(library, told)
        hangs = fault.deed == "hang"
        first, wrong = hang(subject, root, environment, told) if hangs else (
            run(subject, root, environment), "")
        if not os.path.exists(told):
            return False, ""
        with open(told, encoding="utf-8", errors="replace") as file:
            place = file.readline().strip().replace(root, "")
        killers = (KILLED,) if fault.deed == "kill" else (ASKED, KILLED) if hangs and first.code < 0 else ()
        wrong = wrong or subject.wrong_after(root, first, killers)
        if hangs and first.code != KILLED and all(living(root + "/home") for _ in range(LOOKS)):
            wrong = wrong or "a tool outlives it"
        if not wrong:
            again = run(subject, root, {})
            wrong = subject.wrong_in_the_end(root, again)
            wrong = wrong and f"in the second run {wrong} {again}"
        return True, wrong and f"{fault.kind} {fault.at} {fault.deed} ({place}): {wrong} {first}"
    except TimeoutError:
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
        faults.append(wrong)
        if not met or at >= MOST_CALLS:
            break
    last = at - step
    if not turn and (kind, below) != subject.kinds[0]:
        subject = subject._replace(alone=True)  # a run beside it costs the wait for its lock
    for place in range(turn or (last + 1) // 2 or 1, last + 1, HANG_STEP if turn else MOST_CALLS):
        if kind in HANGING:
            faults.append(attempt(subject, Fault(kind, place, "hang", below), library)[1])
    return at - 1, list(filter(None, faults))


def main() -> int:
    parser = argparse.ArgumentParser(description="Lets system calls fail.")
    parser.add_argument("library")
    parser.add_argument("writer")
    parser.add_argument("--rounds", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="the first round, 0 is the quick one")
    parser.add_argument("names", nargs="*")
    asked = parser.parse_intermixed_args()
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
