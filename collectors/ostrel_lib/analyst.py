# SPDX-License-Identifier: Apache-2.0
"""The analyst: says what is wrong in a snapshot, and nothing when nothing is. It reads the snapshot it is
given and never the machine, and proposes nothing but looking.

Each rule is a function from the facts to a finding or None. A finding names the figures of the snapshot that
it rests on, and how much resident memory it is about.
"""
from __future__ import annotations

from ostrel_lib.facts import Facts
from ostrel_lib.files import read_within
from ostrel_lib.finding import (
    CRITICAL, LEVELS, WARNING, Finding, held, load_figures, mem, ram_figures, several, swap_figures,
)
from ostrel_lib.memory_rules import growing_trend, memory_pressure, swap_residue
from ostrel_lib.process_rules import (
    browser_helpers, duplicate_servers, load_pressure, orphan_servers, runaway_process,
)

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

MOST_BYTES = 16777216
"""Input that is read: several times the largest snapshot that a machine gives."""

MOST_CONTAINERS = 400000
MOST_VALUES = 800000
"""Objects and arrays, and commas, in the input; a reader's memory goes into them."""

WORDS = (("critical", "critical"), ("warning", "warnings"), ("note", "notes"))
"""What the summary calls one and several findings of each level."""

RULES: tuple[Callable[[Facts], Finding | None], ...] = (
    memory_pressure, load_pressure, growing_trend, runaway_process, browser_helpers, duplicate_servers,
    orphan_servers, swap_residue,
)


def collector_verdict(facts: Facts) -> Finding | None:
    """What the collector itself warned of. It looks at more than the rules, such as how long programs waited
    for memory, so it has the word where no rule speaks as gravely."""
    if facts.verdict not in (CRITICAL, WARNING) or not facts.headline:
        return None
    families = facts.families(lambda family: family.mb)
    evidence = [ram_figures(facts), swap_figures(facts), load_figures(facts), *map(held, families[:3])]
    mb = families[0].mb if families else 0
    return Finding(
        facts.verdict, facts.headline, facts.cause or "The collector gave no cause.", evidence, mb=mb,
        share=facts.share(mb), label=families[0].label if families else "the machine", target="verdict",
        reason=families[0].advice if families else "See the collector's verdict.",
        risk=families[0].risk if families else "none")


def findings(snapshot: dict[str, object]) -> list[Finding]:
    """What the rules find: the gravest first, at one level what concerns more of the machine."""
    facts = Facts(snapshot)
    found = [finding for finding in (rule(facts) for rule in RULES) if finding]
    verdict = collector_verdict(facts)
    if verdict and all(LEVELS.index(verdict.level) < LEVELS.index(finding.level) for finding in found):
        found.append(verdict)
    return sorted(found, key=lambda finding: (LEVELS.index(finding.level), -finding.share))


def analysis(snapshot: dict[str, object]) -> dict[str, object]:
    """The answer that the panel reads: a summary, and for each finding a text and a thing to look at."""
    found = findings(snapshot)
    counts = [sum(finding.level == level for finding in found) for level in LEVELS]
    summary = ", ".join(several(count, *words) for count, words in zip(counts, WORDS) if count)
    return answer(summary or "nothing stands out", [text_of(finding) for finding in found], [
        {
            "label": finding.label,
            "kind": "inspect",
            "target": finding.target,
            "est_mb": finding.mb,
            "reason": finding.reason,
            "risk": finding.risk,
        }
        for finding in found
    ])


def text_of(finding: Finding) -> dict[str, object]:
    """A finding as it is read."""
    return {
        "level": finding.level,
        "title": finding.title,
        "body": f"{finding.body}\nevidence: {' · '.join(finding.evidence)}\n"
                f"observed footprint: {mem(finding.mb)}",
    }


def answer(
    summary: str, texts: list[dict[str, object]], actions: list[dict[str, object]]
) -> dict[str, object]:
    """The object that is printed."""
    return {"source": "local analyst", "summary": summary, "findings": texts, "actions": actions}


def analyze_input(descriptor: int) -> dict[str, object]:
    """The analysis of the snapshot that a descriptor gives; for one that can't be read, an answer that says
    why."""
    from ostrel_lib.jsontext import parse

    data = read_within(descriptor, MOST_BYTES)
    if data is None:
        return unreadable(f"it is larger than {MOST_BYTES >> 20} MiB")
    if data.count(b"{") + data.count(b"[") > MOST_CONTAINERS or data.count(b",") > MOST_VALUES:
        return unreadable("it holds more values than a snapshot does")
    try:
        snapshot = parse(data.decode("utf-8"))
    except ValueError as fault:
        return unreadable("it isn't UTF-8" if isinstance(fault, UnicodeError) else "it isn't JSON")
    if type(snapshot) is not dict:
        return unreadable("it isn't a JSON object")
    return analysis(snapshot)


def unreadable(why: str) -> dict[str, object]:
    """The answer for an input that is no snapshot."""
    title = "the snapshot can't be read"
    return answer(title, [{"level": WARNING, "title": title, "body": f"Nothing was judged: {why}."}], [])
