# SPDX-License-Identifier: Apache-2.0
"""JSON output without the `json` package, whose import takes as long as reading two hundred processes, and
input with it."""
from __future__ import annotations

try:
    from _json import encode_basestring_ascii as quoted
except ImportError:  # another Python than the reference one
    from json.encoder import encode_basestring_ascii as quoted

LARGEST_FLOAT = 1.7976931348623157e308
LONGEST_INTEGER = 40
"""Digits that are read as a whole number."""


def dump(value: object) -> str:
    """One line of plain ASCII JSON. Takes what a snapshot is made of: dict with text keys, list, text,
    numbers, booleans and None.

    A number that JSON has no word for becomes 0, and text that isn't valid Unicode (a name that the system
    gave as undecodable bytes) gets replacement characters, so that every reader can take the whole.
    """
    kind = type(value)
    if kind is str:
        return quoted(well_formed(value))
    if kind is int:
        return str(value)
    if kind is float:
        return repr(value) if -LARGEST_FLOAT <= value <= LARGEST_FLOAT else "0.0"
    if kind is dict:
        return "{" + ", ".join([quoted(well_formed(key)) + ": " + dump(value[key]) for key in value]) + "}"
    if kind is list:
        return "[" + ", ".join([dump(element) for element in value]) + "]"
    if kind is bool:
        return "true" if value else "false"
    if value is None:
        return "null"
    raise TypeError(kind.__name__ + " has no place in a snapshot")


def well_formed(text: str) -> str:
    """The text without lone surrogates: undecodable bytes of a file name, read by Python as such, become
    replacement characters."""
    try:
        text.encode("utf-8")
    except UnicodeEncodeError:
        return text.encode("utf-8", "surrogatepass").decode("utf-8", "replace")
    return text


def parse(text: str) -> object:
    """The value of a JSON text. NaN and the infinities, which JSON doesn't have, are None. Raises ValueError,
    and nothing else, for what isn't JSON or is nested too deep."""
    from json import loads

    try:
        return loads(text, parse_int=whole_number, parse_constant=lambda _: None)
    except RecursionError as fault:
        raise ValueError("nested too deep") from fault


def whole_number(digits: str) -> int | float:
    """A whole number; one of absurd length as floating point, since making it whole is slow."""
    return int(digits) if len(digits) <= LONGEST_INTEGER else float(digits)
