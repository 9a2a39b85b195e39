# SPDX-License-Identifier: Apache-2.0
"""The commands of `session_bridge.py`: `list` and `switch`."""
from __future__ import annotations

import os

from ostrel_lib.jsontext import dump
from ostrel_lib.oneline import clean
from ostrel_lib.output import USAGE_STATUS, put
from ostrel_lib.places import Places
from ostrel_lib.sessions import kitty, tmux
from ostrel_lib.sessions.raising import bring_forward
from ostrel_lib.sessions.rows import rows
from ostrel_lib.sessions.scene import GONE, Scene, Selected
from ostrel_lib.tools import Interrupted, end_on_request, end_without_reader

BACKENDS = (tmux, kitty)


def main(argv: list[str], scene: Scene | None = None) -> int:
    """Carries out one command line and gives the exit status: 0 whenever there is an answer, also one that
    tells an error; 2 for a command that doesn't exist; 1 when it was asked to end, or the reader has gone."""
    words = argv[1:]
    try:
        end_on_request()
        scene = scene or Scene(Places(), os.environ)
        if words == ["list"]:
            end_without_reader(scene.places)
            answer = listing(scene)
        elif words[:1] == ["switch"]:
            answer = switched(scene, words[1:])
        else:
            asked = ascii(" ".join(words)[:200]) if words else "no command"
            put(2, f"session_bridge.py: {asked} is not one of: list, switch\n")
            return USAGE_STATUS
        return 0 if put(1, dump(answer) + "\n") else 1
    except Interrupted:
        return 1


def listing(scene: Scene) -> dict[str, object]:
    """The answer to `list`. What couldn't be read stands in "notes" beside what could; it is an error when
    nothing could."""
    found = [backend.listed(scene) for backend in BACKENDS]
    faults = [clean(fault) for listed in found for fault in listed.faults]
    terminals = [terminal for listed in found for terminal in listed.terminals]
    absent = [listed.absent for listed in found if listed.absent]
    if not terminals and (faults or len(absent) == len(found)):
        said = "; ".join(faults or absent)
        return {"ok": False, "error": f"No terminal can be listed: {said}."}
    return {"ok": True, "terminals": rows(scene, terminals), "notes": faults}


def switched(scene: Scene, words: list[str]) -> dict[str, object]:
    """The answer to `switch`. A terminal that was selected but whose window didn't come is an error that says
    so, since it isn't in front."""
    if words[:1] != ["--handle"] or len(words) < 2 or words[2:] not in ([], ["--confirm"]):
        return {"ok": False, "error": "The command line isn't: switch --handle H --confirm."}
    if len(words) == 2:
        return {"ok": False, "error": "Nothing is switched without a confirmation."}
    handle = words[1]
    backend = next((backend for backend in BACKENDS if handle.startswith(backend.PREFIX + ":")), None)
    selected = backend.select(scene, handle) if backend else Selected(problem=GONE)
    if selected.problem:
        return {"ok": False, "error": selected.problem}
    window, why = bring_forward(scene, selected.viewers)
    if why:
        return {"ok": False, "error": f"Selected {selected.label}, but its window isn't in front: {why}."}
    return {"ok": True, "message": f"Brought to the front: {selected.label}, in the window “{window}”."}
