# SPDX-License-Identifier: Apache-2.0
"""Several launches of the built program: which one stays, and what it hears from the others."""
from __future__ import annotations

import json
import signal
import subprocess

from test_program import ProgramTest, eventually


class SeveralLaunches(ProgramTest):
    def setUp(self) -> None:
        super().setUp()
        self.environment |= {"DBUS_SESSION_BUS_ADDRESS": self.start_bus(), "QT_QPA_PLATFORM": "offscreen"}

    def expect_close(self, reason: str) -> None:
        """Waits until the panel was closed for that reason, and forgets it."""
        stored = self.home / ".config/zol-mini-apps/dev.quent.ostrel.json"

        def last() -> str:
            return json.loads(stored.read_text()).get("ostrel.lastClose", "")

        self.assertTrue(eventually(lambda: last().startswith(reason + " ")), last())
        stored.write_text("{}")

    def expect_duplicate(self, elder: subprocess.Popen[bytes], *arguments: str, **variables: str) -> None:
        """A launch that leaves the place to the elder."""
        result = self.run_program(*arguments, **variables)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertRegex(
            result.stdout, rf"\Aostrel: pid {elder.pid} is older – exiting duplicate pid \d+\n\Z")
        self.assertIsNone(elder.poll())

    def test_a_second_launch_asks_the_first_to_come_forward_or_hands_its_addresses_over(self) -> None:
        elder = self.start("--background")
        self.expect_duplicate(elder)
        self.expect_duplicate(elder, "--background")
        self.expect_duplicate(elder, "ostrel://hide")
        self.expect_close("route-hide")
        self.expect_duplicate(
            elder, "--background", "OSTREL:", "http://hide", "ostrel://rename", "ostrel://toggle")
        self.expect_close("route-toggle")
        self.expect_orderly_end(elder)

    def test_the_testbeds_message_opens_and_closes_the_panel_of_the_running_instance(self) -> None:
        elder = self.start("--background")
        # Taken by the elder's loop, and so once it listens to messages too.
        self.expect_duplicate(elder, "ostrel://hide")
        for action, reason in (("hide", "route-hide"), ("toggle", "route-toggle")):
            self.assertEqual(self.run_program("--testbed", "Open").returncode, 0)
            self.assertEqual(self.run_program("--testbed", action).returncode, 0)
            self.expect_close(reason)
        self.expect_orderly_end(elder)

    def test_a_first_launch_does_what_its_addresses_say_in_place_of_opening_the_panel(self) -> None:
        for background in ([], ["--background"]):
            elder = self.start(*background, "ostrel://toggle", "ostrel://close")
            self.expect_close("route-hide")
            self.expect_orderly_end(elder)

    def test_a_duplicate_leaves_without_a_bus_or_a_stream_too(self) -> None:
        elder = self.start("--background")
        self.expect_duplicate(elder, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/ostrel-bus")
        for before in (">&-", ">/dev/full"):
            self.assertEqual(self.run_program("--background", before=before).returncode, 0, before)
        self.assertIsNone(elder.poll())
        elder.send_signal(signal.SIGKILL)
        elder.wait()
        self.expect_orderly_end(self.start("--background"))
