# SPDX-License-Identifier: Apache-2.0
"""What an installation puts where, and what the tools of its readers say of it."""
import glob
import gzip
import os
import re
import stat
import struct
import subprocess
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

import staging

NAME = "dev.quent.ostrel"
ENTRY = f"usr/share/applications/{NAME}.desktop"
ADDRESS_ENTRY = f"usr/share/applications/{NAME}-address.desktop"
AUTOSTART = f"etc/xdg/autostart/{NAME}.desktop"
MAN_PAGE = "usr/share/man/man1/ostrel.1.gz"
METADATA = f"usr/share/metainfo/{NAME}.metainfo.xml"
BASH = "usr/share/bash-completion/completions/ostrel"
FISH = "usr/share/fish/vendor_completions.d/ostrel.fish"
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
ADDRESSES = {f"ostrel://{word}" for word in ("show", "open", "hide", "close", "toggle")}


def options() -> set[str]:
    """What the program's own check of its arguments lets pass."""
    source = Path(staging.SOURCE, "src/readings/Arguments.cpp").read_text("utf-8")
    table = source.partition("known {")[2].partition("}")[0]
    return set(re.findall(r'"(--[a-z-]+)"', table))


def png_size(path: str) -> tuple:
    return struct.unpack(">II", Path(path).read_bytes()[16:24])


class Files(unittest.TestCase):
    """Paths are relative to the root of an installation into /usr."""

    @classmethod
    def setUpClass(cls) -> None:
        cls.root = staging.caught()

    def read(self, path: str) -> str:
        data = Path(self.root, path).read_bytes()
        return (gzip.decompress(data) if path.endswith(".gz") else data).decode()

    def zsh(self) -> str:
        found, = glob.glob(f"{self.root}/usr/share/zsh/*/_ostrel")
        return os.path.relpath(found, self.root)

    def test_programs_alone_can_be_run_and_nothing_names_the_folder_it_was_caught_in(self):
        programs = set()
        for folder, _, names in os.walk(self.root):
            for path in (f"{folder}/{name}" for name in names):
                mode = stat.S_IMODE(os.lstat(path).st_mode)
                self.assertIn(mode, (0o644, 0o755), path)
                if mode == 0o755:
                    programs.add(os.path.relpath(path, self.root))
                # The debugging build's program has the paths of its sources, but not where it went.
                self.assertNotIn(self.root.encode(), Path(path).read_bytes(), path)
        self.assertEqual(programs, {"usr/bin/ostrel", "usr/libexec/ostrel/autostart"})

    def test_what_starts_the_program_names_a_file_that_is_there(self):
        commands = re.findall(r'(?m)^(?:Exec|TryExec)="?([^\s"]+)', "\n".join(
            self.read(path) for path in (AUTOSTART, f"usr/share/dbus-1/services/{NAME}.service")))
        commands += re.findall(r'exec "(\S+)"', self.read("usr/libexec/ostrel/autostart"))
        self.assertEqual(sorted(commands), ["/usr/bin/ostrel"] * 3 + ["/usr/libexec/ostrel/autostart"])
        for command in commands:
            self.assertTrue(os.access(self.root + command, os.X_OK), command)

    def test_the_scripts_are_all_there_and_compiled_under_their_own_path(self):
        collectors = f"{staging.SOURCE}/collectors"
        for folder, _, names in os.walk(collectors):
            place = f"/usr/share/ostrel/collectors/{os.path.relpath(folder, collectors)}".replace("/.", "")
            for name in (name for name in names if name.endswith(".py")):
                self.assertTrue(os.path.exists(f"{self.root}{place}/{name}"), name)
                code, = glob.glob(f"{self.root}{place}/__pycache__/{name[:-3]}.*.pyc")
                self.assertIn(f"{place}/{name}".encode(), Path(code).read_bytes())

    def test_the_desktops_tools_find_no_fault(self):
        for path in (ENTRY, ADDRESS_ENTRY, AUTOSTART):
            self.assertEqual(staging.run("desktop-file-validate", f"{self.root}/{path}"), "")
        staging.run("appstreamcli", "validate", "--no-net", f"{self.root}/{METADATA}")
        man = ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", f"{self.root}/{MAN_PAGE}"]
        told = subprocess.run(man, env={**os.environ, "MANROFFSEQ": "", "LC_ALL": "C.UTF-8"}, check=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, encoding="utf-8")
        self.assertEqual(told.stderr, "")

    def test_the_metadata_names_the_entry_the_version_and_pictures_that_are_kept(self):
        metadata = xml.parse(f"{self.root}/{METADATA}").getroot()
        self.assertEqual(metadata.findtext("launchable"), os.path.basename(ENTRY))
        project = Path(staging.SOURCE, "CMakeLists.txt").read_text("utf-8")
        version = re.search(r"project\(ostrel VERSION (\S+)", project)[1]
        self.assertEqual([release.get("version") for release in metadata.iter("release")], [version])
        self.assertIn(f'"Ostrel {version}"', self.read(MAN_PAGE))
        for image in metadata.iter("image"):
            size = png_size(f"{staging.SOURCE}/docs/pictures/{os.path.basename(image.text)}")
            self.assertEqual((int(image.get("width")), int(image.get("height"))), size, image.text)

    def test_the_icon_is_there_in_each_size_and_drawn_as_the_program_draws_its_mark(self):
        icons = f"{self.root}/usr/share/icons/hicolor"
        for size in ICON_SIZES:
            self.assertEqual(png_size(f"{icons}/{size}x{size}/apps/{NAME}.png"), (size, size))
        self.assertTrue(os.path.exists(f"{icons}/symbolic/apps/{NAME}-symbolic.svg"))
        drawn = staging.folder()
        staging.run(f"{staging.BUILD_TREE}/gallery/ostrel_icons", drawn)
        self.assertEqual(self.read(f"usr/share/icons/hicolor/scalable/apps/{NAME}.svg"), Path(
            drawn, f"hicolor/scalable/apps/{NAME}.svg").read_text("utf-8"), "script/icons draws them anew")

    def test_the_shells_offer_every_option_and_address_and_the_man_page_tells_of_each(self):
        told = set(re.findall(r"(?<![\w-])--[a-z-]+", self.read(MAN_PAGE).replace("\\-", "-")))
        self.assertEqual(told, options(), "man page")
        self.assertEqual(set(re.findall(r"(?<![\w-])--[a-z-]+", self.read(self.zsh()))), options(), "zsh")
        for shell, path in (("bash", BASH), ("zsh", self.zsh()), ("fish", FISH)):
            staging.run(shell, "-n", f"{self.root}/{path}")
        for typed, offered in (("--", options()), ("--testbed ", {"show", "hide", "toggle"}),
                               ("ostrel://", ADDRESSES), ("ostrel://t", {"ostrel://toggle"})):
            with self.subTest(typed=typed):
                self.assertEqual(self.bash(f"ostrel {typed}"), offered)
                self.assertEqual(self.fish(f"ostrel {typed}"), offered)

    def bash(self, line: str) -> set[str]:
        """What bash would complete the line to; its words part at colons, and so does what it offers."""
        script = f"""
            . /usr/share/bash-completion/bash_completion; . {self.root}/{BASH}
            COMP_LINE=$1 COMP_POINT=${{#1}}
            read -ra COMP_WORDS <<<"${{1//:/ : }}"; [[ $1 == *' ' ]] && COMP_WORDS+=('')
            COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
            _ostrel; printf '%s\\n' "${{COMPREPLY[@]}}" """
        before = line.split(" ")[-1].rpartition(":")[0]
        return {f"{before}:{word}" if before else word
                for word in staging.run("bash", "-c", script, "bash", line).split()}

    def fish(self, line: str) -> set[str]:
        told = staging.run("fish", "-N", "-c", f"source {self.root}/{FISH}; complete -C '{line}'",
                           HOME=staging.folder())
        return {row.partition("\t")[0] for row in told.splitlines()}
