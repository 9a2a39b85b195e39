# SPDX-License-Identifier: Apache-2.0
"""The built program from outside: what it prints, what it answers, and how it ends.

OSTREL_PROGRAM names the program. Each test has a home of its own and sees neither a display nor a bus unless
it brings one.
"""
from __future__ import annotations

import json
import os
import re
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path
from typing import Callable

PROGRAM = os.environ["OSTREL_PROGRAM"]
GENEROUS = 60.0

READINGS_LINE = re.compile(
    r'\{ "memUsedGB": \d+\.\d{3}, "memTotalGB": \d+\.\d{3}, "memPct": \d+, "freeMB": \d+, "swapUsedMB": \d+, '
    r'"swapTotalMB": \d+, "swapPct": \d+, "load1": \d+\.\d\d, "ncpu": \d+, "pressureLevel": [0124], '
    r'"cpuPct": \d+ \}\n\Z')
ROUTES = "Routes: --testbed show|hide|toggle, --readings, --self-test, --background"
SELF_TEST = r"\A" + "".join(
    rf"layout {title}: scroll=\(16, \d+, 728, \d+\) doc=\(0, 0, 728, \d+\) flipped=true\n"
    for title in ("dashboard", "system", "processes", "agents", "insights", "cleanup", "automations",
                  "server", "settings")
) + re.escape("""\
PASS: hotkey recorder offscreen; field records, esc cancels, delete clears, three refusals print one line \
each; nothing stored
PASS: four 44pt dashboard buttons navigate to their working views
PASS: actual light → dark → light switch under opposite ambient appearance; rendered canvas pixels and \
inherited appearance
PASS: shared hint card offscreen 400x###; appear 0.18 s / panel 0.2 s from tokens; pin default off
PASS: collector deadline and nonzero exit
PASS: 45 offscreen tab/state combinations; 760x700; fonts; selection; hidden window; native CPU/RAM valid
""").replace(r"\#\#\#", r"\d{2,3}") + r"\Z"
# Each names something that isn't there.
DEAD_SURROUNDINGS = {
    "DISPLAY": ":4093",
    "WAYLAND_DISPLAY": "ostrel-no-compositor",
    "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent/ostrel-bus"}


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
    for entry in Path("/proc").glob("[0-9]*/stat"):
        try:
            head, _, tail = entry.read_text(errors="replace").rpartition(") ")
        except OSError:
            continue
        state, _parent, _group, sid = tail.split()[:4]
        if int(sid) == session and state not in "ZX":
            members.append(head.replace("(", ""))
    return members


class ProgramTest(unittest.TestCase):
    """A home, and ways to run the program in it. `before` is shell text for redirections."""

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

    def run_program(self, *arguments: str, before: str = "",
                    **variables: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            ["/bin/sh", "-c", f'exec "$0" "$@" {before}', PROGRAM, *arguments],
            env={**self.environment, **variables}, stdin=subprocess.DEVNULL, capture_output=True,
            encoding="utf-8", errors="surrogateescape", timeout=GENEROUS, check=False)

    def expect(self, result: subprocess.CompletedProcess[str], code: int, stdout: str, stderr: str) -> None:
        self.assertEqual((result.returncode, result.stdout, result.stderr), (code, stdout, stderr))

    def start(self, *arguments: str, before: str = "", **variables: str) -> subprocess.Popen[bytes]:
        """The application in a session of its own, once its start sequence has begun."""
        stored = self.home / ".config/zol-mini-apps/dev.quent.ostrel.json"
        stored.unlink(missing_ok=True)
        with open(self.home / "log", "wb") as log:
            process = subprocess.Popen(
                ["/bin/sh", "-c", f'exec "$0" "$@" {before}', PROGRAM, *arguments],
                env={**self.environment, **variables}, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                start_new_session=True)
        self.addCleanup(self.kill, process)
        eventually(lambda: stored.exists() or process.poll() is not None)
        self.assertIsNone(process.poll(), f"ended at once: {(self.home / 'log').read_text()}")
        return process

    def expect_orderly_end(self, process: subprocess.Popen[bytes], number: int = signal.SIGTERM) -> None:
        process.send_signal(number)
        self.assertEqual(process.wait(GENEROUS), 0, (self.home / "log").read_text())
        self.assertTrue(eventually(lambda: not session_members(process.pid)), session_members(process.pid))

    def listen(self, *command: str) -> subprocess.Popen[str]:
        """A helper whose standard output is read, and that ends with the test."""
        process = subprocess.Popen(
            command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, encoding="utf-8",
            start_new_session=True)
        self.addCleanup(self.kill, process)
        return process

    def start_bus(self) -> str:
        """Starts a session bus that ends with the test, and gives its address."""
        config = self.home / "bus.conf"
        config.write_text(
            f"<busconfig><type>session</type><listen>unix:path={self.home}/bus</listen>"
            '<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/>'
            '<allow own="*"/></policy></busconfig>')
        bus = self.listen(
            "dbus-daemon", f"--config-file={config}", "--nofork", "--nosyslog", "--print-address=1")
        return bus.stdout.readline().strip()

    def kill(self, process: subprocess.Popen) -> None:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        if process.stdout is not None:
            process.stdout.close()


class Routes(ProgramTest):
    def test_readings_prints_one_line_of_json(self) -> None:
        result = self.run_program("--nonsense", "--readings")
        self.expect(result, 0, result.stdout, "")
        self.assertRegex(result.stdout, READINGS_LINE)
        values = json.loads(result.stdout)
        self.assertGreater(values["memTotalGB"], values["memUsedGB"])
        self.assertGreaterEqual(values["ncpu"], 1)
        self.assertLessEqual(max(values["memPct"], values["cpuPct"]), 100)

    def test_readings_prints_the_same_under_a_locale_with_a_decimal_comma(self) -> None:
        german = {"LC_ALL": "de_DE.UTF-8", "LANG": "de_DE.UTF-8"}
        shown = subprocess.run(
            ["locale", "decimal_point"], env={**self.environment, **german}, capture_output=True,
            encoding="utf-8", check=False).stdout
        self.assertEqual(shown, ",\n")
        self.assertRegex(self.run_program("--readings", **german).stdout, READINGS_LINE)

    def test_bar_state_prints_the_file_or_names_its_full_path_when_it_cant_be_read(self) -> None:
        path = self.home / ".config/zol-mini-apps/ostrel-bar-state.json"
        message = f"ostrel: no bar state written yet at {path}\n"
        self.expect(self.run_program("--bar-state"), 2, "", message)
        path.mkdir(parents=True)
        self.expect(self.run_program("--bar-state", "--nonsense"), 2, "", message)
        path.rmdir()
        path.write_text(' \n{ "mode": "mark · ä" }\r\n\n', encoding="utf-8")
        self.expect(self.run_program("--bar-state"), 0, '{ "mode": "mark · ä" }\n', "")

    def test_an_unknown_argument_is_named_and_refused(self) -> None:
        for arguments, unknown in ((["--"], "--"), (["--testbed", "--{}%n", "--a"], "--{}%n")):
            message = f"ostrel: unknown argument {unknown}. {ROUTES}\n"
            self.expect(self.run_program(*arguments), 1, "", message)
        self.assertEqual([entry.name for entry in self.home.iterdir()], ["runtime"], "nothing is written")

    def test_the_exit_code_stands_when_nobody_can_read_the_message(self) -> None:
        for before in ("2>&-", "2>/dev/full"):
            self.assertEqual(self.run_program("--x", before=before).returncode, 1, before)
            self.assertEqual(self.run_program("--bar-state", before=before).returncode, 2, before)

    def test_a_self_test_passes_line_by_line_in_whatever_surroundings(self) -> None:
        everything = self.environment
        poor = {"HOME": "/dev/null", **DEAD_SURROUNDINGS}  # a home in which nothing can be read or written
        for lacking, variables in (((), {}), (("HOME",), {}), (("HOME", "XDG_RUNTIME_DIR", "PATH"), poor)):
            with self.subTest(lacking=lacking, **variables):
                self.environment = {name: everything[name] for name in everything if name not in lacking}
                result = self.run_program("--self-test", "--nonsense", "--snapshot", **variables)
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertRegex(result.stdout, SELF_TEST)
                # The toolkit tells of a missing runtime folder.
                said = [line for line in result.stderr.splitlines() if "QStandardPaths: " not in line]
                self.assertEqual(said, [])

    def test_a_self_test_that_fails_says_so_on_standard_error_and_prints_no_further_line(self) -> None:
        path = self.home / "snapshot.json"
        for text, failure in ((None, f"the file can't be read: {path}"), ("{", "the snapshot isn't JSON"),
                              ("[]", "the snapshot isn't an object")):
            if text:
                path.write_text(text)
            result = self.run_program("--snapshot", str(path), "--self-test", OSTREL_PUBLIC_FIXTURE="1")
            self.expect(result, 1, "", f"self-test failed: {failure}\n")

    def test_testbed_says_sent_whether_or_not_anybody_is_there(self) -> None:
        for arguments, action in ((["--testbed"], "show"), (["--testbed", "\udcff"], "\udcff")):
            sent = f"ostrel: testbed {action} sent\n"
            for surroundings in ({}, DEAD_SURROUNDINGS):
                self.expect(self.run_program(*arguments, **surroundings), 0, sent, "")

    def test_the_testbeds_message_reaches_the_bus_and_a_refused_one_doesnt(self) -> None:
        address = self.start_bus()
        monitor = self.listen("dbus-monitor", "--address", address, "type=signal,member=Posted")
        monitor.stdout.readline()  # it announces its own connection once it listens
        for *arguments, code in (("show", "--nonsense", 1), ("bänana", 0), ("last", 0)):
            done = self.run_program("--testbed", *arguments, DBUS_SESSION_BUS_ADDRESS=address)
            self.assertEqual(done.returncode, code, done.stderr)
        heard = ""
        while '"last"' not in heard:
            line = monitor.stdout.readline()
            self.assertTrue(line, f"the monitor ended early: {heard}")
            heard += line
        self.assertEqual(heard.count("path=/dev/quent/ostrel; "), 2, heard)
        self.assertEqual(heard.count('string "dev.quent.ostrel.testbed"'), 2, heard)
        self.assertRegex(heard, r'string "action"\s+variant\s+string "bänana"')


class Application(ProgramTest):
    def test_in_the_background_it_runs_without_a_child_until_it_is_told_to_end(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                process = self.start("--background")
                self.assertEqual(len(session_members(process.pid)), 1)
                self.expect_orderly_end(process, number)

    def test_with_its_panel_open_it_ends_and_takes_its_children_with_it(self) -> None:
        self.expect_orderly_end(self.start())

    def test_it_runs_with_arguments_of_one_dash_or_none_and_in_poor_surroundings(self) -> None:
        for arguments, before, variables in (
            (["-x", "show"], "", {}), (["-platform", "nonsense"], "2>&-", {}), ([], "2>/dev/full", {}),
            *(([], "", {name: value}) for name, value in DEAD_SURROUNDINGS.items())):
            with self.subTest(arguments=arguments, before=before, **variables):
                self.expect_orderly_end(self.start("--background", *arguments, before=before, **variables))
