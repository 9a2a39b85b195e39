# SPDX-License-Identifier: Apache-2.0
"""Receipts of what was done to a job, or refused: one line of JSON each, in the file of the local day."""
from __future__ import annotations

import os
import time

from ostrel_lib.jsontext import dump
from ostrel_lib.owned import add_line, make_folder, open_lines
from ostrel_lib.places import Places

KIND = "automation"


class Receipt:
    """The day's file, opened before anything is done: what can't leave a receipt isn't done. `descriptor`
    is -1 when it can't be opened, and `problem` says why."""

    __slots__ = ("path", "descriptor", "problem", "clock")

    def __init__(self, places: Places) -> None:
        folder = places.support + "/receipts"
        self.clock = places.clock
        self.path = folder + "/" + time.strftime("%Y-%m-%d", time.localtime(places.clock())) + ".jsonl"
        self.problem = ""
        self.descriptor = -1
        try:
            make_folder(folder)
            self.descriptor = open_lines(self.path)
        except OSError as problem:
            self.problem = problem.strerror or "it can't be opened"

    def write(self, fields: dict[str, object]) -> str:
        """Appends the line in one write. The path, or "" when it can't be written."""
        stamp = time.strftime("%Y-%m-%d %H:%M:%S", time.localtime(self.clock()))
        try:
            add_line(self.descriptor, dump({"ts": stamp, "kind": KIND, **fields}).encode("ascii"))
            return self.path
        except OSError:
            return ""

    def close(self) -> None:
        """Gives the file back."""
        if self.descriptor >= 0:
            os.close(self.descriptor)
