# SPDX-License-Identifier: Apache-2.0
"""The end of the instrument, however it comes and whatever runs then: nothing of it stays."""
import fcntl
import os
import signal
import subprocess
import tempfile

import bus
import marked_processes
import screen
from desktop_case import DesktopCase, script_with, write_tool

# A tool that hangs, and a collector that hangs and can't be asked to end where the home says so. Each leaves
# a file that tells of it.
TOOL = '#!/bin/sh\n: > "$HOME/systemctl-runs"\nexec sleep 300\n'
COLLECTOR = """
import os, signal, sys, time
home = os.environ["HOME"]
if os.path.exists(home + "/deaf"):
    signal.signal(signal.SIGTERM, signal.SIG_IGN)
    open(home + "/collector-runs", "w").close()
    time.sleep(300)
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from ostrel_lib.collector import main
sys.exit(main(sys.argv))
"""
BRIDGE = script_with("automations.bridge", 'Places(path=os.environ["HOME"] + "/bin")')
# One that is to finish what it does.
JANITOR = """
import os, time
open(os.environ["HOME"] + "/janitor-runs", "w").close()
while not os.path.exists(os.environ["HOME"] + "/go"):
    time.sleep(0.02)
open(os.environ["HOME"] + "/janitor-done", "w").close()
"""
SCRIPTS = {"ostrel.py": COLLECTOR, "automations_bridge.py": BRIDGE, "ostrel_janitor.py": JANITOR}


class Ends(DesktopCase):
    def test_nothing_of_it_stays_whatever_it_was_doing(self):
        program = self.copy_with_scripts(SCRIPTS)
        for name, arguments, arrange, end, code in (
            ("as it starts", ["--background"], self.as_it_starts, self.ask, 0),
            ("in the background", ["--background"], self.item, self.choose_quit, 0),
            ("with a collector that is deaf", [], self.collecting, self.ask, 0),
            ("pinned, reading automations", [], self.pinned_reading_automations, self.choose_quit, 0),
            ("with a question, cleaning", [], self.asking, self.ask, 0),
            ("with its menu and a window", ["--background"], self.window_and_menu, self.ask, 0),
            ("without its bus", ["--background"], self.without_bus, self.ask, 0),
            ("with a collector, as its display goes", [], self.collecting, self.lose_display, 1)):
            with self.subTest(name):
                self.home = tempfile.mkdtemp(dir=self.desktop.folder)
                os.mkdir(f"{self.home}/bin")
                write_tool(f"{self.home}/bin/systemctl", TOOL)
                if arrange == self.collecting:
                    open(f"{self.home}/deaf", "w", encoding="ascii").close()
                # The toolkit's own way out leaves everything where it is.
                leaks = ":detect_leaks=0" if end == self.lose_display else ""
                self.environ = {"ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + leaks}
                process = self.start_program(program, *arguments)
                try:
                    arrange(process)
                    end(process)
                    self.assertEqual(process.wait(20), code, self.desktop.log("ostrel"))
                    self.nothing_is_left(process, at_once=arrange == self.as_it_starts)
                finally:
                    process.kill()
                    process.wait()

    def end(self, process: subprocess.Popen) -> None:
        """What has ended was looked at."""
        if process.poll() is None:
            super().end(process)

    def nothing_is_left(self, process: subprocess.Popen, at_once: bool) -> None:
        """Neither a process, nor what it had of the bus, the tray and the disk. This tray goes on listing an
        item that goes right as it comes."""
        if os.path.exists(f"{self.home}/janitor-runs"):
            open(f"{self.home}/go", "w", encoding="ascii").close()
            self.runs("janitor", "done")
        self.wait_for("no process", lambda: not marked_processes.having("HOME", self.home))
        names = (bus.APPLICATION[0], f"{bus.ITEM}-{process.pid}-1")
        self.wait_for("no name", lambda: not any(bus.has_owner(self.desktop.env, name) for name in names))
        if not at_once:
            self.wait_for("no item",
                          lambda: not any(names[1] in item for item in bus.items(self.desktop.env)))
        self.assertEqual(self.instances(), [])
        for folder, _, files in os.walk(self.home):
            for name in files:
                with open(f"{folder}/{name}", encoding="ascii") as file:
                    fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)

    def instances(self) -> list[str]:
        """The files by which instances know of each other."""
        folder = f"{self.desktop.env['XDG_RUNTIME_DIR']}/ostrel"
        return os.listdir(folder) if os.path.isdir(folder) else []

    def runs(self, name: str, what: str = "runs") -> None:
        self.wait_for(name, lambda: os.path.exists(f"{self.home}/{name}-{what}"))

    # What it is doing.

    def as_it_starts(self, process: subprocess.Popen) -> None:
        self.wait_for("its file", self.instances)

    def collecting(self, process: subprocess.Popen) -> None:
        self.panel()
        self.runs("collector")

    def pinned_reading_automations(self, process: subprocess.Popen) -> None:
        self.assertTrue(bus.press_row(self.desktop.env, self.item(process), "pin panel open"))
        self.wait_for_keyboard()
        screen.press(self.desktop, "7")
        self.runs("systemctl")

    def asking(self, process: subprocess.Popen) -> None:
        self.wait_for_keyboard()
        screen.press(self.desktop, "6")
        self.runs("janitor")
        self.assertTrue(bus.press_row(self.desktop.env, self.item(process), "compact own history…"))
        self.wait_for("question", lambda: len(self.visible_windows()) > 1)

    def window_and_menu(self, process: subprocess.Popen) -> None:
        item = self.item(process)
        self.assertTrue(bus.press_row(self.desktop.env, item, "about ostrel"))
        self.wait_for("window", lambda: len(self.visible_windows()) == 1)
        bus.call(self.desktop.env, *item, f"{bus.ITEM}.ContextMenu", "400", "300")
        self.wait_for("menu", lambda: len(self.visible_windows()) == 2)

    def without_bus(self, process: subprocess.Popen) -> None:
        self.item(process)
        self.desktop.stop_bus()
        self.desktop.stop_tray()

    # How it is ended.

    def ask(self, process: subprocess.Popen) -> None:
        process.send_signal(signal.SIGTERM)

    def choose_quit(self, process: subprocess.Popen) -> None:
        self.assertTrue(bus.press_row(self.desktop.env, self.item(process), "quit"))

    def lose_display(self, process: subprocess.Popen) -> None:
        self.desktop.stop_screen()
