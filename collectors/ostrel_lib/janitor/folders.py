# SPDX-License-Identifier: Apache-2.0
"""Folders held open, and walking through them without following links.

Every step goes from an open folder to a name in it, so that nobody can lead the walk elsewhere by exchanging
a folder for a link while it runs. Mount points aren't entered. Bind mounts have the device of what they show,
so it is the kernel's number of the mount that tells them.
"""
from __future__ import annotations

import errno
import os
import stat

from ostrel_lib.files import read
from ostrel_lib.janitor.history import History
from ostrel_lib.janitor.uses import Uses, read_whole

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator

OPEN_FOLDER = os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW | os.O_CLOEXEC
MOST_DEEP = 128
"""Levels below a root that are entered; each costs two descriptors while the walk is in it."""

PASSED_OVER = frozenset((
    errno.ENOENT, errno.ENOTDIR, errno.ELOOP, errno.EACCES, errno.EPERM, errno.EBUSY, errno.EROFS,
    errno.ETXTBSY, errno.EISDIR, errno.ENOTEMPTY, errno.ENAMETOOLONG, errno.ENXIO, errno.ESTALE,
    errno.EWOULDBLOCK,
))
"""What can happen to one entry for reasons of its own. Any other error is about the machine."""


class Folder:
    """An open folder. `path` is relative to the home ("" for the home itself), `real` the absolute path at
    which the kernel had it when it was opened."""

    __slots__ = ("fd", "path", "real", "status", "mount")

    def __init__(self, fd: int, path: str, real: str, status: os.stat_result, mount: bytes) -> None:
        self.fd = fd
        self.path = path
        self.real = real
        self.status = status
        self.mount = mount

    def close(self) -> None:
        """Gives the descriptor back."""
        os.close(self.fd)

    def in_place(self) -> bool:
        """Whether the folder still lies where it was opened. One that was moved away in the meantime no
        longer belongs to its root, whatever it holds."""
        try:
            return os.readlink(f"/proc/self/fd/{self.fd}") == self.real
        except OSError:
            return False


class Entry:
    """A name in an open folder, and what was behind it. `status` is None for what must be left alone. The
    folder is open only until the walk is asked for the next entry."""

    __slots__ = ("folder", "name", "status")

    def __init__(self, folder: Folder, name: str, status: os.stat_result | None) -> None:
        self.folder = folder
        self.name = name
        self.status = status

    @property
    def path(self) -> str:
        """Relative to the home."""
        return self.folder.path + "/" + self.name if self.folder.path else self.name


class KeepOut:
    """What a walk leaves alone wherever it meets it: session history, what processes have locked or in use,
    and mount points."""

    __slots__ = ("history", "uses", "locked", "mounts")

    def __init__(self, home: Folder) -> None:
        self.history = History(home.real)
        self.uses = Uses(home.real)
        self.locked = locked_files(read_whole("/proc/locks"))
        self.mounts = mount_points(read_whole("/proc/self/mountinfo"), home.real)

    def covers_folder(self, folder: Folder) -> bool:
        """Whether a folder isn't to be entered."""
        return self.history.covers(folder.status)

    def covers_file(self, folder: Folder, name: str, status: os.stat_result) -> bool:
        """Whether a file or link isn't to be listed."""
        path = folder.real + "/" + name
        return (
            status.st_dev != folder.status.st_dev
            or path in self.mounts
            or (status.st_dev, status.st_ino) in self.locked
            or self.history.covers(status)
            or self.uses.holds(path)
        )


def open_home(home: str) -> Folder:
    """The user's home, the one folder that is reached by its path, links included. Raises OSError."""
    fd = os.open(home, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    try:
        return Folder(fd, "", os.readlink(f"/proc/self/fd/{fd}"), os.fstat(fd), mount_of(fd))
    except OSError:
        os.close(fd)
        raise


IN_HISTORY = "the home lies in what an agent's session history links to"


def home_is_history(home: Folder, keep: KeepOut) -> bool:
    """Whether the home itself, or a folder above it, is what an agent's history links to."""
    path = home.real
    while True:
        try:
            if keep.history.covers(os.stat(path)):
                return True
        except OSError:
            return True
        if path == "/":
            return False
        path = os.path.dirname(path)


def open_below(folder: Folder, name: str, keep: KeepOut, on_the_way: bool = False) -> Folder | None:
    """The folder of that name. None for a link, another kind of file, a mount point, session history, and
    what can't be opened. Raises OSError when the machine can't go on.

    A file system within a file system that isn't mounted (a subvolume) may lie on the way to a root, and
    isn't walked into.
    """
    try:
        fd = os.open(name, OPEN_FOLDER, dir_fd=folder.fd)
    except OSError as error:
        if error.errno in PASSED_OVER:
            return None
        raise
    path = folder.path + "/" + name if folder.path else name
    real = (folder.real if folder.real != "/" else "") + "/" + name
    below = Folder(fd, path, real, os.fstat(fd), mount_of(fd))
    same_mount = below.mount == folder.mount and below.mount != b""
    same_device = on_the_way or below.status.st_dev == folder.status.st_dev
    if same_mount and same_device and not keep.covers_folder(below):
        return below
    below.close()
    return None


def open_chain(home: Folder, path: str, keep: KeepOut) -> Folder | None:
    """A folder below the home, opened name by name; None as in `open_below`."""
    folder = home
    for name in path.split("/"):
        below = open_below(folder, name, keep, on_the_way=True)
        if folder is not home:
            folder.close()
        if below is None:
            return None
        folder = below
    return folder


def walk(root: Folder, keep: KeepOut, whole: bool) -> Iterator[Entry]:
    """Regular files below an open folder, as they are met; memory doesn't grow with their number.

    With `whole` also links, and each folder after what it holds, so that everything that the walk gave could
    go. What must be left alone, and in a `whole` walk also what is neither file, link nor folder, comes with
    a `status` of None. Raises OSError when the machine can't go on. `root` stays open.
    """
    stack = [(root, os.scandir(root.fd))]
    try:
        while stack:
            folder, entries = stack[-1]
            for found in entries:
                try:
                    is_folder = found.is_dir(follow_symlinks=False)
                    status = None if is_folder else found.stat(follow_symlinks=False)
                except OSError as error:
                    if error.errno not in PASSED_OVER:
                        raise
                    yield Entry(folder, found.name, None)
                    continue
                if status is None:
                    below = open_below(folder, found.name, keep) if len(stack) < MOST_DEEP else None
                    if below is not None:
                        stack.append((below, os.scandir(below.fd)))
                        break
                    yield Entry(folder, found.name, None)
                elif stat.S_ISREG(status.st_mode) or whole:
                    goes = stat.S_ISREG(status.st_mode) or stat.S_ISLNK(status.st_mode)
                    kept = not goes or keep.covers_file(folder, found.name, status)
                    yield Entry(folder, found.name, None if kept else status)
            else:
                entries.close()
                stack.pop()
                if stack:
                    folder.close()
                    if whole:
                        yield Entry(stack[-1][0], folder.path.rsplit("/", 1)[-1], folder.status)
    finally:
        for folder, entries in stack:
            entries.close()
            if folder is not root:
                folder.close()


def mount_of(fd: int) -> bytes:
    """The kernel's number of the mount that an open folder was reached through; b"" when it doesn't tell."""
    _, found, rest = read(f"/proc/self/fdinfo/{fd}", 4096).partition(b"mnt_id:")
    return rest.split(None, 1)[0] if found and rest.strip() else b""


def mount_points(mountinfo: bytes, below: str) -> frozenset[str]:
    """The absolute paths of the mount points below a folder, from the text of /proc/self/mountinfo."""
    points = []
    for line in mountinfo.split(b"\n"):
        fields = line.split(b" ", 5)
        if len(fields) == 6:
            path = fields[4]
            for code, sign in ((b"\\040", b" "), (b"\\011", b"\t"), (b"\\012", b"\n"), (b"\\134", b"\\")):
                path = path.replace(code, sign)
            points.append(os.fsdecode(path))
    return frozenset(point for point in points if point.startswith(below.rstrip("/") + "/"))


def locked_files(locks: bytes) -> frozenset[tuple[int, int]]:
    """Device and inode of every file that a process has a lock on, from the text of /proc/locks."""
    found = []
    for word in locks.split():
        parts = word.split(b":")
        if len(parts) == 3 and parts[2].isdigit():
            try:
                found.append((os.makedev(int(parts[0], 16), int(parts[1], 16)), int(parts[2])))
            except ValueError:
                continue
    return frozenset(found)
