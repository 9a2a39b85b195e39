# SPDX-License-Identifier: Apache-2.0
"""The panel as a real window: where it is, what it shows, and what the keys do."""
import json
import os
import re
import sys
import unittest

import bus
import screen
from desktop_case import DesktopCase

PANEL_SIZE = (760, 700)


class PanelCase(DesktopCase):
    def window_on_screen(self) -> int:
        """Opens the panel by a plain start, checks that all of it is drawn inside the free area, and gives
        its window."""
        self.instrument = self.start()
        window = self.panel()
        scale = self.desktop.scale
        size = tuple(round(side * scale) for side in PANEL_SIZE)
        box = self.wait_for("panel of its full size", lambda: next(
            (box for box in [screen.window_box(self.desktop, window)] if box and box[2:] == size), None))
        area = screen.Box(*self.desktop.work_area())
        self.assertTrue(area.x <= box.x and box.x + box.width <= area.x + area.width, f"{box} in {area}")
        self.assertTrue(area.y <= box.y and box.y + box.height <= area.y + area.height, f"{box} in {area}")

        def drawn() -> bool:
            found = screen.colours(screen.picture(self.desktop, box))
            background = max(found.values()) / (box.width * box.height)
            return len(found) > 50 and 0.3 < background < 0.98

        self.wait_for("drawn panel", drawn)
        return window


class Panel(PanelCase):
    DESKTOP = {"accessible": True}

    def names(self, instrument) -> list:
        """What a screen reader finds on the panel: role, name and whether it is checked."""
        script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "accessible_names.py")
        told = self.desktop.run([sys.executable, script, str(instrument.process.pid)])
        return json.loads(told.stdout) if told.returncode == 0 else []

    def test_the_panel_is_beside_the_tray_and_out_of_task_lists_at_its_first_and_later_openings(self):
        window = self.window_on_screen()
        self.check_task_lists(window)
        self.focused_panel()
        screen.press(self.desktop, "Escape")
        self.panel_has_gone()
        self.assertTrue(bus.press_row(self.desktop.env, self.item(self.instrument), "show panel"))
        self.check_task_lists(self.panel())

    def check_task_lists(self, window: int) -> None:
        """Waits until neither taskbar nor pager is to list the window."""
        wanted = {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}
        self.wait_for("window out of task lists", lambda: wanted <= set(
            screen.window_property(self.desktop, window, "_NET_WM_STATE").split(", ")), limit=5)

    def test_key_3_shows_the_machines_processes_and_escape_closes_the_panel(self):
        instrument = self.start()
        self.focused_panel()
        screen.press(self.desktop, "3")

        def running() -> bool:
            shown = [re.fullmatch(r"(?:pid )?(\d+)", name) for _, name, _ in self.names(instrument)]
            return sum(os.path.exists(f"/proc/{found[1]}/stat") for found in shown if found) >= 3

        self.wait_for("rows of running processes", running)
        self.assertIn(["processes", True], [[name, checked] for _, name, checked in self.names(instrument)])
        screen.press(self.desktop, "Escape")
        self.panel_has_gone()
        self.assertIsNone(instrument.process.poll())


class PanelAtScaleTwo(PanelCase):
    DESKTOP = {"size": (1920, 1560), "scale": 2}

    def test_the_panel_is_drawn_at_twice_the_size_on_a_dense_screen(self):
        self.window_on_screen()


if __name__ == "__main__":
    unittest.main()
