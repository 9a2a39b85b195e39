# SPDX-License-Identifier: Apache-2.0
"""The groups of files that may be cleaned up. All folders are below the home, and there are no others."""
from __future__ import annotations

TITLES = {
    "agents-light": "agent logs, snapshots and paste cache older than 14 days",
    "agents-deep": "agent files older than 2 days and MCP packages no process loads",
    "agent-screenshots": "agent screenshots older than 7 days",
    "app-caches": "caches of the selected apps",
    "product-builds": "product build output older than 14 days",
}

DAYS = {"agents-light": 14, "agents-deep": 2, "agent-screenshots": 7, "app-caches": 0, "product-builds": 14}
"""What was modified within so many days stays."""

AGENT_FOLDERS = (
    ".claude/shell-snapshots", ".claude/paste-cache", ".claude/telemetry", ".claude/debug", ".claude/logs",
    ".codex/log", ".codex/logs",
)
SCREENSHOT_FOLDERS = (".claude/screenshots", ".codex/screenshots", ".playwright-mcp")
PICTURES = (".png", ".jpg", ".jpeg", ".webp")
PACKAGES = ".npm/_npx"
CACHES = ".cache"

PRODUCT_ROOTS = ".config/ostrel/product-roots"
"""The user's list of project folders, one a line."""
BUILD_NAMES = frozenset(("build", "dist", "out", "target", ".next", ".turbo", "coverage"))

SESSION_HISTORY = (".codex/sessions", ".claude/projects")
"""What the agents' users said and were told. Never listed and never deleted."""


def cache_name(name: str) -> bool:
    """Whether a name may be that of one cache. A path, or a name with dots, may not."""
    return name != "" and not any(sign in name for sign in "/.\0")
