# SPDX-License-Identifier: Apache-2.0
"""The session history of the agents, known by what it is on the disk and not by its name, so that no link,
mount or second name leads into it."""
from __future__ import annotations

import os
import stat

from ostrel_lib.janitor.groups import SESSION_HISTORY

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator


class History:
    """The folders and files that hold session history below one home.

    `identities` are device and inode of the two folders, of what their names link to, and of whatever a link
    inside them points at.
    """

    __slots__ = ("identities", "_places", "_files")

    def __init__(self, home: str) -> None:
        self._places = [home + "/" + name for name in SESSION_HISTORY]
        self._files: set[tuple[int, int]] | None = None
        self.identities: set[tuple[int, int]] = set()
        for place in self._places:
            self._add(place, follow=False)
            self._add(place, follow=True)
        for _, entry in self._walk():
            if entry.is_symlink():
                self._add(entry.path, follow=True)

    def covers(self, status: os.stat_result) -> bool:
        """Whether this folder or file is history, under whatever name it was met."""
        identity = (status.st_dev, status.st_ino)
        if identity in self.identities:
            return True
        if status.st_nlink == 1 or not stat.S_ISREG(status.st_mode):
            return False
        if self._files is None:
            self._files = {(device, entry.inode()) for device, entry in self._walk()}
        return identity in self._files

    def _add(self, path: str, follow: bool) -> None:
        try:
            status = os.stat(path, follow_symlinks=follow)
        except OSError:
            return
        self.identities.add((status.st_dev, status.st_ino))

    def _walk(self) -> Iterator[tuple[int, os.DirEntry[str]]]:
        """Every entry of the history with its folder's device. Links are given and not followed."""
        waiting = list(self._places)
        while waiting:
            path = waiting.pop()
            try:
                device = os.stat(path).st_dev
                entries = os.scandir(path)
            except OSError:
                continue
            with entries:
                for entry in entries:
                    yield device, entry
                    try:
                        if entry.is_dir(follow_symlinks=False):
                            waiting.append(entry.path)
                    except OSError:
                        continue
