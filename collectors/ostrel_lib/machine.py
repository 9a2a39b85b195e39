# SPDX-License-Identifier: Apache-2.0
"""Load, disk, battery and network counters."""
from __future__ import annotations

import os

from ostrel_lib.files import fraction, names, number, read

BYTES_PER_GIB = 1073741824
MOST_INTERFACES = 64
"""Links that are told; containers bring hundreds."""


def load(text: bytes, processors: int) -> dict[str, object]:
    """The snapshot's `load` from the text of /proc/loadavg. `pct` is the one-minute load in whole percent of
    the processors, cut as the panel cuts its own."""
    words = text.split()[:3]
    l1, l5, l15 = [fraction(word) for word in words + [b"0"] * (3 - len(words))]
    return {"l1": l1, "l5": l5, "l15": l15, "ncpu": processors, "pct": int(l1 / max(1, processors) * 100)}


def processor_count() -> int:
    """Processors that this user's programs may run on, at least 1."""
    try:
        return max(1, len(os.sched_getaffinity(0)))
    except OSError:
        return max(1, os.cpu_count() or 1)


def disk(home: str) -> dict[str, object] | None:
    """Size and free space, GiB, of the file system that holds the home. The free space is what its user may
    take. Nothing when it can't be told."""
    try:
        system = os.statvfs(home)
    except OSError:
        return None
    return {
        "free_gb": round(system.f_bavail * system.f_frsize / BYTES_PER_GIB, 2),
        "total_gb": round(system.f_blocks * system.f_frsize / BYTES_PER_GIB, 2),
    }


def battery(sys_root: str) -> dict[str, object] | None:
    """Charge and state of the machine's own batteries, those of mice and headsets left out. Several count by
    their capacity where all tell it. Nothing without one."""
    base = sys_root + "/class/power_supply/"
    charges: list[tuple[int, int]] = []
    states: list[str] = []
    outlets: list[bool] = []
    for supply in names(base):
        folder = base + supply + "/"
        kind = read(folder + "type", 64).strip()
        if kind in (b"Mains", b"USB"):
            outlets.append(read(folder + "online", 64).strip() == b"1")
        capacity = read(folder + "capacity", 64).strip()
        if kind != b"Battery" or read(folder + "scope", 64).strip() == b"Device" or not capacity.isdigit():
            continue
        charges.append((min(100, number(capacity)), number(read(folder + "energy_full", 64).strip())))
        states.append(read(folder + "status", 64).strip().decode("utf-8", "replace").lower())
    if not charges:
        return None
    weighted = all(weight for _, weight in charges)
    total = sum(weight if weighted else 1 for _, weight in charges)
    percent = sum(charge * (weight if weighted else 1) for charge, weight in charges) / total
    plugged = any(outlets) if outlets else "discharging" not in states
    return {
        "percent": int(percent + 0.5),
        "power": "AC power" if plugged else "battery power",
        "detail": ", ".join(dict.fromkeys(state for state in states if state)),
    }


def network(text: bytes) -> list[dict[str, object]]:
    """Bytes received and sent since each interface came up, from the text of /proc/net/dev. The busiest
    first, the loopback last; no more than matter."""
    rows = []
    for line in text.split(b"\n")[2:]:
        name, colon, rest = line.rpartition(b":")
        counters = rest.split()
        if colon and len(counters) > 8:
            rows.append({
                "interface": name.strip().decode("utf-8", "replace"),
                "received": counter(counters[0]),
                "sent": counter(counters[8]),
            })
    rows.sort(key=lambda row: (
        row["interface"] == "lo", -(row["received"] + row["sent"]), row["interface"]))
    return rows[:MOST_INTERFACES - 1] + rows[MOST_INTERFACES - 1:][-1:]


def counter(field: bytes) -> int:
    """A byte counter of up to 63 bits; 0 for anything else."""
    return min(int(field), 2**63 - 1) if field.isdigit() and len(field) <= 20 else 0
