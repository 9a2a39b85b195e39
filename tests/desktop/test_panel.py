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
NAMES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "accessible_names.py")


class PanelCase(DesktopCase):
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


class Panel(PanelCase):
    DESKTOP = {"accessible": True}

    def test_the_panel_is_beside_the_tray_and_out_of_task_lists_at_its_first_and_later_openings(self):
        process = self.start()
        self.check_task_lists(self.window_on_screen())
        self.close_panel()
        self.assertTrue(bus.press_row(self.desktop.env, self.item(process), "show panel"))
        self.check_task_lists(self.panel())

    def check_task_lists(self, window: int) -> None:
        """Waits until neither taskbar nor pager is to list the window."""
        wanted = {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}
        self.wait_for("window out of task lists", lambda: wanted <= set(
            screen.window_property(self.desktop, window, "_NET_WM_STATE").split(", ")), limit=5)

    def test_key_3_shows_the_machines_processes_to_a_screen_reader_and_escape_closes_the_panel(self):
        process = self.start()
        self.wait_for_keyboard()
        screen.press(self.desktop, "3")

        def running() -> bool:
            told = self.desktop.run([sys.executable, NAMES, str(process.pid)]).stdout
            names = json.loads(told or "[]")
            pids = [re.fullmatch(r"(?:pid )?(\d+)", name) for name, _ in names]
            alive = sum(os.path.exists(f"/proc/{pid[1]}/stat") for pid in pids if pid)
            return ["processes", True] in names and alive >= 3

        self.wait_for("rows of running processes", running)
        self.close_panel()
        self.assertIsNone(process.poll())

    def test_a_click_on_the_figure_scatters_it_and_it_falls_together_to_the_same_picture(self):
        # Without the run that it plays when it appears, it is at rest from its first picture on.
        self.start(**{"ostrel.motion": False})
        left, top, *_ = screen.window_box(self.desktop, self.window_on_screen())
        figure = screen.Box(left + 16, top + 16, 40, 40)
        signal = (0xdb, 0x30, 0x3d)

        def shown() -> screen.Picture:
            return screen.picture(self.desktop, figure)

        def core() -> int:
            return screen.colours(shown())[signal]

        self.wait_for("assembled figure", lambda: core() > 20)
        still = shown()
        screen.click(self.desktop, left + 36, top + 36)
        self.wait_for("scattered figure", lambda: not core())
        screen.move_pointer(self.desktop, left + 400, top + 400)
        self.wait_for("the same figure", lambda: shown() == still)
        self.close_panel()


class PanelAtScaleTwo(PanelCase):
    DESKTOP = {"size": (1920, 1560), "scale": 2}

    def test_the_panel_is_drawn_at_twice_the_size_on_a_dense_screen(self):
        self.start()
        self.window_on_screen()
