# SPDX-License-Identifier: Apache-2.0
"""The commands of `ostrel_janitor.py`. What a command needs is imported only when it is asked for."""
from __future__ import annotations

import os
import time

from ostrel_lib.jsontext import dump
from ostrel_lib.output import USAGE_STATUS, put

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

    Options = dict[str, str]

SETTINGS = ("--protected", "--unprotected")


def main(argv: list[str]) -> int:
    """Carries out one command line and gives the exit status: 0 with one line of JSON on standard output, 2
    with one line on standard error for a command that doesn't exist, or 1 when no answer could be given or
    taken."""
    command = COMMANDS.get(argv[1]) if len(argv) > 1 else None
    options = parsed(argv[2:], command[1]) if command else None
    if command is None or options is None or any(name not in options for name in command[2]):
        asked = ascii(" ".join(argv[1:])) if len(argv) > 1 else "no command"
        put(2, "ostrel_janitor.py: " + asked + " is not one of: " + ", ".join(COMMANDS) + "\n")
        return USAGE_STATUS
    home = os.path.expanduser("~")
    if not home.startswith("/"):
        put(2, "ostrel_janitor.py: the home folder isn't known\n")
        return 1
    try:
        from ostrel_lib.janitor.receipts import has_records

        if has_records(home):
            from ostrel_lib.janitor.progress import settle_dead_runs

            settle_dead_runs(home)
        answer = dump(command[0](home, options))
    except Exception as error:  # one line instead of a trace: it is shown to the user
        put(2, "ostrel_janitor.py: " + type(error).__name__ + ": " + ascii(str(error)) + "\n")
        return 1
    return 0 if put(1, answer + "\n") else 1


def parsed(arguments: list[str], known: tuple[str, ...]) -> Options | None:
    """The options of a command line by name; None when one isn't known."""
    options = {}
    for argument in arguments:
        name, _, value = argument.partition("=")
        if name not in known or (name == "--apply") == ("=" in argument):
            return None
        options[name] = value
    return options


def names(options: Options, name: str) -> list[str]:
    """The names of one option, which commas join."""
    return [part for part in options.get(name, "").split(",") if part]


def rows(options: Options) -> list[str]:
    """What protects processes, with the user's changes."""
    from ostrel_lib.janitor.protection import effective

    return effective(*(names(options, name) for name in SETTINGS))


def findings(home: str, options: Options) -> dict[str, object]:
    """The reply of `findings`."""
    from ostrel_lib.janitor.findings import findings

    return findings(home, rows(options), time.time_ns())


def preview(home: str, options: Options) -> dict[str, object]:
    """The reply of `preview`."""
    from ostrel_lib.janitor.listing import preview

    return preview(home, options["--group"], names(options, "--select"), time.time_ns())


def clean(home: str, options: Options) -> dict[str, object]:
    """The reply of `clean`."""
    from ostrel_lib.janitor.cleaning import clean

    return clean(home, options["--group"], names(options, "--select"), time.time_ns())


def caches(home: str, options: Options) -> dict[str, object]:
    """The reply of `caches`."""
    from ostrel_lib.janitor.listing import caches

    return caches(home)


def kill_preview(home: str, options: Options) -> dict[str, object]:
    """The reply of `kill-preview`."""
    from ostrel_lib.janitor.people import judged

    wanted = [(pid(text), "not protected") for text in names(options, "--pids")]
    return judged(wanted, rows(options), "/proc")


def pid(text: str) -> int:
    """A pid as it was asked for; 0, which is none, for what isn't a number."""
    digits = text[1:] if text[:1] == "-" else text
    return int(text) if digits.isascii() and digits.isdecimal() and len(digits) < 19 else 0


def mcp_preview(home: str, options: Options) -> dict[str, object]:
    """The reply of `mcp-preview`. Raises ValueError for a depth that doesn't exist."""
    from ostrel_lib.janitor.people import judged
    from ostrel_lib.janitor.servers import Crew, offered

    depth = options["--depth"]
    if depth not in ("light", "deep"):
        raise ValueError("there is no such depth")
    return judged(offered(Crew("/proc"), depth, time.time()), rows(options), "/proc")


def group_names(home: str, options: Options) -> dict[str, object]:
    """The reply of `groups`."""
    from ostrel_lib.janitor.groups import TITLES

    return {"groups": list(TITLES), "titles": TITLES}


def receipts(home: str, options: Options) -> dict[str, object]:
    """The reply of `receipts`."""
    from ostrel_lib.janitor.receipts import newest

    return newest(home)


COMMANDS: dict[str, tuple[Callable[[str, Options], dict[str, object]], tuple[str, ...], tuple[str, ...]]] = {
    "findings": (findings, SETTINGS, ()),
    "preview": (preview, ("--group", "--select"), ("--group",)),
    "clean": (clean, ("--group", "--select", "--apply"), ("--group", "--apply")),
    "caches": (caches, (), ()),
    "kill-preview": (kill_preview, ("--pids", *SETTINGS), ("--pids",)),
    "mcp-preview": (mcp_preview, ("--depth", *SETTINGS), ("--depth",)),
    "groups": (group_names, (), ()),
    "receipts": (receipts, (), ()),
}
"""Each command with its options, and those of them that it can't do without."""
