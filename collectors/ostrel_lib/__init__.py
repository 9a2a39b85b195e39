# SPDX-License-Identifier: Apache-2.0
"""What the collector scripts share. Standard library only, Python 3.9 and later.

The modules that `ostrel.py json` loads stay clear of `re`, `json`, `subprocess`, `typing` and the like: each
of them costs more to import than a whole look at the processes.
"""
