# SPDX-License-Identifier: Apache-2.0
import os
import unittest

from fabricated_machine import Machine

EXPECTED = {
    "gnome-agents.tsv": {
        "sessions": {"claude": 7, "codex": 3},
        "mcp": 22, "claude_mcp": 12, "codex_mcp": 8, "other_mcp": 2,
        "codex_mcp_duplicates": 1, "codex_mcp_duplicate_mb": 65,
        "browser": 44, "node": 15, "python3": 7, "claude": 7, "codex": 7,
        "chromium_bundles": {"chrome": 42, "code": 8}, "codex_node_repl": 1, "qmd": 1,
    },
    "kde-browsers.tsv": {
        "sessions": {"claude": 1, "codex": 0},
        "mcp": 1, "claude_mcp": 1, "codex_mcp": 0, "other_mcp": 0,
        "codex_mcp_duplicates": 0, "codex_mcp_duplicate_mb": 0,
        "browser": 92, "node": 1, "python3": 1, "claude": 1, "codex": 0,
        "chromium_bundles": {"chrome": 28, "brave": 20, "msedge": 15, "chromium": 12, "slack": 6,
                             "Discord": 4, "obsidian": 4, "QtWebEngineProcess": 3},
    },
    "server-containers.tsv": {
        "sessions": {"claude": 2, "codex": 1},
        "mcp": 5, "claude_mcp": 3, "codex_mcp": 1, "other_mcp": 1,
        "codex_mcp_duplicates": 0, "codex_mcp_duplicate_mb": 0,
        "browser": 0, "node": 3, "python3": 2, "claude": 2, "codex": 2, "chromium_bundles": {},
    },
}
"""What a person counts in each table."""

FIRST_OF_THE_USER = 1000


def counts(snapshot: dict) -> dict:
    found = {"sessions": snapshot["sessions"], **snapshot["fan"]}
    assert found.pop("chromium") == sum(found["chromium_bundles"].values())
    return found


class DesktopsTest(unittest.TestCase):
    maxDiff = None

    def test_agents_servers_and_browsers_of_whole_desktops_are_counted_right(self):
        for name, expected in EXPECTED.items():
            with self.subTest(name):
                box = Machine(self)
                box.desktop(name)
                self.assertEqual(counts(box.snapshot()), expected)

    def test_where_other_users_processes_are_hidden_the_own_ones_count_the_same(self):
        for listed in (False, True):  # as hidepid=2 does it, and hidepid=1
            box = Machine(self)
            box.desktop("gnome-agents.tsv", shown=lambda pid: pid > FIRST_OF_THE_USER)
            if listed:
                for pid in (1, 901, 902):
                    os.makedirs(os.path.join(box.root, "proc", str(pid)))
            self.assertEqual(counts(box.snapshot()), EXPECTED["gnome-agents.tsv"])

    def test_the_programs_that_weigh_most_are_told_together_with_what_to_do(self):
        box = Machine(self)
        box.write("proc/meminfo", b"MemTotal: 33554432 kB\nMemFree: 1 kB\nMemAvailable: 16777216 kB\n")
        box.desktop("gnome-agents.tsv")
        snapshot = box.snapshot()
        told = [(row["label"], row["risk"]) for row in snapshot["offenders"]]
        self.assertEqual(told, [("chrome", "stateful")])
        self.assertIn("holds 27% of memory (8.8 gb in 44 processes)", snapshot["offenders"][0]["reason"])
        self.assertEqual(snapshot["verdict"]["cause"],
                         "16.0 gb of 32.0 gb can still be handed out, 10 agent sessions and 22 MCP servers"
                         " run, and chrome holds the most, 8.8 gb in 44 processes.")
