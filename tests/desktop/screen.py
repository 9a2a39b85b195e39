# SPDX-License-Identifier: Apache-2.0
"""What is on a private desktop's screen: pictures, windows, keys and clicks. Places in pixels, y down."""
import mmap
import re
import struct
import zlib
from collections import Counter
from typing import NamedTuple, Optional

from private_desktop import PrivateDesktop


class Box(NamedTuple):
    x: int
    y: int
    width: int
    height: int


class Picture(NamedTuple):
    """Pixels from the top left, row by row, three bytes each: red, green, blue."""
    width: int
    height: int
    pixels: bytes


def picture(desktop: PrivateDesktop, box: Box) -> Picture:
    """What the part of the screen that lies in the box shows now."""
    with open(f"{desktop.folder}/Xvfb_screen0", "rb") as file, \
            mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as memory:
        header = struct.unpack(">25I", memory[:100])
        start, width, height, line = header[0] + header[19] * 12, header[4], header[5], header[12]
        left, top = max(0, box.x), max(0, box.y)
        right, bottom = max(left, min(width, box.x + box.width)), max(top, min(height, box.y + box.height))
        starts = (start + row * line for row in range(top, bottom))
        rows = b"".join(memory[at + left * 4:at + right * 4] for at in starts)
    pixels = bytearray(len(rows) // 4 * 3)
    for to, come in enumerate((2, 1, 0)):  # stored as blue, green, red, nothing
        pixels[to::3] = rows[come::4]
    return Picture(right - left, bottom - top, bytes(pixels))


def colours(shown: Picture) -> Counter[tuple[int, int, int]]:
    pixels = shown.pixels
    return Counter(zip(pixels[::3], pixels[1::3], pixels[2::3]))


def write_png(shown: Picture, path: str) -> None:
    def chunk(name: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    form = struct.pack(">IIBBBBB", shown.width, shown.height, 8, 2, 0, 0, 0)  # 8 bits a channel, in colour
    line = shown.width * 3
    lines = b"".join(b"\0" + shown.pixels[at:at + line] for at in range(0, len(shown.pixels), line))
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", form) + chunk(b"IDAT", zlib.compress(lines, 6))
                   + chunk(b"IEND", b""))


def panel_window(desktop: PrivateDesktop) -> Optional[int]:
    found = desktop.run(["xdotool", "search", "--onlyvisible", "--name", "^OSTREL$"]).stdout.split()
    return int(found[0]) if found else None


def window_box(desktop: PrivateDesktop, window: int) -> Optional[Box]:
    told = desktop.run(["xdotool", "getwindowgeometry", "--shell", str(window)]).stdout
    values = dict(re.findall(r"^(\w+)=(-?\d+)$", told, re.MULTILINE))
    return Box(*(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))) if "WIDTH" in values else None


def window_property(desktop: PrivateDesktop, window: int, name: str) -> str:
    """A window's property as the X server tells it; "" when there is none."""
    return desktop.run(["xprop", "-id", str(window), "-notype", name]).stdout.partition("=")[2].strip()


def active_window(desktop: PrivateDesktop) -> Optional[int]:
    """The window that the window manager gives the keys to."""
    told = desktop.run(["xprop", "-root", "-notype", "_NET_ACTIVE_WINDOW"]).stdout
    found = re.search(r"0x([0-9a-f]+)", told)
    return int(found[1], 16) if found else None


def has_keyboard(desktop: PrivateDesktop, window: int) -> bool:
    """Whether the window gets the keys: the window manager says so a little before the screen does it."""
    told = desktop.run(["xdotool", "getwindowfocus"]).stdout.strip()
    return active_window(desktop) == window and told == str(window)


def press(desktop: PrivateDesktop, key: str) -> None:
    """Presses and releases a key (an X keysym name, as in "Escape" or "ctrl+w") in the active window."""
    desktop.run(["xdotool", "key", key])


def move_pointer(desktop: PrivateDesktop, x: int, y: int) -> None:
    desktop.run(["xdotool", "mousemove", str(x), str(y)])


def click(desktop: PrivateDesktop, x: int, y: int) -> None:
    desktop.run(["xdotool", "mousemove", str(x), str(y), "click", "1"])
