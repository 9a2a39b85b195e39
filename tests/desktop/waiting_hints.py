# SPDX-License-Identifier: Apache-2.0
"""Pressure hints on the real program, with memory figures that the test puts over the kernel's."""
import base64
import contextlib
import json
import os
import subprocess
import sys
import time
from pathlib import Path

import screen
from desktop_case import ACCESSIBLE, SETTINGS_FILE, PanelCase, write_tool

POLICY = "ostrel.hintPolicy"
CALM = (0.0, 0.80)  # stalls in percent, share of memory that can be had
CRITICAL = (40.0, 0.10)
TOTAL = 1_000_000  # kB
COMES_WITHIN = 60.0  # seconds: twenty of pressure, and ticks three apart
# Files over those of /proc, for the program and its children alone.
COVER = ('mount --bind "$1/meminfo" /proc/meminfo && mount --bind "$1/memory" /proc/pressure/memory && '
         'shift && exec "$@"')


def covers() -> list[str]:
    """The command that gives a program mounts of its own, with or without being the machine's owner; empty
    where neither is allowed."""
    for command in (["unshare", "-m"], ["unshare", "-Urm"]):
        tried = subprocess.run([*command, "mount", "--bind", "/proc/version", "/proc/meminfo"],
                               capture_output=True, check=False)
        if tried.returncode == 0:
            return command
    return []


class HintCase(PanelCase):
    """One program at a time under a kernel that says what the test wants."""

    def start_under(self, kernel: tuple[float, float], **settings) -> subprocess.Popen:
        self.cover = f"{self.desktop.folder}/kernel"
        os.makedirs(self.cover, exist_ok=True)
        self.say(kernel)
        private = covers()
        if not private:
            self.skipTest("this machine allows no mounts of one's own")
        real = os.environ["OSTREL_PROGRAM"]
        script = f"{self.desktop.folder}/covered"
        write_tool(script, f"#!/bin/sh\nexec {' '.join(private)} sh -c '{COVER}' sh {self.cover} "
                           f"{os.path.abspath(real)} \"$@\"\n")
        os.environ["OSTREL_PROGRAM"] = script
        self.addCleanup(os.environ.__setitem__, "OSTREL_PROGRAM", real)
        return self.start("--background", refresh="fast", **settings)

    def say(self, kernel: tuple[float, float]) -> None:
        """Makes the kernel say that, from the next reading on; the files stay the same ones."""
        stall, share = kernel
        free = int(TOTAL * share)
        memory = f"MemTotal: {TOTAL:9} kB\nMemFree: {free:9} kB\nMemAvailable: {free:9} kB\n"
        stalls = "".join(f"{kind} avg10={stall:5.2f} avg60=0.00 avg300=0.00 total=1\n"
                         for kind in ("some", "full"))
        for name, text in (("meminfo", memory), ("memory", stalls)):
            with open(f"{self.cover}/{name}", "r+" if os.path.exists(f"{self.cover}/{name}") else "w",
                      encoding="ascii") as file:
                file.write(text)

    def policy(self) -> dict:
        with contextlib.suppress(OSError, KeyError):
            stored = self.settings()[POLICY]
            text = next(iter(stored.values())) if isinstance(stored, dict) else stored
            return json.loads(base64.b64decode(text))
        return {}

    def receipts(self) -> list[str]:
        return [receipt["state"] for receipt in self.policy().get("receipts", [])]

    def card(self, title: str = "OS pressure · critical") -> int:
        """The window of the card with that title, if it is on screen."""
        search = ["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"]
        return int((self.desktop.run(search).stdout.split() or ["0"])[0])

    def shown_card(self) -> int:
        return self.wait_for("card", self.card, limit=COMES_WITHIN)

    def card_has_gone(self) -> None:
        self.wait_for("card off the screen", lambda: not self.card(), limit=30)

    def ended(self, *states: str) -> None:
        """The card goes, and exactly these receipts stand."""
        self.card_has_gone()
        self.wait_for(f"receipts {states}", lambda: self.receipts() == list(states))

    def press_in(self, window: int, left: int, top: int) -> None:
        box = screen.window_box(self.desktop, window)
        screen.click(self.desktop, box.x + left, box.y + top)

    def bystander(self) -> None:
        """Shows a window of somebody else's that has the keyboard."""
        self.desktop.start("bystander", ["xmessage", "-name", "bystander", "somebody writes here"])
        window = self.wait_for("bystander", lambda: self.desktop.run(
            ["xdotool", "search", "--onlyvisible", "--class", "xmessage"]).stdout.split())
        self.desktop.run(["xdotool", "windowfocus", "--sync", window[0]])

    def keyboard(self) -> int:
        return int(self.desktop.run(["xdotool", "getwindowfocus"]).stdout or 0)

    def again(self, process: subprocess.Popen) -> subprocess.Popen:
        """The next run, as if the last hint had been long ago."""
        self.end(process)
        self.say(CRITICAL)
        settings = self.settings()
        settings.pop(POLICY, None)
        Path(self.home, SETTINGS_FILE).write_text(json.dumps(settings), "utf-8")
        return self.start_again("--background")


class Hints(HintCase):
    def test_the_legacy_card_comes_once_keeps_off_the_keyboard_and_each_end_has_its_receipt(self):
        process = self.start_under(CRITICAL)
        self.item(process)
        listener = subprocess.Popen([sys.executable, ACCESSIBLE, "alerts", str(process.pid)],
                                    env=self.desktop.env, stdout=subprocess.PIPE, text=True)
        self.addCleanup(listener.wait)
        self.addCleanup(listener.kill)
        self.addCleanup(listener.stdout.close)
        self.assertEqual(listener.stdout.readline(), "listening\n")
        self.bystander()
        before = self.keyboard()
        card = self.shown_card()
        left, top, width, height = screen.window_box(self.desktop, card)
        self.assertEqual((width, height), (338, 174))
        self.assertEqual(left, self.desktop.size[0] - 338 - 8, "against the right margin, near the item")
        self.assertLess(top, 60)
        self.assertEqual(self.keyboard(), before)
        self.press_in(card, 40, 150)
        self.assertEqual(self.keyboard(), before, "not even when it is pressed")
        self.assertEqual(listener.stdout.readline(), "OS pressure · critical | Pressure has stayed elevated. "
                         "Inspect workloads before choosing an action.\n")
        states = screen.window_property(self.desktop, card, "_NET_WM_STATE")
        for state in ("SKIP_TASKBAR", "SKIP_PAGER", "ABOVE"):
            self.assertIn(f"_NET_WM_STATE_{state}", states)
        self.assertEqual("4294967295", screen.window_property(self.desktop, card, "_NET_WM_DESKTOP"))
        # Time-out; and no second one in this episode.
        self.ended("presented", "expired")
        listener.kill()
        self.assertEqual(listener.stdout.read(), "", "it was told once")
        self.assertTrue(self.policy()["episodePresented"])

        # The next run knows the episode, and its end.
        self.end(process)
        process = self.start_again("--background")
        self.item(process)
        time.sleep(4)  # a tick and more
        self.assertEqual(self.receipts(), ["presented", "expired"])
        self.assertTrue(self.policy()["episodePresented"])
        self.say(CALM)
        self.wait_for("end of the episode", lambda: not self.policy()["episodePresented"])
        self.assertIn("lastPresented", self.policy(), "the cool-down goes on")

        process = self.again(process)
        self.shown_card()
        self.press(process, "30m")
        self.ended("presented", "snoozed")
        self.assertIn("snoozedUntil", self.policy())

        process = self.again(process)
        self.shown_card()
        self.press(process, "inspect")
        self.ended("presented", "acknowledged")
        self.panel()


class SharedHints(HintCase):
    DESKTOP = HintCase.DESKTOP | {"manager": "xfwm4"}

    def test_the_shared_card_takes_keys_after_a_press_and_goes_with_panel_and_pressure(self):
        process = self.start_under(CRITICAL, **{"ostrel.dashboardDog": False})
        self.item(process)
        self.bystander()
        before = self.keyboard()
        card = self.shown_card()
        self.assertEqual(self.keyboard(), before)
        self.press_in(card, 300, 20)
        self.wait_for("keyboard of the card", lambda: self.keyboard() == card)
        screen.press(self.desktop, "Escape")
        self.ended("presented", "dismissed")

        process = self.again(process)
        self.shown_card()
        self.say(CALM)
        self.ended("presented", "suppressed")

        process = self.again(process)
        self.shown_card()
        self.route("ostrel://show")
        self.panel()
        self.ended("presented", "suppressed")
