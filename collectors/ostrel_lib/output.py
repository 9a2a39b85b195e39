# SPDX-License-Identifier: Apache-2.0
"""The way of an answer to its reader."""
from __future__ import annotations

import os

USAGE_STATUS = 2
"""The exit status for a command that doesn't exist."""


def put(descriptor: int, data: str | bytes | memoryview) -> bool:
    """Writes ASCII text or bytes past Python's own streams, which fail once more at the interpreter's end
    when the reader has gone. Whether all of it was taken."""
    left = memoryview(data.encode("ascii") if isinstance(data, str) else data)
    try:
        while left:
            left = left[os.write(descriptor, left):]
    except OSError:
        return False
    return True
