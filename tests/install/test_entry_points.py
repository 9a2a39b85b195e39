# SPDX-License-Identifier: Apache-2.0
"""Every way into the installed program, on a private desktop: each starts it, and reaches one that runs.

OSTREL_PREFIX names the prefix of an installation; without it the build tree's program is installed.
"""
import contextlib
import glob
import os
import shlex
import signal
import sys
from pathlib import Path
from types import SimpleNamespace

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "desktop"))

import bus  # noqa: E402
import screen  # noqa: E402
import staging  # noqa: E402
from desktop_case import PanelCase  # noqa: E402

NAME, PATH = bus.APPLICATION
DAEMON = ("org.freedesktop.DBus", "/org/freedesktop/DBus")
SWITCH = ".config/zol-mini-apps/ostrel-no-autostart"
USERS_ENTRY = f".config/autostart/{NAME}.desktop"
# A launcher that stays on the bus, as a desktop's does: the bus drops what one that has left still asks for.
LAUNCH_ACTION = f"""from gi.repository import Gio, GLib
bus = Gio.bus_get_sync(Gio.BusType.SESSION, None)
loop = GLib.MainLoop()
GLib.timeout_add_seconds(15, loop.quit)
Gio.DesktopAppInfo.new("{NAME}.desktop").launch_action("settings", None)
loop.run()"""
IN_SETTINGS = "keep panel open"  # a button that no other tab has


class EntryPoints(PanelCase):
    prefix: str

    @classmethod
    def setUpClass(cls) -> None:
        super().setUpClass()
        cls.prefix = prefix = os.environ.get("OSTREL_PREFIX") or staging.prefix()
        env = cls.desktop.env
        env["PATH"] = f"{prefix}/bin:{env['PATH']}"
        if prefix != "/usr":
            env["XDG_DATA_DIRS"] = f"{prefix}/share:/usr/local/share:/usr/share"
            env["XDG_CONFIG_DIRS"] = f"{prefix}/etc/xdg"
        # Of what this desktop's bus may start, the machine's own is no part.
        os.symlink(f"{prefix}/share/dbus-1/services/{NAME}.service",
                   f"{cls.desktop.folder}/services/{NAME}.service")
        bus.call(env, *DAEMON, "org.freedesktop.DBus.ReloadConfig")
        cls.home = cls.desktop.home

    def pid(self) -> int:
        """Waits until the instrument listens on the bus, and gives its process."""
        self.wait_for("name on the bus", lambda: bus.has_owner(self.desktop.env, NAME))
        return bus.call(self.desktop.env, *DAEMON, "org.freedesktop.DBus.GetConnectionUnixProcessID", NAME)

    def stop(self, pid: int) -> None:
        def has_gone() -> bool:
            with contextlib.suppress(ChildProcessError):  # it may have become a child of this process
                os.waitpid(pid, os.WNOHANG)
            return not os.path.exists(f"/proc/{pid}")

        with contextlib.suppress(ProcessLookupError):
            os.kill(pid, signal.SIGTERM)
        self.wait_for("the instrument's end", has_gone)

    def entry(self, line: str) -> list[str]:
        """The commands of the desktop entry that its lines of this beginning name, without an address."""
        rows = Path(self.prefix, f"share/applications/{NAME}.desktop").read_text("utf-8").splitlines()
        return [row.partition("=")[2].replace("%u", "").strip() for row in rows if row.startswith(line)]

    def test_each_way_in_starts_the_program_and_reaches_the_one_that_runs(self):
        entry = f"{self.prefix}/share/applications/{NAME}.desktop"
        call = ["gdbus", "call", "--session", "--dest", NAME, "--object-path", PATH, "--method"]
        ways = [
            ("Activate", [*call, f"{bus.OPEN}.Activate", "{}"], ""),
            ("Open", [*call, f"{bus.OPEN}.Open", "['ostrel://toggle']", "{}"], ""),
            ("entry", ["gio", "launch", entry], ""),
            ("action", [sys.executable, "-c", LAUNCH_ACTION], IN_SETTINGS),
            ("address", ["xdg-open", "ostrel://show?testbed=0"], ""),
            ("address by gio", ["gio", "open", "OSTREL:?command=toggle"], ""),
            ("plain desktop", ["env", "XDG_CURRENT_DESKTOP=X-Generic", "xdg-open", "ostrel:"], "")]
        # What a desktop runs that knows nothing of the bus.
        commands = self.entry("Exec=")
        self.assertEqual(len(commands), 3)
        ways += [(command, shlex.split(command), IN_SETTINGS if "settings" in command else "")
                 for command in commands]
        for name, command, shown in ways:
            with self.subTest(way=name):
                self.desktop.start("way", command)
                pid = self.pid()
                self.addCleanup(self.stop, pid)
                self.arrived(pid, shown)
                self.close_panel()
                self.desktop.start("way", command)
                self.arrived(pid, shown)
                self.assertEqual(self.pid(), pid, "one instance")
                self.stop(pid)

    def arrived(self, pid: int, shown: str) -> None:
        self.panel()
        if shown:
            self.said(SimpleNamespace(pid=pid), shown)

    def test_the_login_starts_it_with_its_panel_closed_unless_one_of_two_switches_is_off(self):
        login, = glob.glob("/usr/lib/*/openbox-xdg-autostart")
        self.desktop.start("login", [login])
        pid = self.pid()
        self.addCleanup(self.stop, pid)
        self.item(SimpleNamespace(pid=pid))
        self.assertEqual(Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0")[1:], [b"--background", b""])
        self.assertIsNone(screen.panel_window(self.desktop))
        self.stop(pid)

        etc = "/etc" if self.prefix == "/usr" else f"{self.prefix}/etc"
        text = Path(etc, f"xdg/autostart/{NAME}.desktop").read_text("utf-8")
        command, = (shlex.split(row[5:]) for row in text.splitlines() if row.startswith("Exec="))
        switch, users = (f"{self.desktop.home}/{path}" for path in (SWITCH, USERS_ENTRY))
        for path in (switch, users):
            os.makedirs(os.path.dirname(path), exist_ok=True)
        os.symlink("/nowhere", switch)  # whatever it is
        self.addCleanup(os.remove, switch)
        done = self.desktop.run(command)  # comes back only where nothing was started
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        by_hand = self.start_program("ostrel", "--background")
        self.assertEqual(self.pid(), by_hand.pid, "who starts it by hand wants it")

        self.assertIn("[*] OSTREL", self.desktop.run([login, "--list"]).stdout)
        Path(users).write_text(text + "Hidden=true\n", "utf-8")
        self.addCleanup(os.remove, users)
        self.assertIn("[ ] OSTREL", self.desktop.run([login, "--list"]).stdout)

    def test_the_installed_program_finds_its_scripts_and_its_icons(self):
        process = self.start_program("ostrel")
        item = self.item(process)
        self.wait_for("a snapshot", lambda: bus.tool_tip(self.desktop.env, item).endswith("local CLI"))
        icons = bus.item_property(self.desktop.env, item, "IconThemePath")
        self.assertTrue(os.path.samefile(icons, f"{self.prefix}/share/ostrel/icons"), icons)
