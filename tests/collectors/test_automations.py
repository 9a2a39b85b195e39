# SPDX-License-Identifier: Apache-2.0
import json
import os
import subprocess
import unittest
from pathlib import Path

from fabricated_machine import fresh_folder
from schedulers import NOW, SCRIPT, SETTINGS, Schedulers
from stub_scheduler import ABSENT

from ostrel_lib.automations.inventory import inventory
from ostrel_lib.automations.server import server_timers

TEXT_KEYS = ("lane lane_title id title schedule state executor host owner registry family tag observation"
             " location migration registry_state target last_run last_result next_run").split()
ROW = {**dict.fromkeys(TEXT_KEYS, str), **dict.fromkeys(("active", "can_run", "toggles"), bool)}
LANE = {"key": str, "title": str, "owner": str, "registry": str, "count": int, "observed": bool, "note": str}
TOP = {"read_at": str, "ok": bool, "error": str, "generated_at": str, "counts": dict, "quotas": list,
       "alerts": list, "lanes": list, "automations": list}
OFF = {"ActiveState": "inactive", "UnitFileState": "disabled"}
BROKEN = {"ActiveState": "failed", "Result": "exit-code", "ExecMainStatus": "3"}
LANES = {"orca": 1, "codex": 1, "launchd": 3, "systemd": 0, "registry": 1, "cloud": 1}
"""The lanes, in their order, with the jobs of the machine below."""
CACHED = 10000
BARE = 0.009
START_BUDGET = 0.020
"""Seconds of processor time: what a bare interpreter takes where the budget was set, and what may come on
top of it. A busy or slow machine stretches both alike."""
HEAVY = {"json", "re", "subprocess", "typing", "pathlib", "hashlib", "select", "signal", "collections",
         "datetime", "zlib"}
PYTHON = "/usr/bin/python3"


def types(record: dict) -> dict:
    return {key: type(value) for key, value in record.items()}


class InventoryTest(unittest.TestCase):
    def test_every_key_of_the_format_is_there_with_its_type(self):
        box = Schedulers(self)
        box.timer("backup.timer")
        box.timer("apt.timer", "system")
        box.write("etc/crontab", "17 * * * * root run-parts /etc/cron.hourly\n")
        box.write("home/.codex/automations/a/automation.toml", 'name = "Review"\nstatus = "ACTIVE"\n')
        box.write("home/.config/orca/orca-data.json", {"automations": [{"id": "o1", "enabled": True}]})
        box.registry({"lane": "registry", "id": "s1"}, {"lane": "cloud", "id": "c1"})
        found = box.bridge("list", "--refresh")
        self.assertEqual(types(found), TOP)
        self.assertEqual([(lane["key"], lane["count"], lane["observed"]) for lane in found["lanes"]],
                         [(key, count, count > 0) for key, count in LANES.items()])
        for records, shape in ((found["lanes"], LANE), (found["automations"], ROW)):
            self.assertEqual(list(map(types, records)), [shape] * len(records))
        self.assertEqual(found["counts"], {"total": 7, "active": 4})
        self.assertEqual((found["ok"], found["alerts"], found["generated_at"]),
                         (True, [], "2026-11-25T08:00:00+00:00"))
        self.assertEqual([row["family"] for row in found["automations"]],
                         ["panel", "dot", "bar", "bar", "bar", "stack", "ring"])

    def test_a_machine_without_schedulers_says_so_lane_by_lane_and_is_no_fault(self):
        box = Schedulers(self)
        box.without_tools()
        bare = box.bridge("list", "--refresh")
        self.assertEqual((bare["ok"], bare["automations"], bare["alerts"]), (True, [], []))
        for lane in bare["lanes"]:
            self.assertTrue(not lane["observed"] and lane["note"], lane)

    def test_the_states_and_results_of_timers_are_the_managers(self):
        box = Schedulers(self)
        cases = (
            # properties of the timer, of its job: state, active, result, switched here
            ({}, {}, "enabled", True, "ok", True),
            (OFF, {"ExecMainStartTimestamp": "", "InvocationID": ""}, "disabled", False, "unobserved", True),
            ({"ActiveState": "inactive"}, {}, "enabled, not started", False, "ok", True),
            ({"UnitFileState": "disabled"}, {}, "started, not enabled", True, "ok", True),
            ({"UnitFileState": "static"}, {"ActiveState": "activating"}, "enabled", True, "running", False),
            ({"UnitFileState": "masked", "LoadState": "masked", "ActiveState": "inactive"}, {},
             "masked", False, "ok", False),
            ({"LoadState": "bad-setting", "ActiveState": "inactive"}, {},
             "bad-setting", False, "ok", False),
            ({"ActiveState": "failed"}, BROKEN, "failed", False, "failed: exit-code 3", True),
            ({}, {"Result": "timeout"}, "enabled", True, "failed: timeout", True))
        for place, (timer, job, *_) in enumerate(cases):
            box.timer(f"t{place}.timer", job=job, **timer)
        rows = box.rows()
        for place, (_, _, *expected) in enumerate(cases):
            row = rows[f"launchd/user:t{place}.timer"]
            told = [row[key] for key in ("state", "active", "last_result", "toggles")]
            self.assertEqual(told, expected, place)
            self.assertEqual("unverified" in row["observation"], expected[0] in ("masked", "bad-setting"))

    def test_times_and_rules_are_told_in_words(self):
        box = Schedulers(self)
        box.timer("day.timer", job={"ExecMainStartTimestamp": "Wed 2026-11-25 07:30:00 UTC"})
        box.timer("boot.timer", TimersCalendar="", NextElapseUSecRealtime="", LastTriggerUSec="",
                  TimersMonotonic=["{ OnBootUSec=15min ; next_elapse=1h }",
                                   "{ OnUnitActiveUSec=2d ; next_elapse=1s }"],
                  NextElapseUSecMonotonic="900y 2month 3w 1d 2h 3min 4.5s")
        box.timer("off.timer", ActiveState="inactive",
                  TimersCalendar="{ OnCalendar=Mon *-*-* 09:05:00 ; next_elapse=(null) }")
        box.timer("odd.timer", NextElapseUSecRealtime="Mi 2026-11-25 09:00:00 CET",
                  NextElapseUSecMonotonic="soon",
                  TimersCalendar="{ OnCalendar=*-*-* *:00/7:00 ; next_elapse=x }")
        rows = box.rows()
        for name, schedule, last, following in (
            ("day", "daily at 06:00", "2026-11-25T07:30:00+00:00", "2026-11-26T06:00:00+00:00"),
            ("boot", "15min after boot or 2d after the last start", "2026-11-25T06:00:01+00:00", "29"),
            ("off", "Mon at 09:05", "2026-11-25T06:00:01+00:00", ""),
            ("odd", "*-*-* *:00/7:00", "2026-11-25T06:00:01+00:00", "")):
            row = rows[f"launchd/user:{name}.timer"]
            self.assertEqual((row["schedule"], row["last_run"]), (schedule, last))
            self.assertEqual(row["next_run"][:len(following) or None], following, row)

    def test_system_timers_and_templates_are_not_switched_here(self):
        box = Schedulers(self)
        box.timer("apt.timer", "system")
        box.timer("tpl@.timer")
        box.timer("tpl@x.timer")
        del box.state["user"]["tpl@x.timer"]["UnitFileState"]  # an instance has no file of its own
        box.state["user"]["tpl@.timer"]["loaded"] = False
        box.timer("z.timer", loaded=False)  # systemctl answers nothing behind a template that it is asked for
        rows = box.rows()
        self.assertEqual(sorted(rows), ["launchd/system:apt.timer", "launchd/user:tpl@x.timer",
                                        "launchd/user:z.timer"])
        row = rows["launchd/system:apt.timer"]
        self.assertEqual((row["toggles"], row["can_run"], row["owner"]), (False, False, "root"))
        self.assertIn("switched elsewhere, by root with systemctl", row["location"])

    def test_hostile_names_and_descriptions_give_rows_and_nothing_else(self):
        box = Schedulers(self)
        names = ("-dash.timer", "esc\\x20aped.timer", "a:b@c-d.timer", "x" * 249 + ".timer")
        for name in names:
            box.timer(name)
        box.timer("forged.timer", Description="two\x1b[31m\nId=other.timer\nUnit=$(id)")
        for name in ("$(touch x).timer", "semi;colon.timer", "y" * 260 + ".timer", "\u00e9.timer"):
            box.timer(name)
        inventory = box.bridge("list", "--refresh")
        listed = {row["id"]: row for row in inventory["automations"]}
        self.assertEqual(set(listed), {"user:" + name for name in (*names, "forged.timer")})
        self.assertEqual(listed["user:esc\\x20aped.timer"]["title"], "esc aped")
        self.assertEqual(listed["user:forged.timer"]["title"], "forged · two [31m")
        for row in listed.values():
            self.assertTrue(all(value.isprintable() for value in row.values() if type(value) is str), row)

    def test_a_tool_that_misbehaves_costs_its_source_and_not_the_lane(self):
        for mode, words in (("hang", "gave no answer within"), ("flood", "printed more than 16 MiB"),
                            ("garbage", "printed something that isn't a list of timers")):
            box = Schedulers(self)
            box.timer("apt.timer", "system")
            box.write("etc/crontab", "17 * * * * root run-parts /etc/cron.hourly\n")
            box.state["mode"]["user"] = mode
            box.save()
            found = inventory(box.places, 6.0 if mode == "hang" else 120.0)
            self.assertEqual([row["registry"] for row in found["automations"]][-1:], ["/etc/crontab"])
            lane = found["lanes"][2]
            self.assertEqual((lane["observed"], words in lane["note"]), (True, True), lane)
            self.assertTrue(any(words in alert for alert in found["alerts"]), (mode, found["alerts"]))

    def test_where_no_manager_runs_there_is_nothing_to_see_and_nothing_wrong(self):
        for mode in ABSENT:
            box = Schedulers(self)
            box.state["mode"].update(user=mode, system=mode)
            box.save()
            self.assertEqual(box.bridge("list", "--refresh")["alerts"], [], mode)

    def test_more_units_than_one_command_line_holds_are_all_listed(self):
        box = Schedulers(self)
        box.timer("job.timer")
        timer, job = (box.state["user"].pop("job." + kind) for kind in ("timer", "service"))
        for name in (f"job{number}." for number in range(900)):
            box.state["user"] |= {name + "timer": {**timer, "Unit": name + "service"}, name + "service": job}
        box.save()
        rows = box.rows()
        self.assertEqual(len(rows), 900)
        self.assertTrue(all(row["last_result"] == "ok" for row in rows.values()))

    def test_where_the_users_timers_run_depends_on_lingering(self):
        for answer, words in (("yes", "while you are logged out"), ("no", "only while you are logged in"),
                              ("perhaps", "this machine")):
            box = Schedulers(self)
            box.timer("a.timer")
            box.state["linger"] = answer
            box.save()
            self.assertIn(words, box.rows()["launchd/user:a.timer"]["location"])

    def test_a_server_alias_that_ssh_could_misread_is_never_used(self):
        for alias in ("-oProxyCommand=touch x", "a b", "host;id", "a@b@c", "", 5, "x" * 300, "h\nost", ".",
                      "@h"):
            box = Schedulers(self)
            box.tool("ssh", f'touch "{box.root}/asked"')
            box.write("home/" + SETTINGS, {"ostrel.server.alias": alias})
            lane = server_timers(box.places, 30)
            self.assertEqual((lane.observed, os.path.exists(box.root + "/asked")), (False, False), alias)
            self.assertIn("alias", lane.note)
        box.write("home/" + SETTINGS, "{broken")
        self.assertIn("settings can't be read", server_timers(box.places, 30).note)
        box.write("home/" + SETTINGS, {"ostrel.server.alias": "srv"})
        box.tool("ssh", 'echo "ssh: Could not resolve hostname srv: Name or service not known" >&2; exit 255')
        self.assertIn("Could not resolve hostname srv", server_timers(box.places, 30).note)


class CacheTest(unittest.TestCase):
    def box(self):
        """A machine on which nothing but the registry has jobs."""
        box = Schedulers(self)
        box.without_tools()
        box.registry({"lane": "cloud", "id": "old"})
        return box

    def change(self, box):
        box.registry({"lane": "cloud", "id": "new"})

    def test_an_answer_from_the_cache_reads_no_lane_and_tells_both_times(self):
        box = self.box()
        first = box.bridge("list")
        self.change(box)
        box.now += 3600
        again = box.bridge("list")
        self.assertEqual((again.pop("read_at"), first.pop("read_at")),
                         ("2026-11-25T09:00:00+00:00", "2026-11-25T08:00:00+00:00"))
        self.assertEqual(again, first)
        self.assertEqual(list(box.rows("list", "--refresh")), ["cloud/new"])
        self.assertEqual(list(box.rows("list")), ["cloud/new"])

    def test_a_cache_that_cannot_be_believed_is_read_anew(self):
        for name, spoil, later in (
            ("cut", lambda content: content[:-9], 0),
            ("changed", lambda content: content[:-40] + b"x" + content[-39:], 0),
            ("empty", lambda _: b"", 0), ("garbage", lambda _: b"\xff" * 999, 0),
            ("another version", lambda content: content.replace(b" 1 ", b" 2 ", 1), 0),
            ("a day old", None, 86401), ("from the future", None, -1)):
            box = self.box()
            box.bridge("list")
            self.change(box)
            path = box.home + "/.cache/ostrel/automations"
            self.assertEqual(os.stat(path).st_mode & 0o777, 0o600)
            if spoil:
                box.write(path, spoil(Path(path).read_bytes()))
            box.now = NOW + later
            self.assertEqual(list(box.rows("list")), ["cloud/new"], name)

    def test_a_cache_that_is_a_link_or_cannot_be_written_costs_nothing_but_time(self):
        box = self.box()
        box.bridge("list")
        path = box.home + "/.cache/ostrel/automations"
        os.rename(path, path + ".moved")
        os.symlink(path + ".moved", path)
        self.change(box)
        self.assertEqual(list(box.rows("list")), ["cloud/new"])
        box = self.box()
        box.write("home/.cache", "a file where the folder should be")
        found = box.bridge("list")
        self.assertEqual((found["counts"]["total"], len(found["alerts"])), (1, 1))


class BudgetTest(unittest.TestCase):
    def setUp(self):
        self.box = Schedulers(self)
        self.box.registry(*({"lane": "cloud", "id": f"job {number}", "title": f"Job {number} of the list",
                             "schedule": "daily at 09:00", "executor": "claude -p"}
                            for number in range(CACHED)))
        self.box.without_tools()
        self.environment = {"HOME": self.box.home, "PATH": "/nowhere",
                            "PYTHONPYCACHEPREFIX": fresh_folder(self)}

    def run_python(self, *words):
        return subprocess.run([PYTHON, *words], stdin=subprocess.DEVNULL, capture_output=True,
                              env=self.environment, check=True)

    def processor_time(self, *words) -> float:
        """The least that several runs took, so that a busy machine doesn't count."""
        times = []
        for _ in range(15):
            child = subprocess.Popen([PYTHON, *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                     env=self.environment)
            _, status, usage = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(child.returncode, 0)
            times.append(usage.ru_utime + usage.ru_stime)
        return min(times)

    def test_ten_thousand_jobs_come_whole_from_the_cache_without_a_parser(self):
        first = json.loads(self.run_python(SCRIPT, "list").stdout)
        kept = self.run_python("-X", "importtime", SCRIPT, "list")
        again = json.loads(kept.stdout)
        self.assertEqual(again["automations"], first["automations"])
        self.assertGreaterEqual(len(again["automations"]), CACHED)
        loaded = {line.rsplit("|", 1)[-1].strip() for line in kept.stderr.decode().split("\n")}
        self.assertIn("ostrel_lib.automations.cache", loaded)
        self.assertEqual(loaded & HEAVY, set())

    def test_an_answer_from_the_cache_costs_little_more_than_pythons_own_start(self):
        self.run_python(SCRIPT, "list")
        bare = self.processor_time("-c", "pass")
        spent = self.processor_time(SCRIPT, "list") - bare
        self.assertLess(spent, START_BUDGET * bare / BARE, f"bare python took {bare:.3f} s")
