# SPDX-License-Identifier: Apache-2.0
"""The collector's own samples, and where they lead."""
from __future__ import annotations

import os

from ostrel_lib import history_file

KEPT = 240
"""Samples that a snapshot carries, the latest."""

SPAN = 7200
"""Seconds back that a trend looks; what is older says nothing about now."""

FEWEST = 5
SHORTEST = 60
"""Samples, and seconds between the first and the last of them, that a trend needs."""

END = 3
"""Samples at either end whose middle one stands for the end, since a single one may be a moment's peak."""

FIGURES = {
    "swap": ("swap", 5, "{:+d} points of its size"),
    "mcp": ("mcp servers", 3, "{:+d}"),
    "load": ("load", 40, "{:+d} points of the cores"),
}
"""By figure: its name, the change that counts as one, and how that is told. Swap and load are in percent. The
first that changes gives the direction."""


def record(home: str, sample: dict[str, object]) -> tuple[list[dict[str, object]], str]:
    """Saves one sample and gives the latest ones, the oldest first, with the state of the history:
    "recorded", "stale" when older samples can be read and this one couldn't be saved, "unavailable" else."""
    if not os.path.isabs(home) or not os.path.isdir(home):
        return [], "unavailable"
    fault = history_file.append(home, sample, wait=0.2)
    samples = history_file.samples(home, KEPT)
    if not fault and samples:
        return samples, "recorded"
    return samples, "stale" if samples else "unavailable"


def trend(samples: list[dict[str, object]], now: int) -> dict[str, object]:
    """The change over the samples of the last two hours, `now` being a time in seconds as in their `t`.
    Samples that don't tell their time in this way, or one that hasn't come yet, don't count."""
    recent = [sample for sample in samples if type(sample.get("t")) is int and 0 <= now - sample["t"] <= SPAN]
    answer: dict[str, object] = {
        "samples": len(recent), "summary": "history warming up", "direction": "flat", "swap_delta": 0,
        "load_delta": 0, "mcp_delta": 0,
    }
    if len(recent) < FEWEST or recent[-1]["t"] - recent[0]["t"] < SHORTEST:
        return answer
    span = duration(recent[-1]["t"] - recent[0]["t"])
    changes = []
    for figure, (name, least, form) in FIGURES.items():
        delta = change([sample[figure] for sample in recent])
        answer[figure + "_delta"] = delta
        if abs(delta) >= least:
            changes.append(name + " " + form.format(delta))
            if answer["direction"] == "flat":
                answer["direction"] = "up" if delta > 0 else "down"
    answer["summary"] = (", ".join(changes) if changes else "steady") + " over " + span
    return answer


def change(values: list[float]) -> int:
    """From the first values to the last ones."""
    return int(middle(values[-END:]) - middle(values[:END]))


def middle(values: list[float]) -> float:
    """The one in the middle by size."""
    return sorted(values)[len(values) // 2]


def duration(seconds: int) -> str:
    """A span in words."""
    if seconds < 5400:
        return f"{(seconds + 30) // 60} min"
    return f"{seconds / 3600:.1f} h"
