# SPDX-License-Identifier: Apache-2.0
"""Which names and commands are never offered for stopping. The program keeps the same rows and asks them
again right before a signal; what the user changed of them comes in as arguments."""
from __future__ import annotations

LOCKED = ("claude", "codex", "ostrel", "ostrel app")
"""The agents and the program itself. No setting lifts these."""
DEFAULTS = ("orca", "finder", "launchd", "loginwindow", "windowserver", "kernel_task")
"""Protected from the start; the user may switch each off."""
PATH_PREFIXES = ("/System/", "/usr/libexec/", "/usr/sbin/")
NAME_PREFIX = "com.apple."


def effective(extra: list[str], disabled: list[str]) -> list[str]:
    """The rows that protect, with the names that the user added and without those that they switched off."""
    off = {name.lower() for name in disabled}
    rows = [*DEFAULTS, *(name.lower() for name in extra if name)]
    return [*LOCKED, *(row for row in rows if row not in off)]


def protecting_rule(name: str, command: str, rows: list[str]) -> str:
    """What protects a process of this short name and whole command line; "" when nothing does."""
    executable = command.lstrip(" ").split(" ", 1)[0]
    for prefix in PATH_PREFIXES:
        if executable.startswith(prefix):
            return prefix
    if name.startswith(NAME_PREFIX):
        return NAME_PREFIX
    lower_name, lower_command = name.lower(), command.lower()
    for row in rows:
        if lower_name == row or stands_in(row, lower_command):
            return row
    return ""


def stands_in(row: str, line: str) -> bool:
    """Whether a row is a word of the line, or ends a path in it."""
    at = line.find(row)
    while at >= 0:
        end = at + len(row)
        begins = at == 0 or line[at - 1] == "/" or line[at - 1].isspace()
        if begins and (end == len(line) or line[end].isspace()):
            return True
        at = line.find(row, at + 1)
    return False
