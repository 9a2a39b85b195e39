# SPDX-License-Identifier: Apache-2.0
"""Reads every #include under src/ and fails where one room uses another without saying so, where a
folder cycle closes, or where a rule draws. The rooms and their arrows are read from the rooms' own CMake
files."""
import os
import re

INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^">]+)[">]', re.M)
TARGET = re.compile(r"add_library\((\w+)\s+(?:STATIC|INTERFACE)([^)]*)\)")
LINKS = re.compile(r"target_link_libraries\((\w+)\s+([^)]*)\)")
QT_HEADER = re.compile(r"Q[A-Za-z0-9]*$")
DRAWING = ("ostrel_platform_qt",)

# A room may use what stands above it. main.cpp, in no room, may use all.
ORDER = [
    {"core"}, {"platform"}, {"platform/linux"}, {"platform/qt"}, {"design"}, {"readings"}, {"collector"},
    {"history", "bar", "janitor", "automations", "sessions"}, {"hints"}, {"panel"}, {"app"}, {"selftest"},
]
# Beside the order: the interfaces know the standard library alone, and logic knows no real platform part.
NEVER = {"platform": {"core"}}
REAL_PARTS = {"platform/linux", "platform/qt"}
MAY_USE_REAL_PARTS = {"platform/linux", "platform/qt", "app", "selftest"}


def room_of(path: str) -> str:
    """The room that a file under src/ belongs to; empty for main.cpp."""
    folder = os.path.dirname(path)
    return folder if folder in REAL_PARTS else folder.split("/")[0]


def rank(room: str) -> int:
    return next(place for place, rooms in enumerate(ORDER) if room in rooms)


def sources(root: str) -> list:
    return sorted(os.path.relpath(os.path.join(folder, name), root) for folder, _, names in os.walk(root)
                  for name in names if name.endswith((".h", ".cpp")))


def read(path: str) -> str:
    with open(path, encoding="utf-8") as file:
        return re.sub(r"(?m)#.*$", "", file.read()) if path.endswith("CMakeLists.txt") else file.read()


def targets(root: str) -> tuple:
    """From the CMake files: target of each .cpp, room of each target, and what each target links."""
    of_file, room, links = {}, {}, {}
    for folder, _, names in os.walk(root):
        if "CMakeLists.txt" not in names:
            continue
        text = read(os.path.join(folder, "CMakeLists.txt"))
        here = os.path.relpath(folder, root)
        for name, files in TARGET.findall(text):
            room[name] = "" if here == "." else here
            links.setdefault(name, set())
            for file in files.split():
                of_file[os.path.join(here, file)] = name
        for name, linked in LINKS.findall(text):
            links.setdefault(name, set()).update(set(linked.split()) - {"PUBLIC", "PRIVATE", "INTERFACE"})
    return of_file, room, links


def reachable(links: dict, target: str) -> set:
    seen, waiting = set(), [target]
    while waiting:
        for linked in links.get(waiting.pop(), ()):
            if linked not in seen:
                seen.add(linked)
                waiting.append(linked)
    return seen


def draws(target: str) -> bool:
    return target.endswith("_ui") or target in DRAWING


def owner(path: str, of_file: dict) -> str:
    """The target of a file; a header belongs to the .cpp of its name. Empty for a header on its own."""
    return of_file.get(path) or of_file.get(path[:-2] + ".cpp" if path.endswith(".h") else path, "")


def check(root: str) -> list:
    of_file, room_of_target, links = targets(root)
    files = sources(root)
    known = set(files)
    problems, edges, uses_qt = [], {}, set()
    for path in files:
        room, target = room_of(path), owner(path, of_file)
        if path.endswith(".cpp") and not target and room:
            problems.append(f"{path}: belongs to no target")
        for mark, name in INCLUDE.findall(read(os.path.join(root, path))):
            if QT_HEADER.match(os.path.basename(name)) and "." not in name:
                uses_qt.add(path)
                if target and not draws(target):
                    problems.append(f"{path}: {name} belongs into {target}_ui")
            if mark == "<" or name not in known or not room:
                continue
            other = room_of(name)
            if other == room:
                continue
            edges.setdefault(room, {}).setdefault(other, f"{path} includes {name}")
            if rank(other) >= rank(room) or other in NEVER.get(room, ()):
                problems.append(f"{path}: {room} stands above {other} and can't use {name}")
            elif other in REAL_PARTS and room not in MAY_USE_REAL_PARTS:
                problems.append(f"{path}: only the application may use {name}")
            elif target:
                said = {room_of_target[t] for t in links[target] if t in room_of_target}
                own = [t for t in links[target] if room_of_target.get(t) == room_of_target[target]]
                said |= {room_of_target[t] for o in own for t in links[o] if t in room_of_target}
                if other not in said:
                    problems.append(f"{path}: {target} doesn't say that it uses {other}, for {name}")
    # A header without a .cpp of its own may draw only when those who include it do.
    for path in files:
        if owner(path, of_file) or not uses_qt & {path}:
            continue
        for user in files:
            target = owner(user, of_file)
            if f'"{path}"' in read(os.path.join(root, user)) and target and not draws(target):
                problems.append(f"{user}: includes {path}, which draws")
    problems += cycles(edges)
    return problems


def cycles(edges: dict) -> list:
    return [f"{room} and {other} use each other: {example}" for room, others in sorted(edges.items())
            for other, example in sorted(others.items()) if room in reachable(edges, other) and room < other]
