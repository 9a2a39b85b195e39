# SPDX-License-Identifier: Apache-2.0
"""The caps of a task, by profile, and what each way of setting them makes of it."""
from __future__ import annotations

MIB = 1 << 20

PROFILES = {"eco": (50, 1024, 1536), "balanced": (100, 2048, 3072), "fast": (200, 4096, 6144)}
"""Percent of one core; MiB from which memory is taken back; MiB that are never exceeded."""

SYSTEMD, LIMITS = "systemd", "prlimit"
MANNERS = {SYSTEMD: "capped by systemd", LIMITS: "capped by prlimit and timeout"}
"""Who sets the caps, in the server's word and in ours."""


def words(profile: str, seconds: int) -> list[str]:
    """What the server needs for both ways: percent of a core, the two limits in MiB, then the processor
    seconds and the bytes that one process may take."""
    cpu, high, most = PROFILES[profile]
    return [str(cpu), str(high), str(most), str(cpu * seconds // 100), str(most * MIB)]


def effective(profile: str, seconds: int, manner: str) -> dict[str, object]:
    """The caps as they hold. Without systemd there is no throttle and no common count: a process has a stock
    of processor time that makes the same share on average, and each process its own limit of memory."""
    cpu, high, most = PROFILES[profile]
    told = {"cpu": f"{cpu}%", "memoryHigh": f"{high} MB", "memoryMax": f"{most} MB"}
    if manner == LIMITS:
        told = {"cpu": f"on average {cpu}%", "memoryHigh": "no", "memoryMax": f"{most} MB per process"}
    return {**told, "timeoutSeconds": seconds, "enforcedBy": MANNERS.get(manner, manner)}
