# SPDX-License-Identifier: Apache-2.0
import json
import os
import unittest

from fabricated_machine import FIXTURES, Machine

from ostrel_lib import machine, memory
from ostrel_lib.jsontext import dump


def of(**names: str) -> dict:
    """A shape: the keys of each type."""
    types = {"text": str, "whole": int, "number": float}
    return {key: types[kind] for kind, keys in names.items() for key in keys.split()}


PROC = of(text="pid name grp cmd", whole="rss", number="cpu")
FORMAT = {
    **of(text="ts host history_state"),
    "offenders": [of(text="label source risk action reason", whole="rss", number="cpu")],
    "services": [of(text="name scope state url path launch_agent note", whole="pid rss", number="cpu")],
    "history": [of(text="ts", whole="t swap load mcp")],
    "ram": of(number="total used wired compressed free", whole="used_pct"),
    "swap": of(whole="total used free used_pct", number="total_gb used_gb free_gb", text="meaning"),
    "load": of(number="l1 l5 l15", whole="ncpu pct"),
    "fan": {**of(whole="mcp codex_mcp claude_mcp other_mcp codex_mcp_duplicates codex_mcp_duplicate_mb node"
                       " browser python3 claude codex chromium"),
            "chromium_bundles": of(whole="chrome")},
    "sessions": of(whole="claude codex"), "procs": [PROC], "live_sessions": [PROC],
    "launchd": of(whole="interval_jobs runatload_interval keepalive shell_first"),
    "trend": of(text="summary direction", whole="samples swap_delta load_delta mcp_delta"),
    "meta": of(text="backend code_path project_path native_app history_path server_url data_endpoint"
                    " analyze_endpoint cleanup_endpoint session_inspector_url native_refresh panel_refresh"
                    " server_model service_model"),
    "system_observation": {
        "disk": of(number="free_gb total_gb"), "battery": of(whole="percent", text="power detail"),
        "network": [of(text="interface", whole="received sent")]},
    "accuracy": of(text="ram memory swap load cpu processes mcp sessions chromium duplicates groups offenders"
                        " services launchd trend verdict disk battery network"),
    "groups": of(whole="claude runtime app"), "verdict": of(text="level headline cause", number="per_sess")}


def shape_of(value):
    """A value with types in the place of its figures and texts, and a list's rows once when all are alike."""
    if isinstance(value, dict):
        return {key: shape_of(part) for key, part in value.items()}
    if isinstance(value, list):
        rows = [shape_of(row) for row in value]
        return rows[:1] if rows == rows[:1] * len(rows) else rows
    return type(value)


class SnapshotTest(unittest.TestCase):
    def test_every_key_of_the_format_is_there_with_its_type(self):
        box = Machine(self)
        counters = b"lo: 9 0 0 0 0 0 0 0 9\neth0: 5 0 0 0 0 0 0 0 7\n wlan0:800 0 0 0 0 0 0 0 1\n"
        box.write("proc/net/dev", b"heading\nheading\n" + counters)
        for name, content in (("type", b"Battery\n"), ("capacity", b"57\n")):
            box.write("sys/class/power_supply/BAT0/" + name, content)
        box.process(10, "claude")
        box.process(11, "/opt/chrome/chrome", "--type=renderer", mib=600)
        os.makedirs(box.root + "/run/systemd/system")
        box.write("sys/fs/cgroup/system.slice/x.service/cgroup.procs", b"11\n")
        snapshot = json.loads(dump(box.snapshot()))
        self.assertEqual(shape_of(snapshot), FORMAT)
        links = [list(row.values()) for row in snapshot["system_observation"]["network"]]
        self.assertEqual(links, [["wlan0", 800, 1], ["eth0", 5, 7], ["lo", 9, 9]])
        self.assertRegex(snapshot["ts"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d$")

    def test_a_machine_that_shows_nothing_gives_zeros(self):
        box = Machine(self)
        for part in ("proc", "sys", "home"):
            os.rmdir(os.path.join(box.root, part))
        snapshot = json.loads(dump(box.snapshot()))
        self.assertEqual(snapshot.keys(), FORMAT.keys())
        self.assertEqual(snapshot["procs"] + snapshot["live_sessions"], [])
        self.assertEqual({*snapshot["ram"].values(), snapshot["swap"]["total"], snapshot["load"]["l1"]}, {0})
        self.assertEqual(snapshot["system_observation"], {"network": []})
        self.assertEqual([snapshot[key] for key in ("offenders", "services", "history")], [[], [], []])
        self.assertEqual([snapshot["history_state"], snapshot["verdict"]["level"]],
                         ["unavailable", "unknown"])

    def test_used_memory_is_what_cannot_be_had_back(self):
        for name, used, pct, wired in (
            ("laptop-2.6.32", 1544040 - 497636 - 87364 - (411716 - 15656) - 19232, 35, 8832 + 2512 + 7720),
            ("server-48g", 48588200 - 2121064 - 165496 - (3197324 - 183060) - 435548, 88, 1005652),
            ("vm-6.18", 24684084 - 23896772 - 29424 - (64544 - 8872) - 583276, 0, 15816 + 41608 + 3852)):
            with self.subTest(name), open(os.path.join(FIXTURES, name, "meminfo"), "rb") as file:
                fields = memory.memory_fields(file.read())
                ram = memory.ram(fields, 0)
                self.assertEqual((memory.used_kib(fields), ram["used_pct"]), (used, pct))
                self.assertEqual(ram["wired"], round(wired / 1048576, 3))

    def test_memory_fields_that_make_no_sense_count_as_absent(self):
        for text in (b"", b"MemTotal: -5 kB\nMemFree: 1 kB", b"MemTotal: 1_0 kB\nMemFree: 1 kB",
                     b"MemTotal: " + b"9" * 5000 + b" kB\nMemFree: 1 kB", b"\0\xff MemTotal\n: 5",
                     b"MemTotal: 10 kB\nMemFree: 5 kB\nCached: 900 kB"):
            self.assertEqual(memory.used_kib(memory.memory_fields(text)), 0, text)

    def test_swap_is_told_in_whole_mebibytes_and_by_its_place(self):
        fields = memory.memory_fields(b"SwapTotal: 2097148 kB\nSwapFree: 1037832 kB\n")
        for device, place in ((b"/swapfile", "on disk;"), (b"/dev/zram0", "in memory (zram);")):
            swap = memory.swap(fields, b"Filename Type\n" + device + b" file 1 1 -2\n")
            self.assertIn(place, swap.pop("meaning"))
            self.assertEqual(list(swap.values()), [2047, 1034, 1013, 51, 2.0, 1.01, 0.99])

    def test_compressed_memory_is_the_zswap_pool_and_the_zram_devices(self):
        box = Machine(self)
        box.write("proc/meminfo", b"MemTotal: 8388608 kB\nMemFree: 1 kB\nZswap: 1048576 kB\n")
        box.write("sys/block/zram0/mm_stat", b"9999999999 2000000000 2147483648 0 0 0 0 0 0\n")
        box.write("sys/block/zram1/mm_stat", b"1 1 9999999999999999999\n")
        box.write("sys/block/vda/mm_stat", b"1 1 2147483648\n")
        self.assertEqual(box.snapshot()["ram"]["compressed"], 3.0)

    def test_a_list_of_links_longer_than_one_read_ends_with_the_loopback(self):
        box = Machine(self)
        rows = b"".join(b"veth%d: %d 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n" % (row, row) for row in range(3000))
        box.write("proc/42/net/dev", b"head\nhead\n  lo: 9 0 0 0 0 0 0 0 9\n" + rows)
        box.link("proc/self", "42")
        names = [row["interface"] for row in box.snapshot()["system_observation"]["network"]]
        self.assertEqual((len(names), names[0], names[-1]), (64, "veth2999", "lo"))

    def test_load_is_cut_to_whole_percent_and_nonsense_is_zero(self):
        for text, l1, pct in ((b"1.27 1.29 0.82 1/2 4", 1.27, 31), (b"nan 1e5", 0, 0), (b"9" * 400, 0, 0)):
            load = machine.load(text, 4)
            self.assertEqual((load["l1"], load["pct"]), (l1, pct), text)

    def test_a_battery_of_the_machine_counts_and_that_of_a_mouse_does_not(self):
        mouse = {"type": "Battery", "scope": "Device", "capacity": "9"}
        first = {"type": "Battery", "capacity": "100", "energy_full": "30", "status": "Discharging"}
        second = {"type": "Battery", "capacity": "20", "energy_full": "10", "status": "Unknown"}
        mains = {"type": "Mains", "online": "1"}
        for supplies, expected in (([mains, mouse, {"type": "Battery", "capacity": "x"}], None),
                                   ([mains, second], [20, "AC power", "unknown"]),
                                   ([first, mouse, second], [80, "battery power", "discharging, unknown"])):
            box = Machine(self)
            for place, values in enumerate(supplies):
                for name, value in values.items():
                    box.write(f"sys/class/power_supply/S{place}/{name}", value.encode() + b"\n")
            battery = machine.battery(box.root + "/sys")
            self.assertEqual(battery and list(battery.values()), expected)

    def test_the_json_text_can_be_read_by_every_reader(self):
        sound = ["\x00\x1f", "\U0001f600", True, None, 1.5]
        text = dump({"n": float("nan"), "i": float("-inf"), "é\n\"": sound, "bad\udcff": 1})
        self.assertTrue(text.isascii() and "\n" not in text)
        self.assertEqual(json.loads(text), {"n": 0, "i": 0, "é\n\"": sound, "bad" + "\ufffd" * 3: 1})


TIMER = b"[Timer]\nOnCalendar=\nOnUnitActiveSec=5min\n"


def told(snapshot: dict, *keys: str) -> list:
    return [[row[key] for key in keys] for row in snapshot["services"]]


def with_systemd(box: Machine) -> Machine:
    os.makedirs(box.root + "/run/systemd/system")
    return box


class ServicesTest(unittest.TestCase):
    def test_a_unit_is_told_with_all_its_processes_and_its_oldest_one(self):
        box = with_systemd(Machine(self))
        user = "user.slice/user-1000.slice/user@1000.service/app.slice/"
        groups = {"system.slice/web.service": b"30\n31\n", "system.slice/web.service/inner": b"32\n",
                  "system.slice/a.mount": b"40\n", "system.slice/gone.service": b"", "init.scope": b"1\n",
                  "system.slice/other.service": b"999\n", user + "editor.scope": b"51\n",
                  user + "app-x.slice/sync\\x2dup@1.service": b"50\n",
                  "user.slice/user-1001.slice/user@1001.service/app.slice/theirs.service": b"52\n"}
        for group, pids in groups.items():
            box.write(f"sys/fs/cgroup/{group}/cgroup.procs", pids)
        for pid, ppid, start in ((30, 1, 60), (31, 30, 70), (32, 1, 65), (40, 1, 1), (50, 1, 1), (51, 1, 1),
                                 (52, 1, 1)):
            box.process(pid, "/opt/web", "-x", ppid=ppid, start=start, mib=10)
        box.write("usr/lib/systemd/system/web.service", b"")
        box.write("home/.config/systemd/user/sync\\x2dup@.service", b"")
        self.assertEqual(told(box.snapshot(), "name", "scope", "pid", "rss", "path", "note"), [
            ["sync-up@1", "user", 50, 10, "/opt/web", ""],
            ["other", "system", 999, 0, "", "not shown to this user"],
            ["web", "system", 30, 30, "/opt/web", "3 processes"]])
        files = [row[0][len(box.root):] or row[0] for row in told(box.snapshot(), "launch_agent")]
        self.assertEqual(files[0], "/home/.config/systemd/user/sync\\x2dup@.service")
        self.assertEqual(files[2], "/usr/lib/systemd/system/web.service")

    def test_without_systemd_services_are_the_processes_that_listen(self):
        box = Machine(self)
        rows = [b"  0: 0100007F:1F90 00000000:0000 0A 0:0 0:0 0 1000 0 7001 1",
                b"  1: 0100007F:A000 0100007F:1F90 01 0:0 0:0 0 1000 0 7002 1", b"nonsense",
                b"  2: 0100007F:0016 00000000:0000 0A 0:0 0:0 0 0 0 7006 1", b"2: zz:1 x 0A 0 0 0 0 0 7003"]
        tcp6 = b"head\n  0: 00000000000000000000000000000000:0050 0:0 0A 0:0 0:0 0 1000 0 7004 1\n" \
               b"  1: 00000000000000000000000001000000:0051 0:0 0A 0:0 0:0 0 1000 0 7005 1\n"
        box.write("proc/net/tcp", b"\n".join([b"head", *rows]))
        box.write("proc/net/tcp6", tcp6)
        box.process(10, "python3", "/srv/panel.py", comm=b"python3")
        box.process(11, "/usr/bin/nginx", comm=b"nginx")
        box.process(12, "quiet")
        box.process(13, "python3", "/srv/panel.py", ppid=10, mib=0)  # a fork that shares the socket
        box.process(14, "/opt/theirs")
        for pid, number in ((10, 7001), (10, 7002), (11, 7004), (11, 7005), (12, 7002),
                            (13, 7001), (14, 7006)):
            box.link(f"proc/{pid}/fd/{number}", f"socket:[{number}]")
        box.link("proc/12/fd/3", "/dev/null")
        self.assertEqual(told(box.snapshot(), "name", "state", "pid", "url", "note"), [
            ["nginx", "listening", 11, "tcp://[::]:80", "also 81"],
            ["panel", "listening", 10, "tcp://127.0.0.1:8080", ""]])

    def test_the_scheduler_counts_what_people_set_up_and_switched_on(self):
        user, system = "home/.config/systemd/user/", "etc/systemd/system/"
        files = {
            user + "poll.timer": TIMER, user + "poll.service": b"[Service]\nExecStart=-/bin/bash -c 'poll'\n",
            user + "storm.timer": TIMER + b"OnBootSec=1\nUnit=work.service\n",
            user + "once.timer": b"OnBootSec=9\nOnCalendar=daily\nOnCalendar=\n",
            user + "work.service": b"ExecStart=/opt/work\nRestart=no\n",
            user + "kept.service": b"# Restart=no\nRestart=on-failure\nExecStart=\\\n /bin/sh x\n",
            user + "off.service": b"Restart=always\nExecStart=/bin/sh x\n",
            user + "also.timer": TIMER, user + "also.service": b"ExecStart=/opt/also\n",
            system + "backup.timer": b"OnCalendar=daily\nPersistent=true\n",
            "usr/lib/systemd/system/vendor.timer": TIMER + b"OnBootSec=1\n",
            "usr/lib/systemd/user/sync.service": b"Restart=always\nExecStart=/usr/bin/sync\n",
            "home/.config/autostart/a.desktop": b"Exec=sh -c 'sleep 9; panel'\n",
            "home/.config/autostart/b.desktop": b"Exec=sh -c x\nHidden=true\n"}
        wanted = ((user + "timers.target.wants/", ("poll.timer", "storm.timer", "once.timer", "also.timer")),
                  (user + "default.target.wants/", ("kept.service", "sync.service", "also.service")),
                  (system + "timers.target.wants/", ("backup.timer", "vendor.timer", "nowhere.timer")))
        for systemd in (True, False):
            box = with_systemd(Machine(self)) if systemd else Machine(self)
            for path, text in files.items():
                box.write(path, text)
            for folder, names in wanted:
                for name in names:
                    box.link(folder + name, "/usr/lib/systemd/" + name)
            figures = list(box.snapshot()["launchd"].values())
            self.assertEqual(figures, [4, 2, 2, 3] if systemd else [0, 0, 0, 1])
