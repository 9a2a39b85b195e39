# SPDX-License-Identifier: Apache-2.0
"""The windows of kitty, where its user lets it be controlled over a socket.

What kitty starts is told the socket in a variable. Over it go a question and an answer as JSON, each between
fixed bytes; so no tool of kitty's has to be found, and no word of ours is ever a command line.
"""
from __future__ import annotations

import time

from ostrel_lib.files import read_list
from ostrel_lib.jsontext import dump, parse
from ostrel_lib.oneline import clean
from ostrel_lib.sessions.scene import (
    GONE, PATIENCE, Listed, Scene, Selected, Terminal, address, key_of, owner_of,
)

PREFIX = "kitty"
VARIABLE = b"KITTY_LISTEN_ON=unix:"
BEGIN, END = b"\x1bP@kitty-cmd", b"\x1b\\"
VERSION = [0, 14, 2]
"""The oldest kitty that understands this; it turns down whoever claims to be newer than itself."""
MOST_BYTES = 16 << 20


class Instance:
    """A kitty that answers. `path` is its socket; a name without a file has "@" in front."""

    __slots__ = ("path", "pid", "birth")

    def __init__(self, path: str, pid: int, birth: str) -> None:
        self.path = path
        self.pid = pid
        self.birth = birth


class Window:
    """One of kitty's own windows. `outer` is the X window around it, 0 when there is none."""

    __slots__ = ("number", "title", "pid", "outer")

    def __init__(self, number: int, title: str, pid: int, outer: int) -> None:
        self.number = number
        self.title = title
        self.pid = pid
        self.outer = outer


def listed(scene: Scene) -> Listed:
    """The windows of all that can be controlled."""
    found, faults = instances(scene)
    result = Listed("" if found or faults else "no kitty lets itself be controlled")
    result.faults = faults
    for instance in found:
        windows, problem = windows_of(scene, instance)
        if problem:
            result.faults.append(f"kitty {instance.pid}: {problem}")
        result.terminals += [
            Terminal(f"{PREFIX}:{instance.birth}:{window.number}:{key_of(instance.path)}", label(window),
                     window.pid, True)
            for window in windows]
    return result


def select(scene: Scene, handle: str) -> Selected:
    """Makes a window the present one of its kitty."""
    words = handle.split(":")
    for instance in instances(scene)[0]:
        if [words[1:2], words[3:]] != [[instance.birth], [key_of(instance.path)]]:
            continue
        windows, problem = windows_of(scene, instance)
        window = next((window for window in windows if words[2] == str(window.number)), None)
        if problem or not window:
            return Selected(problem=f"kitty {instance.pid}: {problem}." if problem else GONE)
        _, problem = ask(scene, instance, "focus-window", {"match": f"id:{window.number}"})
        result = Selected(label(window))
        if problem:
            result.problem = f"kitty didn't select {result.label}: {problem}."
        result.viewers = [(instance.pid, window.outer)]
        return result
    return Selected(problem=GONE)


def label(window: Window) -> str:
    """What a window is called for people."""
    return f"kitty:{window.number} · {window.title}" if window.title else f"kitty:{window.number}"


def instances(scene: Scene) -> tuple[list[Instance], list[str]]:
    """The kitties whose sockets can be reached, and what is wrong with others. One that was started within
    another may hand on the other's socket."""
    tree = scene.tree
    paths: dict[str, dict[int, str]] = {}
    for process in tree.processes:
        parent = tree.by_pid.get(process.ppid)
        if parent and parent.comm == b"kitty":
            for entry in read_list(f"{scene.places.proc}/{process.pid}/environ").split(b"\0"):
                if entry.startswith(VARIABLE) and entry[len(VARIABLE):][:1] in (b"/", b"@"):
                    path = entry[len(VARIABLE):].decode("utf-8", "surrogateescape")
                    paths.setdefault(path, {})[parent.pid] = f"{parent.pid}.{parent.start}"
    found = []
    faults = []
    for path, births in sorted(paths.items()):
        pid, problem = owner_of(path)
        if problem:
            faults.append(f"kitty {min(births)} {problem}")
        elif pid in births:
            found.append(Instance(path, pid, births[pid]))
    return found, faults


def windows_of(scene: Scene, instance: Instance) -> tuple[list[Window], str]:
    """The windows of one kitty, and why there are none."""
    data, problem = ask(scene, instance, "ls", {})
    if problem:
        return [], problem
    try:
        shells = parse(data) if type(data) is str else data
    except ValueError:
        shells = None
    if type(shells) is not list:
        return [], "it told something that isn't a list of windows"
    return [
        Window(number, clean(text) if type(text := window.get("title")) is str else "",
               whole(window.get("pid")), whole(shell.get("platform_window_id")))
        for shell in objects(shells) for tab in objects(shell.get("tabs"))
        for window in objects(tab.get("windows")) if (number := whole(window.get("id")))
    ], ""


def objects(value: object) -> list[dict[str, object]]:
    """The objects of a list; none when it isn't one."""
    return [part for part in value if type(part) is dict] if type(value) is list else []


def whole(value: object) -> int:
    """A number that counts something; 0 for anything else."""
    return value if type(value) is int and 0 < value < 1 << 32 else 0


def ask(scene: Scene, instance: Instance, command: str, payload: dict[str, object]) -> tuple[object, str]:
    """What kitty answers to a command, and why it gives no answer."""
    import socket

    end = time.monotonic() + scene.deadline.left(PATIENCE)
    question = dump({"cmd": command, "version": VERSION, "no_response": False, "payload": payload})
    heard = bytearray()
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as link:
        try:
            link.settimeout(max(0.001, end - time.monotonic()))
            link.connect(address(instance.path))
            link.sendall(BEGIN + question.encode("ascii") + END)
            while not heard.endswith(END):
                link.settimeout(max(0.001, end - time.monotonic()))
                part = link.recv(1 << 16)
                heard += part
                if not part or len(heard) > MOST_BYTES:
                    return None, "it told something that can't be read"
        except TimeoutError:
            return None, "it gave no answer in time"
        except OSError as fault:
            return None, (fault.strerror or "it can't be reached").lower()
    try:
        answer = parse(bytes(heard)[heard.find(BEGIN) + len(BEGIN):-len(END)].decode("utf-8"))
    except ValueError:
        answer = None
    if type(answer) is not dict:
        return None, "it told something that can't be read"
    if answer.get("ok") is not True:
        said = answer.get("error")
        return None, clean(said, 200) if type(said) is str and said else "it refused"
    return answer.get("data"), ""
