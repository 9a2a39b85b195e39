# SPDX-License-Identifier: Apache-2.0
import os
import random
import unittest
from collections import Counter

from fabricated_machine import TICKS, Machine

from ostrel_lib.families import Kind, bundle

NODE_MODULES = "/usr/lib/node_modules/"

DESKTOP_KEYS = ("sessions mcp claude_mcp codex_mcp other_mcp codex_mcp_duplicates codex_mcp_duplicate_mb"
                " browser node python3 claude codex chromium_bundles codex_node_repl qmd").split()
DESKTOPS = {
    "gnome-agents.tsv": [{"claude": 7, "codex": 3}, 22, 12, 8, 2, 1, 65, 44, 15, 7, 7, 7,
                         {"chrome": 42, "code": 8}, 1, 1],
    "kde-browsers.tsv": [{"claude": 1, "codex": 0}, 1, 1, 0, 0, 0, 0, 92, 1, 1, 1, 0, {
        "chrome": 28, "brave": 20, "msedge": 15, "chromium": 12, "slack": 6, "Discord": 4, "obsidian": 4,
        "QtWebEngineProcess": 3}],
    "server-containers.tsv": [{"claude": 2, "codex": 1}, 5, 3, 1, 1, 0, 0, 0, 3, 2, 2, 2, {}]}
"""What a person counts in each table."""
FIRST_OF_THE_USER = 1000


def judge(command: str) -> tuple[str, str]:
    """The session and the group that a command line, its arguments split at "|", is taken for."""
    kind = Kind("\0".join(command.split("|")).encode())
    return kind.agent.decode() if kind.session else "", kind.group


class FamiliesTest(unittest.TestCase):
    def test_a_session_is_an_agents_own_program_at_work(self):
        for session, commands in {
            "claude": ("/home/u/.local/bin/claude|--resume", "claude|-p|write notes on codex",
                       "/usr/bin/node|--max-old-space-size=4096|--require|./hook.js|/home/u/bin/claude",
                       f"node|{NODE_MODULES}claude-code/cli.js", "bun|run|/opt/claude.mjs"),
            "codex": ("codex|exec|mcp", f"node|{NODE_MODULES}codex/bin/codex.js|resume",
                      "codex|-m|login|exec"),
            "": ("vim|claude", "/opt/claude/server", "claude-runner", "Claude", "bash|-c|claude --resume",
                 "node|-e|claude", "node|/srv/app.js|claude", "node|/srv/cli.js", "claude|mcp|serve",
                 "codex|app-server", "codex|-c|a=b|--profile|work|mcp-server", "codex|--version",
                 "/opt/claude/claude|--type=renderer")}.items():
            for command in commands:
                self.assertEqual(judge(command)[0], session, command)

    def test_an_mcp_server_is_known_by_what_is_run(self):
        for served, commands in {
            True: ("/usr/local/bin/github-mcp-server|stdio", "claude|mcp|serve", "gopls|mcp|serve",
                   "node|/home/u/.npm/_npx/1f/node_modules/.bin/mcp-server-files|/home/u",
                   f"node|{NODE_MODULES}@modelcontextprotocol/server-memory/dist/index.js",
                   f"/usr/bin/node22|{NODE_MODULES}@play/mcp/cli.js", "python3.11|-m|mcp_server_git",
                   "python3|/home/u/my-mcp/src/server.py", "java|-Xmx1g|-jar|/opt/db-mcp.jar", "gopls|mcp",
                   "/opt/xcodebuildmcp", "dart|mcp-server|--experimental",
                   "docker|run|-i|--rm|-e|TOKEN|--volume=/a:/b|ghcr.io/github/github-mcp-server:latest",
                   "podman|container|run|mcp/fetch"),
            False: ("npm exec @scope/notes-mcp", "uv|tool|uvx|notes-mcp", "docker|mcp|gateway", "tcmpcd",
                    "claude|mcp|list", "docker|run|-v|/home/u/mcp:/src|node", "docker|exec|-i|mcp-box|sh",
                    "docker|logs|run", "sh|-c|notes-mcp", "vim|mcp-server.py", "claude|--mcp-config|mcp.json",
                    "python3|-c|import mcp", "node|/home/u/mcp-tools/node_modules/vite/bin/vite.js",
                    "/opt/chrome/chrome|--user-data-dir=/tmp/mcp-chrome", "mcpelauncher-client")}.items():
            for command in commands:
                self.assertEqual(judge(command)[1] == "mcp", served, command)

    def test_no_command_line_is_too_strange_to_be_judged(self):
        words = [b"", b"/", b"node", b"codex", b"-c", b"-m", b"--type=", b"--type=zygote", b"run", b"docker",
                 b"mcp", b"/node_modules", b"@", b"cli.js", b"node_modules/@mcp", b"electron --app-path=",
                 b" ", b"/ -", b"C:\\ x", b"-jar", b".js", b"index.js", b"--app-path=/app.asar", b"\xff"]
        dice = random.Random(7)
        for _ in range(5000):
            command = dice.choice((b"\0", b" ")).join(dice.choices(words, k=dice.randrange(6)))
            kind = Kind(command)
            self.assertIn(kind.group, ("mcp", "claude", "codex", "system", "runtime", "app"), command)
            self.assertIsInstance(bundle(kind, b"", command), bytes)

    def test_every_process_is_in_one_group(self):
        for command, group in (("claude|--resume", "claude"), ("codex|login", "codex"), ("-bash", "app"),
                               ("python3.11|x.py", "runtime"), ("sshd: u@pts/0", "system"),
                               ("npm exec vite", "runtime"), ("", "system"),
                               ("/usr/sbin/cron|-f", "system"), ("/usr/bin/firefox", "app")):
            self.assertEqual(judge(command)[1], group, command)

    def test_a_session_counts_once_with_its_start_script_and_its_forks(self):
        box = Machine(self)
        box.process(10, "node", f"{NODE_MODULES}@openai/codex/bin/codex.js", mib=40)
        box.process(11, f"{NODE_MODULES}@openai/codex/vendor/codex", ppid=10, mib=90)
        box.process(12, "claude", mib=300)
        box.process(13, "claude", ppid=12, mib=200)  # forked, about to become something else
        box.process(14, "zsh", ppid=12)
        box.process(15, "claude", "-p", "count", ppid=14, mib=250)
        snapshot = box.snapshot()
        self.assertEqual(snapshot["sessions"], {"claude": 2, "codex": 1})
        self.assertEqual([row["pid"] for row in snapshot["live_sessions"]], ["12", "15", "11"])

    def test_servers_belong_to_the_agent_above_them_and_copies_below_one_agent_are_counted(self):
        box = Machine(self)
        for pid, agent in ((10, "codex"), (11, "codex"), (12, "claude")):
            box.process(pid, agent)
        for pid, command, ppid, mib in ((20, "npm exec notes-mcp", 10, 1), (21, "notes-mcp", 20, 30),
                                        (22, "notes-mcp", 11, 50), (23, "notes-mcp", 11, 20),
                                        (24, "notes-mcp", 12, 90), (25, "other-mcp", 26, 1),
                                        (26, "loop", 25, 1), (27, "notes-mcp", 22, 40),
                                        (28, "mcp-proxy", 11, 1), (29, "inner-mcp", 28, 1),
                                        (30, "codex|mcp-server", 12, 1), (31, "deep-mcp", 30, 1)):
            box.process(pid, *command.split("|"), ppid=ppid, mib=mib)
        snapshot = box.snapshot()
        counts = [value for key, value in snapshot["fan"].items() if "mcp" in key]
        self.assertEqual(counts, [9, 5, 3, 1, 1, 20])  # 27 is 22's fork; 10 and 11 are agents of their own
        self.assertEqual(snapshot["verdict"]["per_sess"], 3.0)

    def test_a_containers_client_and_the_server_in_it_are_one_when_they_start_together(self):
        for started, count in ((5000, 1), (5000 + 10 * TICKS, 1), (5001 + 10 * TICKS, 2), (4999, 2)):
            box = Machine(self)
            box.process(10, "claude")
            box.process(11, "docker", "run", "-i", "mcp/fetch", ppid=10, start=5000)
            box.process(12, "/usr/bin/containerd-shim-runc-v2", "-id", "1")
            box.process(13, "mcp-server-fetch", ppid=12, start=started)
            self.assertEqual(box.snapshot()["fan"]["mcp"], count, started)

    def test_a_helper_belongs_to_the_application_that_its_command_line_or_the_kernel_names(self):
        box = Machine(self)
        for pid, (comm, command, _) in enumerate(HELPERS, 10):
            box.process(pid, *command.split("|"), comm=comm)
        fan = box.snapshot()["fan"]
        wanted = Counter(application for _, _, application in HELPERS if application)
        self.assertEqual((fan["chromium"], fan["chromium_bundles"]), (sum(wanted.values()), wanted))


class DesktopsTest(unittest.TestCase):
    maxDiff = None

    def assert_counts(self, snapshot: dict, name: str) -> None:
        found = {"sessions": snapshot["sessions"], **snapshot["fan"]}
        self.assertEqual(found.pop("chromium"), sum(found["chromium_bundles"].values()))
        self.assertEqual(found, dict(zip(DESKTOP_KEYS, DESKTOPS[name])), name)

    def test_agents_servers_and_browsers_of_whole_desktops_are_counted_right(self):
        for name in DESKTOPS:
            box = Machine(self)
            box.desktop(name)
            self.assert_counts(box.snapshot(), name)
        for listed in (False, True):  # other users' processes hidden as hidepid=2 does it, and hidepid=1
            box = Machine(self)
            box.desktop("gnome-agents.tsv", shown=lambda pid: pid > FIRST_OF_THE_USER)
            for pid in (1, 901, 902) if listed else ():
                os.makedirs(os.path.join(box.root, "proc", str(pid)))
            self.assert_counts(box.snapshot(), "gnome-agents.tsv")

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


HELPERS = (
    (b"chrome", "/opt/google/chrome/chrome --type=renderer --lang=en", "chrome"),
    (b"chrome", "/opt/google/chrome/chrome --type=gpu-process", "chrome"),
    (b"chrome", "/opt/google/chrome/chrome", ""),
    (b"code", "/usr/share/code/code|--no-sandbox|--type=gpu-process", "code"),
    (b"electron", "/usr/lib/electron34/electron|--type=renderer|--app-path=/usr/lib/notes/app.asar", "notes"),
    (b"electron", "/usr/lib/electron34/electron --type=zygote", "electron"),
    (b"Discord", "/proc/self/exe|--type=utility", "Discord"),
    (b"x", "systemd-run|--type=oneshot|x", ""), (b"python3", "python3|watch.py|--type=renderer", ""))
"""The kernel's name, the command line, and whose helper it is."""
