# SPDX-License-Identifier: Apache-2.0
import json
import os
import signal
import subprocess
import unittest
from pathlib import Path

from fabricated_machine import wait_for
from schedulers import NOW, RECEIPTS, REGISTRY, SCRIPT, Schedulers

from ostrel_lib import tools

FAILED = "d9b373ed55a64feb8242e02dbe79a49c"
DONE = "39f53479d3a045ac8e11786248231fbf"


def entry(second: int, text, run: str = "", manager: bool = False, **fields) -> str:
    """One line of the journal as journalctl prints it."""
    key = ("USER_INVOCATION_ID" if manager else "_SYSTEMD_INVOCATION_ID")
    return json.dumps({"__REALTIME_TIMESTAMP": str(int((NOW + second) * 1e6)), "MESSAGE": text,
                       "_COMM": "systemd" if manager else "work", **({key: run} if run else {}), **fields})


class JournalTest(unittest.TestCase):
    def journal(self, box, identity, lane="launchd", target=""):
        return box.bridge("journal", "--lane", lane, "--id", identity, "--target", target)

    def test_each_run_is_one_line_with_its_end_and_the_jobs_last_word(self):
        box = Schedulers(self)
        box.timer("a.timer", job={"Result": "exit-code", "ExecMainStatus": "3", "ActiveState": "failed"})
        lines = [
            entry(90, "hello\n  there", "r3"), entry(89, "Starting", "r3", True),
            entry(62, "a.service: Failed with result 'exit-code'.", "r2", True, MESSAGE_ID=FAILED,
                  UNIT_RESULT="exit-code"),
            entry(61, [98, 114, 111, 107, 101, 110, 255], "r2"),
            entry(60, "Started a.service.", "r2", True, MESSAGE_ID=DONE),
            "garbage", "{cut", '{"MESSAGE": null}', "[1]",
            entry(3, "Finished a.service - A.", "r1", True, MESSAGE_ID=DONE),
            entry(1, "Starting a.service", "r1", True),
            entry(0, "forged", "r0", MESSAGE_ID=FAILED, UNIT_RESULT="x")]
        box.write("journal-a.service", "\n".join(lines))
        answer = self.journal(box, "user:a.timer")
        self.assertEqual(answer, {
            "next_run": "2026-11-26T06:00:00+00:00", "last_run": "2026-11-25T06:00:01+00:00",
            "last_result": "failed: exit-code 3",
            "journal": [
                {"at": "2026-11-25T08:01:29+00:00", "status": "started", "line": "hello there"},
                {"at": "2026-11-25T08:01:00+00:00", "status": "failed: exit-code", "line": "broken\ufffd"},
                {"at": "2026-11-25T08:00:01+00:00", "status": "ok", "line": "Finished a.service - A."},
                {"at": "2026-11-25T08:00:00+00:00", "status": "started", "line": "forged"},
                {"at": "", "status": "", "line": ""}]})

    def test_a_journal_that_cannot_be_read_says_why_in_one_line(self):
        box = Schedulers(self)
        box.timer("a.timer")
        box.write("journal-a.service", b"\0\xff garbage " * 99)
        for lane, identity, target, words in (
            ("launchd", "user:a.timer", "", "isn't a journal"),
            ("launchd", "user:gone.timer", "", "doesn't say what it starts"),
            ("launchd", "user:--version.timer\n", "", "no journal"),
            ("launchd", "root:a.timer", "", "no journal"),
            ("launchd", "user:a.service", "", "no journal"),
            ("launchd", "cron:/etc/crontab:x", "", "any more"), ("codex", "a", "", "no run of it"),
            ("cloud", "a", "", "of this lane"), ("moon", "a", "", "no such job"),
            ("launchd", "x" * 500, "", "no such job"), ("systemd", "system:a.timer", "srv", "alias")):
            run, = self.journal(box, identity, lane, target)["journal"]
            self.assertTrue(words in run["line"] and not run["at"], (identity, run))
        self.assertIn("--id", box.bridge("journal", "--lane", "launchd", "--target", "")["error"])
        self.assertIn("'extra'", box.bridge("journal", "--lane", "a", "--id", "--target", "--target", "",
                                            "extra")["error"])

    def test_crons_starts_are_found_by_user_and_command(self):
        box = Schedulers(self)
        box.write("etc/crontab", "17 * * * * root  cd / && run-parts /etc/cron.hourly\n")
        box.write("journal-CRON", "\n".join([
            entry(60, "(root) CMD (  cd / && run-parts /etc/cron.hourly)"),
            entry(50, "(ann) CMD (cd / && run-parts /etc/cron.hourly)"),
            entry(40, "(root) CMD (other)"), entry(30, "pam_unix(cron:session)"),
            entry(0, "(root) CMD (cd / && run-parts /etc/cron.hourly)")]))
        identity, = (row["id"] for row in box.bridge("list")["automations"])
        answer = self.journal(box, identity)
        self.assertEqual([run["at"][11:19] for run in answer["journal"]], ["08:01:00", "08:00:00"])
        self.assertEqual(answer["last_run"], "2026-11-25T08:01:00+00:00")


class ActTest(unittest.TestCase):
    def test_an_effect_is_only_told_when_it_was_found(self):
        off = {"ActiveState": "inactive", "UnitFileState": "disabled"}
        for op, timer, job, ok, words, after in (
            ("disable", {}, {}, True, "disable · a.timer · now inactive, disabled", "inactive, disabled"),
            ("enable", off, {}, True, "enable · a.timer · now active, enabled", "active, enabled"),
            ("enable", {"UnitFileState": "disabled"}, {}, True, "now active, enabled", "active, enabled"),
            ("enable", {"ActiveState": "inactive"}, {}, True, "now active, enabled", "active, enabled"),
            ("disable", {"UnitFileState": "disabled"}, {}, True, "now inactive, dis", "inactive, disabled"),
            ("enable", {}, {}, True, "enabled already", "active, enabled"),
            ("disable", off, {}, True, "disabled already", "inactive, disabled"),
            ("enable", {**off, "deaf": True}, {}, False, "had no full effect", "inactive, disabled"),
            ("disable", {"refuses": True}, {}, False, "Access denied", "active, enabled"),
            ("disable", {"for_all_users": True}, {}, False, "enabled for all users", "inactive, enabled"),
            ("enable", {**off, "UnitFileState": "static"}, {}, False, "own interface", ""),
            ("enable", {"LoadState": "masked"}, {}, False, "can't be loaded: masked", ""),
            ("run", {}, {}, True, "run · a.service · ran to its end", "inactive"),
            ("run", {}, {"outcome": "goes on"}, True, "is running", "active"),
            ("run", {}, {"outcome": "fails"}, False, "ran once and failed: exit-code 3", "failed"),
            ("run", {}, {"outcome": "never"}, False, "hasn't begun", "inactive"),
            ("run", {}, {"ActiveState": "activating"}, False, "running already", "activating"),
            ("run", {}, {"RefuseManualStart": "yes"}, False, "by hand", ""),
            ("run", {"Unit": "$(x)"}, {}, False, "doesn't say what", "")):
            box = Schedulers(self)
            box.timer("a.timer", job=job, **timer)
            answer = box.act(op, "user:a.timer")
            self.assertEqual(answer["ok"], ok, answer)
            self.assertIn(words, answer["message" if ok else "error"])
            self.assertEqual(answer["receipt"], f"{box.home}/{RECEIPTS}/2026-11-25.jsonl")
            receipt, = box.receipts()
            self.assertEqual([receipt[key] for key in ("ts", "kind", "op", "lane", "id", "after")],
                             ["2026-11-25 08:00:00", "automation", op, "launchd", "user:a.timer", after])
            self.assertEqual(receipt["result"] in ("done", "unchanged"), ok)
            self.assertEqual(os.stat(answer["receipt"]).st_mode & 0o777, 0o600)

    def test_what_must_not_be_done_is_refused_with_a_receipt_and_touches_nothing(self):
        box = Schedulers(self)
        box.timer("a.timer", "system")
        box.timer("a.timer")
        box.tool("systemctl", f'echo "$@" >> "{box.root}/asked"; exit 1')
        refused = [
            ("disable", "system:a.timer", "launchd"), ("run", "cron:crontab:1", "launchd"),
            ("enable", "user:a.timer", "systemd"), ("enable", "user:a.timer", ""), ("run", "a", "codex"),
            ("disable", "a", "orca"), ("run", "a", "cloud"), ("run", "a", "registry"),
            ("plan", "a", "registry"), ("stop", "user:a.timer", "launchd"), ("", "user:a.timer", "launchd"),
            ("plan", "user:a.timer", "launchd")]
        refused += [("enable", identity, "launchd") for identity in (
            "user:--root=/x", "user:a.service", "user:$(id).timer", "user:a.timer\nb.timer",
            "user:../a.timer", "user:a@.timer", "user:" + "x" * 300 + ".timer", "user:.timer", "a.timer", "",
            "user:\udcff.timer")]
        for op, identity, lane in refused:
            answer = box.act(op, identity, lane)
            self.assertEqual((answer["ok"], bool(answer["error"]), bool(answer["receipt"])),
                             (False, True, True), (op, identity, lane))
        for words in (("--lane", "launchd", "--id", "user:a.timer", "--op", "enable"), (), ("--id",),
                      ("--confirm", "--confirm"),
                      ("--lane", "launchd", "--id", "user:a.timer", "--op", "enable", "--confirm", "x")):
            self.assertFalse(box.bridge("act", *words)["ok"], words)
        self.assertEqual([receipt["result"] for receipt in box.receipts()], ["refused"] * (len(refused) + 5))
        self.assertEqual(set(os.listdir(box.root)), {"bin", "etc", "home", "proc", "spool", "state.json"})

    def test_switching_on_asks_the_registry_and_the_quota_first(self):
        entry_ = {"lane": "launchd", "id": "user:a.timer"}
        limits = {"primary": {"used_percent": 85, "window_minutes": 300, "resets_at": NOW + 60}}
        told = json.dumps({"timestamp": "2026-11-25T07:59:00.000Z", "payload": {"rate_limits": limits}})
        for registry, session, words in (
            ([{**entry_, "blocked": True}], "", "has a.timer blocked"),
            ([{**entry_, "min_quota_pct": 20}], "", "no quota can be observed"),
            ([{**entry_, "min_quota_pct": 20}], told, "15% is left"),
            ([{**entry_, "min_quota_pct": 15}], told, ""),
            ([{"lane": "launchd", "id": "user:other.timer", "blocked": True}], "", ""),
            ([entry_, "fault"], "", "entry 2"),
            ("broken", "", "no list")):
            box = Schedulers(self)
            box.timer("a.timer", ActiveState="inactive", UnitFileState="disabled")
            box.write("home/" + REGISTRY, {"version": 1, "automations": registry})
            box.write("home/.codex/sessions/2026/11/25/rollout.jsonl", session)
            answer = box.act("enable", "user:a.timer")
            self.assertEqual(answer["ok"], not words, answer)
            self.assertIn(words, answer.get("error", ""))
            self.assertEqual(box.unit("a.timer")["UnitFileState"], "disabled" if words else "enabled")
            self.assertTrue(not words or box.act("disable", "user:a.timer")["ok"])

    def test_without_a_place_for_the_receipt_nothing_is_done(self):
        def file_in_the_way(box):
            box.write("home/Library/Application Support/Ostrel", "x")

        def link_in_the_way(box):
            os.symlink("/dev/null", box.write(f"home/{RECEIPTS}/x", "")[:-1] + "2026-11-25.jsonl")

        for spoil in (file_in_the_way, link_in_the_way):
            box = Schedulers(self)
            box.timer("a.timer")
            spoil(box)
            answer = box.act("disable", "user:a.timer")
            self.assertEqual((answer["ok"], answer["receipt"]), (False, ""))
            self.assertIn("no receipt can be written", answer["error"])
            self.assertEqual(box.unit("a.timer")["UnitFileState"], "enabled")

    def test_receipts_are_appended_and_a_line_that_was_cut_off_stays_alone(self):
        box = Schedulers(self)
        path = box.write(f"home/{RECEIPTS}/2026-11-25.jsonl", '{"kind": "stop"}\n{"kind": "cl')
        box.act("run", "x", "cloud")
        box.act("run", 'quote"\nline', "cloud")
        lines = Path(path).read_text("ascii").split("\n")
        self.assertEqual(lines[:2], ['{"kind": "stop"}', '{"kind": "cl'])
        self.assertEqual([json.loads(line)["id"] for line in lines[2:4]], ["x", 'quote"\nline'])
        self.assertEqual(lines[4:], [""])

    def test_a_plan_is_a_checklist_of_the_users_own_and_changes_nothing(self):
        box = Schedulers(self)
        box.registry({"lane": "cloud", "id": "../../x\n`id`", "title": "Cloud # job", "schedule": "daily"})
        box.rows()
        state = Path(box.root, "state.json")
        before = state.read_bytes()
        answer = box.act("plan", "../../x\n`id`", "cloud")
        folder = box.home + "/Library/Application Support/Ostrel/plans"
        name, = os.listdir(folder)
        self.assertTrue(answer["ok"] and name in answer["message"], answer)
        text = Path(folder, name).read_text("utf-8")
        self.assertTrue(text.startswith("# Transfer of Cloud # job\n") and "- schedule: daily\n" in text)
        self.assertFalse(box.act("plan", "other", "cloud")["ok"])
        self.assertEqual(state.read_bytes(), before)

    def begun(self, *words):
        """A bridge whose first tool hangs, once that runs, and the tool's number."""
        box = Schedulers(self)
        box.tool("systemctl", f'cd "{box.root}"; echo $$ > new; /bin/mv new pid; exec /bin/sleep 300')
        child = subprocess.Popen(
            ["/usr/bin/python3", "-B", SCRIPT, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            env={"HOME": box.home, "PATH": box.root + "/bin"})
        self.addCleanup(child.stdout.close)
        pid = Path(box.root, "pid")
        wait_for(pid.exists, "the tool")
        return child, int(pid.read_text("ascii"))

    def test_a_bridge_that_is_ended_or_unread_leaves_no_child_but_an_unread_action_goes_on(self):
        enable = ("act", "--lane", "launchd", "--op", "enable", "--confirm", "--id")
        act, tool = self.begun(*enable, "user:a.timer")
        unread, tool_of_unread = self.begun(*enable, "user:b.timer")
        unread.stdout.close()
        for words in (("list", "--refresh"), ("journal", "--lane", "launchd", "--id", "user:a.timer")):
            for asked in (True, False):
                child, its_tool = self.begun(*words)
                if asked:
                    child.send_signal(signal.SIGTERM)
                    self.assertEqual(child.stdout.read(), b"")
                else:
                    child.stdout.close()
                self.assertEqual(child.wait(60), 1, words)
                self.assertFalse(os.path.exists(f"/proc/{its_tool}"), words)
        for child, its_tool in ((unread, tool_of_unread), (act, tool)):
            self.assertIsNone(child.poll())
            child.send_signal(signal.SIGTERM)
            out = b"" if child is unread else child.stdout.read()
            child.wait(60)
            self.assertFalse(os.path.exists(f"/proc/{its_tool}"))
        answer = json.loads(out or b"{}")
        self.assertIn("ended in the middle", answer["error"])
        self.assertEqual(json.loads(Path(answer["receipt"]).read_text("ascii"))["result"], "interrupted")


class ToolsTest(unittest.TestCase):
    def test_a_tool_is_given_its_words_as_they_are_and_plain_surroundings(self):
        box = Schedulers(self)
        box.tool("show", 'for word; do echo "[$word]"; done; echo "$LC_ALL $TZ $SYSTEMD_PAGER. $LANGUAGE.";'
                 " /bin/cat")
        os.environ["LANGUAGE"] = "de"
        self.addCleanup(os.environ.pop, "LANGUAGE")
        outcome = tools.run(box.places, ["show", "$(id)", "a b", "", "*", "-x\n"], stdin=b"in" * 200000)
        self.assertEqual(outcome.out, b"[$(id)]\n[a b]\n[]\n[*]\n[-x\n]\nC UTC . .\n" + b"in" * 200000)

    def test_a_tool_that_does_not_end_well_is_told_in_words_and_leaves_nothing(self):
        box = Schedulers(self)
        for script, problem, failure, status in (
            ("exit 0", "", "", 0), ("echo why >&2; echo more >&2; exit 3", "", "why", 3),
            ("exit 4", "", "ended with status 4", 4),
            ("kill -9 $$", "", "ended with status -9", -9),
            ("trap '' TERM; /bin/sleep 300 & wait", "gave no answer within 1 s", "", -1),
            ("exec /usr/bin/yes", "printed more than 1 MiB", "", -1),
            ("exec /usr/bin/yes >&2", "printed more than 1 MiB", "", -1),
            ("exec >&- 2>&-; exec /bin/sleep 300", "gave no answer within 1 s", "", -1)):
            box.tool("bad", script)
            outcome = tools.run(box.places, ["bad"], 1.0 if "sleep" in script else 60.0, most=1 << 20)
            self.assertIn(problem, outcome.problem)
            self.assertEqual((outcome.status, bool(outcome.problem)), (status, bool(problem)), script)
            self.assertIn(failure, outcome.failure)
        self.assertTrue(tools.run(box.places, ["nothere"]).missing)
        box.write("bin/broken", b"\x7fELF", 0o755)
        self.assertIn("can't be started", tools.run(box.places, ["broken"]).failure)
        end, box.places.reader = os.pipe()  # whom nobody reads any more
        self.addCleanup(os.close, box.places.reader)
        os.close(end)
        self.assertRaises(tools.Interrupted, tools.run, box.places, ["bad"], 60.0)

    def test_what_a_tool_leaves_behind_is_not_waited_for(self):
        box = Schedulers(self)
        box.tool("leaver", f'/bin/sleep 300 & echo $! > "{box.root}/pid"; echo answer')
        outcome = tools.run(box.places, ["leaver"], 250.0)
        os.kill(int(Path(box.root, "pid").read_text("ascii")), signal.SIGKILL)
        self.assertEqual((outcome.out, outcome.failure), (b"answer\n", ""))  # and no "gave no answer within"
