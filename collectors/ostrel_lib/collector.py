# SPDX-License-Identifier: Apache-2.0
"""The commands of `ostrel.py`. What a command needs is imported only when it is asked for."""
from __future__ import annotations

import os

USAGE_STATUS = 2


def main(argv: list[str]) -> int:
    """Carries out one command line and gives the exit status: 0, or 2 with one line on standard error for a
    command that doesn't exist, or 1 when the reader of the output has gone."""
    if argv[1:] == ["json"]:
        return print_snapshot(argv[0])
    asked = "no command" if len(argv) < 2 else "unknown command " + ascii(" ".join(argv[1:]))
    put(2, "ostrel.py: " + asked + "; try: ostrel.py json\n")
    return USAGE_STATUS


def print_snapshot(script: str) -> int:
    """Prints one snapshot as one line of JSON."""
    from ostrel_lib.jsontext import dump
    from ostrel_lib.snapshot import snapshot

    text = dump(snapshot(script=os.path.abspath(script), home=os.path.expanduser("~")))
    return 0 if put(1, text + "\n") else 1


def put(descriptor: int, text: str) -> bool:
    """Writes ASCII text past Python's own streams, which fail once more at the interpreter's end when the
    reader has gone. Whether all of it was taken."""
    left = text.encode("ascii")
    try:
        while left:
            left = left[os.write(descriptor, left):]
    except OSError:
        return False
    return True
