#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Whether a released program has what makes a fault of memory harder to use: hardened.py PROGRAM.

Prints what is missing, and ends with 1 then. Folders behind the program are those it was built in, which it
may not name.
"""
import re
import subprocess
import sys

# What it is, and where readelf shows it.
FEATURES = (
    ("an address of its own at each start", "-h", r"Type: +DYN"),
    ("relocations that are read-only", "-l", r"GNU_RELRO"),
    ("all symbols bound at the start", "-d", r"FLAGS.*NOW"),
    ("a stack that can't be run", "-l", r"GNU_STACK +\S+ \S+ \S+\s+\S+ \S+ +RW +"),
    ("guarded returns", "--dyn-syms", r"__stack_chk_fail"),
    ("checked copies", "--dyn-syms", r"__(?!stack)\w+_chk"))
# Where an indirect jump may land. The C library's start code has no such marks, so that the note that all of
# the program has them is missing.
LANDING, FEWEST_LANDINGS = b"\xf3\x0f\x1e\xfa", 1000


def main(arguments: list[str]) -> int:
    """0 when nothing is missing, else 1; 2 without a program."""
    if not arguments:
        print(__doc__, file=sys.stderr)
        return 2
    program, *folders = arguments

    def readelf(part: str) -> str:
        return subprocess.run(["readelf", "-W", part, program], check=True, stdout=subprocess.PIPE,
                              encoding="utf-8").stdout

    missing = [name for name, part, pattern in FEATURES if not re.search(pattern, readelf(part))]
    with open(program, "rb") as file:
        data = file.read()
    if "X86-64" in readelf("-h") and data.count(LANDING) < FEWEST_LANDINGS:
        missing.append("marked landings of indirect jumps")
    missing += [f"no path of the machine that built it ({folder} is named)" for folder in folders
                if folder.encode() in data]
    for name in missing:
        print(f"{program} lacks {name}", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
