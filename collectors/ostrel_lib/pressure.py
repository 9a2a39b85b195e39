# SPDX-License-Identifier: Apache-2.0
"""How short memory is, from the kernel's stall averages and what could still be handed out.

Either alone gives false alarms: programs wait for memory after a big copy on a healthy machine, and a full
machine may run well for days. The rows are those by which the panel's own reading reaches its levels.
"""
from __future__ import annotations

from ostrel_lib.files import fraction

NORMAL, WARNING, CRITICAL, UNKNOWN = "ok", "warning", "critical", "unknown"

ROWS = (
    # level, some and full stall of ten seconds at least (percent), available and swap's rest below (shares)
    (CRITICAL, None, 10.0, 0.20, None),
    (CRITICAL, None, None, 0.04, None),
    (CRITICAL, 10.0, None, 0.10, 0.10),
    (WARNING, 10.0, None, 0.50, None),
    (WARNING, None, 3.0, 0.50, None),
    (WARNING, None, None, 0.10, 0.25),
)


def stall(text: bytes) -> tuple[float, float] | None:
    """The shares of the last ten seconds, in percent, in which some and all runnable programs waited for
    memory, from the text of /proc/pressure/memory. None from a kernel that doesn't tell."""
    shares = {}
    for line in text.split(b"\n"):
        words = line.split()
        if len(words) > 1 and words[1].startswith(b"avg10="):
            shares[words[0]] = fraction(words[1][6:])
    return (shares[b"some"], shares.get(b"full", 0.0)) if b"some" in shares else None


def level(fields: dict[bytes, int], stalled: tuple[float, float] | None) -> str:
    """The level that the fields of /proc/meminfo and the stall stand for; "unknown" without the fields."""
    total = fields.get(b"MemTotal", 0)
    if not total or b"MemAvailable" not in fields:
        return UNKNOWN
    available = fields[b"MemAvailable"] / total
    swap = fields.get(b"SwapTotal", 0)
    rest = fields.get(b"SwapFree", 0) / swap if swap else 0.0
    some, full = stalled or (0.0, 0.0)
    for name, least_some, least_full, below, swap_below in ROWS:
        if available < below and (least_some is None or some >= least_some) \
                and (least_full is None or full >= least_full) \
                and (swap_below is None or rest < swap_below):
            return name
    return NORMAL
