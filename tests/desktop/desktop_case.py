# SPDX-License-Identifier: Apache-2.0
"""What the desktop tests share: one desktop per test class, and the instrument in a home of its own.

OSTREL_PROGRAM names the built program.
"""
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any

import bus
import screen
from private_desktop import GENEROUS, TRAY_HEIGHT, PrivateDesktop

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))
sys.path.append(f"{SOURCE}/tests/collectors")  # whose stand-ins serve here too
ACCESSIBLE = f"{HERE}/accessible.py"
SETTINGS_FILE = ".config/zol-mini-apps/dev.quent.ostrel.json"
SUPPORT = "Library/Application Support"
POINTS = f"{SUPPORT}/ostrel/dashboard-history.jsonl"
SAMPLES = f"{SUPPORT}/ostrel/mem-history.jsonl"
RECEIPTS = f"{SUPPORT}/Ostrel/receipts"
PANEL_SIZE = (760, 700)  # in points


def script_with(module: str, places: str) -> str:
    """The text of a script whose tools lie in other places, told as Python."""
    return f"""
import os, sys
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from ostrel_lib.{module} import main
from ostrel_lib.places import Places
places = {places}
places.host = "box"
sys.exit(main(sys.argv, places))
"""


def write_tool(path: str, text: str) -> None:
    Path(path).write_text(text, "utf-8")
    os.chmod(path, 0o755)


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
            Path(home, SETTINGS_FILE).write_text(json.dumps({
                key if "." in key else f"dev.quent.ostrel.{key}": value for key, value in settings.items()}))
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
        app = tempfile.mkdtemp(dir=self.desktop.folder)
        built = os.path.dirname(os.path.abspath(os.environ["OSTREL_PROGRAM"]))
        collectors = f"{app}/share/ostrel/collectors"
        os.makedirs(collectors)
        shutil.copy(os.environ["OSTREL_PROGRAM"], f"{app}/ostrel")
        os.symlink(os.path.realpath(f"{built}/share/ostrel/icons"), f"{app}/share/ostrel/icons")
        for name in {"ostrel_lib", "ostrel.py"} - scripts.keys():
            os.symlink(f"{SOURCE}/collectors/{name}", f"{collectors}/{name}")
        for name, text in scripts.items():
            Path(collectors, name).write_text(text, "utf-8")
        self.collectors = collectors
        return f"{app}/ostrel"

    def run_program(self, *arguments: str) -> subprocess.CompletedProcess:
        """One run of the program to its end, in the present home."""
        return subprocess.run([os.path.abspath(os.environ["OSTREL_PROGRAM"]), *arguments], check=False,
                              env=self.desktop.home_environment(self.home), capture_output=True, timeout=20)

    def end(self, process: subprocess.Popen) -> None:
        """Asks the instrument to end and checks that it does, without a fault."""
        if process.poll() is None:
            process.send_signal(signal.SIGTERM)
        code = process.wait(GENEROUS)
        self.assertEqual(code, 0, f"exit code at its end; it printed: {self.desktop.log('ostrel')}")

    def wait_for(self, what: str, condition, limit: float = GENEROUS):
        return self.desktop.wait_for(what, condition, limit, program="ostrel")

    def item(self, process: subprocess.Popen) -> bus.Item:
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
        window = self.panel()
        self.wait_for("panel with the keyboard", lambda: screen.has_keyboard(self.desktop, window))

    def close_panel(self) -> None:
        self.wait_for_keyboard()
        screen.press(self.desktop, "Escape")
        self.panel_has_gone()

    def closed_by(self, reason: str) -> None:
        """Waits until that is the reason kept for the last close: it is stored once the panel is off the
        screen."""
        self.wait_for(f"close by {reason}",
                      lambda: self.settings().get("ostrel.lastClose", "").split()[:1] == [reason])

    def stored(self, key: str) -> Any:
        """One choice; a name without a dot lacks the common prefix."""
        return self.settings().get(key if "." in key else f"dev.quent.ostrel.{key}")

    def settings(self) -> dict[str, Any]:
        return json.loads(Path(self.home, SETTINGS_FILE).read_text("utf-8"))

    def route(self, *urls: str) -> None:
        """Opens addresses as the desktop does, and waits until the instrument has them."""
        method = f"{bus.OPEN}.Open"
        self.assertEqual((), bus.call(self.desktop.env, *bus.APPLICATION, method, str(list(urls)), "{}"))

    def visible_windows(self) -> list[int]:
        """The instrument's windows that are on the screen: panel, menu, tool tip, docked item."""
        found = self.desktop.run(["xdotool", "search", "--onlyvisible", "--class", "^ostrel$"]).stdout
        return [int(window) for window in found.split()]

    def panel_has_gone(self) -> None:
        self.wait_for("panel off the screen", lambda: not screen.panel_window(self.desktop))


class PanelCase(DesktopCase):
    """A test class that sees the panel as a screen reader does."""
    DESKTOP = {"accessible": True}

    def window_on_screen(self) -> int:
        """Waits until the panel has its full size, checks that all of it is drawn inside the free area, and
        gives its window."""
        window = self.panel()
        size = tuple(side * self.desktop.scale for side in PANEL_SIZE)
        self.wait_for("full size", lambda: (screen.window_box(self.desktop, window) or ())[2:] == size)
        box = screen.window_box(self.desktop, window)
        left, top, width, height = self.desktop.work_area()
        self.assertTrue(left <= box.x and box.x + box.width <= left + width, box)
        self.assertTrue(top <= box.y and box.y + box.height <= top + height, box)

        def drawn() -> bool:
            found = screen.colours(screen.picture(self.desktop, box))
            background = max(found.values()) / (box.width * box.height)
            return len(found) > 50 and 0.3 < background < 0.98

        self.wait_for("drawn panel", drawn)
        return window

    def names(self, process: subprocess.Popen) -> dict[str, bool]:
        """What shows, by name, and whether it is the selected one of its kind."""
        told = self.desktop.run([sys.executable, ACCESSIBLE, "names", str(process.pid)]).stdout
        return dict(json.loads(told or "null") or [])

    def said(self, process: subprocess.Popen, pattern: str) -> str:
        """Waits until a view's name matches, and gives that name."""
        whole = re.compile(pattern, re.DOTALL)
        return self.wait_for(pattern, lambda: next(filter(whole.fullmatch, self.names(process)), None))

    def press(self, process: subprocess.Popen, name: str, within: str = "") -> None:
        """Presses the button of that name as a screen reader does, once it is there."""
        self.act("press", process, name, within)

    def typed(self, process: subprocess.Popen, field: str) -> str:
        told = self.desktop.run([sys.executable, ACCESSIBLE, "typed", str(process.pid), field]).stdout
        return json.loads(told or '""')

    def type(self, process: subprocess.Popen, field: str, text: str) -> None:
        """Gives the keyboard to a text field, types at its end, and waits until it is there."""
        before = self.typed(process, field)
        self.act("focus", process, field)
        screen.press(self.desktop, "ctrl+End")
        self.desktop.run(["xdotool", "type", "--delay", "1", text])
        self.wait_for(f"{text} in {field}", lambda: self.typed(process, field) == before + text)

    def act(self, verb: str, process: subprocess.Popen, *names: str) -> None:
        """Lets the screen reader do something in a process, once it can."""
        command = [sys.executable, ACCESSIBLE, verb, str(process.pid), *filter(None, names)]
        self.wait_for(f"{verb} {names}", lambda: self.desktop.run(command).returncode == 0)

    def go_to(self, key: str) -> None:
        """Goes to a tab, once the panel has the keyboard: after a question it comes back in a moment."""
        self.wait_for_keyboard()
        screen.press(self.desktop, key)


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
