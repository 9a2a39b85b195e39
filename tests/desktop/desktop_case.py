# SPDX-License-Identifier: Apache-2.0
"""What the desktop tests share: one desktop per test class, and the instrument in a home of its own.

OSTREL_PROGRAM names the built program.
"""
import json
import os
import shutil
import signal
import subprocess
import tempfile
import unittest
from typing import Any

import bus
import screen
from private_desktop import GENEROUS, TRAY_HEIGHT, PrivateDesktop

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SETTINGS_FILE = ".config/zol-mini-apps/dev.quent.ostrel.json"


class DesktopCase(unittest.TestCase):
    """A test class on one desktop. Each program that a test starts has to end well when it is asked to."""
    DESKTOP: dict[str, Any] = {}
    desktop: PrivateDesktop
    environ: dict[str, str] = {}  # of each program beyond the desktop's
    home: str  # of the program that was started last
    collectors: str  # beside the copy of the program that was started last

    @classmethod
    def setUpClass(cls) -> None:
        cls.desktop = PrivateDesktop(**cls.DESKTOP).__enter__()
        cls.addClassCleanup(cls.desktop.close)

    def start(self, *arguments: str, **settings: Any) -> subprocess.Popen:
        """Starts the instrument in a fresh home that holds the given settings; a name without a dot lacks
        the common prefix."""
        self.home = home = tempfile.mkdtemp(dir=self.desktop.folder)
        if settings:
            os.makedirs(os.path.dirname(f"{home}/{SETTINGS_FILE}"), mode=0o700)
            with open(f"{home}/{SETTINGS_FILE}", "w", encoding="utf-8") as file:
                json.dump({key if "." in key else f"dev.quent.ostrel.{key}": value
                           for key, value in settings.items()}, file)
        return self.start_again(*arguments)

    def start_again(self, *arguments: str) -> subprocess.Popen:
        """Starts the instrument in the home of the one that was started last."""
        return self.start_program(os.path.abspath(os.environ["OSTREL_PROGRAM"]), *arguments)

    def start_program(self, *command: str) -> subprocess.Popen:
        """Starts a program as the instrument, in the present home."""
        environ = {**self.desktop.home_environment(self.home), **self.environ}
        process = self.desktop.start("ostrel", list(command), environ)
        self.addCleanup(self.end, process)
        return process

    def start_with_scripts(self, scripts: dict[str, str], home: str) -> subprocess.Popen:
        """Starts a copy of the program beside which some scripts are other ones, in a home that is there.
        Children get a fixed search path, so what stands in for a tool is told to a script by its main."""
        self.home = home
        return self.start_program(self.copy_with_scripts(scripts))

    def copy_with_scripts(self, scripts: dict[str, str]) -> str:
        """A copy of the program beside which some scripts are other ones."""
        app = tempfile.mkdtemp(dir=self.desktop.folder)
        built = os.path.dirname(os.path.abspath(os.environ["OSTREL_PROGRAM"]))
        collectors = f"{app}/share/ostrel/collectors"
        os.makedirs(collectors)
        shutil.copy(os.environ["OSTREL_PROGRAM"], f"{app}/ostrel")
        os.symlink(os.path.realpath(f"{built}/share/ostrel/icons"), f"{app}/share/ostrel/icons")
        for name in {"ostrel_lib", "ostrel.py"} - scripts.keys():
            os.symlink(f"{SOURCE}/collectors/{name}", f"{collectors}/{name}")
        for name, text in scripts.items():
            with open(f"{collectors}/{name}", "w", encoding="utf-8") as file:
                file.write(text)
        self.collectors = collectors
        return f"{app}/ostrel"

    def end(self, process: subprocess.Popen) -> None:
        """Asks the instrument to end and checks that it does, without a fault."""
        if process.poll() is None:
            process.send_signal(signal.SIGTERM)
        code = process.wait(GENEROUS)
        self.assertEqual(code, 0, f"exit code at its end; it printed: {self.desktop.log('ostrel')}")

    def wait_for(self, what: str, condition, limit: float = GENEROUS):
        """Waits on the desktop; see PrivateDesktop.wait_for."""
        return self.desktop.wait_for(what, condition, limit, program="ostrel")

    def item(self, process: subprocess.Popen) -> bus.Item:
        """Waits until the instrument's status item is registered."""
        return self.wait_for("registered item", lambda: bus.item_of(self.desktop.env, process.pid))

    def icon_place(self) -> tuple[int, int]:
        """The middle of the only icon, at the right end of the tray's strip, once it is drawn there."""
        width = self.desktop.size[0]
        box = screen.Box(width - TRAY_HEIGHT, 2, TRAY_HEIGHT - 2, TRAY_HEIGHT - 4)
        self.wait_for("drawn icon", lambda: len(screen.colours(screen.picture(self.desktop, box))) > 3)
        return width - TRAY_HEIGHT // 2, TRAY_HEIGHT // 2

    def panel(self) -> int:
        """Waits until the panel is on the screen, and gives its window."""
        return self.wait_for("panel on the screen", lambda: screen.panel_window(self.desktop))

    def wait_for_keyboard(self) -> None:
        """Waits until the panel gets the keys."""
        window = self.panel()
        self.wait_for("panel with the keyboard", lambda: screen.has_keyboard(self.desktop, window))

    def close_panel(self) -> None:
        """Presses Escape in the panel and waits until it is off the screen."""
        self.wait_for_keyboard()
        screen.press(self.desktop, "Escape")
        self.panel_has_gone()

    def closed_by(self, reason: str) -> None:
        """Waits until that is the reason kept for the last close: it is stored once the panel is off the
        screen."""
        self.wait_for(f"close by {reason}",
                      lambda: self.settings().get("ostrel.lastClose", "").split()[:1] == [reason])

    def settings(self) -> dict[str, Any]:
        """What the instrument keeps in its settings."""
        with open(f"{self.home}/{SETTINGS_FILE}", encoding="utf-8") as file:
            return json.load(file)

    def route(self, *urls: str) -> None:
        """Opens addresses as the desktop does, and waits until the instrument has them."""
        method = f"{bus.OPEN}.Open"
        self.assertEqual((), bus.call(self.desktop.env, *bus.APPLICATION, method, str(list(urls)), "{}"))

    def visible_windows(self) -> list[int]:
        """The instrument's windows that are on the screen: panel, menu, tool tip, docked item."""
        found = self.desktop.run(["xdotool", "search", "--onlyvisible", "--class", "^ostrel$"]).stdout
        return [int(window) for window in found.split()]

    def panel_has_gone(self) -> None:
        """Waits until the panel is off the screen."""
        self.wait_for("panel off the screen", lambda: not screen.panel_window(self.desktop))


class DesktopsCase(DesktopCase):
    """Its tests go through several desktops."""

    @classmethod
    def setUpClass(cls) -> None:
        pass

    def move_to(self, **what: Any) -> None:
        """Leaves the desktop, with all that runs on it, for a fresh one of this kind."""
        self.doCleanups()
        type(self).desktop = PrivateDesktop(**what).__enter__()
        self.addCleanup(self.desktop.close)
