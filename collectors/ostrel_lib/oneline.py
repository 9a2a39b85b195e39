# SPDX-License-Identifier: Apache-2.0
"""Texts of other programs, made fit for one line."""
from __future__ import annotations

LONGEST_TEXT = 300


def clean(text: str, limit: int = LONGEST_TEXT) -> str:
    """A text for one line: whatever doesn't print becomes a blank, runs of blanks become one."""
    if len(text) > 4 * limit:
        text = text[:4 * limit]
    if not text.isprintable():
        text = "".join([letter if letter.isprintable() else " " for letter in text])
    if "  " in text or text[:1] == " " or text[-1:] == " ":
        text = " ".join(text.split())
    return text if len(text) <= limit else text[:limit - 1] + "…"
