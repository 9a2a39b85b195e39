# SPDX-License-Identifier: Apache-2.0
"""What the collector scripts share. Standard library only, Python 3.9 and later.

The modules that `ostrel.py json` loads stay clear of `re`, `json`, `subprocess`, `typing` and the like: each
of them costs more to import than a whole look at the processes.
"""
import os
import sys


def start(module: str) -> None:
    """Ends a script with what its module's `main` gives. Where a file of the installation can't be read, or
    the machine gives no more, a line on standard error says so instead, with the status 1."""
    try:
        status = __import__(module, fromlist=["main"]).main(sys.argv)
    except (ImportError, OSError) as fault:
        status = f"{os.path.basename(sys.argv[0])}: {type(fault).__name__}: {ascii(str(fault))}"
    sys.exit(status)
