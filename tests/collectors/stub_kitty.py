# SPDX-License-Identifier: Apache-2.0
"""Answers on a socket as a kitty does that lets itself be controlled. Arguments: what to answer, the name of
the socket, a folder. What it is asked is written down there. A "guest" says the name, but has another."""
import json
import os
import socket
import subprocess
import sys
import time

mode, name, folder = sys.argv[1:]
with open("/proc/self/comm", "w", encoding="ascii") as own:
    own.write("kitty")
server = socket.socket(socket.AF_UNIX)
server.bind(("\0" + name[1:] if name[0] == "@" else name) + "2" * (mode == "guest"))
server.listen(8)
shell = subprocess.Popen(["claude", "300"], executable="/bin/sleep", cwd=folder,
                         env={**os.environ, "KITTY_LISTEN_ON": "unix:" + name})
while not open(f"/proc/{shell.pid}/cmdline", "rb").read():
    pass  # the kernel says that it has started before it can tell its command line
TREE = [{"id": 1, "platform_window_id": 99, "tabs": [{"id": 1, "windows": [
    {"id": 7, "title": "it's\n'; #(touch x)", "pid": shell.pid, "cwd": "/", "is_focused": True},
    {"id": 8, "title": "other", "pid": 0}]}]}]
ODD = [3, {"tabs": 4}, {"tabs": [None, {"windows": {}}, {"windows": [{"id": "7"}, {"id": -1}, [], {
    "id": 5, "title": 6, "pid": "x"}]}], "platform_window_id": []}]
ANSWERS = {
    "real": {"ok": True, "data": json.dumps(TREE)}, "odd": {"ok": True, "data": json.dumps(ODD)},
    "refuse": {"ok": False, "error": "Remote control is\ndisabled"}, "list": [1],
    "shape": {"ok": True, "data": 5}, "text": {"ok": True, "data": "{"}, "wrong": {"ok": 1}}
print("ready", flush=True)
while True:
    link, _ = server.accept()
    with link:
        heard = b""
        while not heard.endswith(b"\x1b\\"):
            part = link.recv(65536)
            if not part:
                break
            heard += part
        if not heard:
            continue
        question = json.loads(heard[len(b"\x1bP@kitty-cmd"):-2])
        with open(folder + "/asked", "a", encoding="ascii") as log:
            log.write(json.dumps([question["cmd"], question["payload"]]) + "\n")
        if mode == "hang":
            time.sleep(300)
        answer = {"ok": True} if question["cmd"] == "focus-window" else ANSWERS.get(mode)
        text = json.dumps(answer).encode() if answer else b"\xff" * 100
        link.sendall(b"\x1bP@kitty-cmd" + text + b"\x1b\\")
