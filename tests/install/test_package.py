# SPDX-License-Identifier: Apache-2.0
"""The Debian package: what it says of itself, what it holds, and what Debian's checker says of it."""
import os
import re
import stat
import unittest
from pathlib import Path

import staging

# Beside what the program's own loader needs, which is derived.
NEEDED = {"libc6", "libfmt9", "libqt6dbus6", "libqt6widgets6", "libutf8proc2", "libxcb1", "python3"}


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.file = staging.package()
        cls.root = staging.folder()
        staging.run("dpkg-deb", "-R", cls.file, cls.root)  # control files go to DEBIAN

    def field(self, name: str) -> str:
        return staging.run("dpkg-deb", "-f", self.file, name).strip()

    def test_it_tells_its_version_once_and_needs_what_the_program_loads(self):
        version = self.field("Version")
        self.assertEqual(os.path.basename(self.file), f"ostrel_{version}_{self.field('Architecture')}.deb")
        changelog = f"{self.root}/usr/share/doc/ostrel/changelog.Debian.gz"
        told = staging.run("dpkg-parsechangelog", "-l", changelog, "-S", "Version")
        self.assertEqual(told.strip(), version)
        upstream, _, build = version.partition("-")
        # An upgrade from each earlier version and build, and from nothing later.
        for older in ("0.8.9-99", f"{upstream}-{int(build) - 1}"):
            staging.run("dpkg", "--compare-versions", version, "gt", older)
        needed = set(re.findall(r"(?:^|, )([a-z0-9.+-]+)", self.field("Depends")))
        self.assertLessEqual(NEEDED, needed)
        self.assertFalse([name for name in needed if name.endswith("-dev")])

    def test_it_holds_what_an_installation_holds_but_the_byte_code_made_when_it_is_unpacked(self):
        def files(root: str) -> set[str]:
            return {os.path.relpath(f"{folder}/{name}", root) for folder, _, names in os.walk(root)
                    for name in names if not name.endswith(".pyc")}

        held = {path for path in files(self.root) if not path.startswith("DEBIAN/")}
        self.assertEqual(held, files(staging.caught()))
        modes = {stat.S_IMODE(os.stat(folder).st_mode) for folder, _, _ in os.walk(f"{self.root}/usr")}
        self.assertEqual(modes, {0o755})
        self.assertNotIn("__pycache__", staging.run("dpkg-deb", "-c", self.file))
        self.assertEqual([f"/{path}" for path in sorted(held) if path.startswith("etc/")],
                         Path(self.root, "DEBIAN/conffiles").read_text("utf-8").splitlines())

    def test_debians_checker_finds_no_error(self):
        staging.run("lintian", "--allow-root", "--fail-on", "error", "--no-tag-display-limit", self.file)
