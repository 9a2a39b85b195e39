# SPDX-License-Identifier: Apache-2.0
"""The panel's window among others: its corners and its shadow, two displays, and many openings."""
import os
import re
from pathlib import Path

import bus
import screen
from desktop_case import PANEL_SIZE, DesktopsCase
from private_desktop import WINDOW_MANAGERS

DARK = b"\x20\x21\x24"  # the panel's ground in the dark theme
CORNER_GAP = 24  # from the display's right edge, in points
STRIP = 28  # of the tray, in pixels

SMALL, LARGE = (1440, 900), (2048, 1536)


class Windows(DesktopsCase):
    def start_below(self) -> int:
        """Opens a window that covers most of the screen, takes the keyboard and tells its presses."""
        self.desktop.start("below", ["xev", "-geometry", "1400x820+0+40", "-event", "button"])
        find = ["xdotool", "search", "--onlyvisible", "--name", "^Event Tester$"]
        window = int(self.wait_for("window below", lambda: self.desktop.run(find).stdout.strip()))
        screen.click(self.desktop, 200, 300)
        self.wait_for("window with the keyboard", lambda: screen.active_window(self.desktop) == window)
        self.wait_for("its press", lambda: self.presses_below() == 1)
        return window

    def presses_below(self) -> int:
        return self.desktop.log("below").count("ButtonPress")

    def test_the_ground_shows_in_the_corners_and_what_lies_below_gets_the_presses_around_the_panel(self):
        for manager in WINDOW_MANAGERS:
            with self.subTest(manager=manager):
                self.move_to(manager=manager)
                self.item(self.start("--background", theme="dark", pinned=True,
                                     **{"zol.shell.pin-migrated": True}))
                self.start_below()
                self.route("ostrel://show")
                self.wait_for_keyboard()
                window = self.panel()
                extents = screen.window_property(self.desktop, window, "_GTK_FRAME_EXTENTS")
                around = int(extents.split(",")[0]) if manager == "xfwm4" else 0
                outer = screen.window_box(self.desktop, window)
                left, top = outer.x + around, outer.y + around
                right, bottom = left + PANEL_SIZE[0] - 1, top + PANEL_SIZE[1] - 1
                self.assertEqual(outer[2:], (PANEL_SIZE[0] + around * 2, PANEL_SIZE[1] + around * 2))
                self.wait_for("drawn panel", lambda: self.pixel(left + 2, top + 350) == DARK)
                for corner in ((left, top), (right, top), (left, bottom), (right, bottom)):
                    self.assertNotEqual(self.pixel(*corner), DARK, corner)
                for place in ((left + 300, top + 400), (left - 6, top + 300), (left, bottom)):
                    screen.click(self.desktop, *place)
                self.wait_for("presses beside the panel", lambda: self.presses_below() >= 3)
                self.assertEqual(self.presses_below(), 3, "the press into the panel went through")
                self.assertEqual(screen.panel_window(self.desktop), window)

    def pixel(self, x: int, y: int) -> bytes:
        return screen.picture(self.desktop, screen.Box(x, y, 1, 1)).pixels

    def test_the_panel_opens_on_the_pointers_display_at_its_corner_where_the_item_is_on_the_other(self):
        for sizes, scales in (((SMALL, LARGE), (1, 2)), ((LARGE, SMALL), (2, 1))):
            with self.subTest(scales=scales):
                first, second = (0, 0, *sizes[0]), (sizes[0][0], 0, *sizes[1])
                self.move_to(size=(first[2] + second[2], LARGE[1]), displays=(first, second))
                # Behind the tray's start: it isn't the tray that is told.
                self.desktop.env["QT_SCREEN_SCALE_FACTORS"] = ";".join(map(str, scales))
                self.item(self.start("--background"))
                for display, scale, kept in ((first, scales[0], STRIP), (second, scales[1], 0)):
                    left, top, width, height = display
                    screen.move_pointer(self.desktop, left + width // 3, top + height // 2)
                    self.route("ostrel://show")
                    self.wait_for_keyboard()
                    box = screen.window_box(self.desktop, self.panel())
                    self.assertEqual(box[2:], (PANEL_SIZE[0] * scale, PANEL_SIZE[1] * scale))
                    gap = left + width - box.x - box.width
                    self.assertEqual(gap, 0 if kept else CORNER_GAP * scale, box)
                    self.assertTrue(0 <= box.y - top - kept <= 4 * scale, box)
                    self.close_panel()

    def test_inside_a_wayland_desktop_the_panel_closes_when_another_window_gets_the_keyboard(self):
        for name, reason in (("screen0", "route-toggle"), ("XWAYLAND0", "system-transient")):
            with self.subTest(display=name):
                self.move_to()
                # The name that the server inside a Wayland desktop gives its display.
                self.desktop.run(["xrandr", "--setmonitor", name, "1440/360x900/225+0+0", "screen"])
                self.item(self.start("--background"))
                below = self.start_below()
                self.route("ostrel://show")
                self.wait_for_keyboard()
                # More than once, since a panel that has just come asks for the keyboard a second time.
                self.wait_for("keyboard elsewhere", lambda: self.activates(below))
                if reason == "route-toggle":
                    self.route("ostrel://toggle")
                self.panel_has_gone()
                self.closed_by(reason)

    def activates(self, window: int) -> bool:
        self.desktop.run(["xdotool", "windowactivate", str(window)])
        return screen.active_window(self.desktop) == window

    def test_a_hundred_openings_leave_nothing_behind(self):
        """With OSTREL_GROWTH=full it is a thousand."""
        full = os.environ.get("OSTREL_GROWTH") == "full"
        self.move_to()
        process = self.start("--background")
        item = self.item(process)
        # By then the allocator has its arenas, and the toolkit has most of its glyphs.
        self.open_and_close(500 if full else 15)
        before = self.held(process.pid, item)
        self.open_and_close(1000 if full else 100)
        slack = {"KiB": 1024, "threads": 2}  # the pool may still grow by a thread that reads
        for name, limit in before.items():
            self.wait_for(f"no more {name} than {limit}",
                          lambda: self.held(process.pid, item)[name] <= limit + slack.get(name, 0))

    def open_and_close(self, times: int) -> None:
        for _ in range(times):
            self.route("ostrel://toggle")
            self.panel()
            self.route("ostrel://toggle")
        self.panel_has_gone()

    def held(self, pid: int, item: bus.Item) -> dict[str, int]:
        """How much the process has of what could pile up."""
        rollup = Path(f"/proc/{pid}/smaps_rollup").read_text("ascii")
        memory = int(re.search(r"Private_Dirty: *(\d+)", rollup)[1])
        if "libasan" in Path(f"/proc/{pid}/maps").read_text("utf-8"):
            memory = 0  # the sanitizer keeps what the program gives back
        children = Path(f"/proc/{pid}/task/{pid}/children").read_text("ascii").split()
        windows = re.findall(r"0x[0-9a-f]+ ", self.desktop.run(["xwininfo", "-root", "-tree"]).stdout)
        stats = bus.connection_stats(self.desktop.env, item.service)
        return {"KiB": memory, "children": len(children), "names on the bus": stats["BusNames"],
                "rules of the bus": stats["MatchRules"], "descriptors": len(os.listdir(f"/proc/{pid}/fd")),
                "threads": len(os.listdir(f"/proc/{pid}/task")), "windows": len(windows)}
