# SPDX-License-Identifier: Apache-2.0
import json
import os
import shutil
import signal
import socket
import subprocess
import unittest
from pathlib import Path
from unittest import mock

from fabricated_machine import wait_for
from terminals import Terminals
from test_live_machine import answer

from ostrel_lib.sessions import kitty, tmux
from ostrel_lib.sessions.commands import switched
from ostrel_lib.sessions.scene import GONE

HOSTILE = "it's \"q\" ;touch x; #{pid} #(touch x) $(touch x) }, -t"


@unittest.skipUnless(shutil.which("tmux"), "no tmux")
class TmuxTest(unittest.TestCase):
    def setUp(self):
        self.bench = Terminals(self)

    def test_the_panes_of_all_servers_are_listed_with_their_agents_and_work_trees(self):
        bench = self.bench
        deep = f"{bench.root}/repo/a\n{HOSTILE}"
        os.makedirs(deep)
        os.mkdir(bench.root + "/repo/.git")
        bench.session("one", "-n", "first", "sleep 300")
        claude = "bash -c 'bash -c \"exec -a claude sleep 300\"; :'"
        bench.tmux("new-window", "-d", "-n", "second", "-c", deep.replace("#", "##"), claude)
        os.mkfifo(bench.root + "/mcp-server")  # an agent's program that serves isn't an agent
        bench.tmux("split-window", "-d", "-t", "one:0", "exec bash -c 'exec -a codex cat mcp-server'")
        # tmux itself takes what it is given here for a format.
        bench.tmux("select-pane", "-t", "%2", "-T", HOSTILE.replace("#", "##"))
        bench.session("ä b", "-n", "third", "sleep 300", server="other")
        bench.session("away", "-n", "x", "sleep 300", server=bench.root + "/elsewhere socket")
        bench.tmux("new-session", "-d", "-t", "one", "-s", "viewed")
        bench.attach("viewed")
        wait_for(lambda: any("agentIdentity" in row for row in bench.rows().values()), "the agent")
        rows = bench.rows()
        found = {title: [row.get(key) for key in ("agentIdentity", "connected", "worktreePath")]
                 for title, row in rows.items()}
        here = bench.root
        self.assertEqual(found, {
            "viewed:0.0 · first": [None, True, here], "viewed:1.0 · second": ["claude", True, here + "/repo"],
            f"viewed:0.1 · {HOSTILE}": [None, True, here],
            "other/ä b:0.0 · third": [None, False, here],
            "elsewhere socket/away:0.0 · x": [None, False, here]})
        self.assertEqual(len({row["handle"] for row in rows.values()}), 5)
        self.assertFalse(os.path.exists(here + "/x") or os.path.exists(deep + "/x"))

    def test_what_does_not_answer_is_told_and_hides_nobody_else(self):
        bench = self.bench
        bench.session("stale", "sleep 300", server="left")
        bench.tmux("kill-server", name="left")
        os.kill(bench.session("h", "sleep 300", server="hung"), signal.SIGSTOP)
        bench.session("fine", "-n", "w", "sleep 300", server="zz")
        with open(bench.folder + "/file", "wb"), socket.socket(socket.AF_UNIX) as full:
            os.symlink("nowhere", bench.folder + "/link")
            full.bind(bench.folder + "/full")
            full.listen(0)
            with socket.socket(socket.AF_UNIX) as waiting, mock.patch.object(tmux, "PATIENCE", 1.5):
                waiting.connect(bench.folder + "/full")
                answer = bench.list()
                os.kill(int(bench.tmux("display-message", "-p", "#{pid}", name="zz")), signal.SIGKILL)
                nothing = bench.list()
        self.assertEqual([row["title"] for row in answer["terminals"]], ["zz/fine:0.0 · w"])
        notes = [note for note in answer["notes"] if "“hung”" in note or "“full”" in note]
        self.assertEqual(notes, ["the tmux server “full” takes no connection",
                                 "the tmux server “hung”: tmux gave no answer within 2 s"])
        if not nothing["ok"]:  # unless the developer's own servers answer
            self.assertIn("“hung”: tmux gave no answer", nothing["error"])

    def test_a_pane_is_selected_and_nothing_is_typed_into_it(self):
        bench = self.bench
        bench.session("one", "-n", "a", f"cat >{bench.root}/typed")
        bench.tmux("new-window", "-d", "-n", "b", f"cat >{bench.root}/typed2")
        bench.tmux("split-window", "-d", "-t", "one:1", "sleep 300")
        bench.tmux("new-session", "-d", "-t", "one", "-s", "other")
        present = ("display-message", "-p", "-t", "one:", "#{pane_id}")
        handle = bench.handle("one:1.1 · b")
        self.assertEqual(bench.switch(handle)["error"],
                         "No terminal is attached to one:1.1 · b any more, so nothing was selected.")
        bench.attach("one")
        for words in ([], [""], ["--confirm", "--confirm"], ["--Confirm"]):
            answer = switched(bench.scene(), ["--handle", handle, *words])
            self.assertEqual((answer["ok"], "confirm" in answer["error"]), (False, True))
        self.assertEqual(bench.tmux(*present), "%0")
        self.assertEqual(bench.switch(handle), {"ok": False, "error":
                         "Selected one:1.1 · b, but its window isn't in front: there is no X display."})
        self.assertEqual(bench.tmux(*present), "%2")
        # The session that nobody looks at stays where it was.
        self.assertEqual(bench.tmux("display-message", "-p", "-t", "other:", "#{window_index}"), "0")
        bench.switch(bench.handle("one:0.0 · a"))
        self.assertEqual([bench.tmux(*present)] + [os.path.getsize(bench.root + name)
                                                   for name in ("/typed", "/typed2")], ["%0", 0, 0])

    def test_a_handle_of_a_terminal_that_is_gone_selects_nothing(self):
        bench = self.bench
        first = bench.session("one", "-n", "a", "sleep 300")
        handle = bench.handle("one:0.0 · a")
        kind, birth, pane, key = handle.split(":")
        odd = [f"{kind}:{birth}:{pane}:{bench.root}/x; touch {bench.root}/x", f"{kind}:{birth}:%9:{key}",
               f"{kind}:{birth}:{pane};kill-server:{key}", f"{kind}:1.1:{pane}:{key}",
               f"{kind}:{birth}:{pane}", f"{kind}:{birth}:#{{pane_id}}:{key}", f"{handle}:", f"{handle}\n",
               "", "tmux:", ":::", "--confirm", "-h", "kitty:1.1:1:/x", "\udcff", "tmux" + ":" * 9, HOSTILE,
               "a" * 100000]
        for bad in odd:
            self.assertEqual(bench.switch(bad), {"ok": False, "error": GONE}, bad[:80])
        os.kill(first, signal.SIGKILL)
        wait_for(lambda: not os.path.exists(f"/proc/{first}/exe"), "the end of the server")
        bench.session("one", "-n", "a", "sleep 300")
        self.assertEqual(bench.switch(handle)["error"], GONE)
        self.assertFalse(os.path.exists(bench.root + "/x"))

    def test_thousands_of_panes_and_an_endless_answer_are_taken(self):
        bench = self.bench
        os.makedirs(bench.folder)
        line = "7 1800000000 $0 @{0} %{0} {1} 1 {0} 0 1 1 s:t{0}"
        lines = [line.format(number, os.getpid()) for number in range(4000)]
        odd = ["", "7 1800000000 $0", "x " * 12, line.format("9" * 17, 1), line.format(1, "-1"),
               "\udcff" * 50, line.format(1, 1).replace("s:", "s ")]
        panes, stub = Path(bench.root, "panes"), Path(bench.root, "tmux")
        panes.write_text("\n".join(lines + odd), "utf-8", "surrogateescape")
        stub.write_text(f'#!/bin/sh\n[ "${{3##*/}}" = default ] || exec yes\nexec cat {panes}\n', "ascii")
        stub.chmod(0o755)
        bench.path = bench.root + ":" + bench.path
        with socket.socket(socket.AF_UNIX) as one, socket.socket(socket.AF_UNIX) as two:
            for server, name in ((one, "default"), (two, "endless")):
                server.bind(f"{bench.folder}/{name}")
                server.listen(9)
            answer = bench.list()
        self.assertEqual([row["title"] for row in answer["terminals"]],
                         [f"s:{number}.0 · t{number}" for number in range(4000)])
        self.assertIn("the tmux server “endless”: tmux printed more than 16 MiB", answer["notes"])

    def test_the_script_answers_in_one_line(self):
        self.bench.session("one", "-n", "a", "sleep 300")
        environ = {"PATH": "/usr/bin:/bin", "HOME": self.bench.root, **self.bench.environ}
        for words in (["list"], ["switch", "--handle", "x", "--confirm"], ["switch"]):
            told = answer(*words, script="session_bridge.py", **environ)
            self.assertEqual(told["ok"], words == ["list"])


class KittyTest(unittest.TestCase):
    def setUp(self):
        self.bench = Terminals(self)

    def test_windows_of_kitty_are_listed_and_selected_through_its_socket(self):
        bench = self.bench
        bench.kitty("real", bench.root + "/k, #1")
        rows = bench.rows()
        first = rows["kitty:7 · it's '; #(touch x)"]
        self.assertEqual([first["agentIdentity"], first["connected"], first["worktreePath"]],
                         ["claude", True, bench.root])
        answer = bench.switch(rows["kitty:8 · other"]["handle"])
        self.assertEqual(answer["error"],
                         "Selected kitty:8 · other, but its window isn't in front: there is no X display.")
        for bad in (first["handle"].replace(":7:", ":9:"), first["handle"] + "x", "kitty:1.1:7:@x"):
            self.assertEqual(bench.switch(bad)["error"], GONE)
        asked = map(json.loads, Path(bench.root, "asked").read_text("ascii").splitlines())
        self.assertEqual([question for question in asked if question[0] != "ls"],
                         [["focus-window", {"match": "id:8"}]])

    def test_whatever_a_kitty_answers_is_taken_or_told(self):
        bench = self.bench
        expected = {"refuse": "Remote control is disabled", "list": "can't be read", "shape": "isn't a list",
                    "text": "isn't a list", "wrong": "it refused", "garbage": "can't be read",
                    "hang": "no answer in time", "odd": "", "guest": ""}
        other = socket.socket(socket.AF_UNIX)  # of no kitty, though one has its name
        self.addCleanup(other.close)
        other.bind(f"\0{bench.root}/guest")
        other.listen()
        pids = {mode: bench.kitty(mode, f"@{bench.root}/{mode}").pid for mode in expected}
        pids["guest"] = os.getpid()
        bench.kitty("guest", f"@{bench.root}/odd")
        with mock.patch.object(kitty, "PATIENCE", 1.0):
            answer = bench.list()
        notes = answer.get("notes") or answer["error"].split("; ")
        for mode, said in expected.items():
            told = [note for note in notes if f"kitty {pids[mode]}: " in note]
            self.assertTrue(said in told[0] if said else not told, (mode, told))
        self.assertEqual([row["title"] for row in answer["terminals"]], ["kitty:5"])


@unittest.skipUnless(all(map(shutil.which, ("Xvfb", "openbox", "xterm", "xprop", "tmux"))), "no desktop")
class WindowTest(unittest.TestCase):
    def setUp(self):
        self.bench = bench = Terminals(self)
        # The client's file also has what opens another display.
        other, right = (b"".join(len(field).to_bytes(2, "big") + field for field in (
            b"", number, b"MIT-MAGIC-COOKIE-1", secret)) for number, secret in (
                (b"99999", b"another display!"), (b"", b"0123456789abcdef")))
        for name, entries in (("lock", [right]), ("cookie", [other, right])):
            Path(bench.root, name).write_bytes(b"".join(b"\xff\xff" + entry for entry in entries))
        display = bench.start("Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp",
                              "-auth", bench.root + "/lock", stdout=subprocess.PIPE)
        self.addCleanup(display.stdout.close)
        bench.environ.update(DISPLAY=":" + display.stdout.readline().decode().strip(),
                             XAUTHORITY=bench.root + "/cookie")
        self.manager = bench.start("openbox", "--sm-disable")
        wait_for(lambda: "0x" in self.property("_NET_SUPPORTING_WM_CHECK")[-1], "the window manager")

    def property(self, name: str, window: str = "") -> list:
        where = ["-id", window] if window else ["-root"]
        return self.bench.run("xprop", *where, "-notype", name).replace(",", " ").split()

    def xterm(self, *words: str) -> str:
        """A terminal in front of all others. Gives its window."""
        child = self.bench.start("xterm", "-e", *words)

        def window() -> str:
            present = self.property("_NET_ACTIVE_WINDOW")[-1]
            return present if present.startswith("0x") and present != "0x0" and str(
                child.pid) in self.property("_NET_WM_PID", present) else ""
        return wait_for(window, "the window")

    def test_the_window_that_shows_a_pane_is_brought_to_the_front(self):
        bench = self.bench
        bench.session("one", "-n", "a", "sleep 300")
        bench.tmux("new-window", "-d", "-n", "b", "sleep 300")
        shown = self.xterm("tmux", "attach", "-t", "one")
        wait_for(lambda: bench.tmux("list-clients"), "the client")
        cover = self.xterm("sleep", "300")
        handle = bench.handle("one:1.0 · b")
        self.assertEqual(bench.switch(handle), {
            "ok": True, "message": "Brought to the front: one:1.0 · b, in the window “tmux”."})
        self.assertEqual(self.property("_NET_ACTIVE_WINDOW")[-1], shown)

        # A program with several windows has told what runs in each which one it is.
        owner = self.property("_NET_WM_PID", shown)[-1]
        bench.run("xprop", "-id", cover, "-f", "_NET_WM_PID", "32c", "-set", "_NET_WM_PID", owner)
        self.xterm("sleep", "300")
        self.assertTrue(bench.switch(handle)["ok"])
        self.assertEqual(self.property("_NET_ACTIVE_WINDOW")[-1], shown)
        bench.run("xprop", "-id", shown, "-f", "_NET_WM_WINDOW_TYPE", "32a", "-set", "_NET_WM_WINDOW_TYPE",
                  "_NET_WM_WINDOW_TYPE_DOCK")
        bench.run("xprop", "-id", cover, "-f", "WM_CLIENT_MACHINE", "8s", "-set", "WM_CLIENT_MACHINE",
                  "elsewhere")
        self.assertIn("no window on this X display belongs to", bench.switch(handle)["error"])

    def test_why_a_window_is_not_in_front_is_told(self):
        bench = self.bench
        bench.session("one", "-n", "a", "sleep 300")
        first = self.xterm("env", "-u", "WINDOWID", "tmux", "attach", "-t", "one")
        wait_for(lambda: bench.tmux("list-clients"), "the client")
        second = self.xterm("sleep", "300")
        handle = bench.handle("one:0.0 · a")
        owner = self.property("_NET_WM_PID", first)[-1]
        bench.run("xprop", "-id", second, "-f", "_NET_WM_PID", "32c", "-set", "_NET_WM_PID", owner)
        expected = [({}, "xterm has 2 windows and doesn't tell which one shows it"),
                    ({"XAUTHORITY": "/nowhere"}, "lets nobody in without its cookie"),
                    ({"DISPLAY": ":99999"}, "can't be reached"),
                    ({"DISPLAY": "far:0"}, "isn't one of this machine"),
                    ({"DISPLAY": "nonsense"}, "isn't one of this machine")]
        for environ, said in expected:
            self.assertIn(said, bench.switch(handle, **environ)["error"])
        self.manager.terminate()
        self.manager.wait()
        self.assertIn("no window manager", bench.switch(handle)["error"])
