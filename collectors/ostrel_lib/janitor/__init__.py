# SPDX-License-Identifier: Apache-2.0
"""The work of `ostrel_janitor.py`.

From the bottom up: `folders` walks opened folders and knows what must be left alone (`history`, `uses`);
`groups` and `plan` turn a group's name into the stream of what would go; `listing` shows that stream,
`cleaning` carries it out, with `removal` for each entry and `progress` and `receipts` for the proof. `people`
and `protection` judge processes, `findings` looks at the whole machine.
"""
