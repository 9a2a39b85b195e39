# SPDX-License-Identifier: Apache-2.0
"""What writes, and what it promises: commands, the homes that they work on, and how to tell a broken
promise."""
import atexit
import glob
import json
import os
import shutil
import subprocess
import tempfile
import time
from collections.abc import Callable, Iterator
from typing import NamedTuple

TESTS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
COLLECTORS = os.path.join(os.path.dirname(TESTS), "collectors")
PYTHON = "/usr/bin/python3"
SUPPORT = "home/Library/Application Support"
SAMPLES = f"{SUPPORT}/ostrel/mem-history.jsonl"
POINTS = f"{SUPPORT}/ostrel/dashboard-history.jsonl"
RECEIPTS = f"{SUPPORT}/Ostrel/receipts"
SETTINGS = "home/.config/zol-mini-apps/dev.quent.ostrel.json"
CACHE = "home/.cache/ostrel/automations"
ASKED, KILLED = -15, -9
FILES = [(kind, "") for kind in ("open", "read", "write", "sync", "rename", "unlink", "mkdir", "chmod")]
KERNEL = [("open", "/proc/"), ("read", "/proc/")]
ANYWHERE = "*"
TOOLS = [("spawn", ANYWHERE), ("descriptor", ANYWHERE), ("read", "pipe:"), ("write", "/memfd:")]
ANSWER = [("write", "pipe:")]


class Run(NamedTuple):
    code: int
    out: bytes
    err: bytes

    def answer(self) -> dict:
        """The JSON object that was printed; an empty one without."""
        try:
            value = json.loads(self.out)
        except ValueError:
            return {}
        return value if type(value) is dict else {}


class Subject(NamedTuple):
    """A command. `whole` says what is broken at any time, with the answer of the last run; `settled` what is,
    once a run went undisturbed. With `reads_in_the_end` nothing is promised where reading fails for good;
    of what is `alone` the program never starts two at once."""
    command: list[str]
    lay: Callable[[str], None]
    whole: Callable[[str, dict], str]
    settled: Callable[[str, dict], str]
    kinds: list[tuple[str, str]]
    stdin: bytes = b""
    reads_in_the_end: bool = False
    alone: bool = False

    def wrong_after(self, root: str, run: Run, killers: tuple[int, ...] = ()) -> str:
        """What is wrong after a run with a fault, one of `killers` if there are any."""
        if killers:
            return self.whole(root, {}) if run.code in killers else "it wasn't killed"
        return wrong_ending(run, self.command) or self.whole(root, run.answer())

    def wrong_in_the_end(self, root: str, run: Run) -> str:
        """What is wrong after an undisturbed run behind that."""
        if run.code or run.err:
            return "it failed"
        return self.whole(root, run.answer()) or self.settled(root, run.answer())


def wrong_ending(run: Run, command: list[str]) -> str:
    """What is wrong with how a run ended: an answer is one object, and a failure one line of words."""
    if run.code not in (0, 1):
        return "its exit code"
    if b"Traceback" in run.err or run.err.count(b"\n") > 1:
        return "more than a line on its errors"
    if run.code == 0 and command[0] == PYTHON and not run.answer():
        return "no answer"
    return ""


def nothing(root: str, answer: object = None) -> str:
    return ""


def script(name: str, *words: str) -> list[str]:
    return [PYTHON, f"{COLLECTORS}/{name}", *words]


def put(path: str, content: bytes, days: float = 0, mode: int = 0o600) -> None:
    os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    os.chmod(path, mode)
    os.utime(path, (time.time() - days * 86400,) * 2)


def read(path: str) -> bytes:
    """A file's content; nothing when it isn't there."""
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return b""


def left_over(root: str, path: str, *wanted: str) -> str:
    """What lies in a file's folder beside the file and what is wanted there; "" for nothing."""
    folder, name = os.path.split(f"{root}/{path}")
    left = set(os.listdir(folder) if os.path.isdir(folder) else ()) - {name, *wanted}
    return f"left over: {left}" if left else ""


def objects(content: bytes) -> Iterator[dict]:
    """The JSON objects that stand on a line of their own."""
    for line in content.split(b"\n"):
        try:
            value = json.loads(line)
        except ValueError:
            continue
        if type(value) is dict:
            yield value


# The collector's samples.

SAMPLE_LINES = [b'{"ts": "2026-11-24T08:00:00", "t": %d, "swap": %d, "load": 5, "mcp": 1}\n' % (n, n % 100)
                for n in range(400)]
ALL_SAMPLES, LATEST = b"".join(SAMPLE_LINES), b"".join(SAMPLE_LINES[-120:])


def lay_samples(root: str) -> None:
    put(f"{root}/{SAMPLES}", ALL_SAMPLES)


def backups(root: str) -> list[str]:
    return glob.glob(f"{glob.escape(root)}/{SUPPORT}/ostrel/mem-history.backup-*")


def compaction_whole(root: str, answer: dict) -> str:
    content, kept = read(f"{root}/{SAMPLES}"), [read(path) for path in backups(root)]
    if any(copy != ALL_SAMPLES for copy in kept):
        return "a backup that isn't whole"
    if content not in (ALL_SAMPLES, LATEST) or (content == LATEST and not kept):
        return "samples were lost"
    if answer.get("status") == "compacted" and content != LATEST:
        return "an answer that isn't true"
    return ""


def compaction_settled(root: str, answer: dict) -> str:
    if read(f"{root}/{SAMPLES}") != LATEST:
        return "it isn't compacted"
    return left_over(root, SAMPLES, "mem-history.lock", *map(os.path.basename, backups(root)))


def snapshot_whole(root: str, answer: dict) -> str:
    return "" if read(f"{root}/{SAMPLES}").startswith(ALL_SAMPLES) else "samples were lost"


def snapshot_settled(root: str, answer: dict) -> str:
    added = read(f"{root}/{SAMPLES}")[len(ALL_SAMPLES):]
    if not 1 <= len(list(objects(added))) <= 3:  # one of each run
        return "samples weren't added"
    return left_over(root, SAMPLES, "mem-history.lock")


# The janitor.

CACHED = [f"home/.cache/pip/{n}/file" for n in range(4)]
DAY_FILES = f"{RECEIPTS}/2*.jsonl"


def lay_cache(root: str) -> None:
    for path in CACHED:
        put(f"{root}/{path}", b"x" * 4096, days=30)
    put(f"{root}/{RECEIPTS}/2026-01-01.jsonl", b'{"ts": "2026-01-01 08:00:00", "kind": "stop"}\n')


def receipts(root: str, kind: str) -> list[dict]:
    """The receipts of a kind that can be read."""
    return [line for path in glob.glob(f"{glob.escape(root)}/{DAY_FILES}") for line in objects(read(path))
            if line.get("kind") == kind]


def cleanup_whole(root: str, answer: dict) -> str:
    if len(receipts(root, "stop")) != 1:
        return "an old receipt was lost"
    gone = sum(not os.path.exists(f"{root}/{path}") for path in CACHED)
    told = sum(line["removed"] for line in receipts(root, "clean"))
    pending = glob.glob(f"{glob.escape(root)}/{RECEIPTS}/clean-*.progress")
    if told > gone or (told < gone and not pending):
        return f"{gone} files went, and receipts tell of {told}"
    return ""


def cleanup_settled(root: str, answer: dict) -> str:
    pending = glob.glob(f"{glob.escape(root)}/{RECEIPTS}/clean-*.progress")
    # One that was killed before it began is left alone for a minute.
    if any(os.path.getsize(path) > len('"app-caches"\n') for path in pending):
        return f"records are left: {pending}"
    gone = sum(not os.path.exists(f"{root}/{path}") for path in CACHED)
    told = sum(line["removed"] for line in receipts(root, "clean"))
    return "" if gone == told == len(CACHED) else f"{gone} files went, and receipts tell of {told}"


def started(*words: str) -> int:
    """A process that ends with this one."""
    process = subprocess.Popen(words, stdin=subprocess.PIPE)
    atexit.register(process.communicate)
    return process.pid


def never_offered() -> list[str]:
    """Processes that must never be offered: the first one, this one, and one that only the end of its command
    line tells to be an agent's."""
    agent = started("/bin/sh", "-c", "read line", "sh", *["word"] * 50, "/opt/agents/claude")
    return ["1", str(os.getpid()), str(agent)]


def start_a_server() -> None:
    """An MCP server that isn't left behind, since this process started it."""
    folder = tempfile.mkdtemp()
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    put(folder + "/mcp-server-probe.py", b"import sys; sys.stdin.read()")
    started(PYTHON, folder + "/mcp-server-probe.py")


def stops_whole(root: str, answer: dict) -> str:
    return "a process is offered that must not be" if answer.get("allowed") else ""


def offers_whole(root: str, answer: dict) -> str:
    ours = [row for row in answer.get("allowed", []) if "mcp-server-probe.py" in row["cmd"]]
    return f"a server is offered whose starter lives: {ours}" if ours else ""


def stops_settled(root: str, answer: dict) -> str:
    return "" if len(answer["refused"]) == 3 else "a process is missing"


def receipts_settled(root: str, answer: dict) -> str:
    return "" if len(answer.get("receipts", [])) == 1 else "a receipt isn't told"


# The automations.

TIMER = {"LoadState": "loaded", "ActiveState": "active", "UnitFileState": "enabled", "Unit": "a.service",
         "TimersCalendar": "{ OnCalendar=*-*-* 06:00:00 ; next_elapse=Thu 2026-11-26 06:00:00 UTC }"}
JOB = {"LoadState": "loaded", "ActiveState": "inactive", "Result": "success", "CanStart": "yes",
       "RefuseManualStart": "no", "InvocationID": "0" * 32, "ExecMainStatus": "0"}
JOB_OPTIONS = ("--lane", "launchd", "--id", "user:a.timer")


def lay_timers(root: str) -> None:
    """A timer, and stubs that know it."""
    stub = f"{TESTS}/collectors/stub_scheduler.py"
    for tool in ("systemctl", "journalctl", "loginctl"):
        put(f"{root}/bin/{tool}",
            f'#!/bin/sh\nexec {PYTHON} -S -E "{stub}" "{root}" {tool} "$@"\n'.encode(), mode=0o700)
    state = {"mode": {}, "linger": "yes", "user": {"a.timer": TIMER, "a.service": JOB}, "system": {}}
    put(f"{root}/state.json", json.dumps(state).encode())
    put(f"{root}/journal-a.service", b"")


def lay_inventory(root: str) -> None:
    """A timer, and an inventory that was kept."""
    lay_timers(root)
    rows = [{"lane": "launchd", "id": "user:a.timer", **{key: "x" for key in (
        "title", "lane_title", "host", "schedule", "state", "executor", "owner", "registry", "location",
        "migration", "registry_state", "last_run", "last_result", "next_run", "observation")}}]
    text = json.dumps({"ok": True, "lanes": [], "automations": rows}).encode()
    from binascii import crc32
    header = b"ostrel-automations 1 %08x %d %d\n" % (crc32(text), len(text), time.time())
    put(f"{root}/{CACHE}", header + text)


def unit(root: str, name: str) -> dict:
    return json.loads(read(f"{root}/state.json"))["user"][name]


def act_whole(root: str, answer: dict) -> str:
    told = receipts(root, "automation")
    if answer.get("receipt") and not told:
        return "a receipt is told that isn't there"
    if answer and not answer.get("receipt") and told:
        return "a receipt isn't told"
    disabled = unit(root, "a.timer")["UnitFileState"] == "disabled"
    if answer.get("ok") is True and not disabled:
        return "an effect is told that isn't there"
    return ""


def act_settled(root: str, answer: dict) -> str:
    if answer.get("ok") is not True or unit(root, "a.timer")["UnitFileState"] != "disabled":
        return "it isn't done"
    return "" if receipts(root, "automation")[-1]["result"] in ("done", "unchanged") else "the receipt"


def plans(root: str) -> list[str]:
    return glob.glob(f"{glob.escape(root)}/{SUPPORT}/Ostrel/plans/*.md")


def plan_whole(root: str, answer: dict) -> str:
    if any(not read(path).endswith(b"enable it here.\n") for path in plans(root)):
        return "half a plan"
    if answer.get("ok") is True and not plans(root):
        return "a plan is told that isn't there"
    return "" if not answer.get("receipt") or receipts(root, "automation") else "a receipt is told"


def plan_settled(root: str, answer: dict) -> str:
    if answer.get("ok") is not True:
        return "it isn't done"
    return left_over(root, f"{SUPPORT}/Ostrel/plans/", *map(os.path.basename, plans(root)))


def inventory_whole(root: str, answer: dict) -> str:
    content = read(f"{root}/{CACHE}")
    header, _, text = content.partition(b"\n")
    return "" if not content or len(text) == int(header.split(b" ")[3]) else "half an inventory"


def inventory_settled(root: str, answer: dict) -> str:
    if not any(row["id"] == "user:a.timer" for row in answer.get("automations", [])):
        return "no row"
    if not read(f"{root}/{CACHE}"):
        return "nothing is kept"
    return left_over(root, CACHE)


# The server.

HEALTH = b'{"id": "A", "command": "health", "payload": {"sshAlias": "srv"}}\n'


def lay_server(root: str) -> None:
    """What stands in for the way to a server: its words are a shell's here."""
    words = b'PATH="$PATH:/usr/bin:/bin"\nfor word; do :; done\nexec /bin/sh -c "$word"\n'
    put(f"{root}/bin/ssh", b"#!/bin/sh\n" + words, mode=0o700)


TOKEN = "00000000"
"""Where it stands in what is sent, each run has a number of its own."""
TASK = json.dumps({"id": "A", "command": "execute", "payload": {
    "sshAlias": "srv", "repoPath": "~/repo", "task": "go on", "kind": "codex_continuation",
    "jobId": f"ostrel-{TOKEN}", "timeoutSeconds": 20, "profile": "eco", "apply": True}}).encode()


def lay_agent(root: str) -> None:
    """A server with a repository and an agent that does what it is told."""
    lay_server(root)
    os.makedirs(root + "/home/repo/.git")
    put(f"{root}/bin/codex", b'#!/bin/sh\ncat >> "$HOME/done"\n', mode=0o700)
    put(f"{root}/bin/systemctl", b"#!/bin/sh\nexit 1\n", mode=0o700)


def task_whole(root: str, answer: dict) -> str:
    result = answer.get("result", {})
    if answer.get("ok") is True and result.get("exitCode") == 0 and not read(root + "/home/done"):
        return "a task is told as done that wasn't begun"
    return server_whole(root, answer)


def task_settled(root: str, answer: dict) -> str:
    return "" if answer.get("ok") is True and read(root + "/home/done") else "it isn't done"


def server_whole(root: str, answer: dict) -> str:
    return "" if not answer or type(answer.get("ok")) is bool else "no answer"


def server_settled(root: str, answer: dict) -> str:
    return "" if answer.get("ok") is True else "it isn't reached"


# The program's own files.

def lay_points(root: str) -> None:
    now = int(time.time()) // 60
    lines = [b'{"m":%d,"cpu":1,"swap":2,"ram":3,"load":0.5}\n' % (now - 200 + n) for n in range(100)]
    put(f"{root}/{POINTS}", b"".join(lines))


def points(root: str) -> int:
    return len(list(objects(read(f"{root}/{POINTS}"))))


def points_whole(root: str, answer: dict) -> str:
    return "" if points(root) >= 100 and read(f"{root}/{POINTS}").endswith(b"\n") else "points were lost"


def points_settled(root: str, answer: dict) -> str:
    if points(root) not in (101, 102):  # a minute may have begun between two runs
        return "no point was added"
    return left_over(root, POINTS)


def lay_settings(root: str) -> None:
    put(f"{root}/{SETTINGS}", b'{"kept":"yes"}\n')


def settings_whole(root: str, answer: dict) -> str:
    values = next(objects(read(f"{root}/{SETTINGS}")), {})
    return "" if values.get("kept") == "yes" else "choices were lost"


def settings_settled(root: str, answer: dict) -> str:
    if next(objects(read(f"{root}/{SETTINGS}")), {}).keys() != {"kept", "first", "ostrel.hintPolicy"}:
        return "choices are missing"
    return left_over(root, SETTINGS, os.path.basename(SETTINGS) + ".lock")


def receipt_settled(root: str, answer: dict) -> str:
    return "" if any(line.get("pid") == 17 for line in receipts(root, "stop")) else "no receipt"


def lay_runtime(root: str) -> None:
    put(f"{root}/home/run/ostrel/4194303", b"7\n")


def runtime_settled(root: str, answer: dict) -> str:
    return left_over(root, "home/run/ostrel/")


def receipt_whole(root: str, answer: dict) -> str:
    """Receipts that were there stay."""
    return "" if any("pid" not in line for line in receipts(root, "stop")) else "an old receipt was lost"


def SUBJECTS(writer: str) -> dict[str, Subject]:  # noqa: N802
    act = script("automations_bridge.py", "act", *JOB_OPTIONS, "--confirm", "--op")
    start_a_server()
    clean = script("ostrel_janitor.py", "clean", "--group=app-caches", "--select=pip", "--apply")
    return {name: Subject(*parts) for name, parts in {
        "history": ([writer, "history"], lay_points, points_whole, points_settled, FILES, b"", True),
        "settings": ([writer, "settings"], lay_settings, settings_whole, settings_settled, FILES),
        "receipt": ([writer, "receipt"], lay_cache, receipt_whole, receipt_settled, FILES),
        "instance": ([writer, "instance"], lay_runtime, nothing, runtime_settled, FILES),
        "compaction": (script("ostrel.py", "history-clean", "--apply"), lay_samples, compaction_whole,
                       compaction_settled, FILES),
        "snapshot": (script("ostrel.py", "json"), lay_samples, snapshot_whole, snapshot_settled, FILES),
        "cleanup": (clean, lay_cache, cleanup_whole, cleanup_settled, FILES, b"", False, True),
        "receipts": (script("ostrel_janitor.py", "receipts"), lay_cache, cleanup_whole, receipts_settled,
                     FILES),
        "stops": (script("ostrel_janitor.py", "kill-preview", "--pids=" + ",".join(never_offered())), nothing,
                  stops_whole, stops_settled, KERNEL),
        "offers": (script("ostrel_janitor.py", "mcp-preview", "--depth=light"), nothing, offers_whole,
                   nothing, KERNEL),
        "findings": (script("ostrel_janitor.py", "findings"), lay_cache, cleanup_whole, nothing, FILES),
        "act": ([*act, "disable"], lay_timers, act_whole, act_settled, FILES + TOOLS + ANSWER),
        "plan": ([*act, "plan"], lay_inventory, plan_whole, plan_settled, FILES),
        "inventory": (script("automations_bridge.py", "list", "--refresh"), lay_timers, inventory_whole,
                      inventory_settled, FILES + TOOLS[:2] + ANSWER),
        "server": (script("ostrel_remote.py"), lay_server, server_whole, server_settled, TOOLS, HEALTH),
        "task": (script("ostrel_remote.py"), lay_agent, task_whole, task_settled, TOOLS, TASK)}.items()}
