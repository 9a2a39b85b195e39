# SPDX-License-Identifier: Apache-2.0
"""Files that the user or another program wrote, taken with care: no links, no pipes, no giants."""
from __future__ import annotations

import os
import stat

MOST = 4 << 20


def read_file(path: str, most: int = MOST) -> tuple[bytes, str]:
    """A regular file's bytes, and why there are none. The last part of the path may not be a link."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK | os.O_CLOEXEC)
    except OSError as problem:
        return b"", "it is a link" if os.path.islink(path) else (problem.strerror or "unreadable").lower()
    try:
        status = os.fstat(file)
        if not stat.S_ISREG(status.st_mode):
            return b"", "it isn't a regular file"
        if status.st_size > most:
            return b"", f"it is larger than {most >> 20} MiB"
        content = b""
        while part := os.read(file, most + 1 - len(content)):
            content += part
            if len(content) > most:
                return b"", f"it is larger than {most >> 20} MiB"
        return content, ""
    except OSError as problem:
        return b"", (problem.strerror or "unreadable").lower()
    finally:
        os.close(file)


def read_json(path: str, most: int = MOST) -> tuple[object, str]:
    """A JSON file's value, and why there is none."""
    content, problem = read_file(path, most)
    return (None, problem) if problem else parse_json(content)


def parse_json(content: bytes) -> tuple[object, str]:
    """The value of a JSON text, and why there is none."""
    import json

    try:
        value = json.loads(content.decode("utf-8-sig"), parse_constant=refuse)
    except UnicodeDecodeError:
        return None, "it isn't UTF-8"
    except json.JSONDecodeError as problem:
        return None, f"it isn't JSON from line {problem.lineno} on"
    except (ValueError, RecursionError):
        return None, "it isn't JSON that can be read"
    return value, ""


def refuse(word: str) -> None:
    """Infinity and NaN are no JSON."""
    raise ValueError(word)


def texts(value: object) -> list[str]:
    """The texts of a list; none when it isn't one."""
    return [part for part in value if type(part) is str] if type(value) is list else []
