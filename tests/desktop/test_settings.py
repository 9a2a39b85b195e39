# SPDX-License-Identifier: Apache-2.0
"""Every control of the settings, pressed as a screen reader does, and what is kept of it over a restart."""
import subprocess
import sys
import unittest

import bus
import screen
from test_panel import ACCESSIBLE, PanelCase

# What is pressed one after the other, and what is stored then.
FIRST = (
    ("mark + value", "mem", "cpu", "load", "mcp", "swap", "value", "keep panel open", "black",
     "hotkey choice · ⌃⌥m", "hotkey choice · ⌥⇧m", "hotkey choice · ⌥⌘p", "fast", "calm",
     "voxel motion · on", "pressure hints · on"),
    {"barmode": "value", "barparts": ["load", "mcp", "mem"], "pinned": True, "theme": "dark",
     "hotkey": "35:1572864:p", "refresh": "calm", "ostrel.motion": False, "ostrel.hints": False})
THEN = (
    ("mark", "mark + value", "unpin panel", "white", "default ⌥⌘m", "normal", "voxel motion · off",
     "pressure hints · off", "hidden", "keep the mark"),
    {"barmode": "mark + value", "barparts": ["load", "mcp", "mem"], "pinned": False, "theme": "light",
     "hotkey": "46:1572864:m", "refresh": "normal", "ostrel.motion": True, "ostrel.hints": True})


class Settings(PanelCase):
    DESKTOP = {"accessible": True}

    def stored(self, key: str):
        return self.settings().get(key if "." in key else f"dev.quent.ostrel.{key}")

    def press_all(self, process: subprocess.Popen, controls: tuple[str, ...], stored: dict) -> None:
        """Presses one control after the other, and checks what is stored then."""
        done = self.desktop.run([sys.executable, ACCESSIBLE, "presses", str(process.pid), *controls])
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        self.assertEqual({key: self.stored(key) for key in stored}, stored)

    def open_settings(self, process: subprocess.Popen) -> None:
        self.item(process)
        self.wait_for_keyboard()
        screen.press(self.desktop, "9")
        self.said(process, "make the menu bar yours")

    def test_every_choice_is_stored_at_once_and_shown_after_a_restart(self):
        process = self.start()
        self.open_settings(process)
        self.press_all(process, *FIRST)
        self.end(process)

        process = self.start_again()
        self.open_settings(process)
        names = self.names(process)
        for control, on in (("value", True), ("mark", False), ("unpin panel", True), ("black", True),
                            ("hotkey choice · ⌥⌘p", True), ("hotkey choice · ⌥⌘m", False), ("calm", True),
                            ("voxel motion · off", False), ("pressure hints · off", False), ("mem", True),
                            ("cpu", False)):
            self.assertEqual(names.get(control), on, control)
        for text in ("the value carries: mem + load + mcp", "panel: ⌥⌘p · opens and closes from anywhere",
                     "native readings every 10s · process details every 30s while open · server checks run "
                     "on demand", "empty · no automatic hints recorded"):
            self.assertIn(text, names)
        self.assertTrue(any(name.startswith("menu bar preview · value · mem ") for name in names))

        self.press_all(process, *THEN)
        self.press(process, "preview companion")
        self.panel_has_gone()
        self.closed_by("preview-companion")
        self.wait_for("sample card", self.visible_windows)
        self.route("ostrel://show")
        self.press_all(process, ("pressure hints · on",), {"ostrel.hints": False})
        self.wait_for("no card", lambda: self.visible_windows() == [screen.panel_window(self.desktop)])

    def test_hidden_asks_first_and_the_hotkey_is_the_way_back(self):
        process = self.start()
        self.open_settings(process)
        self.press(process, "hidden")
        self.said(process, r"hidden removes OSTREL from the menu bar\. ⌥⌘m still opens the panel.*")
        self.assertEqual(self.stored("barmode"), "mark")
        self.press(process, "keep the mark")
        self.wait_for("no question", lambda: "confirm hidden" not in self.names(process))
        self.press(process, "hidden")
        self.press_all(process, ("confirm hidden",), {"barmode": "hidden"})
        self.said(process, "hidden · no item in the bar")
        self.wait_for("no item", lambda: not bus.item_of(self.desktop.env, process.pid))
        self.close_panel()
        screen.press(self.desktop, "alt+super+m")
        self.wait_for_keyboard()
        self.press_all(process, ("mark",), {"barmode": "mark"})
        self.wait_for("item", lambda: bus.item_of(self.desktop.env, process.pid))


if __name__ == "__main__":
    unittest.main()
