# SPDX-License-Identifier: Apache-2.0
"""A real ssh server on the loopback, and an `ssh` that reaches it under every alias."""
import os
import pwd
import shutil
import socket
import subprocess
from pathlib import Path

from fabricated_machine import wait_for

SSHD = "/usr/sbin/sshd"


def sshd_can_run() -> bool:
    # It wants a folder of its own to drop its rights in, when it has any.
    return os.access(SSHD, os.X_OK) and shutil.which("ssh") is not None and (
        os.getuid() != 0 or os.path.isdir("/run/sshd") or os.access("/run", os.W_OK))


class LoopbackServer:
    """The server lives until the test's end. Its sessions have `home` and search `path`; the client's `ssh`
    lies in `bin` below the root."""

    def __init__(self, add_cleanup, root: str, home: str, path: str) -> None:
        self.root = root
        for name in ("host", "other", "login"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-C", "", "-f", f"{root}/{name}"],
                           check=True, stdin=subprocess.DEVNULL)
        self.admit()
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        self.write("sshd", f"""
            Port {self.port}
            ListenAddress 127.0.0.1
            HostKey {root}/host
            AuthorizedKeysFile {root}/authorized
            PidFile none
            UsePAM no
            StrictModes no
            PasswordAuthentication no
            KbdInteractiveAuthentication no
            SetEnv HOME={home} PATH={path}
        """)
        self.trust("host")
        self.configure()
        os.makedirs(root + "/bin", exist_ok=True)
        self.tool("bin/ssh", f'exec /usr/bin/ssh -F "{root}/config" "$@"')
        if os.getuid() == 0:
            os.makedirs("/run/sshd", mode=0o755, exist_ok=True)
        log = open(root + "/log", "wb")
        add_cleanup(log.close)
        self.daemon = subprocess.Popen([SSHD, "-D", "-e", "-f", root + "/sshd"], stdin=subprocess.DEVNULL,
                                       stderr=log)
        add_cleanup(self.daemon.wait)
        add_cleanup(self.daemon.terminate)
        wait_for(self.answers, "the server")

    def answers(self) -> bool:
        assert self.daemon.poll() is None
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.port)) == 0

    def write(self, name: str, text: str) -> None:
        Path(self.root, name).write_text(text, "ascii")

    def tool(self, name: str, script: str) -> None:
        """An executable below the root."""
        self.write(name, f"#!/bin/sh\n{script}\n")
        os.chmod(f"{self.root}/{name}", 0o755)

    def admit(self, name: str = "login") -> None:
        """Lets the owner of a key in, and nobody else."""
        shutil.copy(f"{self.root}/{name}.pub", self.root + "/authorized")

    def trust(self, name: str) -> None:
        """What the client takes for the server's key from now on."""
        self.write("known", f"[127.0.0.1]:{self.port} " + Path(self.root, name + ".pub").read_text("ascii"))

    def configure(self, keys: str = "StrictHostKeyChecking yes") -> None:
        """The client's configuration, with all that could run a command of somebody else's."""
        self.write("config", f"""
            Host *
                HostName 127.0.0.1
                Port {self.port}
                User {pwd.getpwuid(os.getuid()).pw_name}
                IdentityFile {self.root}/login
                IdentitiesOnly yes
                UserKnownHostsFile {self.root}/known
                {keys}
                RemoteCommand touch {self.root}/remote-command
                LocalCommand touch {self.root}/local-command
                PermitLocalCommand yes
                RequestTTY force
        """)
