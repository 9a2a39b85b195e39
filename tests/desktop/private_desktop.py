# SPDX-License-Identifier: Apache-2.0
"""A private X11 desktop: virtual screen, home, session bus, window manager and a tray for status items.

Nothing of the developer's own session is read or reached, nothing listens on the network, and at the end
(also after a failure or a signal) every process that the desktop caused has ended and its folder is gone.
"""
import atexit
import contextlib
import glob
import os
import re
import secrets
import shutil
import signal
import struct
import subprocess
import tempfile
import threading
import time
from collections.abc import Sequence
from pathlib import Path
from typing import Callable, Optional, TypeVar

import bus
import marked_processes
from trays import HEIGHT as TRAY_HEIGHT, TRAYS  # noqa: F401

# What each part needs: a program on the path or a file pattern, and the Debian package that has it.
PACKAGES = [("Xvfb", "xvfb"), ("dbus-daemon", "dbus-daemon"), ("gdbus", "libglib2.0-bin"),
            ("xprop", "x11-utils"), ("xdotool", "xdotool")]
ACCESSIBLE_PACKAGES = [("/usr/libexec/at-spi-bus-launcher", "at-spi2-core"),
                       ("/usr/lib/python3/dist-packages/pyatspi", "python3-pyatspi")]
DIVIDING_PACKAGES = [("xrandr", "x11-xserver-utils")]
# All that is taken over from the surroundings. The rest of the environment describes another desktop.
KEPT_VARIABLES = ("PATH", "TMPDIR", "ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")
# By name, which is the package's too. The second one composes the windows, so that they may be translucent.
WINDOW_MANAGERS = {"openbox": ["openbox", "--sm-disable"],
                   "xfwm4": ["xfwm4", "--compositor=on", "--sm-client-disable"]}
# The second one gives the keyboard only to a window that comes from what the user does.
MANAGER_SETTINGS = ".config/xfce4/xfconf/xfce-perchannel-xml/xfwm4.xml"
FOCUS_IS_KEPT = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfwm4" version="1.0">
  <property name="general" type="empty">
    <property name="prevent_focus_stealing" type="bool" value="true"/>
    <property name="activate_action" type="string" value="none"/>
  </property>
</channel>
"""
BUS_CONFIGURATION = """<busconfig>
<type>session</type> <auth>EXTERNAL</auth>
<listen>unix:path={folder}/run/bus</listen> <servicedir>{folder}/services</servicedir>
<policy context="default">
  <allow send_destination="*" eavesdrop="true"/> <allow eavesdrop="true"/> <allow own="*"/>
</policy>
</busconfig>"""
GENEROUS = 20.0  # seconds for what takes a fraction of one on an idle machine
PATIENCE_WITH_A_TRAY = 8  # seconds, before it is started anew
WATCHED_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
Answer = TypeVar("Answer")


class DesktopError(RuntimeError):
    """The desktop, or something awaited on it, didn't come. The text says what and why."""


class MissingPackages(DesktopError):
    """A program that the desktop needs isn't installed. The text has the line that installs it."""


class Interrupted(KeyboardInterrupt):
    """A signal asks to end; its number is the argument. Test runners let it through like the keyboard's."""


def require(packages: list[tuple[str, str]]) -> None:
    """Raises MissingPackages unless everything in a list like PACKAGES is installed."""
    missing = {package: need for need, package in packages
               if not (glob.glob(need) if "/" in need else shutil.which(need))}
    if missing:
        raise MissingPackages(f"{', '.join(sorted(missing.values()))} missing; "
                              f"run: apt-get install --no-install-recommends {' '.join(sorted(missing))}")


class PrivateDesktop:
    """One desktop, from `with` to its end. `env` is the environment of all that runs on it, `home` its home
    folder, `size` the screen's width and height in pixels, `tray` one of TRAYS, `manager` one of
    WINDOW_MANAGERS, `displays` what the screen is divided into: left, top, width and height of each, the main
    one first. One thread, one desktop at a time."""

    def __init__(self, size: tuple[int, int] = (1440, 900), scale: int = 1, accessible: bool = False,
                 tray: str = "xfce", manager: str = "openbox",
                 displays: Sequence[tuple[int, int, int, int]] = ()) -> None:
        self.size, self.scale, self.accessible, self.displays = size, scale, accessible, displays
        self.tray = TRAYS[tray]
        self.manager = manager
        self._parts: dict[str, subprocess.Popen] = {}
        self._started: list[subprocess.Popen] = []
        self._handlers: dict[int, object] = {}
        self._mark = secrets.token_hex(12)
        self.folder = self.home = ""
        self.env: dict[str, str] = {}

    def __enter__(self) -> "PrivateDesktop":
        require(PACKAGES + [(self.manager, self.manager)] + self.tray.packages
                + ACCESSIBLE_PACKAGES * self.accessible + DIVIDING_PACKAGES * bool(self.displays))
        self._watch_signals()
        marked_processes.adopt_orphans()
        atexit.register(self.close)  # a test runner that is interrupted leaves no other way
        try:
            self._make_folders()
            self._start_screen()
            self._start_bus()
            self._start_window_manager()
            self.start_tray()
        except BaseException:
            self.close()
            raise
        return self

    def close(self, *_: object) -> None:
        """Ends all that runs on the desktop and removes its folder. A second call does nothing."""
        if not self.folder:
            return
        for number in self._handlers:
            signal.signal(number, signal.SIG_IGN)  # nothing may interrupt the clean-up
        left = marked_processes.end_all(self._mark, reaped_elsewhere=[child.pid for child in self._started])
        for process in self._started:
            # What has just given its memory back shows no mark any more, and ends in a moment.
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(0 if left else GENEROUS)
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder = ""
        atexit.unregister(self.close)
        for number, handler in self._handlers.items():
            signal.signal(number, handler)
        self._handlers.clear()
        if left:
            raise DesktopError(f"processes that can't be ended: {sorted(left)}")

    __exit__ = close

    def start(self, name: str, command: list[str], env: Optional[dict[str, str]] = None) -> subprocess.Popen:
        """Starts a program on the desktop; what it prints goes to the log of that name."""
        with open(self._log(name), "ab") as log:
            process = subprocess.Popen(command, env=env or self.env, cwd=self.home, stdin=subprocess.DEVNULL,
                                       stdout=log, stderr=log, start_new_session=True,
                                       preexec_fn=marked_processes.end_with_parent)
        self._started.append(process)
        return process

    def run(self, command: list[str]) -> subprocess.CompletedProcess:
        """Runs a short command on the desktop to its end and gives its exit code and texts."""
        return subprocess.run(command, env=self.env, cwd=self.home, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=GENEROUS * 3, check=False)

    def log(self, name: str) -> str:
        with contextlib.suppress(OSError):
            return Path(self._log(name)).read_text("utf-8", "replace")
        return ""

    def wait_for(self, what: str, condition: Callable[[], Answer], limit: float = GENEROUS,
                 program: str = "") -> Answer:
        """Waits until the condition gives something true, and gives that. DesktopError names `what` and
        shows the log of `program` when the limit (seconds) is over or a part of the desktop has ended."""
        end = time.monotonic() + limit
        while not (answer := condition()):
            dead = [name for name, part in self._parts.items() if part.poll() is not None]
            if dead or time.monotonic() > end:
                why = f"{', '.join(dead)} ended" if dead else f"not within {limit:g} s"
                logs = "\n".join(f"[{name}] {self.log(name)[-1500:]}" for name in dead + [program] if name)
                raise DesktopError(f"{what}: {why}\n{logs}".rstrip())
            time.sleep(0.03)
        return answer

    def home_environment(self, home: str) -> dict[str, str]:
        return dict(self.env, HOME=home)

    def start_tray(self, name: str = "") -> None:
        """Starts the tray, or another one from now on, and waits until it takes items and has its strip of
        the screen."""
        if name:
            self.tray = TRAYS[name]
            require(self.tray.packages)
        for path, text in self.tray.files.items():
            self._put(path, text)
        # Now and then a window manager that is just starting misses the strip that a tray asks for.
        for limit in (PATIENCE_WITH_A_TRAY, GENEROUS):
            try:
                return self._try_tray(limit)
            except DesktopError:
                if limit == GENEROUS:
                    raise
                self._kill_tray()

    def _try_tray(self, limit: float) -> None:
        parts = []
        for number, command in enumerate(self.tray.commands):
            parts.append(f"tray{number}")
            self._parts[parts[-1]] = self.start(parts[-1], [word.format(home=self.home) for word in command])
        full = (0, 0, *self.size)
        self.wait_for("tray", lambda: not parts or self.work_area() not in (None, full)
                      and (not self.tray.takes_items or bus.has_host(self.env)),
                      limit=limit, program=parts[-1] if parts else "")

    def _kill_tray(self) -> None:
        for name in [name for name in self._parts if name.startswith("tray")]:
            part = self._parts.pop(name)
            with contextlib.suppress(ProcessLookupError):
                os.killpg(part.pid, signal.SIGKILL)
            part.wait()

    def stop_tray(self) -> None:
        """Kills the tray, as a crash would, and waits until the bus has seen it go."""
        self._kill_tray()
        self.wait_for("the tray's end", lambda: not bus.has_owner(self.env, bus.WATCHER))

    def stop_bus(self) -> None:
        self._kill("bus")

    def stop_screen(self) -> None:
        """Kills the screen, with all that shows something on it, for good."""
        self._kill(*self._parts.keys() - {"bus"})

    def _kill(self, *names: str) -> None:
        for part in map(self._parts.pop, names):
            part.kill()
            part.wait()

    def work_area(self) -> Optional[tuple[int, ...]]:
        """The part of the screen that the tray's strip leaves free: left, top, width and height in pixels;
        None before the window manager has told it."""
        numbers = self._root("_NET_WORKAREA").partition("=")[2].split(",")[:4]
        return tuple(map(int, numbers)) if len(numbers) == 4 else None

    def _put(self, path: str, text: str) -> None:
        """A file of the home, with its folders."""
        os.makedirs(os.path.dirname(f"{self.home}/{path}"), mode=0o700, exist_ok=True)
        Path(self.home, path).write_text(text, "utf-8")

    def _log(self, name: str) -> str:
        return f"{self.folder}/log/{name}.log"

    def _watch_signals(self) -> None:
        def interrupt(number: int, _: object) -> None:
            raise Interrupted(number)

        if threading.current_thread() is threading.main_thread():
            self._handlers = {number: signal.signal(number, interrupt) for number in WATCHED_SIGNALS}

    def _make_folders(self) -> None:
        self.folder = tempfile.mkdtemp(prefix="ostrel-desktop-")
        self.home = f"{self.folder}/home"
        self.env = {key: os.environ[key] for key in KEPT_VARIABLES if key in os.environ}
        self.env.update({
            marked_processes.MARK: self._mark, "HOME": self.home,
            "LANG": "C.UTF-8", "QT_QPA_PLATFORM": "xcb", "GDK_BACKEND": "x11",
            "XDG_SESSION_TYPE": "x11", "XDG_CURRENT_DESKTOP": "XFCE",
            "XDG_RUNTIME_DIR": f"{self.folder}/run", "XAUTHORITY": f"{self.folder}/xauthority",
            # The machine's own system bus isn't part of this desktop.
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/no-system-bus"})
        self.env["QT_LINUX_ACCESSIBILITY_ALWAYS_ON" if self.accessible else "NO_AT_BRIDGE"] = "1"
        if self.scale != 1:
            # GTK multiplies the dots per inch by the scale once more.
            self.env.update({"GDK_SCALE": str(self.scale), "GDK_DPI_SCALE": str(1 / self.scale)})
        for path in (f"{self.folder}/run", f"{self.folder}/log", f"{self.folder}/services", self.home):
            os.makedirs(path, mode=0o700)

    def _start_screen(self) -> None:
        cookie = [b"", b"", b"MIT-MAGIC-COOKIE-1", secrets.token_bytes(16)]
        with open(self.env["XAUTHORITY"], "wb") as file:
            os.fchmod(file.fileno(), 0o600)
            # Family 0xffff with empty address and number: the key fits whatever display number comes out.
            file.write(b"\xff\xff" + b"".join(struct.pack(">H", len(part)) + part for part in cookie))
        dpi = str(96 * self.scale)
        command = ["Xvfb", "-displayfd", "1", "-screen", "0", f"{self.size[0]}x{self.size[1]}x24", "-noreset",
                   "-dpi", dpi, "-nolisten", "tcp", "-auth", self.env["XAUTHORITY"], "-fbdir", self.folder]
        self.env["DISPLAY"] = ":" + self._start_part("screen", command, r"^(\d+)\n")
        if self.scale != 1:
            self.run(["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER",
                      f"Xft.dpi:\t{dpi}\n"])
        for number, (left, top, width, height) in enumerate(self.displays):
            # Millimetres behind the pixels. The screen's only output goes to the first display.
            place = f"{width}/{width // 4}x{height}/{height // 4}+{left}+{top}"
            self.run(["xrandr", "--setmonitor", f"display{number}", place, "none" if number else "screen"])

    def _start_bus(self) -> None:
        # What the bus may start on demand; everything else on it is started by hand or absent.
        for name in ["org.xfce.Xfconf"] + ["org.a11y.Bus"] * self.accessible:
            os.symlink(f"/usr/share/dbus-1/services/{name}.service", f"{self.folder}/services/{name}.service")
        configuration = f"{self.folder}/bus.conf"
        Path(configuration).write_text(BUS_CONFIGURATION.format(folder=self.folder), "utf-8")
        command = ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile", "--nosyslog",
                   "--print-address=1"]
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self._start_part("bus", command, r"^(unix:.*)\n")
        if self.accessible:
            self.wait_for("accessibility bus", lambda: bus.call(
                self.env, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress"))

    def _start_window_manager(self) -> None:
        self._put(MANAGER_SETTINGS, FOCUS_IS_KEPT)
        self._parts[self.manager] = self.start(self.manager, WINDOW_MANAGERS[self.manager])
        self.wait_for(self.manager, lambda: "0x" in self._root("_NET_SUPPORTING_WM_CHECK"),
                      program=self.manager)

    def _start_part(self, name: str, command: list[str], ready: str) -> str:
        """Starts a part that prints a line of this form when it is ready, and gives that line."""
        self._parts[name] = self.start(name, command)
        return self.wait_for(name, lambda: re.search(ready, self.log(name), re.MULTILINE), program=name)[1]

    def _root(self, name: str) -> str:
        return self.run(["xprop", "-root", "-notype", name]).stdout
