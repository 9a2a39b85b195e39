# SPDX-License-Identifier: Apache-2.0
"""The request that the bridge is given, taken key by key."""
from __future__ import annotations

from ostrel_lib.jsontext import parse
from ostrel_lib.remote.caps import PROFILES
from ostrel_lib.ssh import valid_alias

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Callable

MOST_BYTES = 4 << 20
MOST_TASK = 256 << 10
MOST_PATH = 4096
"""Bytes of UTF-8."""
SECONDS = range(1, 301)
KIND = "codex_continuation"
JOB = "ostrel-"
JOB_LETTERS = frozenset("0123456789abcdefghijklmnopqrstuvwxyz")
LONGEST_JOB = 40

RULES: tuple[tuple[str, Callable[[object], bool], str], ...] = (
    ("kind", lambda value: value == KIND and type(value) is str, "This kind of task isn't known."),
    ("profile", lambda value: type(value) is str and value in PROFILES, "This profile of caps isn't known."),
    ("apply", lambda value: type(value) is bool, "The request doesn't say whether to start the task."),
    ("timeoutSeconds", lambda value: type(value) is int and value in SECONDS,
     f"The time limit isn't between {SECONDS[0]} and {SECONDS[-1]} seconds."),
    ("jobId", lambda value: type(value) is str and len(JOB) < len(value) <= LONGEST_JOB
     and value.startswith(JOB) and JOB_LETTERS.issuperset(value[len(JOB):]),
     "The task's number isn't one of ours."),
    ("repoPath", lambda value: fits(value, MOST_PATH),
     f"Name the repository's folder on the server, in at most {MOST_PATH} bytes."),
    ("task", lambda value: fits(value, MOST_TASK) and str(value).strip() != "",
     f"Write what the task is, in at most {MOST_TASK >> 10} KiB."),
)
"""What each key of a task must be, and what is said when it isn't."""


class Request:
    """A request that may be carried out. `command` is "health" or "execute"; `payload` holds the keys that
    its command needs, each as it must be. `identity` comes back in the answer, if it is short."""

    __slots__ = ("identity", "command", "payload")

    def __init__(self, identity: str, command: str, payload: dict[str, object]) -> None:
        self.identity = identity
        self.command = command
        self.payload = payload

    @property
    def alias(self) -> str:
        """The host."""
        return str(self.payload["sshAlias"])


def taken(data: bytes | None) -> tuple[Request, str]:
    """The request, and in a sentence why it can't be carried out."""
    try:
        value = parse(data.decode("utf-8")) if data is not None else None
    except ValueError:
        value = None
    if type(value) is not dict:
        return Request("", "", {}), "The request isn't a JSON object."
    identity = value.get("id")
    payload = value.get("payload")
    request = Request(
        identity if fits(identity, 100) else "", str(value.get("command")),
        payload if type(payload) is dict else {})
    if request.command not in ("health", "execute"):
        return request, "This command isn't known."
    if not request.payload.get("sshAlias"):
        return request, "Name the server by its SSH alias."
    if not valid_alias(request.payload["sshAlias"]):
        return request, ("An SSH alias has letters, digits, dots, dashes and underscores, a user and @ in "
                         "front or not, and begins with a letter or digit.")
    for key, fitting, otherwise in RULES if request.command == "execute" else ():
        if not fitting(request.payload.get(key)):
            return request, otherwise
    return request, ""


def fits(value: object, most: int) -> bool:
    """Whether a value is text that can be handed on as it is: not empty, no NUL, proper Unicode."""
    if type(value) is not str or not value or "\0" in value:
        return False
    try:
        return len(value.encode("utf-8")) <= most
    except UnicodeEncodeError:
        return False
