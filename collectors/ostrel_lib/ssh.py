# SPDX-License-Identifier: Apache-2.0
"""How ssh is called, and which server it may be given."""
from __future__ import annotations

LONGEST_ALIAS = 200
ALIAS_LETTERS = frozenset("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._@-")

SSH = (
    "ssh", "-T", "-o", "BatchMode=yes", "-o", "ConnectTimeout=8", "-o", "ServerAliveInterval=5",
    "-o", "ServerAliveCountMax=2", "-o", "LogLevel=ERROR", "-o", "RemoteCommand=none", "-o", "RequestTTY=no",
    "-o", "ClearAllForwardings=yes", "-o", "ForwardAgent=no", "-o", "ForwardX11=no",
    "-o", "PermitLocalCommand=no", "-o", "ControlMaster=no",
)
"""Never a question, never a forwarding, never a command but ours."""


def valid_alias(alias: object) -> bool:
    """A host name or alias, with a user in front or not; nothing that could be an option or an address with a
    way of its own."""
    return (
        type(alias) is str and 0 < len(alias) <= LONGEST_ALIAS and ALIAS_LETTERS.issuperset(alias)
        and alias[0] not in "-.@" and alias.count("@") <= 1
    )
