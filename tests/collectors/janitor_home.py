# SPDX-License-Identifier: Apache-2.0
"""A made-up home for the janitor in a temporary folder, with another folder beside it that nobody may
touch."""
import json
import os
import subprocess
import time

from fabricated_machine import COLLECTORS, fresh_folder, put

SCRIPT = os.path.join(COLLECTORS, "ostrel_janitor.py")
SYSTEM_PATH = "/usr/bin:/bin:/usr/sbin:/sbin"
DEBUG = ".claude/debug"
CACHE = ".cache/pip"
RECEIPTS = "Library/Application Support/Ostrel/receipts"


class Home:
    """Files of any age in a home, and what the janitor makes of them."""

    def __init__(self, test) -> None:
        self.root = fresh_folder(test)
        self.path = self.root + "/home"
        self.outside = self.root + "/outside"
        for folder in (self.path, self.outside):
            os.mkdir(folder)
        self.environment = {"HOME": self.path, "PATH": SYSTEM_PATH, "PYTHONDONTWRITEBYTECODE": "1"}

    def at(self, path: str) -> str:
        """An absolute path; those that begin with a slash stand as they are."""
        return os.path.join(self.path, path)

    def write(self, path: str, days: float = 30, size: int = 4096) -> str:
        """A file of that age, with its folders."""
        return self.age(put(self.at(path), b"x" * size), days)

    def age(self, path: str, days: float = 30) -> str:
        """Sets the time of the last change back."""
        then = time.time() - days * 86400
        os.utime(self.at(path), (then, then), follow_symlinks=False)
        return self.at(path)

    def link(self, path: str, target: str) -> str:
        """A link of an old age, with its folders."""
        os.makedirs(os.path.dirname(self.at(path)), exist_ok=True)
        os.symlink(target, self.at(path))
        return self.age(path)

    def command(self, *arguments: str) -> list[str]:
        return ["/usr/bin/python3", SCRIPT, *arguments]

    def run(self, *arguments: str, prefix: tuple[str, ...] = ()) -> dict:
        """The real script's answer."""
        done = subprocess.run(
            [*prefix, *self.command(*arguments)], stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
            env=self.environment, check=False)
        if done.returncode or done.stderr or done.stdout.count(b"\n") != 1:
            raise AssertionError((arguments, done))
        return json.loads(done.stdout)

    def preview(self, group: str, *selected: str) -> dict:
        """A preview without starting a process."""
        from ostrel_lib.janitor.listing import preview

        return preview(self.path, group, list(selected), time.time_ns())

    def listed(self, group: str, *selected: str) -> list[str]:
        """The paths that a preview lists, sorted. All of them, since tests have few files."""
        answer = self.preview(group, *selected)
        assert answer["count"] == len(answer["files"]) and not answer["error"], answer
        return sorted(row["path"][2:] for row in answer["files"])

    def clean(self, group: str, *selected: str) -> tuple[int, int, str]:
        """A cleanup without starting a process: removed, refused and the error."""
        from ostrel_lib.janitor.cleaning import clean

        answer = clean(self.path, group, list(selected), time.time_ns())
        return answer["removed"], answer["failed_count"], answer.get("error", "")

    def files(self, path: str = "") -> list[str]:
        """What there is below the home or a folder, folders left out, receipts too; sorted."""
        found = []
        for folder, folders, names in os.walk(self.at(path)):
            links = [name for name in folders if os.path.islink(os.path.join(folder, name))]
            found += [os.path.join(folder, name) for name in names + links]
        start = len(self.at(path).rstrip("/")) + 1
        return sorted(file[start:] for file in found if "/receipts/" not in file)

    @property
    def receipts(self) -> list[dict]:
        return self.run("receipts")["receipts"]
