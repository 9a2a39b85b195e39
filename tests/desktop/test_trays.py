# SPDX-License-Identifier: Apache-2.0
"""The bar item on each kind of tray: it appears, is pressed, shows values, and comes back with its tray."""
import itertools
import json
import subprocess
from typing import Optional

import bus
import screen
from desktop_case import DesktopsCase
from private_desktop import DesktopError
from trays import HEIGHT, TRAYS

MENU_HEIGHT = 60  # lower than any menu, higher than a tool tip or the pointer; in pixels
TIP_PITCH = 6.6  # of a tool tip's characters, in pixels
TIP_EDGES = 8  # at both ends of its text together
ALONE = [name for name, tray in TRAYS.items() if tray.commands]


class Trays(DesktopsCase):
    """Each test goes through the trays, each on a desktop of its own."""

    def on(self, tray: str) -> None:
        """Moves to a fresh desktop with that tray."""
        self.move_to(tray=tray)

    def strip(self) -> screen.Picture:
        """What the tray's strip shows."""
        top = 0 if self.desktop.tray.top else self.desktop.size[1] - HEIGHT
        return screen.picture(self.desktop, screen.Box(0, top, self.desktop.size[0], HEIGHT))

    def shown(self, empty: screen.Picture) -> Optional[screen.Box]:
        """Where on the screen the strip differs from the empty one; None for too little to be an icon."""
        now = self.strip()
        size = range(0, len(now.pixels), 3)
        places = [divmod(at // 3, now.width) for at in size
                  if now.pixels[at:at + 3] != empty.pixels[at:at + 3]]
        columns, rows = [x for _, x in places], [y for y, _ in places]
        if min(len(set(columns)), len(set(rows))) < HEIGHT // 4:
            return None  # a line at the edge of a panel that has just come up
        top = 0 if self.desktop.tray.top else self.desktop.size[1] - HEIGHT
        return screen.Box(min(columns), top + min(rows), max(columns) - min(columns) + 1,
                          max(rows) - min(rows) + 1)

    def settled(self, what: str, look) -> object:
        """Waits until a look gives something, and the same twice."""
        looks: list[object] = [None]

        def same() -> object:
            looks.append(look())
            return looks[-1] if looks[-1] == looks[-2] else None

        return self.wait_for(what, same)

    def empty_strip(self) -> screen.Picture:
        """The strip before there is an item."""
        return self.settled("drawn strip", self.strip)

    def appears(self, empty: screen.Picture) -> screen.Box:
        return self.settled("item on the strip", lambda: self.shown(empty))

    def press(self, box: screen.Box, button: int = 1) -> None:
        """Presses near the left end: a handle at the right of the item may have moved too."""
        place = (box.x + min(box.width, HEIGHT) // 3, box.y + box.height // 2)
        self.desktop.run(["xdotool", "mousemove", *map(str, place), "click", str(button)])

    def free_area(self) -> screen.Picture:
        return screen.picture(self.desktop, screen.Box(*self.desktop.work_area()))

    def test_a_press_opens_and_closes_the_panel_a_right_one_the_menu_and_the_item_comes_back(self):
        for tray in ALONE:
            with self.subTest(tray=tray):
                self.on(tray)
                empty = self.empty_strip()
                process = self.start("--background")
                box = self.appears(empty)
                if self.desktop.tray.opens_menu:
                    self.opens_a_menu(box, 1)
                    self.assertTrue(bus.press_row(self.desktop.env, self.item(process), "show panel"))
                    self.close_panel()
                else:
                    for is_open in (True, False):
                        self.press(box)
                        self.wait_for("panel", lambda: bool(screen.panel_window(self.desktop)) == is_open)
                    self.opens_a_menu(box, 3)
                self.tells(True, box)
                self.desktop.stop_tray()
                self.desktop.start_tray()
                self.assertIsNone(process.poll())
                self.appears(empty)

    def tells(self, visible: bool, box: Optional[screen.Box] = None) -> None:
        """Waits until the state that the program prints has the item over the box, or nowhere without one."""
        def right() -> bool:
            state = json.loads(self.run_program("--bar-state").stdout or "{}")
            if box is None or not state.get("frame"):
                wanted = {"isVisible": visible, "hasWindow": False, "frame": None, "looksPainted": False}
                return box is None and wanted.items() <= state.items()
            left, low, width, height = state["frame"]
            top = self.desktop.size[1] - low - height
            return (state["isVisible"], state["hasWindow"], state["looksPainted"]) == (visible, True, True) \
                and left < box.x + box.width and box.x < left + width \
                and top < box.y + box.height and box.y < top + height

        self.wait_for("right state", right)

    def test_the_state_tells_of_no_item_when_it_is_hidden(self):
        self.on("xfce")
        process = self.start("--background", barmode="hidden", **{"ostrel.v072.bar-mode-migrated": True})
        self.tells(False)
        self.assertIsNone(bus.item_of(self.desktop.env, process.pid))

    def test_a_press_beside_the_menu_closes_it_also_where_a_button_was_down_as_it_came(self):
        for tray in ("xfce", "lxqt"):
            with self.subTest(tray=tray):
                self.on(tray)
                empty = self.empty_strip()
                item = self.item(self.start("--background"))
                box = self.appears(empty)
                screen.move_pointer(self.desktop, box.x + box.width // 3, box.y + box.height // 2)
                self.desktop.run(["xdotool", "mousedown", "1"])
                bus.call(self.desktop.env, *item, f"{bus.ITEM}.ContextMenu", "400", "300")
                self.wait_for("menu", lambda: self.menu_at(400, 300))
                self.desktop.run(["xdotool", "mouseup", "1"])
                self.panel()  # the host takes the release for a press on the item
                self.settled("menu that listens", self.visible_windows)
                screen.click(self.desktop, 200, 650)
                self.wait_for("nothing of the program", lambda: not self.visible_windows())

    def menu_at(self, x: int, y: int) -> bool:
        """Whether one of the program's windows that are on the screen begins there."""
        boxes = [screen.window_box(self.desktop, window) for window in self.visible_windows()]
        return any(box and box[:2] == (x, y) for box in boxes)

    def opens_a_menu(self, box: screen.Box, button: int) -> None:
        """Presses the item and checks that a menu comes up, which Escape closes."""
        before = self.free_area()

        def stands() -> bool:
            now, line = self.free_area(), before.width * 3
            starts = range(0, len(now.pixels), line)
            return sum(now.pixels[at:at + line] != before.pixels[at:at + line] for at in starts) > MENU_HEIGHT

        for limit in (4, 8, 20):  # a host that hasn't fetched the menu yet lets a press pass
            self.press(box, button)
            try:
                self.wait_for("menu", stands, limit=limit)
                break
            except DesktopError:
                if limit == 20:
                    raise
                screen.press(self.desktop, "Escape")
        self.assertIsNone(screen.panel_window(self.desktop))
        screen.press(self.desktop, "Escape")
        self.wait_for("closed menu", lambda: not stands())

    def test_the_values_are_on_the_strip_where_the_mode_shows_them(self):
        for tray in ALONE:
            with self.subTest(tray=tray):
                self.on(tray)
                empty = self.empty_strip()
                looks = {}
                for mode, parts in (("mark", ["cpu"]), ("value", ["mem"]), ("value", ["load"])):
                    process = self.start("--background", refresh="calm", barmode=mode, barparts=parts,
                                         **{"ostrel.v072.bar-parts-migrated": True})
                    box = self.appears(empty)
                    looks[mode, parts[0]] = screen.picture(self.desktop, box)
                    self.stop(process, empty)
                if self.desktop.tray.shows_label:
                    self.assertGreater(looks["value", "load"].width, 2 * HEIGHT)
                for one, other in itertools.combinations(looks, 2):
                    self.assertTrue(looks[one] != looks[other], f"{one} and {other} look the same")

    def stop(self, process: subprocess.Popen, empty: screen.Picture) -> None:
        self.end(process)
        self.wait_for("empty strip", lambda: not self.shown(empty))

    def test_without_a_tray_it_waits_and_a_bus_tray_takes_the_item_from_an_older_one(self):
        self.on("none")
        process = self.start("--background", refresh="fast")
        self.wait_for("running program", lambda: bus.has_owner(
            self.desktop.env, f"{bus.ITEM}-{process.pid}-1"))
        self.tells(True)
        self.assertIsNone(self.docked())
        self.desktop.start_tray("trayer")
        self.tells_in_the_bundled_face(self.wait_for("docked item", self.docked))
        self.desktop.start_tray("lxqt")
        self.item(process)
        self.wait_for("undocked item", lambda: not self.docked())

    def tells_in_the_bundled_face(self, item: int) -> None:
        """Waits for the tip of the item under the pointer. In a face of fixed pitch its length is known."""
        box = screen.window_box(self.desktop, item)
        screen.move_pointer(self.desktop, box.x + box.width // 2, box.y + box.height // 2)
        tip = self.wait_for("tool tip", lambda: next(iter(set(self.visible_windows()) - {item}), None))
        text = json.loads(screen.window_property(self.desktop, item, "_NET_WM_NAME"))
        self.assertAlmostEqual(screen.window_box(self.desktop, tip).width,
                               len(text) * TIP_PITCH + TIP_EDGES, delta=1.5 * TIP_PITCH)  # a figure may grow

    def docked(self) -> Optional[int]:
        """The window that a tray took in."""
        return next(iter(self.visible_windows()), None)
