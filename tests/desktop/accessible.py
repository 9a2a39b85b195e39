#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""What a screen reader finds and does in the process of the given number.

names PID        prints a JSON array of [name, selected] for all that is showing, in reading order
press PID NAME [WITHIN]
                 presses the button of that name, in the view of the other one; 1 when there is none
off PID NAME [WITHIN]
                 1 unless that button is there and can't be pressed
focus PID NAME   gives the keyboard to the text field of that name; 1 when there is none
typed PID NAME   prints what is in the text field of that name; 1 when there is none
presses PID NAME...
                 presses the buttons of these names one after the other, each once it is there and can be
                 pressed; 1 when one isn't within a while
menu PID NAME    opens the menu of the view of that name; 1 when there is none
listen PID       prints a name and 1 or 0 for each view that becomes the selected one, or ceases to be
follow PID       prints each new text of a view whose text changes
alerts PID       prints name and description of each message that comes on screen

It runs as a process of its own on the desktop, since the library binds to one accessibility bus for good.
"""
import json
import sys
import time

import pyatspi
from gi.repository import GLib

GENEROUS = 20.0  # seconds
ATTEMPTS = 10
"""Walks until two agree: one alone misses views when the program draws anew in the middle of it."""


def walk(node, below_root):
    """The node and all below it that are showing, in reading order."""
    if below_root and not node.getState().contains(pyatspi.STATE_SHOWING):
        return
    yield node
    for child in filter(None, node):
        yield from walk(child, True)


def views(pid):
    applications = filter(None, pyatspi.Registry.getDesktop(0))
    return [node for application in applications if application.get_process_id() == pid
            for node in walk(application, False)]


def names(pid):
    before, shown = None, shown_by(pid)
    for _ in range(ATTEMPTS):
        if shown is not None and shown == before:
            break
        before, shown = shown, shown_by(pid)
    print(json.dumps(shown))
    return 0 if shown is not None else 1


def shown_by(pid):
    """One walk over what shows; None when a view went away under it."""
    try:
        return [[node.name, node.getState().contains(pyatspi.STATE_SELECTED)] for node in views(pid)]
    except (GLib.GError, LookupError, RuntimeError):
        return None


def button(pid, name, within):
    """The first button of that name; in the view of the other one if there is one."""
    return next((node for node in views(pid) if node.name == name and (
        not within or node.parent.name == within) and node.getRole() == pyatspi.ROLE_PUSH_BUTTON), None)


def press(pid, name, within=""):
    found = button(pid, name, within)
    return 0 if found and found.queryAction().doAction(0) else 1


def off(pid, name, within=""):
    found = button(pid, name, within)
    return 0 if found and not found.getState().contains(pyatspi.STATE_SENSITIVE) else 1


def field(pid, name):
    """The text field of that name that can be typed in."""
    return next((node for node in views(pid) if node.name == name and node.getState().contains(
        pyatspi.STATE_EDITABLE) and node.getState().contains(pyatspi.STATE_SENSITIVE)), None)


def focus(pid, name):
    found = field(pid, name)
    return 0 if found and found.queryComponent().grabFocus() else 1


def typed(pid, name):
    found = field(pid, name)
    if not found:
        return 1
    text = found.queryText()
    print(json.dumps(text.getText(0, text.characterCount)))
    return 0


def presses(pid, *these):
    for name in these:
        end = time.monotonic() + GENEROUS
        while press(pid, name) != 0:
            if time.monotonic() > end:
                print(f"no button {name}")
                return 1
            time.sleep(0.03)
    return 0


def menu(pid, name):
    for node in views(pid):
        if node.name == name:
            action = node.queryAction()
            places = [at for at in range(action.nActions) if action.getName(at) == "ShowMenu"]
            return 0 if places and action.doAction(places[0]) else 1
    return 1


def events(pid, name, told):
    """Calls `told` for each such event of the process, for ever."""
    def received(event):
        if event.host_application and event.host_application.get_process_id() == pid:
            told(event)

    pyatspi.Registry.registerEventListener(received, name)
    print("listening", flush=True)
    pyatspi.Registry.start()
    return 0


def listen(pid):
    return events(pid, "object:state-changed:selected",
                  lambda event: print(event.source.name, event.detail1, flush=True))


def follow(pid):
    return events(pid, "object:property-change:accessible-name",
                  lambda event: print(event.source.name, flush=True))


def alerts(pid):
    def told(event):
        if event.detail1 and event.source.getRole() == pyatspi.ROLE_ALERT:
            print(f"{event.source.name} | {event.source.description}", flush=True)

    return events(pid, "object:state-changed:showing", told)


command, process, *rest = sys.argv[1:]
verbs = {"names": names, "press": press, "presses": presses, "off": off, "focus": focus, "typed": typed,
         "menu": menu, "listen": listen, "follow": follow, "alerts": alerts}
sys.exit(verbs[command](int(process), *rest))
