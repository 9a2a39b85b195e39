# SPDX-License-Identifier: Apache-2.0
"""Build output in the projects that the user lists. What is build output, git says: a folder that it ignores
as a whole, with one of the names that build tools use. Nothing below an ignored folder is looked at, so a
package that was installed with a `dist` of its own keeps it."""
from __future__ import annotations

import os
import subprocess

from ostrel_lib.janitor import groups
from ostrel_lib.janitor.plan import whole_folder
from ostrel_lib.janitor.folders import open_chain
from ostrel_lib.janitor.uses import read_whole

TYPE_CHECKING = False
if TYPE_CHECKING:
    from collections.abc import Iterator

    from ostrel_lib.janitor.folders import Entry, Folder, KeepOut

HOW_TO = "list your project folders, one a line, in ~/" + groups.PRODUCT_ROOTS
GIT = (
    "git", "--no-optional-locks", "--no-pager", "-c", "core.fsmonitor=false",
    "-c", "core.hooksPath=/dev/null", "-c", "core.untrackedCache=false",
)
LITERALLY = "--literal-pathspecs"
IGNORED = (LITERALLY, "ls-files", "-z", "--others", "--ignored", "--exclude-standard", "--directory")
GIT_SECONDS = 15
LONGEST_LIST = 65536


def projects(home: Folder) -> tuple[list[str], str]:
    """The listed project folders, relative to the home, and what is wrong with the list."""
    text = read_whole(groups.PRODUCT_ROOTS, home.fd, LONGEST_LIST)
    lines = [line.strip() for line in os.fsdecode(text).split("\n")]
    lines = [line for line in lines if line and not line.startswith("#")]
    if not lines:
        return [], HOW_TO
    found = []
    for line in lines:
        path = below_home(line, home)
        if not path:
            return [], "a line in ~/" + groups.PRODUCT_ROOTS + " is no folder below the home: " + line
        found.append(path)
    return list(dict.fromkeys(found)), ""


def below_home(line: str, home: Folder) -> str:
    """A listed folder relative to the home; "" for what isn't strictly below it."""
    for start in ("~", os.path.abspath(os.path.expanduser("~")), home.real):
        if line.startswith(start + "/"):
            parts = [part for part in line[len(start):].split("/") if part]
            return "" if "." in parts or ".." in parts else "/".join(parts)
    return ""


def build_outputs(home: Folder, keep: KeepOut, limit: int) -> Iterator[Entry]:
    """The build folders of all listed projects whose newest file was modified before `limit`, each whole."""
    seen: set[tuple[int, int]] = set()
    for path in projects(home)[0]:
        project = open_chain(home, path, keep)
        if project is None:
            continue
        try:
            for output in ignored_folders(project):
                parent_path, _, name = (path + "/" + output).rpartition("/")
                parent = open_chain(home, parent_path, keep)
                if parent is None:
                    continue
                try:
                    yield from once(parent, name, seen, project, output, keep, limit)
                finally:
                    parent.close()
        finally:
            project.close()


def once(
    parent: Folder,
    name: str,
    seen: set[tuple[int, int]],
    project: Folder,
    output: str,
    keep: KeepOut,
    limit: int,
) -> Iterator[Entry]:
    """One build folder, unless it was met before through another listed project."""
    try:
        status = os.stat(name, dir_fd=parent.fd, follow_symlinks=False)
    except OSError:
        return
    identity = (status.st_dev, status.st_ino)
    if identity not in seen:
        seen.add(identity)
        needle = parent.real + "/" + name + "/"
        yield from whole_folder(
            parent, name, keep, limit, needle, lambda: ignored_folders(project, output) == [output])


def ignored_folders(project: Folder, only: str = "") -> list[str]:
    """Folders with a build tool's name that git ignores and that hold no tracked file, relative to the
    project; none where git says nothing, for instance outside of a work tree."""
    where = ("--", only) if only else ()
    listed = [path[:-1] for path in git(project, *IGNORED, *where) or [] if path.endswith("/")]
    found = [path for path in listed if path.rsplit("/", 1)[-1] in groups.BUILD_NAMES]
    # Also listed is a folder that isn't ignored itself while all of its files are: more than output.
    # This command takes paths literally by itself; "./" keeps a colon in front from meaning something.
    asked = ["./" + path for path in found]
    confirmed = git(project, "check-ignore", "--stdin", "-z", paths=asked) if found else None
    ignored = [path for path in found if "./" + path in (confirmed or [])]
    tracked = git(project, LITERALLY, "ls-files", "-z", "--cached", "--", *ignored) if ignored else None
    if tracked is None:
        return []
    return [path for path in ignored if not any(file.startswith(path + "/") for file in tracked)]


def git(project: Folder, *arguments: str, paths: list[str] | None = None) -> list[str] | None:
    """The paths that git lists in an open folder, asked about `paths`; None when it fails. No program that
    the project's own configuration names is run."""
    environment = {
        name: value for name, value in os.environ.items() if name in ("HOME", "PATH", "XDG_CONFIG_HOME")
    }
    try:
        done = subprocess.run(
            [*GIT, *arguments], cwd=f"/proc/self/fd/{project.fd}", env=environment,
            input=os.fsencode("\0".join(paths or [])), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            timeout=GIT_SECONDS, check=True)
    except (OSError, subprocess.SubprocessError):
        return None
    return [os.fsdecode(path) for path in done.stdout.split(b"\0") if path]
