# SPDX-License-Identifier: Apache-2.0
"""Every control of the settings, pressed as a screen reader does, and what is kept of it over a restart. The
global hotkey with real keys and another program that has a combination: refusals, the recorder, another
keyboard layout, and a desktop that gives programs no keys."""
import subprocess
import sys

import bus
import screen
from desktop_case import ACCESSIBLE, HERE, PanelCase

HOLDER = f"{HERE}/key_holder.py"
OPTION, COMMAND = 1 << 3, 1 << 6  # as the display's events have them
KEY_M, KEY_K = 58, 45
FIELD = "hotkey field · {} · press to record"
RECORDING = "hotkey field · recording · press a combination, esc cancels, delete clears"
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


class SettingsCase(PanelCase):
    def open_settings(self, process: subprocess.Popen) -> None:
        """Opens the panel on the settings, without its hotkey."""
        self.item(process)
        self.route("ostrel://show")
        self.go_to("9")
        self.said(process, "make the menu bar yours")


class Settings(SettingsCase):
    def press_all(self, process: subprocess.Popen, controls: tuple[str, ...], stored: dict) -> None:
        """Presses one control after the other, and checks what is stored then."""
        done = self.desktop.run([sys.executable, ACCESSIBLE, "presses", str(process.pid), *controls])
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        self.assertEqual({key: self.stored(key) for key in stored}, stored)

    def test_every_choice_is_stored_at_once_and_shown_after_a_restart(self):
        process = self.start("--background")
        self.open_settings(process)
        self.press_all(process, *FIRST)
        self.end(process)

        process = self.start_again("--background")
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
        process = self.start("--background")
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


class Hotkeys(SettingsCase):
    def hold(self, key: int) -> subprocess.Popen:
        """Another program takes option, command and that key."""
        name = f"holder of {key}"
        holder = self.desktop.start(name, [sys.executable, HOLDER, f"{key}:{OPTION | COMMAND}"])
        self.addCleanup(holder.wait)
        self.addCleanup(holder.kill)
        self.wait_for("other program's key", lambda: "held" in self.desktop.log(name))
        return holder

    def toggles(self, combination: str) -> None:
        """Checks that a combination opens the panel and closes it, from the present state."""
        for _ in range(2):
            shown = bool(screen.panel_window(self.desktop))
            screen.press(self.desktop, combination)
            self.wait_for(f"{combination} seen", lambda: bool(screen.panel_window(self.desktop)) != shown)
        self.closed_by("bar-or-hotkey")

    def test_what_another_program_has_is_refused_and_what_is_recorded_instead_works_after_a_restart(self):
        holder = self.hold(KEY_M)
        process = self.start("--background")
        self.open_settings(process)
        self.said(process, "⌥⌘m: held by another app")
        screen.press(self.desktop, "alt+super+m")
        self.panel()

        self.press(process, FIELD.format("⌥⌘m"))
        self.said(process, "recording · esc cancels · delete clears")
        for keys, told in (("9", "9: needs a modifier: hold ⌥ or ⌃"),
                           ("alt+super+c", "⌥⌘c: taken by Pellam Dial"),
                           ("alt+super+m", "⌥⌘m: held by another app"),
                           ("ctrl+alt+Left", "⌃⌥←: taken by Openbox · GoToDesktop")):
            screen.press(self.desktop, keys)
            self.wait_for(told, lambda: {told, RECORDING} <= self.names(process).keys())
        self.assertIsNone(self.stored("hotkey"))
        screen.press(self.desktop, "ctrl+alt+super+j")
        self.said(process, "panel: ⌃⌥⌘j · opens and closes from anywhere")
        self.assertEqual(self.stored("hotkey"), "38:1835008:j")
        self.assertFalse([name for name in self.names(process) if "held by" in name])
        self.end(process)

        process = self.start_again("--background")
        self.item(process)
        self.wait_for("registered key", lambda: self.opens("ctrl+alt+super+j"))
        screen.press(self.desktop, "ctrl+alt+super+j")
        self.panel_has_gone()
        self.toggles("ctrl+alt+super+j")
        holder.kill()
        holder.wait()
        self.open_settings(process)
        self.press(process, "default ⌥⌘m")
        self.said(process, "panel: ⌥⌘m · opens and closes from anywhere")
        self.toggles("alt+super+m")

    def opens(self, combination: str) -> bool:
        """Presses until the panel is there: the item may be seen before the key is taken."""
        screen.press(self.desktop, combination)
        return bool(screen.panel_window(self.desktop))

    def test_the_fallback_stands_in_and_escape_and_delete_do_what_they_say(self):
        self.hold(KEY_K)
        process = self.start("--background", hotkey="40:1572864:k")
        self.open_settings(process)
        self.said(process, "⌥⌘k: held by another app")
        self.said(process, "panel: ⌥⌘m · opens and closes from anywhere")
        self.assertEqual(self.stored("hotkey"), "46:1572864:m")
        self.toggles("alt+super+m")

        self.press(process, FIELD.format("⌥⌘m"))
        self.said(process, "recording · .*")
        screen.press(self.desktop, "Escape")  # ends the recording alone
        self.press(process, FIELD.format("⌥⌘m"))
        self.said(process, "recording · .*")
        screen.press(self.desktop, "BackSpace")
        self.said(process, "panel: none · the bar item and the routes stay the way in")
        self.assertEqual((self.stored("hotkey"), self.stored("hotkey-cleared")), ("46:1572864:m", True))
        screen.press(self.desktop, "alt+super+m")
        self.press(process, "hotkey choice · ⌥⇧m")
        self.said(process, "panel: ⌥⇧m · opens and closes from anywhere")
        self.assertEqual((self.stored("hotkey"), self.stored("hotkey-cleared")), ("46:655360:m", False))
        self.toggles("alt+shift+m")

    def test_another_layout_and_the_locks_leave_the_hotkey_on_its_key(self):
        self.addCleanup(self.desktop.run, ["setxkbmap", "us"])
        process = self.start("--background", hotkey="46:1572864:m")
        self.item(process)
        self.wait_for("registered key", lambda: self.opens("alt+super+m"))
        for layout in ("fr", "us,ru", "de"):
            self.desktop.run(["setxkbmap", layout])
            self.toggles(f"alt+super+{KEY_M}")
        for lock in ("Caps_Lock", "Num_Lock"):
            screen.press(self.desktop, lock)
            self.toggles(f"alt+super+{KEY_M}")

    def test_a_wayland_desktop_without_a_portal_says_how_its_own_shortcut_does_it(self):
        self.addCleanup(self.desktop.env.pop, "WAYLAND_DISPLAY")
        self.desktop.env["WAYLAND_DISPLAY"] = "wayland-0"
        process = self.start("--background")
        self.open_settings(process)
        self.said(process, "⌥⌘m: this desktop gives programs no hotkeys")
        line = self.said(process, "panel: none here · a shortcut of the desktop's own can call .*")
        command = line.rpartition(" can call ")[2].split()
        self.assertEqual(command, ["ostrel", "ostrel://toggle"])
        for shown in (False, True):
            done = self.run_program(*command[1:])
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            self.wait_for("toggled panel", lambda: bool(screen.panel_window(self.desktop)) == shown)
