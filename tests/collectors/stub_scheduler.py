# SPDX-License-Identifier: Apache-2.0
"""Stands in for systemctl, journalctl and loginctl, run as `stub_scheduler.py FOLDER TOOL ARGUMENTS`.

It prints the forms that the real tools of systemd 252 print, in their order of properties, and keeps its
units in FOLDER/state.json. Like the real ones it speaks the user's language and the local time unless it is
told not to, says yes to enabling what can't be enabled, and ends with an error behind good answers.
"""
import fcntl
import json
import os
import sys
import time

ORDER = (
    "Type Result ExecMainStartTimestamp ExecMainExitTimestamp ExecMainCode ExecMainStatus ExecStart Unit"
    " TimersMonotonic TimersCalendar NextElapseUSecRealtime NextElapseUSecMonotonic LastTriggerUSec User Id"
    " Description LoadState ActiveState FragmentPath UnitFileState CanStart RefuseManualStart InvocationID"
).split()
UNKNOWN = {"LoadState": "not-found", "ActiveState": "inactive", "NextElapseUSecMonotonic": "infinity"}


def fail(words, status=1):
    sys.stderr.write(words + "\n")
    sys.exit(status)


def show(units, asked, properties):
    names = []
    for word in asked:
        names += [name for name in units if name.endswith(".timer") and units[name].get("loaded", True)] \
            if word == "*.timer" else [word]
    blocks = []
    for name in names:
        if name.endswith("@.timer"):
            print("\n\n".join(blocks))
            fail(f"Failed to get properties: Unit name {name} is neither a valid invocation ID nor unit"
                 " name.")
        unit = {"Id": name, **(units.get(name) or UNKNOWN)}
        lines = []
        for key in ORDER:
            if key in properties and (key in unit or not key.startswith("Timers")):
                values = unit.get(key, "")
                lines += [f"{key}={value}" for value in (values if isinstance(values, list) else [values])]
        text = "\n".join(lines)
        if os.environ.get("LC_ALL") != "C" or os.environ.get("TZ") != "UTC":
            text = text.replace("UTC", "CET").replace("Wed", "Mi")
        blocks.append(text)
    print("\n\n".join(blocks))


ABSENT = {
    "no bus": "Failed to connect to bus: No medium found",
    "not on the bus": "Failed to list units: The name org.freedesktop.systemd1 was not provided by any "
                      ".service files"}
"""What systemctl says where no manager runs, by the mode that stands for it."""


def systemctl(folder, words):
    scope = "user" if "--user" in words else "system"
    path = os.path.join(folder, "state.json")
    with open(path, "r+", encoding="utf-8") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        state = json.load(file)
        mode = state["mode"].get(scope, "")
        if mode in ABSENT:
            fail(ABSENT[mode])
        if mode == "hang":
            time.sleep(600)
        if mode == "garbage":
            os.write(1, b"\0\xff{]garbage\x1b[31m \n\nId=\n=\n" * 50)
            sys.exit(0)
        if mode == "flood":
            while True:
                os.write(1, b"flood.timer enabled enabled\n" * 2000)
        units = state[scope]
        verb = next(word for word in words if not word.startswith("-"))
        names = words[words.index("--") + 1:] if "--" in words else []
        options = dict(word[2:].split("=", 1) for word in words if word.startswith("--") and "=" in word)
        if verb == "list-unit-files":
            for name, unit in units.items():
                if name.endswith(".timer") and "UnitFileState" in unit:
                    print(name, unit["UnitFileState"], "-" if unit["UnitFileState"] == "static"
                          else "enabled")
        elif verb == "show":
            show(units, names, options["property"].split(","))
        elif verb in ("enable", "disable"):
            switch(units, names[0], verb)
        elif verb == "start":
            start(units, names[0])
        file.seek(0)
        file.truncate()
        json.dump(state, file)


def switch(units, name, verb):
    if name not in units:
        fail(f"Failed to {verb} unit: Unit file {name} does not exist.")
    unit = units[name]
    if unit.get("refuses"):
        fail(f"Failed to {verb} unit: Access denied")
    if unit["UnitFileState"] == "static" or unit.get("deaf"):
        return
    if not unit.get("for_all_users"):
        unit["UnitFileState"] = verb + "d"
    unit["ActiveState"] = "active" if verb == "enable" else "inactive"


def start(units, name):
    unit = units.get(name)
    if unit is None:
        fail(f"Failed to start {name}: Unit {name} not found.", 5)
    outcome = unit.get("outcome", "ends")
    if outcome == "never":
        return
    unit["InvocationID"] = "f" * 32
    unit["ExecMainStartTimestamp"] = "Wed 2026-11-25 09:00:00 UTC"
    unit["ActiveState"] = {"ends": "inactive", "fails": "failed", "goes on": "active"}[outcome]
    if outcome == "fails":
        unit["Result"], unit["ExecMainStatus"] = "exit-code", "3"


def journalctl(folder, words):
    name = next((word.split("=", 1)[1] for word in words
                 if word.startswith(("--user-unit=", "--unit=", "--identifier="))), words[-1])
    try:
        with open(os.path.join(folder, "journal-" + name), "rb") as file:
            os.write(1, file.read())
    except FileNotFoundError:
        pass


def loginctl(folder, _words):
    with open(os.path.join(folder, "state.json"), encoding="utf-8") as file:
        print("Linger=" + json.load(file)["linger"])


if __name__ == "__main__":
    {"systemctl": systemctl, "journalctl": journalctl, "loginctl": loginctl}[sys.argv[2]](
        sys.argv[1], sys.argv[3:])
