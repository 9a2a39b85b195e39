# SPDX-License-Identifier: Apache-2.0
"""What comes in from outside, addresses, calls and menu rows over the bus, what the item tells there, and a
desktop without a bus."""
import json
import os
import re
import time
from pathlib import Path

import bus
import screen
from desktop_case import POINTS, DesktopCase, DesktopsCase

STATE_FILE = ".config/zol-mini-apps/ostrel-bar-state.json"
TESTBED_GAP = 24  # from the free area's right and lower edge
REOPEN_PAUSE = 0.5  # seconds in which a press behind a close is passed over

# Behind the first row, which has the figures. The mark alone has no words to preview.
MENU = """-|show panel|actions|audit MCP (read-only)|preview own history|-|compact own history…|
settings|pin panel open|theme: black|-|refresh: fast|refresh: normal|refresh: calm|-|
menu bar|preview: |show cpu|show mem|show swap|show load|show mcp|-|
modes:|mode: mark|mode: mark + value|mode: value|hidden · in the panel settings, it asks first|-|
hotkey: ⌥⌘m · toggle panel|esc · close panel|1–9 · switch tabs|/ · key help overlay|
-|about ostrel|quit""".replace("\n", "").split("|")
MIB = 1024 * 1024
PRESSURE = r"(?:\?|normal|warn|critical)"
TOOL_TIP = re.compile(r"ostrel · cpu (\d+)% · mem (\d+)% · swap (\d+)% · free [\d.]+ (?:mb|gb) "
                      rf"· {PRESSURE} · (?:native|local CLI|error)")
FONT_CACHE = r"fontconfig/\S+\.cache"


def memory() -> dict[str, int]:
    """/proc/meminfo in bytes."""
    lines = Path("/proc/meminfo").read_text("ascii").splitlines()
    return {line.split(":")[0]: int(line.split()[1]) * 1024 for line in lines}


def agrees(text: str) -> bool:
    """Whether a tool tip's figures differ from the machine's by no more than can change between two looks."""
    told, now = TOOL_TIP.fullmatch(text), memory()
    cache = now["Buffers"] + now["Cached"] - now["Shmem"] + now["SReclaimable"]
    used = (now["MemTotal"] - now["MemFree"] - cache) / now["MemTotal"] * 100
    swap = (now["SwapTotal"] - now["SwapFree"]) / max(1, now["SwapTotal"]) * 100
    return bool(told) and int(told[1]) <= 100 and abs(int(told[2]) - used) <= 3 >= abs(int(told[3]) - swap)


class WaysIn(DesktopCase):
    def test_addresses_and_a_second_process_show_hide_and_toggle_the_panel_and_do_nothing_else(self):
        process = self.start("--background")
        self.item(process)
        # Reading the system's fonts takes as long as all the rest of a start that shows no text.
        fonts = Path(f"/proc/{process.pid}/maps")
        self.assertNotRegex(fonts.read_text("utf-8"), FONT_CACHE)
        # What can't be written doesn't matter.
        state = f"{self.home}/{STATE_FILE}"
        self.wait_for("state file", lambda: os.path.exists(state))
        os.remove(state)
        os.mkdir(state)
        for urls, reason in (
            (["ostrel://show"], None), (["ostrel://hide"], "route-hide"),
            (["http://hide", "ostrel://quit", "OSTREL://TOGGLE"], None),
            (["ostrel://toggle"], "route-toggle"),
            (["ostrel://open?command=close"], None), (["ostrel:?command=close"], "route-hide")):
            with self.subTest(urls=urls):
                self.route(*urls)
                self.shows(reason)
        self.assertRegex(fonts.read_text("utf-8"), FONT_CACHE)
        self.route("ostrel://toggle?testbed=1")
        box = screen.window_box(self.desktop, self.panel())
        left, top, width, height = self.desktop.work_area()
        self.assertEqual((box.x + box.width, box.y + box.height),
                         (left + width - TESTBED_GAP, top + height - TESTBED_GAP))
        for arguments, reason in ((["ostrel://hide"], "route-hide"), ([], None),
                                  (["--testbed", "hide"], "route-hide")):
            with self.subTest(arguments=arguments):
                again = self.run_program(*arguments)
                self.assertEqual((again.returncode, again.stderr), (0, b""))
                self.shows(reason)
        self.assertIsNotNone(bus.call(self.desktop.env, *bus.APPLICATION, f"{bus.OPEN}.Activate", "{}"))
        self.shows(None)

    def shows(self, reason) -> None:
        """Waits until the panel is on the screen, or off it for that reason."""
        if reason:
            self.panel_has_gone()
            self.closed_by(reason)
        else:
            self.panel()

    def test_the_menu_has_all_its_rows_and_calls_of_a_wrong_shape_change_nothing(self):
        item = self.item(self.start("--background"))
        first, *rows = bus.menu_rows(self.desktop.env, item)
        self.assertEqual([row.label or "-" for row in rows], MENU)
        self.assertRegex(first.label, rf"^ostrel · cpu \d+% · mem \d+% · swap \d+% · {PRESSURE}$")
        self.assertFalse(first.enabled)
        self.assertEqual(bus.item_property(self.desktop.env, item, "Status"), "Active")
        menu = (item.service, bus.item_property(self.desktop.env, item, "Menu"))
        for place, method, arguments in (
            (bus.APPLICATION, f"{bus.OPEN}.Open", ["['ostrel://show']"]),
            (bus.APPLICATION, f"{bus.OPEN}.Close", []),
            (item, f"{bus.ITEM}.Activate", ["1"]),
            (item, f"{bus.ITEM}.ContextMenu", ["1", "2", "3"]),
            (item, "org.freedesktop.DBus.Properties.Get", [bus.ITEM, "Nothing"]),
            (item, "org.freedesktop.DBus.Properties.Set", [bus.ITEM, "Status", "<'Passive'>"]),
            (menu, f"{bus.MENU}.Event", ["99999", "clicked", "<0>", "0"]),
            (menu, f"{bus.MENU}.Event", ["-1", "clicked", "<0>", "0"]),
            (menu, f"{bus.MENU}.GetLayout", ["4242", "-1", "[]"]),
            (menu, f"{bus.MENU}.AboutToShow", ["777"])):
            self.assertIsNone(bus.call(self.desktop.env, *place, method, *arguments), (method, arguments))
        self.assertIsNone(screen.panel_window(self.desktop))
        self.assertTrue(bus.press_row(self.desktop.env, item, "show panel"))
        self.panel()
        for label, key, value in (("pin panel open", "pinned", True), ("unpin panel", "pinned", False),
                                  ("theme: black", "theme", "dark"), ("refresh: calm", "refresh", "calm"),
                                  ("show load", "barparts", ["cpu", "load", "swap"]),
                                  ("mode: value", "barmode", "value")):
            self.assertTrue(bus.press_row(self.desktop.env, item, label), label)
            self.wait_for(label, lambda: self.stored(key) == value)
        # The name stands for the mark alone.
        self.wait_for("no mark", lambda: bus.item_property(self.desktop.env, item, "IconName") == "")

    def test_the_tool_tip_tells_the_machines_figures_and_every_tick_brings_it_up_to_date(self):
        item = self.item(self.start("--background", refresh="fast"))
        # The machine may change right behind a reading, but a wrong figure stays wrong at the next tick.
        self.wait_for("right figures", lambda: agrees(bus.tool_tip(self.desktop.env, item)), limit=9)
        room = memory()
        held = bytearray(int(min(room["MemAvailable"] / 4, max(400 * MIB, 0.05 * room["MemTotal"]))))
        held[::4096] = b"\1" * len(held[::4096])
        self.wait_for("new figures", lambda: agrees(bus.tool_tip(self.desktop.env, item)), limit=9)
        del held
        history = Path(self.home, POINTS)
        self.wait_for("minute history", history.exists)
        point = json.loads(history.read_text("ascii").splitlines()[0])
        self.assertEqual(list(point), ["m", "cpu", "swap", "ram", "load"])

    def test_a_press_with_control_opens_the_menu_and_one_right_behind_a_close_does_nothing(self):
        item = self.item(self.start("--background"))
        place = self.icon_place()
        self.desktop.run(["xdotool", "keydown", "ctrl"])
        screen.click(self.desktop, *place)
        self.wait_for("menu", self.visible_windows)
        self.desktop.run(["xdotool", "keyup", "ctrl"])
        self.assertIsNone(screen.panel_window(self.desktop))
        screen.press(self.desktop, "Escape")
        self.wait_for("no menu", lambda: not self.visible_windows())

        def was_quick() -> bool:
            self.route("ostrel://show")
            self.wait_for_keyboard()
            begin = time.monotonic()
            screen.press(self.desktop, "Escape")
            self.panel_has_gone()
            bus.call(self.desktop.env, *item, f"{bus.ITEM}.Activate", *map(str, place))
            if time.monotonic() - begin >= REOPEN_PAUSE:
                self.route("ostrel://hide")
                return False
            return True

        self.wait_for("a press that comes soon enough", was_quick)
        self.route("ostrel://toggle")  # shows what the press has left hidden
        self.panel()


class WithoutBus(DesktopsCase):
    def test_no_bus_and_a_bus_that_ends_leave_a_docked_item_that_works(self):
        for case in ("unset", "nobody there", "ends"):
            with self.subTest(case=case):
                self.move_to(tray="trayer")
                if case == "unset":
                    del self.desktop.env["DBUS_SESSION_BUS_ADDRESS"]
                elif case == "nobody there":
                    self.desktop.env["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere"
                process = self.start("--background")
                docked = self.wait_for("docked item", self.visible_windows)[0]
                if case == "ends":
                    self.wait_for("name", lambda: bus.has_owner(self.desktop.env, bus.APPLICATION[0]))
                    self.desktop.stop_bus()
                box = screen.window_box(self.desktop, docked)
                screen.click(self.desktop, box.x + box.width // 2, box.y + box.height // 2)
                self.close_panel()
                self.wait_for("a quiet program", lambda: self.share(process.pid) < 0.02)
                self.assertEqual(self.desktop.log("ostrel"), "")

    def share(self, pid: int) -> float:
        """Which part of the time the process ran just now."""
        begin, ran = time.monotonic(), self.seconds_run(pid)
        for _ in range(10):
            screen.panel_window(self.desktop)
        return (self.seconds_run(pid) - ran) / (time.monotonic() - begin)

    def seconds_run(self, pid: int) -> float:
        """For how long the process's main thread has run."""
        return int(Path(f"/proc/{pid}/schedstat").read_text("ascii").split()[0]) / 1e9
