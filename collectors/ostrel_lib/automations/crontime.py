# SPDX-License-Identifier: Apache-2.0
"""Cron's five fields: when a line fires next, and its rhythm in words."""
from __future__ import annotations

import time

FURTHEST = 8 * 366
"""Days. The 29th of February comes again within eight years."""

NICKNAMES = {
    "@yearly": "0 0 1 1 *", "@annually": "0 0 1 1 *", "@monthly": "0 0 1 * *", "@weekly": "0 0 * * 0",
    "@daily": "0 0 * * *", "@midnight": "0 0 * * *", "@hourly": "0 * * * *",
}
MONTHS = ("jan", "feb", "mar", "apr", "may", "jun", "jul", "aug", "sep", "oct", "nov", "dec")
DAYS = ("sun", "mon", "tue", "wed", "thu", "fri", "sat")
FIELDS = ((0, 59, ()), (0, 23, ()), (1, 31, ()), (1, 12, MONTHS), (0, 7, DAYS))
"""Smallest and largest value, and the names that stand for the values from the smallest on."""


class Rhythm:
    """When a line fires: the values of each field, and whether the day fields leave every day open."""

    __slots__ = ("minutes", "hours", "dates", "months", "weekdays", "any_date", "any_weekday")

    def __init__(self, values: list[set[int]], any_date: bool, any_weekday: bool) -> None:
        self.minutes, self.hours, self.dates, self.months, weekdays = values
        self.weekdays = {day % 7 for day in weekdays}
        self.any_date = any_date
        self.any_weekday = any_weekday

    def on(self, date: int, month: int, weekday: int) -> bool:
        """Whether it fires on a day, Sunday being 0. Of two restricted day fields either one is enough."""
        if month not in self.months:
            return False
        by_date, by_weekday = date in self.dates, weekday in self.weekdays
        return by_date and by_weekday if self.any_date or self.any_weekday else by_date or by_weekday


def rhythm(fields: str) -> Rhythm | None:
    """The rhythm of five fields or of a nickname such as "@daily"; nothing for anything else."""
    words = NICKNAMES.get(fields, fields).split()
    if len(words) != len(FIELDS) or not fields.isascii():
        return None
    values = [numbers(word.lower(), *bounds) for word, bounds in zip(words, FIELDS)]
    if not all(values):
        return None
    return Rhythm(values, words[2][0] == "*", words[4][0] == "*")


def by_chance(fields: str) -> bool:
    """Whether some cron draws the time at its start, as "0~59" asks for. Nobody else knows it then."""
    return "~" in fields and rhythm(fields.replace("~", "-")) is not None


def numbers(field: str, low: int, high: int, names: tuple[str, ...]) -> set[int]:
    """The values of one field; none when it can't be read."""
    found: set[int] = set()
    for part in field.split(","):
        values, slash, step = part.partition("/")
        first, dash, last = values.partition("-")
        if values == "*":
            begin, end = low, high
        else:
            begin = number(first, low, names)
            end = number(last, low, names) if dash else high if slash else begin
        every = int(step) if step.isdecimal() and len(step) < 4 else 0
        if not low <= begin <= end <= high or (slash and not every):
            return set()
        found.update(range(begin, end + 1, every or 1))
    return found


def number(word: str, low: int, names: tuple[str, ...]) -> int:
    """A value by its digits or its name; -1 for anything else."""
    if word.isdecimal() and len(word) < 3:
        return int(word)
    return names.index(word) + low if word in names else -1


def next_time(when: Rhythm, now: float) -> float:
    """The next time at which it fires, in the local zone; 0 when it never does."""
    start = time.localtime(now)
    for ahead in range(FURTHEST):
        # Noon keeps clear of the hours in which clocks are changed.
        noon = (start.tm_year, start.tm_mon, start.tm_mday + ahead, 12, 0, 0, 0, 0, -1)
        day = time.localtime(time.mktime(noon))
        if not when.on(day.tm_mday, day.tm_mon, (day.tm_wday + 1) % 7):
            continue
        for hour in sorted(when.hours):
            if ahead == 0 and hour < start.tm_hour:
                continue
            for minute in sorted(when.minutes):
                at = time.mktime((day.tm_year, day.tm_mon, day.tm_mday, hour, minute, 0, 0, 0, -1))
                if at > now:
                    return at
    return 0.0


def words(fields: str) -> str:
    """The rhythm in words as far as it is a simple one, else the fields themselves."""
    if fields == "@reboot":
        return "at each boot"
    plain = NICKNAMES.get(fields, fields)
    parts = plain.split()
    if len(parts) != 5 or rhythm(plain) is None:
        return fields
    minute, hour, date, month, weekday = parts
    if (hour, date, month, weekday) == ("*", "*", "*", "*"):
        if minute == "*":
            return "every minute"
        if minute.startswith("*/"):
            return f"every {minute[2:]} minutes"
        return f"hourly at minute {int(minute)}" if minute.isdecimal() else plain
    if not (minute.isdecimal() and hour.isdecimal()):
        return plain
    at = f"at {int(hour):02}:{int(minute):02}"
    if (date, month, weekday) == ("*", "*", "*"):
        return "daily " + at
    if (date, month) == ("*", "*") and weekday.isdecimal():
        return f"{DAYS[int(weekday) % 7].capitalize()} {at}"
    if (month, weekday) == ("*", "*") and date.isdecimal():
        return f"monthly on day {int(date)} {at}"
    return plain
