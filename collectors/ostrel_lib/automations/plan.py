# SPDX-License-Identifier: Apache-2.0
"""A checklist for moving a job to another scheduler, saved as a text of the user's own. It changes
nothing."""
from __future__ import annotations

import os
import time
from hashlib import blake2s

from ostrel_lib.automations import cache
from ostrel_lib.automations.act import Done
from ostrel_lib.automations.smallfile import parse_json, read_file
from ostrel_lib.oneline import clean
from ostrel_lib.places import Places

FACTS = (
    ("scheduler", "lane_title"), ("host", "host"), ("id", "id"), ("schedule", "schedule"), ("state", "state"),
    ("runs as", "executor"), ("owner", "owner"), ("defined in", "registry"), ("location", "location"),
    ("transfer", "migration"), ("registry state", "registry_state"), ("last run", "last_run"),
    ("last result", "last_result"), ("next run", "next_run"), ("observed by", "observation"),
)
STEPS = (
    "Say where the job is to run, and who answers for it there.",
    "List what it needs: programs, files, environment, credentials. Copy none of them yet.",
    "Set the job up there, switched off, with the schedule above.",
    "Run it there once by hand and read its journal.",
    "Disable it here, and see that its next run is gone.",
    "Enable it there, and wait for one run of its schedule.",
    "Write the new place into the registry.",
    "To go back: disable it there, enable it here.",
)
SLUG_LETTERS = frozenset("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_")


def save(places: Places, lane: str, identity: str) -> Done:
    """Writes the checklist of a job that the last inventory holds."""
    if lane == "registry":
        return Done("refused", "a job that only the registry names has nothing to be moved from")
    row = known(places, lane, identity)
    if row is None:
        return Done("refused", "the last inventory doesn't hold this job; refresh it")
    folder = places.support + "/plans"
    path = f"{folder}/{file_name(places, lane, identity)}"
    problem = cache.replace(path, text(places, row).encode("utf-8", "replace"))
    if problem:
        return Done("failed", f"the plan can't be saved: {problem}")
    if not read_file(path)[0]:
        return Done("failed", "the plan can't be read back")
    title = clean(str(row["title"]), 80)
    return Done("done", f"plan · {title} · saved in Ostrel/plans as {os.path.basename(path)}")


def known(places: Places, lane: str, identity: str) -> dict[str, object] | None:
    """The job's row in the last inventory."""
    document, _ = parse_json(bytes(cache.load(places.cache, places.clock())))
    rows = document.get("automations", []) if type(document) is dict else []
    return next((row for row in rows if row["lane"] == lane and row["id"] == identity), None)


def file_name(places: Places, lane: str, identity: str) -> str:
    """A name that tells the job and the second, and can't leave the folder. Ids that look alike without their
    odd letters differ in the digest."""
    slug = "".join(letter if letter in SLUG_LETTERS else "-" for letter in identity)[:60].strip(".-")
    digest = blake2s(identity.encode("utf-8"), digest_size=4).hexdigest()
    stamp = time.strftime("%Y-%m-%d-%H%M%S", time.localtime(places.clock()))
    return f"{stamp}-{lane}-{slug or 'job'}-{digest}.md"


def text(places: Places, row: dict[str, object]) -> str:
    """The checklist."""
    lines = [f"# Transfer of {clean(str(row['title']))}", ""]
    lines += [f"- {label}: {clean(str(row[key])) or '—'}" for label, key in FACTS]
    stamp = time.strftime("%Y-%m-%d %H:%M", time.localtime(places.clock()))
    lines += ["", f"Written {stamp} from the inventory. No scheduler was changed.", ""]
    lines += [f"{place}. [ ] {step}" for place, step in enumerate(STEPS, 1)]
    return "\n".join(lines) + "\n"
