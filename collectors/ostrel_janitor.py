#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The janitor of the panel: what could be given back, exact lists of it, and the deletion of one list."""
import os
import sys

# Python does this itself, unless the user's environment asks it not to (PYTHONSAFEPATH).
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

from ostrel_lib import start  # noqa: E402

if __name__ == "__main__":
    start("ostrel_lib.janitor.commands")
