# SPDX-License-Identifier: Apache-2.0
import json
import os
import shutil
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from fabricated_machine import COLLECTORS, started, wait_for
from loopback_server import LoopbackServer, sshd_can_run
from test_live_machine import kernel_field

from ostrel_lib.files import read
from ostrel_lib.places import Places
from ostrel_lib.remote.bridge import answered
from ostrel_lib.remote.request import RULES, taken

SCRIPT = os.path.join(COLLECTORS, "ostrel_remote.py")
CODEX = os.path.join(os.path.dirname(os.path.abspath(__file__)), "stub_codex.py")
TASK = {"sshAlias": "srv.example", "repoPath": "~/repo", "task": "go on", "kind": "codex_continuation",
        "jobId": "ostrel-0a1b2c3d", "timeoutSeconds": 60, "profile": "balanced", "apply": True}


def request(command: str, payload: object, identity: object = "ID") -> bytes:
    return json.dumps({"id": identity, "command": command, "payload": payload}).encode() + b"\n"


class RequestTest(unittest.TestCase):
    def test_only_a_request_with_every_key_as_it_must_be_is_carried_out(self):
        self.assertEqual(taken(request("execute", TASK))[1], "")
        self.assertEqual(taken(request("health", {"sshAlias": "me@srv-1"}))[1], "")
        bad = {key: [None, 1, True, 2.5, [], {}, "", "a\0b", "\ud800"] for key in TASK}
        bad["timeoutSeconds"] = [None, True, "60", 0, 301, 60.0, 1e300]
        bad["apply"] = [None, 1, 0, "true", []]
        bad["profile"] += ["Eco", "eco "]
        bad["jobId"] += ["0a1b", "ostrel-", "ostrel-A", "ostrel-a.b", "ostrel-" + "a" * 34, "-p", "ostrel-é"]
        bad["sshAlias"] += ["-oProxyCommand=x", "a b", "a;b", "a\n", "@a", "a@b@c", "a/b", "a" * 201, "ä",
                            "$(x)"]
        bad["repoPath"] += ["/" * 4097, "ä" * 2049]
        bad["task"] += [" \n\t", "x" * 262145]
        for key, values in bad.items():
            said = next((text for name, _, text in RULES if name == key), "SSH alias")
            for value in values:
                with self.subTest(key=key, value=str(value)[:20]):
                    self.assertIn(said, taken(request("execute", {**TASK, key: value}))[1])
        for data in (None, b"", b"\xff", b"[]", b"null", b"{", b"[" * 100000, b'{"command": "health"}',
                     request("Health", TASK), request("health", [TASK]), request("execute", "x")):
            self.assertNotEqual(taken(data)[1], "")


@unittest.skipUnless(sshd_can_run(), "no sshd to log in to")
class RemoteTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = root = tempfile.mkdtemp()
        cls.addClassCleanup(shutil.rmtree, root, ignore_errors=True)
        cls.home = root + "/home"
        cls.tools = root + "/server"
        os.makedirs(cls.home + "/repo/.git")
        os.mkdir(cls.tools)
        cls.server = LoopbackServer(cls.addClassCleanup, root, cls.home, cls.tools + ":/usr/bin:/bin")
        # What a login prints by itself isn't the server's answer.
        cls.server.write("home/.bashrc", "echo cpus 7; echo mark end; printf started\n")

    def setUp(self):
        self.addCleanup(os.mkdir, self.tools)
        self.addCleanup(shutil.rmtree, self.tools)
        for name in ("started", "running"):
            if os.path.exists(f"{self.home}/{name}"):
                os.unlink(f"{self.home}/{name}")
        shutil.copy(CODEX, self.tools + "/codex")
        os.chmod(self.tools + "/codex", 0o755)
        self.server.tool("server/systemctl", "exit 1")

    def begin(self) -> subprocess.Popen:
        child = started(self, "/usr/bin/python3", "-B", SCRIPT, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                        env={"PATH": self.root + "/bin:/usr/bin:/bin", "HOME": self.root})
        self.addCleanup(child.stdout.close)
        return child

    def answer(self, command: str, payload: dict, identity: str = "ID") -> dict:
        return answered(request(command, payload, identity), Places(home=self.root, path=self.root + "/bin"))

    def execute(self, **changes) -> dict:
        return self.answer("execute", {**TASK, **changes})

    def result(self, **changes) -> dict:
        answer = self.execute(**changes)
        self.assertTrue(answer["ok"], answer)
        return answer["result"]

    def await_end(self, pids) -> None:
        for pid in pids:
            wait_for(lambda: not os.path.exists(f"/proc/{pid}/exe"), "the end of what a task had started")

    def await_running(self) -> list:
        running = Path(self.home, "running")
        wait_for(running.exists, "the task")
        return list(map(int, running.read_text("ascii").split()))

    def test_a_server_tells_its_capacity_whatever_its_login_prints(self):
        child = self.begin()
        out, _ = child.communicate(request("health", {"sshAlias": "srv.example"}), 120)
        self.assertEqual((child.returncode, out.count(b"\n")), (0, 1))
        answer = json.loads(out)
        self.assertEqual((answer["id"], answer["ok"]), ("ID", True))
        found = answer["result"]
        self.assertEqual(found["cpuCount"], os.sysconf("SC_NPROCESSORS_ONLN"))
        available = kernel_field("/proc/meminfo", "MemAvailable") >> 10
        self.assertAlmostEqual(found["memory"]["availableMB"] / available, 1, delta=0.5)
        self.assertIs(type(found["load1"]), float)

    def test_a_preview_tells_what_would_hold_and_starts_nothing(self):
        self.assertEqual(self.result(profile="fast", apply=False), {
            "host": "srv.example · capped by prlimit and timeout", "repoPath": "~/repo", "taskChars": 5,
            "effectiveCaps": {
                "cpu": "on average 200%", "memoryHigh": "no", "memoryMax": "6144 MB per process",
                "timeoutSeconds": 60, "enforcedBy": "capped by prlimit and timeout"}})
        self.assertFalse(os.path.exists(self.home + "/started"))

    def test_a_task_gets_its_words_its_folder_and_its_caps(self):
        hostile = "it's \"a\" $(touch X) `touch X`;\\n\\\\0101 %b\n-x \n"
        folder = f"{self.home}/{hostile}/sub"
        os.makedirs(folder)
        os.mkdir(f"{self.home}/{hostile}/.git")
        task = "-m $(touch X)\\c \\0101 %s\r\n'\"; exit 9\n" + "ü" * 500 + "\n\n"
        for repo in (folder, f"~/{hostile}/sub", f"{hostile}/sub"):
            found = self.result(repoPath=repo, task=task)
            self.assertEqual(found["exitCode"], 3, found)
            self.assertEqual(json.loads(found["outputExcerpt"]),
                             [["exec", "-"], folder, task, [3072 << 20, 60], min(19, os.nice(0) + 10)])
        self.assertFalse([name for _, _, names in os.walk(self.root) for name in names if name == "X"])

    def test_nothing_that_a_field_holds_is_ever_carried_out(self):
        attack = "touch canary"
        attacks = [f"$({attack})`{attack}`|{attack};{attack}&{attack}\n{attack}\n", f"a'; {attack}; '",
                   f"a\"; {attack}; \"", f"-oProxyCommand={attack}", f"\\n{attack}\\0012{attack}\\"]
        for repo in attacks[:4]:
            os.makedirs(f"{self.home}/{repo}/.git")
        reached = 0
        for key in (*TASK, "id", "command"):
            for attack in attacks[:4] if key in ("sshAlias", "repoPath") else [" ".join(attacks)]:
                answer = self.answer(attack if key == "command" else "execute",
                                     {**TASK, key: attack} if key in TASK else TASK,
                                     attack if key == "id" else "ID")
                reached += answer["ok"]
        self.assertEqual(reached, 6)
        names = {name for _, _, files in os.walk(self.root) for name in files}
        self.assertEqual(names & {"canary", "remote-command", "local-command"}, set())

    def test_a_task_that_takes_more_memory_than_its_cap_is_stopped(self):
        small, large = (self.result(task="eat", profile=profile) for profile in ("eco", "balanced"))
        self.assertIn("Cannot allocate memory", small["outputExcerpt"])
        self.assertIn("held 1024", small["outputExcerpt"])
        self.assertNotIn("held 1536", small["outputExcerpt"])
        self.assertEqual((small["exitCode"], large["exitCode"]), (1, 0))

    def test_nothing_outlives_the_time_limit(self):
        found = self.result(task="stay", timeoutSeconds=1)
        self.assertEqual((found["exitCode"], found["outputExcerpt"]), (124, "\nstopped at its limit of 1 s"))
        self.await_end(self.await_running())

    def test_a_task_ends_with_the_bridge_and_with_the_connection(self):
        child = self.begin()
        child.stdin.write(request("execute", {**TASK, "task": "stay with-my-secret", "timeoutSeconds": 300,
                                              "repoPath": "~/./././repo"}))
        child.stdin.close()
        pids = self.await_running()
        lines = b"".join(read(f"/proc/{pid}/cmdline") for pid in os.listdir("/proc") if pid.isdecimal())
        self.assertIn(SCRIPT.encode(), lines)
        for secret in (b"with-my-secret", b"/./././repo", TASK["jobId"].encode()):
            self.assertNotIn(secret, lines, "everybody can read a command line")
        child.send_signal(signal.SIGTERM)
        self.assertEqual((child.wait(60), child.stdout.read()), (1, b""))
        self.await_end(pids)
        os.unlink(self.home + "/running")
        answer = self.execute(task="cut", timeoutSeconds=300)
        self.assertIn("The connection to srv.example was lost while the task ran", answer["error"]["message"])
        self.await_end(self.await_running())

    def test_only_the_end_of_the_output_is_told_without_what_terminals_are_told(self):
        found = self.result(task="loud")
        self.assertEqual(found["outputExcerpt"], "ä" * 7995 + "\nlast")

    def test_systemd_sets_the_caps_where_it_can(self):
        os.makedirs(self.root + "/cgroup", exist_ok=True)
        self.server.write("cgroup/cgroup.controllers", "cpuset cpu io memory pids\n")
        self.server.tool("server/systemctl", f'echo "$*" >>{self.root}/asked\n'
                         f'[ "$2" = stop ] || echo ControlGroup=/../../..{self.root}/cgroup')
        self.server.tool("server/systemd-run", f'printf "%s\\n" "$@" >{self.root}/words\n'
                         'while [ "$1" != -- ]; do shift; done; shift; exec "$@"')
        preview = self.result(apply=False, profile="eco")
        self.assertEqual(preview["effectiveCaps"], {
            "cpu": "50%", "memoryHigh": "1024 MB", "memoryMax": "1536 MB", "timeoutSeconds": 60,
            "enforcedBy": "capped by systemd"})
        self.assertFalse(os.path.exists(self.root + "/words"))
        self.assertEqual(self.result(profile="eco")["exitCode"], 3)
        self.assertEqual(Path(self.root, "words").read_text("ascii").split("\n")[:-1], [
            "--user", "--scope", "--quiet", "--collect", "--unit=ostrel-0a1b2c3d", "-p", "CPUQuota=50%",
            "-p", "MemoryHigh=1024M", "-p", "MemoryMax=1536M", "-p", "MemorySwapMax=0",
            "-p", "RuntimeMaxSec=60", "-p", "TimeoutStopSec=5", "--", "codex", "exec", "-"])
        self.assertIn("--user stop ostrel-0a1b2c3d.scope\n", Path(self.root, "asked").read_text("ascii"))
        # A manager that was given no say over memory can't cap it.
        self.server.write("cgroup/cgroup.controllers", "cpu pids\n")
        self.assertIn("prlimit", self.result(apply=False)["host"])

    def test_whatever_is_missing_is_told_in_one_sentence(self):
        def told(**changes) -> str:
            message = self.execute(**changes)["error"]["message"]
            self.assertFalse(os.path.exists(self.home + "/started"))
            return message

        os.makedirs(self.home + "/plain", exist_ok=True)
        self.assertEqual(told(repoPath="/nowhere/a\nb"),
                         "There is no such folder on srv.example: /nowhere/a b.")
        self.assertEqual(told(repoPath="plain"),
                         "The folder on srv.example isn't in a git repository: plain.")
        self.server.tool("server/df", "echo Filesystem blocks Used Available Capacity Mounted on\n"
                         "echo /dev/my disk 1000 990 10 100% /a mount")
        self.assertEqual(told(), "The disk of the repository on srv.example is full: 0 MB are left.")
        os.unlink(self.tools + "/codex")
        self.assertEqual(told(), "codex isn't installed on srv.example.")

    def test_a_server_that_cannot_be_trusted_or_entered_is_told_in_one_sentence(self):
        def told() -> str:
            return self.answer("health", {"sshAlias": "srv.example"})["error"]["message"]

        self.addCleanup(self.server.trust, "host")
        self.addCleanup(self.server.admit)
        self.addCleanup(self.server.configure)
        self.server.configure("StrictHostKeyChecking no\nNoHostAuthenticationForLocalhost yes")
        self.server.trust("other")
        self.assertIn("REMOTE HOST IDENTIFICATION HAS CHANGED", told())
        self.server.write("known", "")
        self.assertIn("can't be reached over ssh", told())
        self.assertEqual(Path(self.root, "known").read_text("ascii"), "")
        self.server.trust("host")
        self.server.admit("other")
        self.assertIn("Permission denied", told())
        self.server.write("config", "Host *\nHostName 127.0.0.1\nPort 1\n")
        self.assertIn("Connection refused", told())
