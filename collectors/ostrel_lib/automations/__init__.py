# SPDX-License-Identifier: Apache-2.0
"""The scheduled jobs of this machine and of the server, in six lanes.

`bridge` and what it imports is all that an inventory from the cache loads; the rest is imported by the
command that needs it.
"""
