# SPDX-License-Identifier: Apache-2.0
"""Where the bridge reads and writes, and what it takes as the present time."""
from __future__ import annotations

import os
import time

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

REGISTRY_NAME = "~/.config/zol-mini-apps/ostrel-automations.json"
"""The user's own list of jobs, as it is told to the user."""


class Places:
    """The folders, the search path for tools, and the clocks. Everything can be replaced by a test. `reader`
    is the pipe whose reader the tools run for, -1 where they run on without one."""

    __slots__ = ("home", "etc", "spool", "proc", "path", "host", "clock", "pause", "reader")

    def __init__(
        self,
        home: str = "",
        etc: str = "/etc",
        spool: str = "/var/spool",
        proc: str = "/proc",
        path: str = "",
        clock: Callable[[], float] = time.time,
        pause: Callable[[float], object] = time.sleep,
    ) -> None:
        self.home = home or os.path.expanduser("~")
        self.etc = etc
        self.spool = spool
        self.proc = proc
        self.path = path or os.environ.get("PATH", os.defpath)
        self.host = os.uname().nodename
        self.clock = clock
        self.pause = pause
        self.reader = -1

    @property
    def settings(self) -> str:
        """The settings of the panel."""
        return self.home + "/.config/zol-mini-apps/dev.quent.ostrel.json"

    @property
    def registry(self) -> str:
        """The user's own list of jobs."""
        return self.home + REGISTRY_NAME[1:]

    @property
    def cache(self) -> str:
        """The last inventory."""
        return self.home + "/.cache/ostrel/automations"

    @property
    def support(self) -> str:
        """The folder that holds the receipts and the saved plans."""
        return self.home + "/Library/Application Support/Ostrel"


def iso(seconds: float) -> str:
    """The local time as ISO 8601 with its zone, to the second; "" for a time that no calendar has."""
    try:
        stamp = time.strftime("%Y-%m-%dT%H:%M:%S%z", time.localtime(seconds))
    except (OverflowError, ValueError, OSError):
        return ""
    return stamp[:-2] + ":" + stamp[-2:]
