# SPDX-License-Identifier: Apache-2.0
"""A real systemd user manager with a journal, in namespaces of its own, and the bridge run against it. The
first process of the new namespaces; prints one JSON object with what was seen. Run by
test_automation_server.py."""
import json
import os
import subprocess
import sys
import time

SCRIPT, HOME, ACTS = sys.argv[1:]
RUNTIME = "/run/user/" + str(os.getuid())
UNITS = {
    "good.service": "[Unit]\nDescription=A good job\n"
                    "[Service]\nType=oneshot\nExecStart=/bin/echo fine work\n",
    "good.timer": "[Unit]\nDescription=Good timer\n[Timer]\nOnCalendar=daily\nOnBootSec=900d\n"
                  "[Install]\nWantedBy=timers.target\n",
    "bad.service": "[Service]\nExecStart=/bin/sh -c 'echo about to break; exit 3'\n",
    "bad.timer": "[Timer]\nOnCalendar=Mon *-*-* 09:05:00\n[Install]\nWantedBy=timers.target\n",
    "long.service": "[Service]\nExecStart=/bin/sleep 300\n",
    "long.timer": "[Timer]\nOnActiveSec=900d\nOnUnitActiveSec=2d 3h\n",
    "esc\\x20aped.service": "[Service]\nExecStart=/bin/true\n",
    "esc\\x20aped.timer": "[Timer]\nOnCalendar=hourly\n[Install]\nWantedBy=timers.target\n",
    "inst@.service": "[Service]\nExecStart=/bin/true\n",
    "inst@.timer": "[Timer]\nOnCalendar=daily\n[Install]\nWantedBy=timers.target\n",
    "broken.timer": "[Timer]\nNothing=1\n"}


def wait_for(condition):
    limit = time.monotonic() + 60
    while not condition():
        if time.monotonic() > limit:
            sys.exit("it never came")
        time.sleep(0.05)


def run(*words):
    return subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, check=False)


def bridge(*words):
    return json.loads(run("/usr/bin/python3", "-B", SCRIPT, *words).stdout)


def act(op, unit):
    return bridge("act", "--lane", "launchd", "--id", "user:" + unit, "--op", op, "--confirm")


def main():
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", "/run"], check=True)
    for folder in ("/run/systemd/system", "/run/systemd/journal", "/run/log/journal"):
        os.makedirs(folder)
    os.makedirs(RUNTIME, mode=0o700)
    os.environ.update(HOME=HOME, XDG_RUNTIME_DIR=RUNTIME, DBUS_SESSION_BUS_ADDRESS=f"unix:path={RUNTIME}/bus",
                      LC_ALL="C.UTF-8")
    units = HOME + "/.config/systemd/user/"
    os.makedirs(units)
    for name, text in UNITS.items():
        with open(units + name, "w", encoding="ascii") as file:
            file.write(text)
    quiet = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    subprocess.Popen(["/lib/systemd/systemd-journald"], **quiet)
    wait_for(lambda: os.path.exists("/run/systemd/journal/stdout"))
    subprocess.run(["dbus-daemon", "--session", f"--address=unix:path={RUNTIME}/bus", "--fork",
                    "--nopidfile"], check=True)
    subprocess.Popen(["/lib/systemd/systemd", "--user", "--log-target=journal"], **quiet)
    wait_for(lambda: run("systemctl", "--user", "is-active", "basic.target").stdout == b"active\n")
    run("systemctl", "--user", "enable", "--now", "bad.timer", "inst@x.timer")
    run("systemctl", "--user", "start", "long.timer")
    run("systemd-run", "--user", "--on-active=900d", "--unit=passing", "/bin/true")
    seen = {"before": bridge("list", "--refresh"), "states": {}}
    seen["acts"] = [act(*words.split(" ")) for words in json.loads(ACTS)]
    for unit in ("good.timer", "bad.timer", "esc\\x20aped.timer", "inst@x.timer"):
        seen["states"][unit] = run("systemctl", "--user", "is-enabled", "--", unit).stdout.decode().strip()
    run("journalctl", "--sync")
    for unit in ("good.timer", "bad.timer"):
        seen[unit] = bridge("journal", "--lane", "launchd", "--id", "user:" + unit, "--target", "")
    seen["after"] = bridge("list", "--refresh")
    print(json.dumps(seen))


if __name__ == "__main__":
    main()
