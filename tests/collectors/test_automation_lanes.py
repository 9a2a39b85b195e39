# SPDX-License-Identifier: Apache-2.0
import json
import os
import sqlite3
import unittest

from schedulers import NOW, REGISTRY, Schedulers

from ostrel_lib.automations import agents, cron, crontime, quota, registry
from ostrel_lib.places import iso
from ostrel_lib.tools import Deadline


def cron_of(box: Schedulers):
    return cron.cron_jobs(box.places, Deadline(60))


class CronTest(unittest.TestCase):
    def box(self):
        box = Schedulers(self)
        box.write("proc/77/comm", "cron\n")
        return box

    def test_the_next_run_is_the_next_minute_that_fits_all_fields(self):
        box = self.box()
        for fields, expected in (
            ("* * * * *", "2026-11-25T08:01"), ("0 8 * * *", "2026-11-26T08:00"), ("0 0 31 2 *", ""),
            ("*/7 9-11/2 * * *", "2026-11-25T09:00"), ("30 3 1-7 * 0", "2026-11-29T03:30"),
            ("0 0 13 * fri", "2026-11-27T00:00"), ("0 0 29 feb *", "2028-02-29T00:00"),
            ("5,10 0 1 1 *", "2027-01-01T00:05"), ("0 12 * * 7", "2026-11-29T12:00"),
            ("0 0 * * Mon-Wed", "2026-11-30T00:00"), ("@weekly", "2026-11-29T00:00"),
            ("10/20 * * * *", "2026-11-25T08:10"), ("0 0 */2 * 1", "2026-12-07T00:00")):
            at = crontime.next_time(crontime.rhythm(fields), box.now)
            self.assertEqual(iso(at)[:16] if at else "", expected, fields)

    def test_fields_that_cron_would_refuse_have_no_rhythm(self):
        for fields in ("", "* * * *", "60 * * * *", "* 24 * * *", "* * 0 * *", "* * * 13 *", "* * * * 8",
                       "5-1 * * * *", "*/0 * * * *", "a * * * *", "-1 * * * *", "1,,2 * * * *", "@never",
                       "* * * * * *", "\u0663 * * * *", "1-99999999999 * * * *"):
            self.assertIsNone(crontime.rhythm(fields), fields)

    def test_tables_are_read_as_cron_reads_them(self):
        box = self.box()
        box.tool("crontab", f'[ "$1" = -l ] && /bin/cat "{box.root}/mine"')
        box.write("mine", "MAILTO=me\n# comment\n\n*/5 * * * *  sync --all %input\n"
                  "@reboot  echo a\\%b\nPATH = /bin\n")
        box.write("etc/crontab", "SHELL=/bin/sh\n30 6 * * 1 root  run-parts /etc/cron.weekly\n")
        box.write("etc/cron.d/php", "09,39 * * * * www-data [ -x x ] && clean a=b\n")
        for ignored in ("php.dpkg-old", ".placeholder", "a~"):
            box.write("etc/cron.d/" + ignored, "* * * * * root no\n")
        box.write("etc/anacrontab", "START_HOURS_RANGE=7-22\n1\t5\tcron.daily\trun-parts /etc/cron.daily\n"
                  "@monthly 15 m x y\n")
        box.write("spool/anacron/cron.daily", "20261124\n")
        box.tool("anacron", "exit 1")
        found = cron_of(box)
        self.assertEqual([[row[key] for key in ("title", "schedule", "owner", "registry", "next_run")]
                          for row in found.rows], [
            ["sync --all", "every 5 minutes", "you", "crontab", "2026-11-25T08:05:00+00:00"],
            ["echo a%b", "at each boot", "you", "crontab", ""],
            ["run-parts /etc/cron.weekly", "Mon at 06:30", "root", "/etc/crontab",
             "2026-11-30T06:30:00+00:00"],
            ["php · [ -x x ] && clean a=b", "09,39 * * * *", "www-data", "/etc/cron.d/php",
             "2026-11-25T08:09:00+00:00"],
            ["cron.daily", "daily, 5 min after the start", "root", "/etc/anacrontab", ""],
            ["m", "monthly, 15 min after the start", "root", "/etc/anacrontab", ""]])
        self.assertEqual({row["state"] for row in found.rows}, {"enabled"})
        os.remove(box.root + "/bin/anacron")
        self.assertEqual([row["active"] for row in cron_of(box).rows], [True] * 4 + [False] * 2)
        self.assertEqual((found.alerts, found.rows[4]["last_run"]), ([], "2026-11-24"))
        self.assertTrue(all(row["active"] and not row["toggles"] | row["can_run"] for row in found.rows))

    def test_a_job_keeps_its_id_while_other_lines_come_and_go_and_twins_differ(self):
        lines = b"0 1 * * * root a\n0 2 * * * root b\n0 1 * * * root a"
        first, later = ([line.id for line in cron.parse(table, True)[0]]
                        for table in (lines, b"# x\n0 3 * * * root c\n" + lines))
        self.assertEqual((len(set(first)), later[1:]), (3, first))

    def test_without_a_daemon_a_table_is_listed_and_not_active(self):
        box = Schedulers(self)
        box.write("etc/crontab", "30 6 * * * root x\n")
        row = cron_of(box).rows[0]
        self.assertEqual((row["active"], row["state"], row["next_run"]), (False, "no cron daemon runs", ""))

    def test_a_table_that_cannot_be_taken_is_named_and_the_others_count(self):
        box = self.box()
        box.write("etc/crontab", "30 6 * * * root x\n99 * * * * root y\nnonsense\n")
        box.write("etc/cron.d/open", "* * * * * root x\n", 0o646)
        box.write("etc/cron.d/shared", "* * * * * root x\n", 0o664)
        box.write("etc/cron.d/binary", b"* * * * * root \0\xff\n")
        box.write("etc/cron.d/huge", b"#" * (5 << 20))
        os.symlink(box.root + "/etc/crontab", box.root + "/etc/cron.d/link")
        os.mkfifo(box.root + "/etc/cron.d/pipe")
        box.tool("crontab", "echo 'crontab: you are not allowed to use this program' >&2; exit 1")
        box.write("etc/anacrontab", "x 5 job run\n")
        found = cron_of(box)
        self.assertEqual(len(found.rows), 1)
        told = dict(alert.split(": ", 1) for alert in found.alerts)
        self.assertEqual(told["/etc/crontab"], "line 2 can't be read")
        for table, words in (("/etc/cron.d/open", "may write it"), ("/etc/cron.d/binary", "no text"),
                             ("/etc/cron.d/shared", "may write it"),
                             ("/etc/cron.d/link", "a link"),
                             ("/etc/cron.d/huge", "larger than 4 MiB"), ("/etc/cron.d/pipe", "regular"),
                             ("crontab", "not allowed"), ("/etc/anacrontab", "line 1")):
            self.assertIn(words, told[table])

    def test_a_user_without_a_crontab_is_no_fault(self):
        for words in ("no crontab for u", "crontab: can't open 'u': No such file or directory"):
            box = self.box()
            box.tool("crontab", f'echo "{words}" >&2; exit 1')
            self.assertEqual((cron_of(box).rows, cron_of(box).alerts), ([], []))


class AgentsTest(unittest.TestCase):
    def test_codex_automations_come_from_their_files_with_times_from_the_database(self):
        box = Schedulers(self)
        folder = "home/.codex/automations/"
        box.write(folder + "a/automation.toml",
                  'id = "a"\nname = "Release notes"\nstatus = "ACTIVE"\nmodel = "gpt"\n'
                  'rrule = "RRULE:FREQ=WEEKLY;BYDAY=FR;BYHOUR=9;BYMINUTE=0"\ncwds = ["/src/x"]\n')
        box.write(folder + "b/automation.toml",
                  b'\xef\xbb\xbfid = "two\\nlines:colon"\nstatus = "PAUSED"\nrrule = "every now and then"\n')
        box.write(folder + "c/automation.toml", "status = [broken")
        box.write(folder + "d/automation.toml", "name = 'x'\nid = ''\n")
        os.mkdir(f"{box.root}/{folder}/empty")
        os.makedirs(box.home + "/.codex/sqlite")
        base = sqlite3.connect(box.home + "/.codex/sqlite/codex-dev.db")
        base.execute("CREATE TABLE automations (id, last_run_at, next_run_at)")
        base.execute("CREATE TABLE automation_runs"
                     " (automation_id, status, created_at, inbox_title, inbox_summary)")
        base.execute("INSERT INTO automations VALUES ('a', ?, ?)", ((NOW - 60) * 1000, (NOW + 60) * 1000))
        base.executemany("INSERT INTO automation_runs VALUES ('a', ?, ?, ?, ?)", [
            ("PENDING_REVIEW", 1000, "Title", None), ("FAILED", 9000, "Title", "It\nbroke"),
            (None, 5000, 7, b"")])
        base.commit()
        base.close()
        found = agents.codex_jobs(box.places)
        self.assertEqual([row["id"] for row in found.rows], ["a", "two\nlines:colon", "d"])
        first, second, _ = found.rows
        self.assertLessEqual({
            "title": "Release notes", "schedule": "every week at 09:00 on FR", "state": "enabled",
            "last_run": "2026-11-25T07:59:00+00:00", "last_result": "failed",
            "next_run": "2026-11-25T08:01:00+00:00"}.items(), first.items())
        self.assertLessEqual({
            "title": "two lines:colon", "schedule": "every now and then", "state": "paused", "active": False,
            "last_result": "unobserved", "next_run": ""}.items(), second.items())
        self.assertEqual(found.alerts, ["codex: c/automation.toml: it isn't TOML"])
        answer = box.bridge("journal", "--lane", "codex", "--id", "a", "--target", "")
        self.assertEqual([list(run.values()) for run in answer["journal"]], [
            ["1970-01-01T00:00:09+00:00", "failed", "It broke"], ["1970-01-01T00:00:05+00:00", "", ""],
            ["1970-01-01T00:00:01+00:00", "pending review", "Title"]])
        box.write("home/.codex/sqlite/codex-dev.db", b"no database" * 999)
        self.assertEqual(agents.codex_jobs(box.places).rows[0]["last_run"], "")

    def test_orcas_automations_come_from_the_state_of_all_its_profiles(self):
        box = Schedulers(self)
        state = {
            "automations": [
                {"id": "r1", "name": "Triage", "enabled": True, "agentId": "claude",
                 "rrule": "FREQ=HOURLY;BYMINUTE=5", "nextRunAt": (NOW + 300) * 1000},
                {"id": "r2", "enabled": False, "nextRunAt": NOW * 1000, "lastRunAt": (NOW - 300) * 1000},
                {"id": 5}, "text", {"name": "no id"}],
            "automationRuns": [
                {"automationId": "r1", "status": "completed", "startedAt": 5000}, "text", {"automationId": 7},
                {"automationId": "r1", "status": "dispatch_failed", "error": "no host", "startedAt": 9000}]}
        box.write("home/.config/orca/orca-data.json", state)
        box.write("home/.config/orca/profiles/work/orca-data.json",
                  {"automations": [{"id": "r2"}, {"id": "w", "enabled": True}]})
        box.write("home/.config/orca/profiles/old/orca-data.json", '{"automations": "none"}')
        found = agents.orca_jobs(box.places)
        self.assertEqual([row["id"] for row in found.rows], ["r1", "r2", "w"])
        self.assertEqual([found.rows[0][key] for key in ("schedule", "executor", "last_result", "next_run")],
                         ["every hour at minute 5", "claude", "failed: dispatch",
                          "2026-11-25T08:05:00+00:00"])
        self.assertEqual([found.rows[1][key] for key in ("state", "next_run", "last_run")],
                         ["paused", "", "2026-11-25T07:55:00+00:00"])
        self.assertEqual((found.observed, len(found.alerts)), (True, 4))
        answer = box.bridge("journal", "--lane", "orca", "--id", "r1", "--target", "")
        self.assertEqual([(run["at"][11:23], run["status"], run["line"]) for run in answer["journal"]],
                         [("00:00:09+00:", "failed: dispatch", "no host"), ("00:00:05+00:", "ok", "")])

    def test_the_quota_is_what_the_newest_session_was_told_last(self):
        box = Schedulers(self)
        folder = "home/.codex/sessions/2026/11/"

        def event(used, at="2026-11-25T07:50:00.123Z", **window):
            limits = {
                "primary": {"used_percent": used, "window_minutes": 300, "resets_at": NOW + 600, **window},
                "secondary": {"used_percent": 77.5, "window_minutes": 10080, "resets_in_seconds": 86400}}
            return json.dumps({"timestamp": at, "type": "event_msg",
                               "payload": {"type": "token_count", "rate_limits": limits}})

        self.assertEqual(quota.quotas(box.places, False), [])
        box.write(folder + "24/rollout-2026-11-24T10-00-00-x.jsonl", event(90))
        box.write(folder + "25/rollout-2026-11-25T07-00-00-x.jsonl", "\n".join(
            [event(1), event(28), '{"rate_limits": cut', '{"payload": {"rate_limits": null}}', ""]))
        box.write(folder + "25/rollout-2026-11-25T07-59-00-x.jsonl", "just begun")
        row, = quota.quotas(box.places, True)
        self.assertEqual((row["checked_at"], row["state"], row["host"]), (NOW - 600, "observed", "box"))
        self.assertEqual(row["windows"], [
            {"remaining": 72.0, "minutes": 300, "resets_at": "2026-11-25T08:10:00+00:00"},
            {"remaining": 22.5, "minutes": 10080, "resets_at": "2026-11-26T07:50:00+00:00"}])
        for window, remaining in (({"resets_at": NOW}, 100.0), ({"used_percent": 250}, 0.0),
                                  ({"used_percent": "x"}, 22.5)):
            box.write(folder + "25/rollout-2026-11-25T07-59-00-x.jsonl", event(10, **window))
            self.assertEqual(quota.quotas(box.places, False)[0]["windows"][0]["remaining"], remaining, window)


class RegistryTest(unittest.TestCase):
    def test_a_registry_that_cannot_be_taken_is_a_note_of_its_lanes(self):
        entry = {"lane": "cloud", "id": "x"}
        for content, words in (
            (b"", "isn't JSON from line 1"), (b"[]", "isn't an object"), (b"\xff\xfe", "isn't UTF-8"),
            (b"[" * 100000, "isn't JSON"),
            ({"version": 2, "automations": []}, "version isn't 1"),
            ({"version": True, "automations": []}, "version"),
            ({"version": 1}, "no list"), ({"version": 1, "automations": [entry] * 10001}, "more than 10000"),
            (b'{"version": 1, "automations": [{"lane": "cloud", "id": "a", "min_quota_pct": NaN}]}',
             "isn't JSON"),
            (b" " * (5 << 20), "larger than 4 MiB"),
            (b'{"version": 1' + b"1" * 5000 + b"}", "isn't JSON that can be read")):
            box = Schedulers(self)
            box.write("home/" + REGISTRY, content)
            loaded = registry.load(box.places)
            for lane in ("registry", "cloud"):
                found = registry.declared(loaded, lane)
                self.assertTrue(not found.observed and words in found.note and not found.rows,
                                (str(content)[:40], found.note))
        os.rename(f"{box.home}/{REGISTRY}", box.home + "/real.json")
        os.symlink(box.home + "/real.json", f"{box.home}/{REGISTRY}")
        self.assertIn("it is a link", registry.load(box.places).note)

    def test_faulty_entries_are_named_and_the_others_count(self):
        box = Schedulers(self)
        good = {"lane": "cloud", "id": "a:b\nc", "title": "Two\nlines", "active": True, "family": "dot"}
        faulty = (5, {"lane": "cloud"}, {"id": "x"}, *({**good, **fault} for fault in (
            {"lane": "moon"}, {"id": ""}, {"id": "x" * 401}, {"id": "n\0l"}, {"titel": "x"}, {"id": "\ud800"},
            {"title": 5}, {"active": "yes"}, {"family": "cube"}, {"schedule": "x" * 1001},
            {"min_quota_pct": 101}, {})))
        box.registry(good, *faulty)
        loaded = registry.load(box.places)
        self.assertEqual([fault.split(":")[0] for fault in loaded.faults],
                         [f"entry {place + 2}" for place in range(len(faulty))])
        self.assertIn("stands in the lane already", loaded.faults[-1])
        row, = registry.declared(loaded, "cloud").rows
        self.assertEqual([row[key] for key in ("id", "title", "active", "family", "observation", "state")],
                         ["a:b\nc", "Two lines", True, "dot", "declared · unverified", "unverified"])
        self.assertEqual(len(registry.declared(loaded, "registry").alerts), 6)

    def test_what_is_declared_of_another_lanes_job_is_written_into_its_row(self):
        box = Schedulers(self)
        box.timer("a.timer", ActiveState="inactive", UnitFileState="disabled")
        box.registry({"lane": "launchd", "id": "user:a.timer", "blocked": True, "owner": "Ann",
                      "migration": "to srv", "min_quota_pct": 20},
                     {"lane": "launchd", "id": "user:gone.timer"}, {"lane": "orca", "id": "gone"})
        found = box.bridge("list", "--refresh")
        row, = found["automations"]
        self.assertEqual([row[key] for key in ("state", "owner", "migration", "registry_state")],
                         ["blocked", "Ann", "to srv", "blocked · needs 20% of the quota"])
        self.assertEqual(found["alerts"], ["registry: 1 named in lane launchd can't be found there",
                                           "registry: 1 named in lane orca can't be found there"])
