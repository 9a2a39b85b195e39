# SPDX-License-Identifier: Apache-2.0
"""Handing work to a server over ssh: its capacity, and one task under caps.

Every value that was asked for travels as data: the command line that ssh carries is always the same one, and
so is the program that runs there.
"""
