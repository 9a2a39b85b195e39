# SPDX-License-Identifier: Apache-2.0
"""A script that is asked to end in the very moment in which it starts a tool leaves no tool behind.

ended.py LIBRARY
"""
import os
import sys
import tempfile
import unittest

from subjects import HEALTH, JOB_OPTIONS, Subject, nothing, put, script
from sweep import Fault, living, run

TOOL = b"#!/bin/sh\nexec /bin/sleep 60\n"
LIBRARY = ""


class Ended(unittest.TestCase):
    def test_no_tool_outlives_a_script_that_is_asked_to_end_while_it_starts_it(self):
        bridge = "automations_bridge.py"
        for words, data in ((script(bridge, "list", "--refresh"), b""), (script("ostrel_remote.py"), HEALTH),
                            (script(bridge, "journal", *JOB_OPTIONS), b""),
                            (script(bridge, "act", *JOB_OPTIONS, "--op", "disable", "--confirm"), b"")):
            with self.subTest(words=words[1:]), tempfile.TemporaryDirectory() as root:
                os.mkdir(root + "/home")
                for tool in ("systemctl", "journalctl", "loginctl", "ssh"):
                    put(f"{root}/bin/{tool}", TOOL, mode=0o700)
                subject = Subject(words, nothing, nothing, nothing, [], data)
                fault = Fault("spawn", 1, "term", "")
                done = run(subject, root, fault.environment(LIBRARY, root + "/told"))
                self.assertTrue(os.path.exists(root + "/told"))
                self.assertEqual(living(root + "/home"), [])
                self.assertEqual((done.code, done.err), (0 if "act" in words else 1, b""))


if __name__ == "__main__":
    LIBRARY = os.path.abspath(sys.argv.pop(1))
    unittest.main()
