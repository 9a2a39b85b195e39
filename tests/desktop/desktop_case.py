# SPDX-License-Identifier: Apache-2.0
"""What the desktop tests share: one desktop per test class, and the instrument in a home of its own.

OSTREL_PROGRAM names the built program.
"""
import json
import os
import re
import signal
import tempfile
import unittest
from typing import Any, NamedTuple, Optional

import bus
import screen
from private_desktop import GENEROUS, PrivateDesktop

SETTINGS_FILE = ".config/zol-mini-apps/dev.quent.ostrel.json"
PRESSURE = r"(?:\?|normal|warn|critical)"
TOOL_TIP = re.compile(r"ostrel · cpu (?P<cpu>\d+)% · mem (?P<mem>\d+)% · swap (?P<swap>\d+)% "
                      rf"· free (?P<free>[\d.]+) (?P<unit>mb|gb) · {PRESSURE} · (?:native|local CLI|error)")


class Instrument(NamedTuple):
    """The running program: its process and its home folder."""
    process: Any
    home: str


class DesktopCase(unittest.TestCase):
    """A test class on one desktop. Each program that a test starts has to end well when it is asked to."""
    DESKTOP: dict[str, Any] = {}
    desktop: PrivateDesktop

    @classmethod
    def setUpClass(cls) -> None:
        cls.program = os.path.abspath(os.environ["OSTREL_PROGRAM"])
        cls.desktop = PrivateDesktop(**cls.DESKTOP).__enter__()
        cls.addClassCleanup(cls.desktop.close)

    def start(self, *arguments: str, settings: Optional[dict[str, Any]] = None) -> Instrument:
        """Starts the instrument in a fresh home that holds the given settings."""
        home = tempfile.mkdtemp(dir=self.desktop.folder)
        env = self.desktop.home_environment(home)
        if settings:
            path = f"{home}/{SETTINGS_FILE}"
            os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                json.dump(settings, file)
        instrument = Instrument(self.desktop.start("ostrel", [self.program, *arguments], env), home)
        self.addCleanup(self.end, instrument)
        return instrument

    def end(self, instrument: Instrument) -> None:
        """Asks the instrument to end and checks that it does, without a fault."""
        if instrument.process.poll() is None:
            instrument.process.send_signal(signal.SIGTERM)
        code = instrument.process.wait(GENEROUS)
        self.assertEqual(code, 0, f"exit code at its end; it printed: {self.desktop.log('ostrel')}")

    def wait_for(self, what: str, condition, limit: float = GENEROUS):
        """Waits on the desktop; see PrivateDesktop.wait_for."""
        return self.desktop.wait_for(what, condition, limit, program="ostrel")

    def item(self, instrument: Instrument) -> bus.Item:
        """Waits until the instrument's status item is registered."""
        return self.wait_for("registered item", lambda: bus.item_of(self.desktop.env, instrument.process.pid))

    def panel(self) -> int:
        """Waits until the panel is on the screen, and gives its window."""
        return self.wait_for("panel on the screen", lambda: screen.panel_window(self.desktop))

    def panel_has_gone(self) -> None:
        """Waits until the panel is off the screen."""
        self.wait_for("panel off the screen", lambda: not screen.panel_window(self.desktop))

    def focused_panel(self) -> int:
        """Waits until the panel gets the keys, and gives its window."""
        window = self.panel()
        self.wait_for("panel with the keyboard", lambda: screen.active_window(self.desktop) == window)
        return window


def memory() -> dict[str, int]:
    """/proc/meminfo in bytes."""
    with open("/proc/meminfo", encoding="ascii") as file:
        return {line.split(":")[0]: int(line.split()[1]) * 1024 for line in file}
