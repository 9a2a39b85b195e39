# SPDX-License-Identifier: Apache-2.0
"""The panel as a real window: where it is, what it shows, and what the keys do."""
import json
import os
import re
import sys
from pathlib import Path

import bus
import screen
from desktop_case import ACCESSIBLE, POINTS, PanelCase


class Panel(PanelCase):
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

    def test_everything_in_the_frame_works_from_the_keyboard_and_for_a_screen_reader(self):
        process = self.start()
        self.wait_for_keyboard()
        heard = self.desktop.start("reader", [sys.executable, ACCESSIBLE, "listen", str(process.pid)])
        self.addCleanup(heard.kill)
        self.wait_for("screen reader", lambda: "listening" in self.desktop.log("reader"))

        screen.press(self.desktop, "3")
        self.wait_for("word of the new tab", lambda: "processes view · key 3 1" in self.desktop.log("reader"))
        self.assertIn("dashboard view · key 1 0", self.desktop.log("reader"))

        def running() -> bool:
            pids = [re.fullmatch(r"(?:pid )?(\d+)", name) for name in self.names(process)]
            return sum(os.path.exists(f"/proc/{pid[1]}/stat") for pid in pids if pid) >= 3

        self.wait_for("rows of running processes", running)
        screen.press(self.desktop, "9")
        self.said(process, "protected processes · this app never stops these")
        names = self.names(process)
        self.assertTrue(names["settings"])
        self.assertFalse([name for name in names if names[name] and " view · key " in name], "no tab")
        screen.press(self.desktop, "1")
        self.wait_for("a tab again", lambda: self.names(process).get("dashboard view · key 1") is True)

        help_box = "panel keys help – press escape or click to close"
        screen.press(self.desktop, "slash")
        self.wait_for("help", lambda: help_box in self.names(process))
        screen.press(self.desktop, "Escape")
        self.wait_for("no help", lambda: help_box not in self.names(process))
        self.panel()
        screen.press(self.desktop, "Escape")
        self.panel_has_gone()
        self.closed_by("esc")
        self.assertIsNone(process.poll())

    def test_pin_theme_close_button_and_a_press_outside_do_what_they_say(self):
        process = self.start()
        box = screen.window_box(self.desktop, self.window_on_screen())
        self.wait_for_keyboard()
        outside = box.x - 60, box.y + 300
        screen.click(self.desktop, box.x + 300, box.y + 400)
        self.press(process, "pin panel open")
        self.wait_for("pin", lambda: "unpin panel" in self.names(process))
        screen.click(self.desktop, *outside)
        self.press(process, "unpin panel")
        self.wait_for("no pin", lambda: "pin panel open" in self.names(process))
        self.assertEqual(screen.panel_window(self.desktop), self.panel(), "it stayed through both presses")
        screen.click(self.desktop, *outside)
        self.panel_has_gone()
        self.closed_by("outside-click")

        self.assertTrue(bus.press_row(self.desktop.env, self.item(process), "show panel"))
        # By now the item has its place, and the panel hangs from it.
        box = screen.window_box(self.desktop, self.window_on_screen())
        self.wait_for_keyboard()
        ground = screen.Box(box.x + 2, box.y + 350, 1, 1)
        for name, color in (("white theme, switch to black", b"\x20\x21\x24"),
                            ("black theme, switch to white", b"\xff\xff\xff")):
            self.press(process, name)
            self.wait_for(name, lambda: screen.picture(self.desktop, ground).pixels == color)
            self.wait_for_keyboard()
        self.press(process, "close panel")
        self.panel_has_gone()
        self.closed_by("x")

    def test_live_labels_follow_every_tick_and_the_history_outlives_a_restart(self):
        process = self.start(refresh="fast")
        self.wait_for("cards", lambda: {"MEMORY", "server · not checked"} <= set(self.names(process)))
        followed = self.desktop.start("reader", [sys.executable, ACCESSIBLE, "follow", str(process.pid)])
        self.addCleanup(followed.kill)

        def every_tick_told() -> bool:
            """Whether two ages of a snapshot that followed each other are one period of 3 s apart, to within
            what rounding does."""
            told = re.findall(r"^collector snapshot · (\d+)s ago$", self.desktop.log("reader"), re.MULTILINE)
            ages = [int(age) for age in told]
            return any(0 < later - age <= 4 for age, later in zip(ages, ages[1:]))

        self.wait_for("ages of a snapshot, tick by tick", every_tick_told)
        self.wait_for("the chart's figures", lambda: re.search(
            r"(?m)^now: cpu \d+% · swap \d+% · load [\d.]+ ", self.desktop.log("reader")))
        screen.press(self.desktop, "2")
        self.wait_for("system tab", lambda: "system · every row names its source" in self.names(process))
        self.assertIn("src: ProcessInfo · native", self.names(process))
        self.end(process)

        history = Path(self.home, POINTS)
        points = list(map(json.loads, history.read_text("ascii").splitlines()))
        # As if it had been started again some minutes later.
        history.write_text("".join(json.dumps({**point, "m": point["m"] - 5}) + "\n" for point in points))
        again = self.start_again()
        restored = len(points)
        for title in ("CPU ACTIVITY · 2 H", "SWAP RESIDENCY · 2 H"):
            name = re.compile(rf"{title} · \d+ minutes · {restored} restored, [1-9]\d* this run")
            self.wait_for(title, lambda name=name: any(map(name.fullmatch, self.names(again))))

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
