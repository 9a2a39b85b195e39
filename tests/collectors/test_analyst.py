# SPDX-License-Identifier: Apache-2.0
import copy
import json
import os
import random
import subprocess
import unittest

from fabricated_machine import COLLECTORS, Machine

from ostrel_lib.analyst import MOST_BYTES, analysis, analyze_input
from ostrel_lib.jsontext import dump

GOOD = {
    "ts": "2026-07-18T10:11:12+02:00",
    "ram": {"total": 16.0, "used": 9.6, "used_pct": 60},
    "swap": {"total": 4096, "used": 983, "used_pct": 24},
    "load": {"l1": 2.4, "l5": 2.0, "l15": 1.5, "ncpu": 8, "pct": 30},
    "fan": {"mcp": 2, "codex_mcp": 1, "claude_mcp": 1, "other_mcp": 0, "codex_mcp_duplicates": 0,
            "codex_mcp_duplicate_mb": 0, "chromium": 12, "chromium_bundles": {"chrome": 12}},
    "sessions": {"claude": 1, "codex": 1},
    "live_sessions": [{"name": "claude", "pid": "101", "rss": 250, "cpu": 3.0, "cmd": "claude"}],
    "trend": {"samples": 20, "swap_delta": 10, "load_delta": 5, "mcp_delta": 1},
    "history": [],
    "verdict": {"level": "ok", "cause": ""}}


def row(name: str, rss: int, cpu: float = 0, grp: str = "app", pid: int = 0, cmd: str = "") -> dict:
    return {"name": name, "rss": rss, "cpu": cpu, "grp": grp, "pid": str(pid or rss), "cmd": cmd or name}


def machine(*rows: dict, **changes) -> dict:
    """A machine on which all is well, but for these processes and changes: dicts change single figures."""
    snapshot = copy.deepcopy(GOOD)
    snapshot["procs"] = list(rows)
    for key, change in changes.items():
        if isinstance(change, dict):
            snapshot[key].update(change)
        else:
            snapshot[key] = change
    return snapshot


def ram(percent: int) -> dict:
    return {"used_pct": percent, "used": 16 * percent / 100}


def swap(percent: int) -> dict:
    return {"used_pct": percent, "used": 4096 * percent // 100}


def samples(*values: int, key: str = "swap") -> list:
    return [{"swap": 0, "load": 0, "mcp": 0, "ts": "", key: value} for value in values]


def helpers(count: int, mb: int) -> list:
    return [row("chrome", mb, pid=n + 1000, cmd="/opt/chrome --type=renderer") for n in range(count)]


def servers(count: int, mb: int, cmd: str = "notes-mcp") -> list:
    return [row("notes-mcp", mb, grp="mcp", pid=n + 2000, cmd=cmd) for n in range(count)]


CHROME = (row("chrome", 4000), row("chrome", 1000), row("vim", 3000))
RISING = samples(30, 30, 35, 40, 45, 45)
ONE_PEAK = samples(30, 30, 30, 30, 30, 45)

HEAVY = {"label": "chrome", "cpu": 3.0, "rss": 9000, "risk": "stateful", "action": "close pages"}
SHORT = {"level": "critical", "headline": "Memory is getting short", "cause": "Programs waited for it."}


def pressed(level: str, percent: int, mb: int = 5000, by: str = "chrome with the most") -> tuple:
    return level, f"memory pressure: {percent}% in use, {by}", mb


def loaded(level: str, percent: int, mb: int = 0) -> tuple:
    return level, f"load is {percent}% of the cores", mb


def helped(level: str, count: int, mb: int = 0) -> tuple:
    return level, f"{count} browser helpers, chrome with the most", mb


RESIDUE = ("info", "swap is 50% full, of residue only", 2048)
GROWTH = ("info", "growing: swap +614 mb", 614)
ONE_COPY = "1 MCP server runs in copies"
ALONE = "1 MCP server without an agent"
NODE_BUSY = ("info", "node keeps 1.0 cores busy", 400)
NODE = row("node", 400, 100)
SEEN = ("critical", "Memory is getting short", 5000)
UNOWNED = {"mcp": 1, "codex_mcp": 0, "claude_mcp": 0, "other_mcp": 1}

GOLDEN = {
    "a sound machine": (machine(), []),
    "memory short by itself": (machine(*CHROME, ram=ram(85)), [pressed("warning", 85)]),
    "memory just not short": (machine(*CHROME, ram=ram(84)), []),
    "memory short with a full swap": (machine(*CHROME, ram=ram(80), swap=swap(80)), [pressed("warning", 80)]),
    "memory just not short with a full swap": (machine(*CHROME, ram=ram(79), swap=swap(80)), []),
    "memory high with a swap just not full": (machine(*CHROME, ram=ram(80), swap=swap(79)), []),
    "memory gone": (machine(row("claude", 900, grp="claude"), row("claude", 800, grp="claude"), ram=ram(95)),
                    [pressed("critical", 95, 1950, "mostly by what isn't listed")]),
    "memory just not gone": (machine(*CHROME, ram=ram(94)), [pressed("warning", 94)]),
    "memory and swap just not gone": (machine(*CHROME, ram=ram(89), swap=swap(80)), [pressed("warning", 89)]),
    "memory and swap gone": (machine(*CHROME, ram=ram(90), swap=swap(80)), [pressed("critical", 90)]),
    "memory short, and nothing listed": (machine(ram=ram(90), live_sessions=[], offenders=[]),
                                         [pressed("warning", 90, 0, "by nothing that is listed")]),
    "swap left over": (machine(ram=ram(74), swap=swap(50)), [RESIDUE]),
    "swap just not worth a word": (machine(swap=swap(49)), []),
    "swap that may be in use": (machine(ram=ram(75), swap=swap(95)), []),
    "swap without figures of memory": (machine(ram={"used_pct": 0, "used": 0}, swap=swap(95)), []),
    "no swap at all": (machine(swap={"total": 0, "used": 0, "used_pct": 0}), []),
    "swap in use that grows": (machine(swap=swap(60), trend={"swap_delta": 15, "samples": 5}), [GROWTH]),
    "growth just too small": (machine(trend={"swap_delta": 14, "load_delta": 74, "mcp_delta": 3}), []),
    "growth over too few samples": (machine(trend={"swap_delta": 90, "samples": 4}), []),
    "swap that grew steadily": (
        machine(swap=swap(45), trend={"swap_delta": 15, "samples": 6}, history=RISING), [GROWTH]),
    "swap with one peak at the end": (
        machine(swap=swap(45), trend={"swap_delta": 15, "samples": 6}, history=ONE_PEAK), []),
    "swap that grew a lot": (
        machine(swap=swap(40), trend={"swap_delta": 30}), [("warning", "growing: swap +1.2 gb", 1228)]),
    "swap that grew just not a lot": (
        machine(swap=swap(40), trend={"swap_delta": 29}), [("info", "growing: swap +1.2 gb", 1187)]),
    "a growth that can't be": (
        machine(trend={"swap_delta": 5000}), [("warning", "growing: swap +983 mb", 983)]),
    "servers and load that grew": (
        machine(*servers(1, 70), trend={"load_delta": 75, "mcp_delta": 4}),
        [("warning", "growing: load +75% of the cores and mcp servers +4", 70)]),
    "a load of real work": (
        machine(row("cc", 300, 260), row("cc", 200, 140), load={"l1": 12.0, "l5": 9.0, "pct": 150}),
        [loaded("warning", 150, 500), ("info", "2 × cc keep cores busy", 500)]),
    "a load just not high": (machine(load={"l1": 11.9, "l5": 11.0, "pct": 149}), []),
    "a load of the moment": (machine(load={"l1": 20.0, "l5": 7.9, "pct": 250}), []),
    "a load of waiting": (
        machine(row("cp", 30, 30), load={"l1": 24.0, "l5": 16.0, "pct": 300}), [loaded("critical", 300)]),
    "a load just not extreme": (machine(load={"l1": 23.9, "l5": 16.0, "pct": 299}), [loaded("warning", 299)]),
    "an extreme load that is too young": (
        machine(load={"l1": 24.0, "l5": 15.9, "pct": 300}), [loaded("warning", 300)]),
    "a process that ran away": (machine(row("node", 400, 90, pid=77), load={"l1": 1.2, "l5": 1.0}),
                                [("warning", "node keeps 0.9 cores busy", 400)]),
    "two processes that ran away": (machine(NODE, row("node", 300, 100), load={"l1": 2.0, "l5": 1.7}),
                                    [("warning", "2 × node keep cores busy", 700)]),
    "a process just not busy": (machine(row("node", 400, 89.9), load={"l1": 1.2, "l5": 1.0}), []),
    "a process busy for a minute": (machine(NODE, load={"l1": 0.8, "l5": 0.3}), [NODE_BUSY]),
    "a process busy for a moment": (machine(NODE, load={"l1": 0.79, "l5": 0.3}), []),
    "a busy process without load figures": (
        machine(NODE, load={"l1": 0, "l5": 0, "ncpu": 0, "pct": 0}), [NODE_BUSY]),
    "a busy process among others that load": (machine(NODE, load={"l1": 2.1, "l5": 2.1}), [NODE_BUSY]),
    "a job split up": (machine(*(row("cc", 100, 100, pid=n) for n in (5, 6, 7)), load={"l1": 3.0, "l5": 2.5}),
                       [("info", "3 × cc keep cores busy", 300)]),
    "many helpers": (machine(fan={"chromium": 60}), [helped("info", 60)]),
    "helpers just not many": (machine(fan={"chromium": 59}), []),
    "many helpers in scarce memory": (machine(fan={"chromium": 60}, ram=ram(80)), [helped("warning", 60)]),
    "many helpers where it just isn't": (machine(fan={"chromium": 60}, ram=ram(79)), [helped("info", 60)]),
    "helpers that hold a little less": (machine(*helpers(25, 163), fan={"chromium": 25}), []),
    "few helpers that hold much": (
        machine(*helpers(25, 164), fan={"chromium": 25}), [helped("warning", 25, 4100)]),
    "helpers that hold just not much": (machine(*helpers(24, 300), fan={"chromium": 24}), []),
    "servers started twice by codex": (
        machine(fan={"codex_mcp_duplicates": 1, "codex_mcp_duplicate_mb": 255}), [("info", ONE_COPY, 255)]),
    "large copies": (machine(fan={"codex_mcp_duplicates": 2, "codex_mcp_duplicate_mb": 256}),
                     [("warning", "2 MCP servers run in copies", 256)]),
    "a copy for each session": (machine(*servers(2, 400)), []),
    "more copies than sessions": (machine(*servers(3, 200), fan={"mcp": 3}), [("warning", ONE_COPY, 400)]),
    "a server that forked": (machine(*servers(3, 200)), []),
    "servers that differ": (
        machine(*servers(2, 400), *servers(2, 400, cmd="notes-mcp b"), fan={"mcp": 4}), []),
    "a server below no agent": (machine(*servers(1, 90), fan={"other_mcp": 1}), [("info", ALONE, 0)]),
    "no server below an agent": (machine(*servers(1, 90), fan=UNOWNED), [("info", ALONE, 90)]),
    "servers left behind by all sessions": (
        machine(*servers(1, 90), sessions={"claude": 0, "codex": 0}, live_sessions=[], fan=UNOWNED),
        [("warning", ALONE, 90)]),
    "servers of an agent that serves others": (machine(sessions={"claude": 0, "codex": 0}), []),
    "the gravest first, then what concerns more": (
        machine(*CHROME, *servers(3, 200), row("node", 50, 100, pid=9), ram=ram(96),
                load={"l1": 1.0, "l5": 1.0}, trend={"swap_delta": 15}, fan={"mcp": 3}),
        [pressed("critical", 96), ("warning", "node keeps 1.0 cores busy", 50), ("warning", ONE_COPY, 400),
         GROWTH]),
    "what the collector knows of programs": (
        machine(*CHROME, ram=ram(90), offenders=[HEAVY]), [pressed("warning", 90, 9000)]),
    "what only the collector saw": (machine(*CHROME, verdict=SHORT), [SEEN]),
    "what the collector saw as graver": (
        machine(*CHROME, ram=ram(90), verdict=SHORT), [SEEN, pressed("warning", 90)]),
    "what the rules saw as well": (machine(*CHROME, ram=ram(95), verdict=SHORT), [pressed("critical", 95)]),
    "swap left over, while programs wait": (machine(swap=swap(60), verdict=SHORT), [(*SEEN[:2], 250)]),
    "a verdict that memory can't be read": (machine(verdict={"level": "unknown", "headline": "x"}), [])}

HOSTILE = (None, True, "", "9", [], {}, [None, 1, "x", [], {}], {"x": [], "": None}, -1, 0, 2.5, 1e300,
           float("inf"), float("nan"), 10**30, "\ud800\n\u202e" * 9000)


def places(value, path=()):
    """The way to each value of a snapshot, the first element of each list standing for all."""
    yield path
    if isinstance(value, dict):
        for key in value:
            yield from places(value[key], (*path, key))
    elif isinstance(value, list) and value:
        yield from places(value[0], (*path, 0))


def with_value(snapshot: dict, path: tuple, value) -> dict:
    snapshot = copy.deepcopy(snapshot)
    part = snapshot
    for key in path[:-1]:
        part = part[key]
    part[path[-1]] = value
    return snapshot


def analyze(data: bytes) -> dict:
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        try:
            os.close(reading)
            while data:
                data = data[os.write(writing, data):]
        finally:
            os._exit(0)
    os.close(writing)
    try:
        return analyze_input(reading)
    finally:
        os.close(reading)
        os.waitpid(child, 0)


class AnalystTest(unittest.TestCase):
    def assert_answer(self, answer: dict) -> None:
        """The answer has the form that the panel reads, and can be printed."""
        read = json.loads(dump(answer))
        self.assertEqual(list(read), ["source", "summary", "findings", "actions"])
        for finding in read["findings"]:
            self.assertEqual({key: type(value) for key, value in finding.items()},
                             {"level": str, "title": str, "body": str})
            self.assertLess(len(finding["title"] + finding["body"]), 2000)
            self.assertTrue(finding["title"].isprintable())
        shape = {**dict.fromkeys(("label", "kind", "target", "reason", "risk"), str), "est_mb": int}
        for action in read["actions"]:
            self.assertEqual({key: type(value) for key, value in action.items()}, shape)
            self.assertGreaterEqual(action["est_mb"], 0)

    def test_each_rule_speaks_from_its_edge_on_and_not_before(self):
        for case, (snapshot, expected) in GOLDEN.items():
            with self.subTest(case):
                answer = analysis(snapshot)
                found = [(text["level"], text["title"], action["est_mb"])
                         for text, action in zip(answer["findings"], answer["actions"], strict=True)]
                self.assertEqual(found, expected)
                self.assert_answer(answer)

    def test_a_finding_reads_as_cause_evidence_and_footprint(self):
        answer = analysis(machine(*CHROME, ram=ram(92), swap=swap(85)))
        self.assertEqual(answer["summary"], "1 critical")
        self.assertEqual(answer["findings"][0]["body"], (
            "Of the listed programs chrome holds most: 4.9 gb, 31% of memory.\n"
            "evidence: ram 92%, 14.7 gb of 16.0 gb · swap 85%, 3.4 gb of 4.0 gb"
            " · chrome 4.9 gb in 2 processes · vim 2.9 gb · claude 250 mb\n"
            "observed footprint: 4.9 gb"))
        self.assertEqual(answer["actions"][0], {
            "label": "chrome", "kind": "inspect", "target": "chrome", "est_mb": 5000, "risk": "stateful",
            "reason": "See what chrome works on, and close what isn't needed of it."})
        self.assertEqual(analysis(machine(ram=ram(85), swap=swap(50)))["summary"], "1 warning")
        self.assertEqual(analysis({})["summary"], "nothing stands out")

    def test_a_value_of_any_type_at_any_place_leaves_an_answer_of_the_same_form(self):
        whole = machine(*CHROME, *helpers(30, 200), *servers(4, 90), row("node", 9, 200), ram=ram(96),
                        swap=swap(90), load={"l1": 30.0, "l5": 30.0, "pct": 375}, fan={"other_mcp": 1},
                        history=RISING, trend={"swap_delta": 50, "samples": 6}, verdict=SHORT,
                        offenders=[HEAVY])
        self.assertGreater(len(analysis(whole)["findings"]), 4)
        for path in list(places(whole))[1:]:
            for value in HOSTILE:
                with self.subTest(path=path, value=str(value)[:20]):
                    self.assert_answer(analysis(with_value(whole, path, value)))
        chance = random.Random(7)
        for _ in range(300):
            snapshot = whole
            for path in chance.sample(list(places(GOOD))[1:], 6):
                try:
                    snapshot = with_value(snapshot, path, chance.choice(HOSTILE))
                except (KeyError, TypeError, IndexError):
                    pass  # what the way led through was replaced before
            self.assert_answer(analysis(snapshot))

    def test_an_input_that_is_no_snapshot_is_said_to_be_none(self):
        deep = b'{"a":' * 100000
        many = b'{"procs":[' + b"{}," * 500000 + b"{}]}"
        for data, why in ((b"", "it isn't JSON"), (b"[1]", "it isn't a JSON object"),
                          (b"\xff{}", "it isn't UTF-8"), (b'{"ram": {"total": 16', "it isn't JSON"),
                          (deep, "it isn't JSON"), (many, "it holds more values than a snapshot does"),
                          (b'"' + b"x" * MOST_BYTES + b'"', "it is larger than 16 MiB")):
            answer = analyze(data)
            self.assert_answer(answer)
            self.assertEqual([finding["body"] for finding in answer["findings"]],
                             [f"Nothing was judged: {why}."], data[:20])

    def test_ten_megabytes_are_judged_like_any_snapshot(self):
        rows = [row("chrome", 1, pid=n, cmd="x" * 4000) for n in range(2500)]
        data = dump(machine(*rows, ram=ram(90))).encode()
        self.assertGreater(len(data), 10_000_000)
        self.assertEqual([action["est_mb"] for action in analyze(data)["actions"]], [2500])

    def test_the_machine_is_never_read(self):
        snapshot = Machine(self).snapshot()
        script = os.path.join(COLLECTORS, "ostrel.py")
        guard = ("import sys\n"
                 "def guard(event, arguments):\n"
                 "    if event == 'open' and str(arguments[0]).startswith(('/proc', '/sys'))"
                 " or event.startswith(('subprocess', 'socket', 'os.kill')):\n"
                 "        sys.stdout.write('touched ' + str(arguments)); sys.stdout.flush()\n"
                 "sys.addaudithook(guard)\n"
                 f"sys.path.insert(0, {COLLECTORS!r})\n"
                 "from ostrel_lib.collector import main\n"
                 f"sys.exit(main([{script!r}, 'analyze', '--stdin']))\n")
        done = subprocess.run(["/usr/bin/python3", "-B", "-c", guard], input=dump(snapshot).encode(),
                              timeout=60, stdout=subprocess.PIPE, env={}, check=True)
        self.assertEqual(json.loads(done.stdout)["summary"], "nothing stands out")
