# SPDX-License-Identifier: Apache-2.0
"""The commands of `automations_bridge.py`. What a command needs is imported only when it is asked for."""
from __future__ import annotations

from ostrel_lib.automations import cache
from ostrel_lib.output import USAGE_STATUS, put
from ostrel_lib.places import Places, iso

QUICK = 22.0
REFRESH = 280.0
"""Seconds that a first and an asked-for reading may take; the reader waits for 30 and 330."""


def main(argv: list[str], places: Places | None = None) -> int:
    """Carries out one command line and gives the exit status: 0 whenever there is an answer, also one that
    tells an error; 2 for a command that doesn't exist; 1 when it was asked to end, or the reader has gone."""
    words = argv[1:]
    if words == ["list"]:
        return print_inventory(places or Places(), refresh=False)
    if words == ["list", "--refresh"]:
        return print_inventory(places or Places(), refresh=True)
    if words and words[0] in ("journal", "act"):
        return print_answer(words[0], words[1:], places or Places())
    asked = "no command" if not words else "unknown command " + ascii(" ".join(words)[:200])
    put(2, f"automations_bridge.py: {asked}; try: list [--refresh], journal, act\n")
    return USAGE_STATUS


def print_inventory(places: Places, refresh: bool) -> int:
    """Prints the inventory, from the cache unless it is asked for anew or there is none."""
    text = b"" if refresh else cache.load(places.cache, places.clock())
    if text:
        return put_inventory(places, text)
    from ostrel_lib.automations.inventory import collect
    from ostrel_lib.tools import Interrupted, end_on_request, end_without_reader

    try:
        end_on_request()
        end_without_reader(places)
        return put_inventory(places, collect(places, REFRESH if refresh else QUICK))
    except Interrupted:
        return 1


def put_inventory(places: Places, text: bytes | memoryview) -> int:
    """Prints the text of an inventory."""
    # The kept text is an object too; the time of this reading goes in front of its keys.
    head = b'{"read_at": "%s", ' % iso(places.clock()).encode("ascii")
    return 0 if put(1, head) and put(1, memoryview(text)[1:]) and put(1, b"\n") else 1


def print_answer(command: str, words: list[str], places: Places) -> int:
    """Prints what `journal` or `act` has to tell."""
    from ostrel_lib.tools import Interrupted, end_on_request, end_without_reader
    from ostrel_lib.jsontext import dump

    try:
        end_on_request()
        options, problem = parse(words, ("--lane", "--id", "--op" if command == "act" else "--target"))
        if command == "act":
            from ostrel_lib.automations.act import act

            answer = act(places, options, problem)
        else:
            from ostrel_lib.automations.journal import journal

            end_without_reader(places)
            answer = {"error": problem, "journal": []} if problem else journal(places, options)
        return 0 if put(1, dump(answer) + "\n") else 1
    except Interrupted:
        return 1


def parse(words: list[str], names: tuple[str, ...]) -> tuple[dict[str, str], str]:
    """The options by name, and what is wrong with them. The word behind a name is its value, whatever it
    looks like: an id may begin with a dash."""
    options: dict[str, str] = {}
    place = 0
    while place < len(words):
        word = words[place]
        if word == "--confirm" and "--op" in names and word not in options:
            options[word] = "yes"
            place += 1
        elif word in names and word not in options and place + 1 < len(words):
            options[word] = words[place + 1]
            place += 2
        else:
            return options, "the command line holds " + ascii(word[:80]) + " where it has no place"
    missing = [name for name in names if name not in options and name != "--target"]
    return options, "the command line lacks " + missing[0] if missing else ""
