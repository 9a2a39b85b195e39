#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Prints what a screen reader finds in the process of the given number: a JSON array of [name, selected].

It runs as a process of its own on the desktop, since the library binds to one accessibility bus for good.
"""
import json
import sys

import pyatspi


def walk(node, below_root):
    """The node and all below it that are showing, in reading order."""
    states = node.getState()
    if below_root and not states.contains(pyatspi.STATE_SHOWING):
        return
    yield node.name, states.contains(pyatspi.STATE_SELECTED)
    for child in filter(None, node):
        yield from walk(child, True)


applications = filter(None, pyatspi.Registry.getDesktop(0))
found = [app for app in applications if app.get_process_id() == int(sys.argv[1])]
print(json.dumps([entry for application in found for entry in walk(application, False)]))
