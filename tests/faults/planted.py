# SPDX-License-Identifier: Apache-2.0
"""What the writers make is for their user alone, and what somebody put in a file's place holds nobody up.

planted.py WRITER
"""
import os
import shutil
import socket
import stat
import sys
import tempfile
import time
import unittest
from collections.abc import Iterator

from subjects import CACHE, POINTS, RECEIPTS, SAMPLES, SETTINGS, SUBJECTS, Subject, put, read
from sweep import run

FOLDER = os.path.dirname(SAMPLES)
DAY = time.strftime(f"{RECEIPTS}/%Y-%m-%d.jsonl", time.gmtime())
PLACES = {
    "history": (POINTS,), "settings": (SETTINGS, SETTINGS + ".lock"), "receipt": (DAY,),
    "instance": ("home/run/ostrel",),
    "compaction": (SAMPLES, f"{FOLDER}/mem-history.lock", f"{FOLDER}/mem-history.new"),
    "snapshot": (SAMPLES, f"{FOLDER}/mem-history.lock"), "cleanup": (DAY, f"{RECEIPTS}/clean-1-1.progress"),
    "receipts": (DAY,), "act": (DAY,), "plan": (DAY,), "inventory": (CACHE, CACHE + ".1.new")}
FOLLOWED = (POINTS, SETTINGS)
"""Which may be links to where the user keeps them."""
WRITER = ""


def plant_socket(path: str, _: str) -> None:
    here = os.getcwd()
    os.chdir(os.path.dirname(path))  # a socket's path may not be long
    try:
        with socket.socket(socket.AF_UNIX) as end:
            end.bind(os.path.basename(path))
    finally:
        os.chdir(here)


PLANTS = {
    "link": lambda path, outside: os.symlink(outside + "/kept", path),
    "dangling link": lambda path, outside: os.symlink(outside + "/none", path),
    "link to a folder": lambda path, outside: os.symlink(outside, path),
    "pipe": lambda path, _: os.mkfifo(path), "device": lambda path, _: os.symlink("/dev/zero", path),
    "socket": plant_socket, "folder": lambda path, _: os.mkdir(path)}


def made(folder: str) -> Iterator[tuple[str, os.stat_result]]:
    for path, folders, files in os.walk(folder):
        for name in folders + files:
            yield f"{path}/{name}", os.lstat(f"{path}/{name}")


class Planted(unittest.TestCase):
    def lay(self, subject: Subject) -> str:
        """A fresh root with all that the subject needs."""
        root = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, root, ignore_errors=True)
        for folder in ("home", "bin"):
            os.mkdir(f"{root}/{folder}")
        put(root + "/outside/kept", b"kept")
        subject.lay(root)
        return root

    def test_whatever_the_umask_is_all_that_is_made_is_for_its_user_alone(self):
        for name, subject in SUBJECTS(WRITER).items():
            for wide in (False, True):
                root = self.lay(subject)
                if wide and name in PLACES:
                    # As a wide umask of before left it. Nobody else is to write there any more.
                    for path, status in list(made(root + "/home")):
                        if stat.S_ISDIR(status.st_mode):
                            os.chmod(path, 0o777)
                before = {path for path, _ in made(root + "/home")}
                done = run(subject, root, {}, umask=0)
                self.assertEqual((done.code, done.err), (0, b""), name)
                if wide and name == "instance":
                    continue  # such a folder isn't used
                for path, status in made(root + "/home"):
                    mode = stat.S_IMODE(status.st_mode)
                    if path not in before:
                        self.assertEqual(mode, 0o700 if stat.S_ISDIR(status.st_mode) else 0o600, path)
                if wide and name in PLACES and name != "receipts":
                    folder = os.path.dirname(f"{root}/{PLACES[name][0]}")
                    self.assertEqual(os.stat(folder).st_mode & 0o022, 0, (name, folder))

    def test_nothing_that_is_put_in_a_files_place_is_followed_or_waited_for(self):
        for name, places in PLACES.items():
            subject = SUBJECTS(WRITER)[name]
            for place in places:
                for plant in PLANTS:
                    with self.subTest(name=name, place=place, plant=plant):
                        self.meet(subject, place, plant)

    def meet(self, subject: Subject, place: str, plant: str) -> None:
        root = self.lay(subject)
        path = f"{root}/{place}"
        os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
        if os.path.isdir(path):
            shutil.rmtree(path)
        elif os.path.lexists(path):
            os.unlink(path)
        PLANTS[plant](path, root + "/outside")
        done = run(subject, root, {}, umask=0)  # which raises when it doesn't end
        self.assertIn(done.code, (0, 1))
        self.assertNotIn(b"Traceback", done.err)
        self.assertEqual(os.listdir(root + "/outside"), ["kept"])
        if not (plant == "link" and place in FOLLOWED):
            self.assertEqual(read(root + "/outside/kept"), b"kept")

    @unittest.skipUnless(os.geteuid() == 0, "only root gives a folder away")
    def test_a_runtime_folder_of_somebody_elses_is_neither_used_nor_cleared(self):
        subject = SUBJECTS(WRITER)["instance"]
        root = self.lay(subject)
        os.chown(root + "/home/run/ostrel", 65534, 65534)
        before = os.listdir(root + "/home/run/ostrel")
        self.assertEqual(run(subject, root, {}).code, 0)
        self.assertEqual(os.listdir(root + "/home/run/ostrel"), before)


if __name__ == "__main__":
    WRITER = os.path.abspath(sys.argv.pop(1))
    os.umask(0o077)
    unittest.main()
