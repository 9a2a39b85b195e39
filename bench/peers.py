# SPDX-License-Identifier: Apache-2.0
"""What others run to see what this instrument shows: programs of the system's packages, each asked to look as
often as the instrument does, on a desktop of their own."""
from __future__ import annotations

import contextlib
import fcntl
import json
import os
import pty
import shutil
import struct
import subprocess
import termios
import threading
from typing import NamedTuple

from trays import TRAYS

SYSTEMLOAD = "/usr/lib/x86_64-linux-gnu/xfce4/panel/plugins/libsystemload.so"
LIST = "".join(f"${{top name {row}}} ${{top pid {row}}} ${{top cpu {row}}} ${{top mem {row}}}\n"
               for row in range(1, 11))


class Peer(NamedTuple):
    """A program beside the instrument, which may need a terminal."""
    name: str
    command: list[str]
    terminal: bool


def conky(path: str, seconds: int, text: str) -> list[str]:
    """A text-only instrument that prints to nowhere, with its settings at this path."""
    with open(path, "w", encoding="ascii") as file:
        file.write("conky.config = { out_to_console = true, out_to_x = false, "
                   f"update_interval = {seconds} }}\nconky.text = [[ ${{cpu}} ${{memperc}} ${{swapperc}} "
                   f"${{loadavg 1}}\n{text}]]\n")
    return ["conky", "-c", path]


def peers(home: str, seconds: int) -> list[Peer]:
    """Those that are installed, with their settings in this home."""
    os.makedirs(f"{home}/.config/btop", exist_ok=True)
    with open(f"{home}/.config/btop/btop.conf", "w", encoding="ascii") as file:
        file.write(f"update_ms = {seconds * 1000}\n")
    every = str(seconds)
    known = [
        Peer("conky, no process list", conky(f"{home}/conky.conf", seconds, ""), False),
        Peer("conky, ten processes", conky(f"{home}/conky-list.conf", seconds, LIST), False),
        Peer("top", ["top", "-b", "-d", every], False),
        Peer("htop", ["htop", "-d", str(seconds * 10)], True),
        Peer("btop", ["btop", "--utf-force"], True),
        Peer("glances", ["glances", "-t", every], True),
    ]
    return [peer for peer in known if shutil.which(peer.command[0])]


def start(peer: Peer, env: dict[str, str]) -> subprocess.Popen:
    """Starts it; one that needs a terminal gets one of 120 by 40 that somebody reads."""
    quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "stdin": subprocess.DEVNULL}
    if not peer.terminal:
        return subprocess.Popen(peer.command, env=env, **quiet)
    keeper, terminal = pty.openpty()
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 40, 120, 0, 0))
    process = subprocess.Popen(peer.command, env={**env, "TERM": "xterm-256color"}, stdin=terminal,
                               stdout=terminal, stderr=terminal, start_new_session=True)
    os.close(terminal)
    threading.Thread(target=drain, args=(keeper,), daemon=True).start()
    return process


def drain(descriptor: int) -> None:
    """Reads a terminal until nobody writes to it any more."""
    with contextlib.suppress(OSError):
        while os.read(descriptor, 1 << 16):
            pass
    os.close(descriptor)


def tray_with_load(seconds: int) -> str:
    """The name of a tray that has the desktop's own load plugin beside the items, looking as often; of one
    without where it isn't installed."""
    if not os.path.exists(SYSTEMLOAD):
        return "xfce"
    plain = TRAYS["xfce"]
    (path, text), = plain.files.items()
    text = text.replace('<value type="int" value="2"/>\n', '<value type="int" value="2"/> '
                        '<value type="int" value="3"/>\n')
    text = text.replace('<property name="plugin-2"', '<property name="plugin-3" type="string" '
                        'value="systemload"> <property name="timeout" type="uint" '
                        f'value="{seconds * 1000}"/> </property>\n    <property name="plugin-2"')
    TRAYS["xfce-load"] = plain._replace(files={path: text})
    return "xfce-load"


def plugin_process() -> int | None:
    """The process of the load plugin, which the panel runs in one of its own."""
    for name in filter(str.isdecimal, os.listdir("/proc")):
        with contextlib.suppress(OSError), open(f"/proc/{name}/cmdline", "rb") as file:
            if SYSTEMLOAD.encode() in file.read():
                return int(name)
    return None


def settings(home: str, **values) -> None:
    """Writes the instrument's settings before its start."""
    path = f"{home}/.config/zol-mini-apps/dev.quent.ostrel.json"
    os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        json.dump({f"dev.quent.ostrel.{key}": value for key, value in values.items()}, file)
