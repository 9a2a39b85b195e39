# SPDX-License-Identifier: Apache-2.0
"""The status item in a real tray: what it tells, what a click and its menu do, and that it comes back."""
import json
import os
import time
import unittest

import bus
import screen
from desktop_case import PRESSURE, TOOL_TIP, DesktopCase, memory
from private_desktop import TRAY_HEIGHT, DesktopError

MIB = 1024 * 1024
FAST_TICK = 3  # seconds between two readings with the refresh profile "fast"
HISTORY_FILE = "Library/Application Support/ostrel/dashboard-history.jsonl"


def disagreement(text: str) -> str:
    """How a tool tip's figures differ from the machine's, beyond what can change between two looks; "" if
    they don't."""
    told = TOOL_TIP.fullmatch(text)
    if not told:
        return f"not of the form: {text!r}"
    now = memory()
    cache = now["Buffers"] + now["Cached"] - now["Shmem"] + now["SReclaimable"]
    used = (now["MemTotal"] - now["MemFree"] - cache) / now["MemTotal"] * 100
    swap = (now["SwapTotal"] - now["SwapFree"]) / now["SwapTotal"] * 100 if now["SwapTotal"] else 0
    free = float(told["free"]) * (1024 if told["unit"] == "gb" else 1)
    tolerance = max(256, 0.03 * now["MemTotal"] / MIB)
    wrong = [name for name, value, right, apart in (
        ("mem", float(told["mem"]), used, 3), ("swap", float(told["swap"]), swap, 3),
        ("free", free, now["MemFree"] / MIB, tolerance)) if abs(value - right) > apart]
    wrong += ["cpu"] * (int(told["cpu"]) > 100)
    right = f"mem {used:.1f}%, swap {swap:.1f}%, free {now['MemFree'] / MIB:.0f} MiB"
    return f"{wrong} of {text!r}, but {right}" if wrong else ""


class BarItem(DesktopCase):
    def icon_place(self) -> tuple[int, int]:
        """The middle of the only icon, at the right end of the tray's strip, once it is drawn there."""
        width = self.desktop.size[0]
        box = screen.Box(width - TRAY_HEIGHT, 2, TRAY_HEIGHT - 2, TRAY_HEIGHT - 4)
        self.wait_for("drawn icon", lambda: len(screen.colours(screen.picture(self.desktop, box))) > 3)
        return width - TRAY_HEIGHT // 2, TRAY_HEIGHT // 2

    def check_figures(self, item: bus.Item) -> None:
        """Waits for a tick after which the tool tip agrees with the machine: the machine may change right
        behind a reading, but a wrong figure stays wrong."""
        wrong = ""

        def agrees() -> bool:
            nonlocal wrong
            wrong = disagreement(bus.tool_tip(self.desktop.env, item))
            return not wrong

        try:
            self.wait_for("right figures", agrees, limit=3 * FAST_TICK)
        except DesktopError:
            self.fail(wrong)

    def test_the_tool_tip_tells_the_machines_figures_and_every_tick_brings_it_up_to_date(self):
        instrument = self.start("--background", settings={"dev.quent.ostrel.refresh": "fast"})
        item = self.item(instrument)
        self.desktop.start("signals", ["gdbus", "monitor", "--session", "--dest", item.service])
        text = self.wait_for("tool tip", lambda: bus.tool_tip(self.desktop.env, item))
        self.check_figures(item)
        room = memory()
        held = bytearray(int(min(room["MemAvailable"] / 4, max(400 * MIB, 0.03 * room["MemTotal"]))))
        held[::4096] = b"\1" * len(held[::4096])
        self.wait_for("tool tip after a tick", lambda: bus.tool_tip(self.desktop.env, item) != text)
        self.check_figures(item)
        self.wait_for("word to the tray", lambda: ".NewToolTip" in self.desktop.log("signals"))
        del held

    def test_a_background_start_shows_the_panel_only_on_a_click_and_the_next_click_closes_it(self):
        instrument = self.start("--background")
        item = self.item(instrument)
        self.assertEqual(bus.item_property(self.desktop.env, item, "Status"), "Active")
        self.assertIsNone(screen.panel_window(self.desktop))
        place = self.icon_place()
        screen.click(self.desktop, *place)
        self.panel()
        self.assertTrue(bus.activate(self.desktop.env, item, *place))
        self.panel_has_gone()

    def test_the_menu_opens_the_panel_and_ends_the_program(self):
        instrument = self.start("--background")
        item = self.item(instrument)
        rows = bus.menu_rows(self.desktop.env, item)
        self.assertRegex(rows[0].label, rf"^ostrel · cpu \d+% · mem \d+% · swap \d+% · {PRESSURE}$")
        self.assertFalse(rows[0].enabled)
        self.assertTrue(bus.press_row(self.desktop.env, item, "show panel"))
        self.panel()
        self.assertTrue(bus.press_row(self.desktop.env, item, "quit"))
        self.assertEqual(instrument.process.wait(20), 0)
        self.wait_for("the item's end", lambda: not bus.item_of(self.desktop.env, instrument.process.pid))

    def test_the_item_registers_whenever_a_tray_host_comes(self):
        self.desktop.stop_tray()
        instrument = self.start("--background")
        self.wait_for("running program", lambda: bus.has_owner(
            self.desktop.env, f"{bus.ITEM}-{instrument.process.pid}-1"))
        self.desktop.start_tray()
        self.item(instrument)
        self.icon_place()
        self.desktop.stop_tray()
        self.desktop.start_tray()
        self.item(instrument)
        self.icon_place()

    def test_the_first_minute_is_kept_in_the_history_file(self):
        instrument = self.start("--background")
        path = f"{instrument.home}/{HISTORY_FILE}"
        self.wait_for("history file", lambda: os.path.exists(path))
        with open(path, encoding="utf-8") as file:
            points = [json.loads(line) for line in file]
        self.assertEqual([sorted(point) for point in points], [["cpu", "load", "m", "ram", "swap"]])
        self.assertAlmostEqual(points[0]["m"], time.time() / 60, delta=2)
        for percentage in ("cpu", "ram", "swap"):
            self.assertIn(points[0][percentage], range(101))


if __name__ == "__main__":
    unittest.main()
