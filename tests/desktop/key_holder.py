#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Another program that has registered key combinations, for as long as it runs.

Each argument is KEY:MODIFIERS, numbers as the X display has them. It prints "held" when it has all of them.
"""
import ctypes
import signal
import sys

x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XDefaultRootWindow.restype = ctypes.c_ulong
x11.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
x11.XGrabKey.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_uint, ctypes.c_ulong] + [ctypes.c_int] * 3
x11.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
ASYNCHRONOUS = 1

display = x11.XOpenDisplay(None)
root = x11.XDefaultRootWindow(display)
for argument in sys.argv[1:]:
    key, modifiers = map(int, argument.split(":"))
    x11.XGrabKey(display, key, modifiers, root, 0, ASYNCHRONOUS, ASYNCHRONOUS)
x11.XSync(display, 0)  # a refusal ends the program here
print("held", flush=True)
signal.pause()
