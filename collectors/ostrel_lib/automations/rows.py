# SPDX-License-Identifier: Apache-2.0
"""The inventory's records as they are printed: jobs, lanes, and what text may stand in them."""
from __future__ import annotations

from ostrel_lib.oneline import clean

LONGEST_ID = 400
UNDECLARED = "not declared"

LANES = (
    ("orca", "orca", "Orca", "~/.config/orca", "panel"),
    ("codex", "codex", "Codex app", "~/.codex/automations", "dot"),
    ("launchd", "timers + cron", "this machine", "systemd, crontabs, anacron", "bar"),
    ("systemd", "server timers", "the server", "systemd over ssh", "stack"),
    ("registry", "registry", "you", "~/.config/zol-mini-apps/ostrel-automations.json", "stack"),
    ("cloud", "cloud", "you", "~/.config/zol-mini-apps/ostrel-automations.json", "ring"),
)
"""Key, title, owner, registry and figure of each lane, in the order in which they are listed."""

LANE_KEYS = tuple(lane[0] for lane in LANES)
FAMILIES = {lane[0]: lane[4] for lane in LANES}


class Found:
    """What one lane or one source gave: its rows, the reason why there is nothing to see, and the faults that
    the user should know of."""

    __slots__ = ("rows", "observed", "note", "alerts")

    def __init__(self, observed: bool = True, note: str = "") -> None:
        self.rows: list[dict[str, object]] = []
        self.observed = observed
        self.note = note
        self.alerts: list[str] = []


def automation(lane: str, lane_title: str, identity: str, title: str, **fields: object) -> dict[str, object]:
    """One job with every key of the format. Text is cleaned for one line, but for the id and the target,
    which come back as they are."""
    row: dict[str, object] = {
        "lane": lane, "lane_title": lane_title, "id": identity, "title": title or "?", "schedule": "",
        "state": "", "active": False, "executor": "", "host": "", "owner": "", "registry": "",
        "family": FAMILIES[lane], "tag": "", "can_run": False, "observation": "unobserved", "location": "",
        "migration": UNDECLARED, "registry_state": UNDECLARED, "toggles": False, "target": "",
        "last_run": "", "last_result": "", "next_run": "",
    }
    row.update(fields)
    for key, value in row.items():
        if type(value) is str and key not in ("id", "target"):
            row[key] = clean(value)
    return row


def lane_record(key: str, found: Found) -> dict[str, object]:
    """The lane itself as the inventory lists it."""
    _, title, owner, registry, _ = next(lane for lane in LANES if lane[0] == key)
    return {
        "key": key, "title": title, "owner": owner, "registry": registry, "count": len(found.rows),
        "observed": found.observed, "note": clean(found.note),
    }


def usable_id(text: object) -> bool:
    """Whether an id can travel to the panel and back on a command line unchanged."""
    if type(text) is not str or not 0 < len(text) <= LONGEST_ID or "\0" in text:
        return False
    try:
        text.encode("utf-8")
    except UnicodeEncodeError:
        return False
    return True


def text_of(value: object) -> str:
    """A text as it is, anything else as none."""
    return value if type(value) is str else ""
