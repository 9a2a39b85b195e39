# SPDX-License-Identifier: Apache-2.0
"""Open terminals: which there are, which agent works in them, and bringing one to the front.

A backend is a module that knows one kind of terminal: its `PREFIX`, `listed(scene)`, and
`select(scene, handle)`. Nothing here types into a terminal, or starts or closes one.
"""
