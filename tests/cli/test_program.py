# SPDX-License-Identifier: Apache-2.0
"""The built program from outside: what it prints, what it answers, and how it ends.

OSTREL_PROGRAM names the program. Each test has a home of its own and sees neither a display nor a bus unless
it brings one.
"""
from __future__ import annotations

import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path
from typing import Callable

PROGRAM = os.environ["OSTREL_PROGRAM"]
GENEROUS = 60.0

READINGS_KEYS = [
    "memUsedGB", "memTotalGB", "memPct", "freeMB", "swapUsedMB", "swapTotalMB", "swapPct", "load1", "ncpu",
    "pressureLevel", "cpuPct",
]
READINGS_LINE = re.compile(
    r'\{ "memUsedGB": \d+\.\d{3}, "memTotalGB": \d+\.\d{3}, "memPct": \d+, "freeMB": \d+, "swapUsedMB": \d+, '
    r'"swapTotalMB": \d+, "swapPct": \d+, "load1": \d+\.\d\d, "ncpu": \d+, "pressureLevel": [0124], '
    r'"cpuPct": \d+ \}\n'
)
ROUTES = "Routes: --testbed show|hide|toggle, --readings, --self-test, --background"
# Each names something that isn't there.
DEAD_SURROUNDINGS = {
    "DISPLAY": ":4093",
    "WAYLAND_DISPLAY": "ostrel-no-compositor",
    "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent/ostrel-bus",
}


def eventually(condition: Callable[[], bool]) -> bool:
    """Waits for the condition; false when it doesn't hold within the generous limit."""
    end = time.monotonic() + GENEROUS
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.005)
    return True


def session_members(session: int) -> list[str]:
    """The processes of a session that still do something, as "pid name"."""
    members = []
    for entry in Path("/proc").iterdir():
        if not entry.name.isdigit():
            continue
        try:
            text = (entry / "stat").read_text(errors="replace")
        except OSError:
            continue
        name = text[text.index("(") + 1:text.rindex(")")]
        state, _parent, _group, sid = text[text.rindex(")") + 2:].split()[:4]
        if int(sid) == session and state not in "ZX":
            members.append(f"{entry.name} {name}")
    return members


class ProgramTest(unittest.TestCase):
    """A home, and ways to run the program in it."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="ostrel-cli.")
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)
        runtime = self.home / "runtime"
        runtime.mkdir(mode=0o700)
        self.environment = {
            "HOME": str(self.home), "PATH": os.environ["PATH"], "XDG_RUNTIME_DIR": str(runtime)}
        # A sanitizer's build is told its suppressions here.
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LOCPATH"):
            if name in os.environ:
                self.environment[name] = os.environ[name]

    def run_program(
        self, *arguments: str, before: str = "", **variables: str
    ) -> subprocess.CompletedProcess[str]:
        """One run to its end; `before` is shell text for redirections."""
        command = ["/bin/sh", "-c", f'exec "$0" "$@" {before}', PROGRAM, *arguments]
        return subprocess.run(
            command, env={**self.environment, **variables}, stdin=subprocess.DEVNULL, capture_output=True,
            encoding="utf-8", errors="surrogateescape", timeout=GENEROUS, check=False)

    def expect(self, result: subprocess.CompletedProcess[str], code: int, stdout: str, stderr: str) -> None:
        self.assertEqual((result.returncode, result.stdout, result.stderr), (code, stdout, stderr))

    def start(self, *arguments: str, before: str = "", **variables: str) -> subprocess.Popen[bytes]:
        """The application in a session of its own, once its start sequence has begun."""
        command = ["/bin/sh", "-c", f'exec "$0" "$@" {before}', PROGRAM, *arguments]
        stored = self.home / ".config/zol-mini-apps/dev.quent.ostrel.json"
        stored.unlink(missing_ok=True)
        log = open(self.home / "log", "wb")
        self.addCleanup(log.close)
        process = subprocess.Popen(
            command, env={**self.environment, **variables}, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
            start_new_session=True)

        def end() -> None:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()

        self.addCleanup(end)
        eventually(lambda: stored.exists() or process.poll() is not None)
        self.assertIsNone(process.poll(), f"ended at once: {(self.home / 'log').read_text()}")
        return process

    def expect_orderly_end(self, process: subprocess.Popen[bytes], number: int = signal.SIGTERM) -> None:
        process.send_signal(number)
        self.assertEqual(process.wait(GENEROUS), 0, (self.home / "log").read_text())
        self.assertTrue(eventually(lambda: not session_members(process.pid)), session_members(process.pid))

    def start_bus(self) -> str:
        """A message bus with its socket in the home; gives its address."""
        config = self.home / "bus.conf"
        config.write_text(
            f"<busconfig><type>session</type><listen>unix:path={self.home}/bus</listen>"
            '<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/>'
            '<allow own="*"/></policy></busconfig>')
        bus = subprocess.Popen(
            ["dbus-daemon", f"--config-file={config}", "--nofork", "--nosyslog", "--print-address=1"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, encoding="utf-8")
        self.end_later(bus)
        assert bus.stdout is not None
        return bus.stdout.readline().strip()

    def end_later(self, process: subprocess.Popen[str]) -> None:
        def end() -> None:
            process.kill()
            process.wait()
            if process.stdout is not None:
                process.stdout.close()

        self.addCleanup(end)


class ReadingsRoute(ProgramTest):
    def test_prints_one_line_of_json_with_its_keys_in_order(self) -> None:
        for arguments in (["--readings"], ["--readings", "--bar-state"], ["--nonsense", "-x", "--readings"]):
            with self.subTest(arguments=arguments):
                result = self.run_program(*arguments)
                self.assertRegex(result.stdout, re.compile(rf"\A{READINGS_LINE.pattern}\Z"))
                pairs = json.loads(result.stdout, object_pairs_hook=list)
                self.assertEqual([key for key, _ in pairs], READINGS_KEYS)
                values = dict(pairs)
                self.assertGreater(values["memTotalGB"], values["memUsedGB"])
                self.assertGreaterEqual(values["ncpu"], 1)
                self.assertLessEqual(max(values["memPct"], values["cpuPct"]), 100)
                self.expect(result, 0, result.stdout, "")

    def test_prints_the_same_under_a_locale_with_a_decimal_comma(self) -> None:
        german = {"LC_ALL": "de_DE.UTF-8", "LANG": "de_DE.UTF-8"}
        shown = subprocess.run(
            ["locale", "decimal_point"], env={**self.environment, **german}, capture_output=True,
            encoding="utf-8", check=False).stdout
        if shown != ",\n":
            self.skipTest("no locale with a decimal comma is installed")
        self.assertRegex(self.run_program("--readings", **german).stdout, READINGS_LINE)


class BarStateRoute(ProgramTest):
    def test_prints_the_file_without_blanks_at_its_ends(self) -> None:
        state = self.home / ".config/zol-mini-apps/ostrel-bar-state.json"
        state.parent.mkdir(parents=True)
        for text in ('{ "mode": "mark · ä" }', ' \n\t{ "mode": "mark · ä" }\r\n\n'):
            state.write_text(text, encoding="utf-8")
            self.expect(self.run_program("--bar-state"), 0, '{ "mode": "mark · ä" }\n', "")

    def test_names_the_full_path_when_the_file_cant_be_read(self) -> None:
        path = self.home / ".config/zol-mini-apps/ostrel-bar-state.json"
        message = f"ostrel: no bar state written yet at {path}\n"
        self.expect(self.run_program("--bar-state"), 2, "", message)
        path.mkdir(parents=True)
        self.expect(self.run_program("--bar-state", "--nonsense"), 2, "", message)


class ArgumentCheck(ProgramTest):
    def test_an_unknown_argument_is_named_and_refused(self) -> None:
        for arguments, unknown in (
            (["--x"], "--x"), (["--"], "--"), (["show", "--{}%n"], "--{}%n"),
            (["--background", "--b", "--a"], "--b"),
        ):
            with self.subTest(arguments=arguments):
                self.expect(
                    self.run_program(*arguments), 1, "", f"ostrel: unknown argument {unknown}. {ROUTES}\n")
        self.assertEqual([entry.name for entry in self.home.iterdir()], ["runtime"], "nothing is written")

    def test_the_exit_code_stands_when_nobody_can_read_the_message(self) -> None:
        for before in ("2>&-", "2>/dev/full"):
            with self.subTest(before=before):
                self.assertEqual(self.run_program("--x", before=before).returncode, 1)
                self.assertEqual(self.run_program("--bar-state", before=before).returncode, 2)

    def test_a_self_test_says_on_standard_error_that_it_failed_and_only_then(self) -> None:
        result = self.run_program("--self-test", "--nonsense")
        self.assertIn(result.returncode, (0, 1))
        told = result.stderr.startswith("self-test failed: ")
        self.assertEqual(result.returncode == 1, told, result.stderr)


class TestbedRoute(ProgramTest):
    def test_says_sent_whether_or_not_anybody_is_there(self) -> None:
        for arguments, action in (
            (["--testbed"], "show"), (["--testbed", "hide"], "hide"), (["--testbed", "banana"], "banana"),
            (["--testbed", "a", "--testbed", "b"], "a"), (["toggle", "--testbed", ""], ""),
            (["--testbed", "--background"], "--background"),
            (["--testbed", "\udcff"], "\udcff"),
        ):
            with self.subTest(arguments=arguments):
                self.expect(self.run_program(*arguments), 0, f"ostrel: testbed {action} sent\n", "")

    def test_the_message_reaches_the_bus_and_a_refused_one_doesnt(self) -> None:
        address = self.start_bus()
        monitor = subprocess.Popen(
            ["dbus-monitor", "--address", address, "type=signal,member=Posted"], stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, encoding="utf-8")
        self.end_later(monitor)
        assert monitor.stdout is not None
        # It announces its own connection once it listens.
        monitor.stdout.readline()
        bus = {"DBUS_SESSION_BUS_ADDRESS": address}
        self.assertEqual(self.run_program("--testbed", "show", "--nonsense", **bus).returncode, 1)
        for action in ("bänana", "last"):
            result = self.run_program("--testbed", action, **bus)
            self.expect(result, 0, f"ostrel: testbed {action} sent\n", "")
        heard = ""
        while '"last"' not in heard:
            line = monitor.stdout.readline()
            self.assertTrue(line, f"the monitor ended early: {heard}")
            heard += line
        self.assertNotIn('"show"', heard)
        self.assertEqual(heard.count("path=/dev/quent/ostrel; "), 2, heard)
        self.assertEqual(heard.count('string "dev.quent.ostrel.testbed"'), 2, heard)
        self.assertRegex(heard, r'string "action"\s+variant\s+string "bänana"')


class Surroundings(ProgramTest):
    def test_the_routes_answer_where_display_and_bus_are_named_and_dead(self) -> None:
        self.assertRegex(self.run_program("--readings", **DEAD_SURROUNDINGS).stdout, READINGS_LINE)
        self.assertEqual(self.run_program("--bar-state", **DEAD_SURROUNDINGS).returncode, 2)
        self.assertEqual(self.run_program("--x", **DEAD_SURROUNDINGS).returncode, 1)
        self.expect(self.run_program("--testbed", **DEAD_SURROUNDINGS), 0, "ostrel: testbed show sent\n", "")


class Application(ProgramTest):
    def test_in_the_background_it_runs_without_a_child_until_it_is_told_to_end(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                process = self.start("--background")
                self.assertEqual(len(session_members(process.pid)), 1)
                self.expect_orderly_end(process, number)

    def test_with_its_panel_open_it_ends_and_takes_its_children_with_it(self) -> None:
        self.expect_orderly_end(self.start())

    def test_arguments_with_one_dash_or_none_are_never_refused(self) -> None:
        for arguments in (["-x", "show"], ["--snapshot", "/nonexistent"], ["-platform", "nonsense"]):
            with self.subTest(arguments=arguments):
                self.expect_orderly_end(self.start("--background", *arguments))

    def test_runs_where_display_and_bus_are_named_and_dead(self) -> None:
        for name, value in DEAD_SURROUNDINGS.items():
            with self.subTest(name=name):
                self.expect_orderly_end(self.start("--background", **{name: value}))

    def test_runs_when_nobody_can_read_its_messages(self) -> None:
        for before in ("2>&-", "2>/dev/full"):
            with self.subTest(before=before):
                self.expect_orderly_end(self.start("--background", before=before))

    def test_puts_its_item_on_the_bus_and_takes_it_off_at_its_end(self) -> None:
        address = self.start_bus()
        process = self.start("--background", DBUS_SESSION_BUS_ADDRESS=address)
        service = f"org.kde.StatusNotifierItem-{process.pid}-1"

        def property_of_item(name: str) -> str:
            return subprocess.run(
                ["gdbus", "call", "--address", address, "--dest", service, "--object-path",
                 "/StatusNotifierItem", "--method", "org.freedesktop.DBus.Properties.Get",
                 "org.kde.StatusNotifierItem", name],
                capture_output=True, encoding="utf-8", check=False).stdout

        self.assertTrue(eventually(lambda: property_of_item("Title") == "(<'ostrel'>,)\n"))
        self.assertTrue(property_of_item("ToolTip").count("ostrel · cpu "))
        self.expect_orderly_end(process)
        self.assertEqual(property_of_item("Title"), "")

    @unittest.skipUnless(shutil.which("Xvfb"), "needs a virtual display")
    def test_ends_in_order_under_a_display_too(self) -> None:
        read, write = os.pipe()
        display = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-nolisten", "tcp"],
            pass_fds=[write], stderr=subprocess.DEVNULL, encoding="utf-8")
        self.end_later(display)
        os.close(write)
        with os.fdopen(read) as number:
            name = ":" + number.readline().strip()
        bus = self.start_bus()
        for arguments in (["--background"], []):
            with self.subTest(arguments=arguments):
                process = self.start(*arguments, DISPLAY=name, DBUS_SESSION_BUS_ADDRESS=bus)
                self.expect_orderly_end(process)


if __name__ == "__main__":
    unittest.main()
