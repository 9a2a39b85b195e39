# SPDX-License-Identifier: Apache-2.0
"""The whole inventory: six lanes, the counts, the alerts and the quotas."""
from __future__ import annotations

from ostrel_lib.automations import cache, registry
from ostrel_lib.automations.agents import codex_jobs, orca_jobs
from ostrel_lib.automations.here import machine_jobs
from ostrel_lib.automations.quota import quotas
from ostrel_lib.automations.rows import LANE_KEYS, Found, lane_record
from ostrel_lib.automations.server import server_timers
from ostrel_lib.jsontext import dump
from ostrel_lib.oneline import clean
from ostrel_lib.places import Places, iso

MOST_ALERTS = 40
MOST_ROWS = 40000


def collect(places: Places, seconds: float) -> bytes:
    """Reads every lane within about `seconds`, keeps the result for later answers, and gives its JSON
    text."""
    document = inventory(places, seconds)
    text = dump(document).encode("ascii")
    problem = cache.store(places.cache, text, places.clock())
    if problem:
        document["alerts"].append("the inventory can't be kept: " + problem)  # type: ignore[attr-defined]
        text = dump(document).encode("ascii")
    return text


def inventory(places: Places, seconds: float) -> dict[str, object]:
    """The inventory as it is printed, but for the time of printing."""
    declared = registry.load(places)
    lanes: dict[str, Found] = {
        "orca": orca_jobs(places),
        "codex": codex_jobs(places),
        "launchd": machine_jobs(places, seconds * 0.5),
        "systemd": server_timers(places, seconds * 0.4),
        "registry": registry.declared(declared, "registry"),
        "cloud": registry.declared(declared, "cloud"),
    }
    rows = [row for key in LANE_KEYS for row in lanes[key].rows][:MOST_ROWS]
    alerts = [alert for key in LANE_KEYS for alert in lanes[key].alerts]
    alerts += registry.annotate(declared, rows)
    return {
        "ok": True,
        "error": "",
        "generated_at": iso(places.clock()),
        "counts": {"total": len(rows), "active": sum(row["active"] is True for row in rows)},
        "quotas": quotas(places, any("min_quota_pct" in entry for entry in declared.entries)),
        "alerts": [clean(alert) for alert in alerts[:MOST_ALERTS]],
        "lanes": [lane_record(key, lanes[key]) for key in LANE_KEYS],
        "automations": rows,
    }
