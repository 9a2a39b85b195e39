# SPDX-License-Identifier: Apache-2.0
"""Running other programs: no shell, a language that can be parsed, a limit on time and on output."""
from __future__ import annotations

import os
import select
import signal
import subprocess
import threading
import time

from ostrel_lib.oneline import clean
from ostrel_lib.places import Places

MOST_OUTPUT = 16 << 20
MOST_ERRORS = 64 << 10
PATIENCE = 10.0
"""Seconds for one call of a tool on this machine; each answers within a tenth of one."""

SPOKEN = {
    "LC_ALL": "C", "TZ": "UTC", "SYSTEMD_PAGER": "", "SYSTEMD_COLORS": "0", "SYSTEMD_URLIFY": "0",
    "SYSTEMD_LESS": "", "PAGER": "cat", "TERM": "dumb",
}
"""What makes the tools speak plainly: English words, UTC, no pager, no colours, no links."""
UNWANTED = ("LANGUAGE", "COLUMNS", "LINES", "SYSTEMD_LOG_LEVEL", "SYSTEMD_LOG_TARGET")


class Interrupted(BaseException):
    """The bridge was asked to end."""


def end_on_request() -> None:
    """From now on SIGTERM raises `Interrupted`, so that no tool outlives the bridge: each runs in a session
    of its own, which a signal to the bridge's group doesn't reach."""
    signal.signal(signal.SIGTERM, interrupt)


READERS: list[int] = []
"""The descriptors whose readers are waited for; none for a bridge that is to finish what it does."""


def end_unread() -> None:
    """From now on a tool is ended, and `Interrupted` raised, once nobody can read the answer any more: for a
    command that only reads, so that it doesn't outlive whoever asked."""
    READERS[:] = [1]


def interrupt(*_: object) -> None:
    """The handler of the signal."""
    raise Interrupted


class Outcome:
    """What a tool gave. `problem` says in words why there is no answer, `missing` that the tool isn't
    installed. `status` is negative for a signal, and -1 without a start."""

    __slots__ = ("status", "out", "err", "problem", "missing")

    def __init__(self, status: int = -1, problem: str = "", missing: bool = False) -> None:
        self.status = status
        self.out = b""
        self.err = b""
        self.problem = problem
        self.missing = missing

    @property
    def failure(self) -> str:
        """One line on why the call failed; "" when it didn't."""
        if self.problem or self.status == 0:
            return self.problem
        return self.complaint or f"ended with status {self.status}"

    @property
    def complaint(self) -> str:
        """The first line in words of what the tool wrote to its standard error. ssh draws a frame around its
        loudest warning."""
        for line in self.err.decode("utf-8", "replace").split("\n"):
            words = line.strip("@ \t\r")
            if any(letter.isalpha() for letter in words):
                return clean(words, 200)
        return ""


class Deadline:
    """The time that a group of calls has together."""

    __slots__ = ("end",)

    def __init__(self, seconds: float) -> None:
        self.end = time.monotonic() + seconds

    def left(self, most: float = PATIENCE) -> float:
        """Seconds for the next call, at most `most`; not below 0."""
        return max(0.0, min(most, self.end - time.monotonic()))


def find(name: str, path: str) -> str:
    """The tool's absolute path; "" when it isn't there."""
    for folder in path.split(":"):
        candidate = folder + "/" + name
        if folder[:1] == "/" and os.path.isfile(candidate) and os.access(candidate, os.X_OK):
            return candidate
    return ""


def run(
    places: Places, argv: list[str], seconds: float = PATIENCE, stdin: bytes = b"", most: int = MOST_OUTPUT,
    hold: bool = False,
) -> Outcome:
    """Runs a tool to its end. What runs longer than `seconds` or prints more than `most` bytes is killed with
    all that it started, and gives no answer. A process that the tool leaves behind isn't waited for. With
    `hold` its input doesn't end before the tool does or this process, so that its end can tell of ours."""
    program = find(argv[0], places.path)
    if not program:
        return Outcome(problem=f"{argv[0]} isn't installed", missing=True)
    if seconds <= 0:
        return Outcome(problem=f"{argv[0]} wasn't asked any more, since the time was used up")
    environment = {key: value for key, value in os.environ.items() if key not in UNWANTED}
    environment.update(SPOKEN, PATH=places.path, HOME=places.home)
    source, end = input_of(stdin, hold)
    try:
        child = subprocess.Popen(
            argv, executable=program, env=environment, stdin=source, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, start_new_session=True, cwd="/")
    except OSError as problem:
        if end:
            os.close(end)
        return Outcome(problem=f"{argv[0]} can't be started: {problem.strerror}")
    finally:
        os.close(source)
    feeder = threading.Thread(target=feed, args=(end, stdin), daemon=True)
    try:
        if end:
            feeder.start()
        return served(child, argv[0], seconds, most)
    finally:
        if child.poll() is None:
            kill_group(child)
        if end and feeder.ident:
            # Nobody reads any more, so it has ended, unless the tool left something behind that might.
            feeder.join(1.0)
            if not feeder.is_alive():
                os.close(end)
        for stream in (child.stdout, child.stderr):
            if stream:
                stream.close()


def input_of(stdin: bytes, hold: bool) -> tuple[int, int]:
    """What a tool reads, and, with `hold`, the end that is to be filled; 0 without."""
    if hold:
        return os.pipe()
    if not stdin:
        return os.open(os.devnull, os.O_RDONLY), 0
    source = os.memfd_create("input")
    with open(os.dup(source), "wb") as file:
        file.write(stdin)
    os.lseek(source, 0, os.SEEK_SET)
    return source, 0


def feed(end: int, data: bytes) -> None:
    """Writes all of it, for as long as somebody reads."""
    left = memoryview(data)
    try:
        while left:
            left = left[os.write(end, left):]
    except OSError:
        pass


def served(child: subprocess.Popen[bytes], name: str, seconds: float, most: int) -> Outcome:
    """Reads both outputs until the child has ended, or until one of the limits is reached."""
    outcome = Outcome()
    outputs = {child.stdout.fileno(): [], child.stderr.fileno(): []}  # type: ignore[union-attr]
    out = child.stdout.fileno()  # type: ignore[union-attr]
    sizes = dict.fromkeys(outputs, 0)
    for descriptor in outputs:
        os.set_blocking(descriptor, False)
    ended = os.pidfd_open(child.pid)
    poller = select.poll()
    for descriptor in (*outputs, ended):
        poller.register(descriptor, select.POLLIN)
    for descriptor in READERS:
        poller.register(descriptor, 0)  # tells of its end alone
    end = time.monotonic() + seconds
    try:
        gone = False
        while not gone and not outcome.problem:
            ready = [descriptor for descriptor, _ in poller.poll(max(0.0, end - time.monotonic()) * 1000)]
            if not set(READERS).isdisjoint(ready):
                raise Interrupted
            gone = ended in ready
            for descriptor in outputs if gone else ready:
                # Once it has ended, what is in the pipes is read, and nobody is waited for.
                while part := take(descriptor):
                    sizes[descriptor] += len(part)
                    if descriptor == out or sizes[descriptor] <= MOST_ERRORS:
                        outputs[descriptor].append(part)
                    if sizes[descriptor] > most:
                        outcome.problem = f"{name} printed more than {most >> 20} MiB"
                        break
                if part == b"" and not gone:
                    poller.unregister(descriptor)
            if not gone and not outcome.problem and time.monotonic() >= end:
                outcome.problem = f"{name} gave no answer within {seconds:.0f} s"
    finally:
        os.close(ended)
    if outcome.problem:
        kill_group(child)
    else:
        outcome.status = child.wait()
        outcome.out, outcome.err = (b"".join(parts) for parts in outputs.values())
    return outcome


def take(descriptor: int) -> bytes | None:
    """What a pipe holds; b"" at its end, nothing when it is empty for now."""
    try:
        return os.read(descriptor, 1 << 16)
    except BlockingIOError:
        return None


def kill_group(child: subprocess.Popen[bytes]) -> None:
    """Ends a tool and what it started."""
    try:
        os.killpg(child.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    child.wait()
