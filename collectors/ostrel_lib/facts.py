# SPDX-License-Identifier: Apache-2.0
"""A snapshot as the analyst sees it. What is missing, of another type or absurd reads as 0 or empty, which
the rules take for unknown."""
from __future__ import annotations

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable, Iterable

MIB_PER_GIB = 1024
LARGEST = 1e9
"""Figures beyond it, in whatever unit, are nonsense."""

LONGEST_NAME = 40
LONGEST_SENTENCE = 300
BUNDLES_NAMED = 3
HELPER_OPTION = " --type="

SERVERS = "MCP servers"
AGENT_GROUPS = ("claude", "codex", "agent")


class Row:
    """A listed process. `mb` is its resident memory in MiB, `cpu` its share in percent of one core."""

    __slots__ = ("pid", "name", "group", "command", "mb", "cpu")

    def __init__(self, row: dict[str, object], group: str) -> None:
        pid = row.get("pid")
        self.pid = str(pid) if type(pid) in (int, str) and len(str(pid)[:20]) < 20 else ""
        self.name = shown(text(row.get("name"))) or "?"
        self.group = group
        self.command = text(row.get("cmd"))
        self.mb = whole(row.get("rss"))
        self.cpu = number(row.get("cpu"))

    def family(self) -> str:
        """What it counts as when memory is summed up: the agents and servers together, else by name."""
        if self.group == "mcp":
            return SERVERS
        if self.group in AGENT_GROUPS:
            return self.name if self.group == "agent" else self.group
        return self.name


class Family:
    """Processes that belong together, with their sums, what ending them would put at risk, and what to do
    instead. `count` is 0 where it isn't known."""

    __slots__ = ("label", "count", "mb", "cpu", "risk", "advice")

    def __init__(self, label: str, count: int, mb: int, cpu: float) -> None:
        self.label = label
        self.count = count
        self.mb = mb
        self.cpu = cpu
        self.risk = "stateful"
        self.advice = f"See what {label} works on, and close what isn't needed of it."


class Facts:
    """The figures of one snapshot. Sizes are in MiB, shares in percent; the deltas may be negative."""

    def __init__(self, snapshot: dict[str, object]) -> None:
        ram, swap, load = (record(snapshot.get(key)) for key in ("ram", "swap", "load"))
        self.ram_total = int(number(ram.get("total")) * MIB_PER_GIB)
        self.ram_used = int(number(ram.get("used")) * MIB_PER_GIB)
        self.ram_pct = whole(ram.get("used_pct")) or percent(self.ram_used, self.ram_total)
        self.swap_total = whole(swap.get("total")) or int(number(swap.get("total_gb")) * MIB_PER_GIB)
        self.swap_used = whole(swap.get("used")) or int(number(swap.get("used_gb")) * MIB_PER_GIB)
        self.swap_pct = whole(swap.get("used_pct")) or percent(self.swap_used, self.swap_total)
        self.load_1 = number(load.get("l1"))
        self.load_5 = number(load.get("l5"))
        self.cores = whole(load.get("ncpu"))
        self.load_pct = whole(load.get("pct")) or percent(self.load_1, self.cores)

        fan = record(snapshot.get("fan"))
        self.fan = {key: whole(fan.get(key)) for key in (
            "mcp", "codex_mcp", "claude_mcp", "other_mcp", "codex_mcp_duplicates", "codex_mcp_duplicate_mb",
            "chromium")}
        self.mcp = max(self.fan["mcp"], self.fan["other_mcp"])
        bundles = record(fan.get("chromium_bundles"))
        largest = sorted(bundles, key=lambda name: (-whole(bundles[name]), name))[:BUNDLES_NAMED]
        self.bundles = [(shown(name), whole(bundles[name])) for name in largest]
        self.helper_count = self.fan["chromium"] or sum(map(whole, bundles.values()))
        sessions = snapshot.get("sessions")
        self.sessions_known = type(sessions) is dict
        self.claude = whole(record(sessions).get("claude"))
        self.codex = whole(record(sessions).get("codex"))
        self.sessions = self.claude + self.codex

        trend = record(snapshot.get("trend"))
        self.samples = whole(trend.get("samples"))
        self.deltas = {key: whole(trend.get(key + "_delta"), signed=True) for key in ("swap", "load", "mcp")}
        self.history = records(snapshot.get("history"))
        self.rows = listed(snapshot)
        self.offenders = [offender for offender in map(heavy_program, records(snapshot.get("offenders")))
                          if offender.label]
        verdict = record(snapshot.get("verdict"))
        self.verdict = text(verdict.get("level"))
        self.headline, self.cause = (
            shown(text(verdict.get(key)), LONGEST_SENTENCE) for key in ("headline", "cause"))

    def families(self, order: Callable[[Family], float]) -> list[Family]:
        """The listed processes by family, the greatest by `order` first. A program that the collector told as
        an offender has the figures from there, which hold its processes that aren't listed too."""
        by_label: dict[str, list[Row]] = {}
        for row in self.rows:
            by_label.setdefault(row.family(), []).append(row)
        families = {label: Family(label, len(rows), memory(rows), sum(row.cpu for row in rows))
                    for label, rows in by_label.items()}
        for offender in self.offenders:
            family = families.get(offender.label)
            if family is None or offender.mb >= family.mb:
                offender.count = family.count if family and offender.mb == family.mb else 0
                families[offender.label] = offender
        return sorted((family for family in families.values() if order(family) > 0),
                      key=lambda family: (-order(family), family.label))

    def servers(self) -> list[Row]:
        """The listed MCP servers."""
        return [row for row in self.rows if row.group == "mcp"]

    def helpers(self) -> list[Row]:
        """The listed helper processes of browsers."""
        return [row for row in self.rows if HELPER_OPTION in row.command]

    def share(self, mebibytes: float) -> float:
        """Memory in percent of the machine's; 0 when that is unknown."""
        return mebibytes / self.ram_total * 100 if self.ram_total else 0.0


def listed(snapshot: dict[str, object]) -> list[Row]:
    """The top processes, and the agent sessions that aren't among them."""
    rows = [Row(row, text(row.get("grp"))) for row in records(snapshot.get("procs"))]
    known = {row.pid for row in rows}
    sessions = [Row(row, "agent") for row in records(snapshot.get("live_sessions"))]
    return rows + [row for row in sessions if row.pid not in known]


def heavy_program(offender: dict[str, object]) -> Family:
    """A program that the collector thinks is too heavy."""
    label = shown(text(offender.get("label")))
    family = Family(label, 0, whole(offender.get("rss")), number(offender.get("cpu")))
    family.risk = shown(text(offender.get("risk"))) or family.risk
    advice = shown(text(offender.get("action")), LONGEST_SENTENCE)
    if advice:
        family.advice = f"{label}: {advice}."
    return family


def memory(rows: Iterable[Row]) -> int:
    """The resident memory of several processes, MiB. Shared pages count in each."""
    return sum(row.mb for row in rows)


def cores_of(rows: Iterable[Row]) -> float:
    """The cores that several processes keep busy."""
    return sum(row.cpu for row in rows) / 100


def record(value: object) -> dict[str, object]:
    """A JSON object; empty for anything else."""
    return value if type(value) is dict else {}


def records(value: object) -> list[dict[str, object]]:
    """The objects in a JSON array, anything else left out."""
    return [part for part in value if type(part) is dict] if type(value) is list else []


def text(value: object) -> str:
    """A JSON text; empty for anything else."""
    return value if type(value) is str else ""


def number(value: object) -> float:
    """A figure that can't be negative; 0 for anything else and for nonsense."""
    return float(value) if type(value) in (int, float) and 0 <= value <= LARGEST else 0.0


def whole(value: object, signed: bool = False) -> int:
    """A number without a fractional part; 0 for anything else, for nonsense, and for a negative one unless
    `signed`."""
    if type(value) not in (int, float) or not (-LARGEST if signed else 0) <= value <= LARGEST:
        return 0
    return int(value) if value == int(value) else 0


def percent(part: float, of: float) -> int:
    """A share in whole percent, halves up; 0 of nothing."""
    return int(part / of * 100 + 0.5) if of > 0 else 0


def shown(name: str, longest: int = LONGEST_NAME) -> str:
    """A name fit for one line of text: what can't be printed becomes "?", and the rest is cut."""
    name = "".join(sign if sign.isprintable() else "?" for sign in name[:longest + 1])
    return name if len(name) <= longest else name[:longest - 1] + "…"
