# SPDX-License-Identifier: Apache-2.0
"""A made-up machine in a temporary folder: its /proc, /sys and home. Makes the collectors importable."""
import os
import shutil
import subprocess
import sys
import tempfile
import time

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
COLLECTORS = os.path.join(REPOSITORY, "collectors")
FIXTURES = os.path.join(REPOSITORY, "tests", "fixtures", "proc")
DESKTOPS = os.path.join(REPOSITORY, "tests", "fixtures", "desktops")
if COLLECTORS not in sys.path:
    sys.path.insert(0, COLLECTORS)

TICKS = os.sysconf("SC_CLK_TCK")
USER = 1000
PAGES_PER_MIB = 1048576 // os.sysconf("SC_PAGE_SIZE")


def fresh_folder(test, **where) -> str:
    """An empty folder that goes with the test."""
    path = os.path.realpath(tempfile.mkdtemp(**where))
    test.addCleanup(shutil.rmtree, path, ignore_errors=True)
    return path


def put(path: str, content: bytes) -> str:
    """A file, with its folders."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    return path


def started(test, *argv: str, **more) -> subprocess.Popen:
    """A process that ends with the test at the latest."""
    child = subprocess.Popen(argv, **more)
    test.addCleanup(child.wait)
    test.addCleanup(child.kill)
    return child


def waiting(test, *argv: str, **more) -> subprocess.Popen:
    """A process that has printed a line and waits for one, which it gets at the test's end."""
    child = subprocess.Popen(argv, stdin=subprocess.PIPE, stdout=subprocess.PIPE, **more)
    test.addCleanup(child.communicate, b"\n")
    child.stdout.readline()
    return child


def wait_for(condition, what: str):
    """What a condition gives once it is true."""
    limit = time.monotonic() + 60
    while not (value := condition()):
        assert time.monotonic() < limit, "never came: " + what
        time.sleep(0.01)
    return value


class Machine:
    """Processes and kernel files that a test lays down. Time stands still but for the pause between looks."""

    def __init__(self, test) -> None:
        self.root = fresh_folder(test)
        for part in ("proc", "sys", "home"):
            os.mkdir(os.path.join(self.root, part))
        self.now = 100.0
        self.time = 1_800_000_000

    def write(self, path: str, content: bytes) -> None:
        """A file below the machine's root, with its folders."""
        put(os.path.join(self.root, path), content)

    def process(self, pid, *argv, comm=b"tool", mib=1, ticks=0, start=50, ppid=1, state=b"S", flags=0):
        """A process, or another state of one that is there already."""
        spent = [ticks // 2, ticks - ticks // 2]
        fields = [ppid, 0, 0, 0, -1, flags, 0, 0, 0, 0, *spent, 0, 0, 20, 0, 1, 0, start]
        words = " ".join(str(field) for field in fields + [0] * 30).encode()
        self.write(f"proc/{pid}/stat", b"%d (%s) %s %s\n" % (pid, comm, state, words))
        self.write(f"proc/{pid}/statm", b"9999 %d 3 4 0 5 0\n" % (mib * PAGES_PER_MIB))
        words = "".join(word + "\0" for word in argv)
        self.write(f"proc/{pid}/cmdline", words.encode("utf-8", "surrogateescape"))

    def desktop(self, name: str, shown=lambda pid: True) -> None:
        """The process table of a whole desktop, or those of its processes that are shown."""
        with open(os.path.join(DESKTOPS, name), encoding="utf-8") as file:
            for line in file:
                if not line.startswith("#"):
                    pid, ppid, mib, start, comm, command = line.rstrip("\n").split("\t")
                    if shown(int(pid)):
                        self.process(int(pid), *command.split("|"), comm=comm.encode()[:15], mib=int(mib),
                                     start=int(start), ppid=int(ppid))

    def link(self, path: str, target: str) -> None:
        """A link below the machine's root."""
        path = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        os.symlink(target, path)

    def snapshot(self, between=lambda: None) -> dict:
        """A snapshot of this machine; `between` happens between the two looks, which lie 0.2 s apart."""
        from ostrel_lib.snapshot import snapshot

        def pause(seconds: float) -> None:
            between()
            self.now += seconds

        return snapshot(
            script="/opt/share/ostrel/collectors/ostrel.py", home=self.root + "/home",
            root=self.root, user=USER, clock=lambda: self.now, pause=pause, now=lambda: self.time)
