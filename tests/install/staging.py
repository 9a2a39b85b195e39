# SPDX-License-Identifier: Apache-2.0
"""The build tree's program installed into a temporary folder, once for each way that tests ask for.

OSTREL_BUILD_TREE names the build tree, whose program has been built.
"""
import atexit
import functools
import glob
import os
import shutil
import subprocess
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD_TREE = os.environ.get("OSTREL_BUILD_TREE", f"{SOURCE}/build/debug")


def folder() -> str:
    """A fresh folder that goes with the last test."""
    made = tempfile.mkdtemp(prefix="ostrel-install-")
    atexit.register(shutil.rmtree, made, ignore_errors=True)
    return made


def run(*command: str, **environ: str) -> str:
    """What a command prints, on both streams. Raises AssertionError, with that, unless it ends well."""
    done = subprocess.run(command, env={**os.environ, **environ}, stdin=subprocess.DEVNULL, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", timeout=120)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(command)} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


@functools.lru_cache(maxsize=None)
def caught() -> str:
    """The folder that stands for / of an installation into /usr which a DESTDIR has caught."""
    root = folder()
    run("cmake", "--install", BUILD_TREE, "--prefix", "/usr", "--strip", DESTDIR=root)
    return root


@functools.lru_cache(maxsize=None)
def prefix() -> str:
    """The prefix of an installation in place, from which the program can be started."""
    place = f"{folder()}/opt"
    run("cmake", "--install", BUILD_TREE, "--prefix", place, "--strip", DESTDIR="")
    return place


@functools.lru_cache(maxsize=None)
def package() -> str:
    place = folder()
    run("cpack", "-G", "DEB", "--config", f"{BUILD_TREE}/CPackConfig.cmake", "-B", place, DESTDIR="")
    found = glob.glob(f"{place}/*.deb")
    assert len(found) == 1, found
    return found[0]
