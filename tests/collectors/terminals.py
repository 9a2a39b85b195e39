# SPDX-License-Identifier: Apache-2.0
"""Real tmux servers in a folder of their own, their clients on terminals that nobody sees; a stub kitty."""
import os
import pty
import signal
import subprocess
import threading

from fabricated_machine import fresh_folder, started, wait_for

from ostrel_lib.places import Places
from ostrel_lib.sessions.commands import listing, switched
from ostrel_lib.sessions.scene import Scene

KITTY = os.path.join(os.path.dirname(os.path.abspath(__file__)), "stub_kitty.py")


class Terminals:
    """The bench. Servers of other users of this machine's account are left alone and left out."""

    def __init__(self, test, environ=None) -> None:
        self.test = test
        self.root = fresh_folder(test, prefix="tm")
        self.folder = f"{self.root}/tmux-{os.getuid()}"
        self.environ = {"TMUX_TMPDIR": self.root, **(environ or {})}
        self.path = os.environ["PATH"]

    def run(self, *words: str) -> str:
        """What a tool prints, run to its end."""
        environ = {"PATH": self.path, "HOME": self.root, "SHELL": "/bin/sh", "LC_ALL": "C.UTF-8",
                   **self.environ}
        return subprocess.run(words, env=environ, cwd=self.root, check=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE).stdout.decode().strip()

    def start(self, *words: str, **options) -> subprocess.Popen:
        """A process that ends with the test."""
        environ = {"PATH": self.path, "HOME": self.root, "TERM": "xterm", **self.environ}
        return started(self.test, *words, env=environ, start_new_session=True, stderr=subprocess.DEVNULL,
                       **options)

    def tmux(self, *words: str, name: str = "default") -> str:
        """Carries out a command of a server, which may begin to run with it."""
        return self.run("tmux", "-f", "/dev/null", *(["-S", name] if "/" in name else ["-L", name]), *words)

    def session(self, name: str, *words: str, server: str = "default") -> int:
        """A new session, whose server ends with the test. Gives the server's number."""
        self.tmux("new-session", "-d", "-s", name, "-x", "80", "-y", "24", *words, name=server)
        pid = int(self.tmux("display-message", "-p", "#{pid}", name=server))
        self.test.addCleanup(end, pid)
        return pid

    def attach(self, session: str, server: str = "default") -> subprocess.Popen:
        """A client on a terminal whose output nobody reads but this."""
        keeper, terminal = pty.openpty()
        before = self.tmux("list-clients", name=server)
        child = self.start("tmux", "-L", server, "attach", "-t", session, stdin=terminal, stdout=terminal)
        os.close(terminal)
        threading.Thread(target=drained, args=(keeper,), daemon=True).start()
        wait_for(lambda: self.tmux("list-clients", name=server) != before, "the client")
        return child

    def kitty(self, mode: str, name: str) -> subprocess.Popen:
        """A stub kitty. It says when it can be reached."""
        child = self.start("/usr/bin/python3", "-S", KITTY, mode, name, self.root, stdout=subprocess.PIPE)
        self.test.addCleanup(child.stdout.close)
        child.stdout.readline()
        return child

    def scene(self, **environ) -> Scene:
        return Scene(Places(home=self.root, path=self.path), {**self.environ, **environ})

    def list(self) -> dict:
        """The listing, without what isn't this bench's own."""
        answer = listing(self.scene())
        if "terminals" in answer:
            answer["terminals"] = [row for row in answer["terminals"] if self.root in row["handle"]]
        return answer

    def rows(self) -> dict:
        return {row["title"]: row for row in self.list()["terminals"]}

    def handle(self, title: str) -> str:
        return self.rows()[title]["handle"]

    def switch(self, handle: str, **environ) -> dict:
        return switched(self.scene(**environ), ["--handle", handle, "--confirm"])


def end(pid: int) -> None:
    """Ends a server, also one that was stopped."""
    try:
        os.kill(pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def drained(descriptor: int) -> None:
    """Reads a terminal until nobody writes to it any more."""
    try:
        while os.read(descriptor, 1 << 16):
            pass
    except OSError:
        os.close(descriptor)
