# SPDX-License-Identifier: Apache-2.0
"""The status item in a real tray: what it tells, what a click and its menu do, and that it comes back."""
import json
import os
import re
import unittest

import bus
import screen
from desktop_case import DesktopCase

MIB = 1024 * 1024
PRESSURE = r"(?:\?|normal|warn|critical)"
TOOL_TIP = re.compile(r"ostrel · cpu (\d+)% · mem (\d+)% · swap (\d+)% · free [\d.]+ (?:mb|gb) "
                      rf"· {PRESSURE} · (?:native|local CLI|error)")


def memory() -> dict[str, int]:
    """/proc/meminfo in bytes."""
    with open("/proc/meminfo", encoding="ascii") as file:
        return {line.split(":")[0]: int(line.split()[1]) * 1024 for line in file}


def agrees(text: str) -> bool:
    """Whether a tool tip's figures differ from the machine's by no more than can change between two looks."""
    told, now = TOOL_TIP.fullmatch(text), memory()
    cache = now["Buffers"] + now["Cached"] - now["Shmem"] + now["SReclaimable"]
    used = (now["MemTotal"] - now["MemFree"] - cache) / now["MemTotal"] * 100
    swap = (now["SwapTotal"] - now["SwapFree"]) / max(1, now["SwapTotal"]) * 100
    return bool(told) and int(told[1]) <= 100 and abs(int(told[2]) - used) <= 3 >= abs(int(told[3]) - swap)


class BarItem(DesktopCase):
    def test_the_tool_tip_tells_the_machines_figures_and_every_tick_brings_it_up_to_date(self):
        item = self.item(self.start("--background", refresh="fast"))
        # The machine may change right behind a reading, but a wrong figure stays wrong at the next tick.
        self.wait_for("right figures", lambda: agrees(bus.tool_tip(self.desktop.env, item)), limit=9)
        room = memory()
        held = bytearray(int(min(room["MemAvailable"] / 4, max(400 * MIB, 0.05 * room["MemTotal"]))))
        held[::4096] = b"\1" * len(held[::4096])
        self.wait_for("new figures", lambda: agrees(bus.tool_tip(self.desktop.env, item)), limit=9)
        del held
        history = f"{self.home}/Library/Application Support/ostrel/dashboard-history.jsonl"
        self.wait_for("minute history", lambda: os.path.exists(history))
        with open(history, encoding="ascii") as file:
            self.assertEqual(list(json.loads(file.readline())), ["m", "cpu", "swap", "ram", "load"])

    def test_a_background_start_shows_the_panel_only_on_a_click_and_the_next_click_closes_it(self):
        item = self.item(self.start("--background"))
        self.assertEqual(bus.item_property(self.desktop.env, item, "Status"), "Active")
        self.assertIsNone(screen.panel_window(self.desktop))
        place = self.icon_place()
        screen.click(self.desktop, *place)
        self.panel()
        screen.click(self.desktop, *place)
        self.panel_has_gone()

    def test_the_menu_opens_the_panel_and_ends_the_program(self):
        process = self.start("--background")
        item = self.item(process)
        rows = bus.menu_rows(self.desktop.env, item)
        self.assertRegex(rows[0].label, rf"^ostrel · cpu \d+% · mem \d+% · swap \d+% · {PRESSURE}$")
        self.assertFalse(rows[0].enabled)
        self.assertTrue(bus.press_row(self.desktop.env, item, "show panel"))
        self.panel()
        self.assertTrue(bus.press_row(self.desktop.env, item, "quit"))
        self.assertEqual(process.wait(20), 0)
        self.wait_for("the item's end", lambda: not bus.item_of(self.desktop.env, process.pid))

    def test_the_item_registers_whenever_a_tray_host_comes(self):
        self.desktop.stop_tray()
        process = self.start("--background")
        self.wait_for("running program", lambda: bus.has_owner(
            self.desktop.env, f"{bus.ITEM}-{process.pid}-1"))
        for _ in range(2):
            self.desktop.start_tray()
            self.item(process)
            self.icon_place()
            self.desktop.stop_tray()
        self.desktop.start_tray()
