#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Prints what a screen reader finds in one process: a JSON array of [role, name, checked], in reading order.

It runs as a process of its own on the desktop, since the library binds to one accessibility bus for good.
"""
import json
import sys

import pyatspi


def main(arguments: list[str]) -> int:
    """0 with the array; 1 when the process shows nothing to screen readers."""
    pid = int(arguments[0])
    applications = pyatspi.Registry.getDesktop(0)
    application = next((app for app in applications if app and app.get_process_id() == pid), None)
    if application is None:
        return 1
    print(json.dumps(list(walk(application))))
    return 0


def walk(node):
    """The node and all below it that are showing."""
    states = node.getState()
    if node.getRole() != pyatspi.ROLE_APPLICATION and not states.contains(pyatspi.STATE_SHOWING):
        return
    yield node.getRoleName(), node.name, states.contains(pyatspi.STATE_CHECKED)
    for child in node:
        if child is not None:
            yield from walk(child)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
