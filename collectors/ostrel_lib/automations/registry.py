# SPDX-License-Identifier: Apache-2.0
"""The user's own list of jobs: those that no scheduler here can show, and words on the others.

`docs/automations.md` has the format. An entry that doesn't keep to it is left out and named, and the others
count.
"""
from __future__ import annotations

import os

from ostrel_lib.automations.rows import LANE_KEYS, Found, automation, text_of, usable_id
from ostrel_lib.automations.smallfile import read_json
from ostrel_lib.oneline import clean
from ostrel_lib.places import REGISTRY_NAME, Places

VERSION = 1
MOST_ENTRIES = 10000
MOST_NAMED = 5
"""Faulty entries that are named one by one."""

TEXTS = ("title", "schedule", "state", "executor", "host", "owner", "family", "tag", "location", "migration",
         "last_run", "last_result", "next_run")
FIGURES = ("panel", "dot", "bar", "stack", "ring")
KEYS = frozenset(("lane", "id", "active", "blocked", "min_quota_pct", *TEXTS))
OWN_LANES = ("registry", "cloud")


class Registry:
    """The entries that can be used, why there are none at all, and what is wrong with single ones."""

    __slots__ = ("entries", "note", "broken", "faults")

    def __init__(self, note: str = "", broken: bool = False) -> None:
        self.entries: list[dict[str, object]] = []
        self.note = note
        self.broken = broken
        self.faults: list[str] = []


def load(places: Places) -> Registry:
    """The registry as it stands; `broken` when there is a file that can't be taken."""
    if not os.path.lexists(places.registry):
        return Registry(f"{REGISTRY_NAME} isn't there")
    document, problem = read_json(places.registry)
    if not problem:
        problem = fault_of_document(document)
    if problem:
        return Registry(f"{REGISTRY_NAME}: {problem}", broken=True)
    registry = Registry()
    seen: set[tuple[str, str]] = set()
    for place, entry in enumerate(document["automations"], 1):  # type: ignore[index, call-overload]
        problem = fault_of_entry(entry)
        if not problem and (entry["lane"], entry["id"]) in seen:
            problem = "its id stands in the lane already"
        if problem:
            registry.faults.append(f"entry {place}: {problem}")
        else:
            seen.add((entry["lane"], entry["id"]))
            registry.entries.append(entry)
    return registry


def fault_of_document(document: object) -> str:
    """What is wrong with the whole; "" when nothing is."""
    if type(document) is not dict:
        return "it isn't an object"
    if document.get("version") != VERSION or type(document.get("version")) is not int:
        return f"its version isn't {VERSION}"
    entries = document.get("automations")
    if type(entries) is not list:
        return "it has no list of automations"
    return f"it has more than {MOST_ENTRIES} entries" if len(entries) > MOST_ENTRIES else ""


def fault_of_entry(entry: object) -> str:
    """What is wrong with one entry; "" when nothing is."""
    if type(entry) is not dict:
        return "it isn't an object"
    if entry.get("lane") not in LANE_KEYS:
        return "its lane is none of " + ", ".join(LANE_KEYS)
    if not usable_id(entry.get("id")):
        return "its id isn't a text of 1 to 400 characters"
    for key, value in entry.items():
        if key not in KEYS:
            return f"it has the unknown key {ascii(clean(key, 40))}"
        if key in TEXTS and (type(value) is not str or len(value) > 1000):
            return f"its {key} isn't a text of at most 1000 characters"
        if key in ("active", "blocked") and type(value) is not bool:
            return f"its {key} is neither true nor false"
    if entry.get("family", "dot") not in FIGURES:
        return "its family is none of " + ", ".join(FIGURES)
    quota = entry.get("min_quota_pct", 0)
    if type(quota) not in (int, float) or not 0 <= quota <= 100:
        return "its min_quota_pct isn't a number from 0 to 100"
    return ""


def declared(registry: Registry, lane: str) -> Found:
    """The rows of one of the two lanes that the registry itself fills. Nothing of them was observed."""
    found = Found(not registry.broken and not registry.note, registry.note)
    for entry in registry.entries:
        if entry["lane"] == lane:
            found.rows.append(declared_row(lane, entry))
    if registry.broken and lane == "registry":
        found.alerts.append("registry: " + registry.note)
    if lane == "registry":
        found.alerts += ["registry: " + fault for fault in registry.faults[:MOST_NAMED]]
        if len(registry.faults) > MOST_NAMED:
            found.alerts.append(f"registry: {len(registry.faults) - MOST_NAMED} more entries are left out")
    return found


def declared_row(lane: str, entry: dict[str, object]) -> dict[str, object]:
    """One entry as a row."""
    fields = {key: entry[key] for key in TEXTS if key in entry and key != "title"}
    fields.setdefault("host", "server" if lane == "registry" else "cloud")
    fields.setdefault("state", "unverified")
    fields.setdefault("last_result", "unobserved")
    return automation(
        lane, lane, str(entry["id"]), clean(text_of(entry.get("title")) or str(entry["id"])),
        **{"owner": "you", "tag": lane, **fields}, registry=REGISTRY_NAME, active=entry.get("active") is True,
        observation="declared · unverified", registry_state=said(entry),
    )


def said(entry: dict[str, object]) -> str:
    """What the registry says of a job in one line."""
    words = ["blocked" if entry.get("blocked") is True else text_of(entry.get("state")) or "listed"]
    if "min_quota_pct" in entry:
        words.append(f"needs {entry['min_quota_pct']}% of the quota")
    return " · ".join(words)


def annotate(registry: Registry, rows: list[dict[str, object]]) -> list[str]:
    """Writes what the user declared of jobs that were found elsewhere into their rows. Returns what it names
    that isn't there, a lane at a time."""
    by_key = {(row["lane"], row["id"]): row for row in rows}
    lost: dict[str, int] = {}
    for entry in registry.entries:
        lane = str(entry["lane"])
        if lane in OWN_LANES:
            continue
        row = by_key.get((lane, entry["id"]))
        if row is None:
            lost[lane] = lost.get(lane, 0) + 1
            continue
        row["registry_state"] = clean(said(entry))
        for key in ("owner", "location", "migration", "family", "tag"):
            if key in entry:
                row[key] = clean(str(entry[key]))
        if entry.get("blocked") is True and not row["active"]:
            row["state"] = "blocked"
    return [f"registry: {count} named in lane {lane} can't be found there" for lane, count in lost.items()]


def entry_of(registry: Registry, lane: str, identity: str) -> dict[str, object]:
    """What the registry says of one job; empty when it says nothing."""
    for entry in registry.entries:
        if entry["lane"] == lane and entry["id"] == identity:
            return entry
    return {}
