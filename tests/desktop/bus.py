# SPDX-License-Identifier: Apache-2.0
"""Calls on a session bus through gdbus, and what a tray host asks of a status item and its menu."""
import ast
import re
import subprocess
from typing import Any, NamedTuple, Optional

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
OPEN = "org.freedesktop.Application"
APPLICATION = ("dev.quent.ostrel", "/dev/quent/ostrel")  # where the instrument answers it
_PROPERTIES = "org.freedesktop.DBus.Properties"
_DAEMON = ("org.freedesktop.DBus", "/org/freedesktop/DBus")

# Strings stay as they are; type names, variants' brackets and the two booleans differ from Python's literals.
_FOREIGN = re.compile(r"""(?P<text>'(?:[^'\\]|\\.)*'|"(?:[^"\\]|\\.)*")|@\S+\s"""
                      r"""|\b(?:byte|u?int(?:16|32|64)|handle|double|objectpath|signature)\s"""
                      r"""|[<>]|\b(?P<word>true|false)\b""")


class Item(NamedTuple):
    service: str
    path: str


class Row(NamedTuple):
    """A menu row: its number, its label without mnemonics ("" for a separator), whether it can be pressed."""
    number: int
    label: str
    enabled: bool


def call(env: dict[str, str], service: str, path: str, method: str, *arguments: str) -> Any:
    """A method's answer as plain Python: None after a failure, a bare value when it is alone, or a tuple."""
    command = ["gdbus", "call", "--session", "--timeout", "10", "--dest", service, "--object-path", path]
    done = subprocess.run([*command, "--method", method, "--", *arguments], env=env, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return None
    values = parse_variant(done.stdout)
    return values[0] if len(values) == 1 else values


def parse_variant(text: str) -> Any:
    """GVariant text as plain Python values; variants give what they hold."""
    plain = _FOREIGN.sub(lambda found: found["text"] or (found["word"] or "").capitalize(), text)
    return ast.literal_eval(plain.strip())


def has_owner(env: dict[str, str], name: str) -> bool:
    return call(env, *_DAEMON, "org.freedesktop.DBus.NameHasOwner", name) is True


def connection_stats(env: dict[str, str], name: str) -> dict[str, Any]:
    return call(env, *_DAEMON, "org.freedesktop.DBus.Debug.Stats.GetConnectionStats", name)


def has_host(env: dict[str, str]) -> bool:
    """Whether something on the desktop shows status items."""
    return _watcher(env, "IsStatusNotifierHostRegistered") is True


def items(env: dict[str, str]) -> list[str]:
    return _watcher(env, "RegisteredStatusNotifierItems") or []


def item_of(env: dict[str, str], pid: int) -> Optional[Item]:
    """The registered status item of a process; None when the watcher lists none."""
    for entry in items(env):
        service, slash, path = entry.partition("/")
        if call(env, *_DAEMON, "org.freedesktop.DBus.GetConnectionUnixProcessID", service) == pid:
            return Item(service, slash + path if slash else "/StatusNotifierItem")
    return None


def item_property(env: dict[str, str], item: Item, name: str) -> Any:
    return call(env, item.service, item.path, f"{_PROPERTIES}.Get", ITEM, name)


def tool_tip(env: dict[str, str], item: Item) -> str:
    """The words that a host shows when the pointer rests on the item."""
    parts = item_property(env, item, "ToolTip")
    return "\n".join(filter(None, parts[2:4])) if parts else ""


def menu_rows(env: dict[str, str], item: Item) -> list[Row]:
    """Opens the item's menu as a host does and gives its rows, each submenu's right behind its parent."""
    menu = item_property(env, item, "Menu")
    if not menu or call(env, item.service, menu, f"{MENU}.AboutToShow", "0") is None:
        return []
    layout = call(env, item.service, menu, f"{MENU}.GetLayout", "0", "-1", "[]")
    return _rows(layout[1])[1:] if layout else []


def press_row(env: dict[str, str], item: Item, label: str) -> bool:
    """Presses the menu row of that label. Whether there was such a row and the item took the press."""
    menu = item_property(env, item, "Menu")
    row = next((row for row in menu_rows(env, item) if row.label == label and row.enabled), None)
    if row is None:
        return False
    event = (str(row.number), "clicked", "<0>", "0")
    return call(env, item.service, menu, f"{MENU}.Event", *event) is not None


def _watcher(env: dict[str, str], name: str) -> Any:
    return call(env, WATCHER, "/StatusNotifierWatcher", f"{_PROPERTIES}.Get", WATCHER, name)


def _rows(layout: Any) -> list[Row]:
    number, properties, children = layout
    label = re.sub("_(.)", r"\1", properties.get("label", ""))
    rows = [Row(number, label, properties.get("enabled", True))]
    for child in children:
        rows += _rows(child)
    return rows
