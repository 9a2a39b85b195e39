# SPDX-License-Identifier: Apache-2.0
"""The commands of `ostrel.py`. What a command needs is imported only when it is asked for."""
from __future__ import annotations

import os

from ostrel_lib.output import USAGE_STATUS, put


def main(argv: list[str]) -> int:
    """Carries out one command line and gives the exit status: 0, or 2 with one line on standard error for a
    command that doesn't exist, or 1 when the reader of the output has gone."""
    command = COMMANDS.get(tuple(argv[1:]))
    if command is None:
        asked = "no command" if len(argv) < 2 else "unknown command " + ascii(" ".join(argv[1:]))
        choices = ", ".join(" ".join(words) for words in COMMANDS)
        put(2, "ostrel.py: " + asked + "; there are: " + choices + "\n")
        return USAGE_STATUS
    from ostrel_lib.jsontext import dump

    return 0 if put(1, dump(command(os.path.abspath(argv[0]), os.path.expanduser("~"))) + "\n") else 1


def snapshot(script: str, home: str) -> dict[str, object]:
    """One snapshot of this machine."""
    from ostrel_lib.snapshot import snapshot as take

    return take(script=script, home=home)


def analyze(script: str, home: str) -> dict[str, object]:
    """What is wrong in the snapshot on standard input."""
    from ostrel_lib.analyst import analyze_input

    return analyze_input(0)


def clean(script: str, home: str) -> dict[str, object]:
    """The audit of the MCP servers."""
    from ostrel_lib.maintenance import clean as audit

    return audit()


def preview_history(script: str, home: str) -> dict[str, object]:
    """What compacting the saved samples would come to."""
    from ostrel_lib.maintenance import history_clean

    return history_clean(home, apply=False)


def compact_history(script: str, home: str) -> dict[str, object]:
    """Compacts the saved samples."""
    from ostrel_lib.maintenance import history_clean

    return history_clean(home, apply=True)


COMMANDS = {
    ("json",): snapshot,
    ("analyze", "--stdin"): analyze,
    ("clean",): clean,
    ("history-clean",): preview_history,
    ("history-clean", "--apply"): compact_history,
}
"""What each command line gives, from the script's absolute path and the home. Every answer is one line of
JSON."""
