# SPDX-License-Identifier: Apache-2.0
import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from fabricated_machine import waiting
from janitor_home import CACHE, DEBUG, Home

GIT = ["git", "-c", "init.defaultBranch=main", "-c", "user.name=x", "-c", "user.email=x@x"]


class GroupsTest(unittest.TestCase):
    def setUp(self):
        self.home = Home(self)

    def test_the_answers_have_the_keys_that_the_panel_reads(self):
        home = self.home
        for number, size in enumerate((9000, 1, 40000)):
            home.write(f"{DEBUG}/{number}.txt", days=20 + number, size=size)
        row = {"path": f"~/{DEBUG}/2.txt", "mb": 0.04, "age_days": 22}
        title = "agent logs, snapshots and paste cache older than 14 days"
        answer = home.run("preview", "--group=agents-light")
        first, *others = answer["files"]
        self.assertEqual([row, 0.01, 0.0], [first, *(file["mb"] for file in others)])
        del answer["files"]
        expected = {"group": "agents-light", "title": title, "count": 3, "size_mb": 0.05, "error": ""}
        self.assertEqual(answer, expected)
        done = home.run("clean", "--group=agents-light", "--apply")
        self.assertEqual(done, {"group": "agents-light", "title": title, "removed": 3, "freed_mb": 0.05,
                                "failed_count": 0})
        groups = home.run("groups")
        self.assertEqual(groups["titles"][groups["groups"][0]], title)
        self.assertEqual(groups["groups"], ["agents-light", "agents-deep", "agent-screenshots", "app-caches",
                                            "product-builds"])
        self.assertIn("no cleanup group", home.run("preview", "--group=else")["error"])
        self.assertEqual(home.run("preview", "--group=app-caches")["count"], 0)

    def test_agent_files_go_by_their_age_and_only_from_the_listed_folders(self):
        home = self.home
        folders = (".claude/shell-snapshots", ".claude/paste-cache", ".claude/telemetry", DEBUG,
                   ".claude/logs", ".codex/log", ".codex/logs/deep/er")
        for folder in folders:
            home.write(folder + "/old", days=14.1)
            home.write(folder + "/young", days=13.9)
            home.write(folder + "/new", days=1.9)
        for kept in (".claude/history.jsonl", ".claude/settings.json", ".claude/todos/a", ".codex/auth.json",
                     ".claude/projects/p/a.jsonl", ".codex/sessions/2026/a.jsonl", ".cache/pip/a", "a"):
            home.write(kept, days=900)
        os.mkfifo(home.at(DEBUG + "/pipe"))
        home.age(DEBUG + "/pipe")
        home.link(DEBUG + "/link", home.write(home.outside + "/a"))
        self.assertEqual(home.listed("agents-light"), sorted(folder + "/old" for folder in folders))
        deep = sorted(folder + name for folder in folders for name in ("/old", "/young"))
        self.assertEqual(home.listed("agents-deep"), deep)
        before = home.files()
        self.assertEqual(home.clean("agents-deep"), (14, 0, ""))
        self.assertEqual(home.files(), sorted(set(before) - set(deep)))

    def test_screenshots_are_pictures_older_than_a_week(self):
        home = self.home
        for folder in (".claude/screenshots", ".codex/screenshots", ".playwright-mcp/run"):
            for name, days in (("a.png", 8), ("b.JPEG", 8), ("c.webp", 6), ("notes.md", 8), ("png", 8)):
                home.write(folder + "/" + name, days)
        self.assertEqual(home.listed("agent-screenshots"), [
            folder + name for folder in (".claude/screenshots", ".codex/screenshots", ".playwright-mcp/run")
            for name in ("/a.png", "/b.JPEG")])

    def test_a_picked_cache_is_emptied_and_its_folder_stays(self):
        home = self.home
        home.write(CACHE + "/http/a/b", days=0.001)
        home.write(CACHE + "/written/now", days=-0.01)
        home.link(CACHE + "/link", home.write(home.outside + "/a"))
        os.makedirs(home.at(CACHE + "/empty/empty"))
        for folder in ("http/a", "http", "empty/empty", "empty"):
            home.age(f"{CACHE}/{folder}", days=0.001)
        home.write(".cache/other/a")
        home.write(".cache/file")
        listed = home.listed("app-caches", "pip", "gone", "file")
        self.assertEqual(listed, [CACHE + "/http/a/b", CACHE + "/link"])
        self.assertEqual(home.clean("app-caches", "pip"), (2, 0, ""))
        self.assertEqual((os.listdir(home.at(CACHE)), home.files(".cache")),
                         (["written"], ["file", "other/a", "pip/written/now"]))
        self.assertTrue(os.path.exists(home.outside + "/a"))

    def test_a_cache_name_that_is_no_plain_name_stops_the_call(self):
        home = self.home
        home.write(CACHE + "/a")
        home.write(".claude/projects/a")
        for name in ("..", ".", "../.claude", "pip/..", "/", ".hidden", "a.b"):
            answer = home.run("preview", "--group=app-caches", "--select=pip," + name)
            self.assertTrue(answer["error"] and not answer["count"], name)
            removed, _, error = home.clean("app-caches", "pip", name)
            self.assertTrue(error and not removed, name)
        self.assertEqual(home.files(), [CACHE + "/a", ".claude/projects/a"])

    def test_the_cache_list_holds_what_can_be_picked_the_biggest_first(self):
        home = self.home
        for name, size in (("small", 4096), ("big", 900000), ("with,comma", 4096), ("two\nlines", 4096),
                           ("\udcff", 4096), (".hidden", 4096)):
            home.write(f".cache/{name}/deep/a", size=size)
        os.mkdir(home.at(".cache/empty"))
        home.link(".cache/link", home.outside)
        home.write(home.outside + "/a")
        candidates = home.run("caches")["candidates"]
        self.assertEqual(candidates, [{"name": "big", "size_mb": 0.86}, {"name": "small", "size_mb": 0.0}])

    def test_space_that_names_share_counts_once_and_only_when_all_names_go(self):
        home = self.home
        first = home.write(CACHE + "/a", size=1 << 20)
        os.link(first, home.at(CACHE + "/b"))
        kept = home.write(home.outside + "/a", size=1 << 20)
        os.link(kept, home.at(CACHE + "/c"))
        answer = home.preview("app-caches", "pip")
        self.assertEqual((answer["count"], answer["size_mb"]), (3, 1.0))
        done = home.run("clean", "--group=app-caches", "--apply", "--select=pip")
        self.assertEqual((done["removed"], done["freed_mb"]), (3, 1.0))
        self.assertEqual(os.path.getsize(kept), 1 << 20)

    def test_a_preview_names_the_largest_and_counts_all(self):
        home = self.home
        for number in range(620):
            home.write(f"{DEBUG}/{number}", size=1 if number % 10 else 9000 + 4096 * number)
        answer = home.preview("agents-light")
        sizes = [row["mb"] for row in answer["files"]]
        self.assertEqual((answer["count"], len(sizes), sizes), (620, 500, sorted(sizes, reverse=True)))
        self.assertEqual(answer["files"][0]["path"], f"~/{DEBUG}/610")

    def test_a_package_goes_as_a_whole_when_it_is_old_and_no_process_loads_it(self):
        home = self.home
        script = "import sys, mmap, os; print(flush=True); input()"

        def package(name: str, days: float = 3) -> str:
            for file in ("package.json", "node_modules/tool/cli.js"):
                home.write(f".npm/_npx/{name}/{file}", days)
            home.link(f".npm/_npx/{name}/node_modules/.bin/tool", "../tool/cli.js")
            for folder in ("node_modules/.bin", "node_modules/tool", "node_modules", ""):
                home.age(f".npm/_npx/{name}/{folder}", days)
            return home.at(f".npm/_npx/{name}")

        package("free")
        package("young", days=1)
        home.age(package("written") + "/node_modules", days=1)
        home.age(package("touched"), days=1)
        package("argument")
        with open(package("open") + "/package.json", "rb") as file:
            waiting(self, sys.executable, "-c", script, stderr=file)
        waiting(self, sys.executable, "-c", script, "../_npx/argument/node_modules/tool/cli.js")
        waiting(self, sys.executable, "-c", script, cwd=package("folder") + "/node_modules")
        home.age(package("mapped"))
        mapping = "f = open(sys.argv[1].replace('@', '_npx/mapped')); m = mmap.mmap(f.fileno(), 0, prot=1);"
        waiting(self, sys.executable, "-c", script.replace("print", mapping + " f.close(); print", 1),
                home.at(".npm/@/package.json"))
        binary = package("program") + "/python"
        shutil.copy(os.path.realpath(sys.executable), binary)
        os.chmod(binary, 0o755)
        waiting(self, binary, "-c", script)
        for path in (binary, home.at(".npm/_npx/program")):
            home.age(path)
        self.assertEqual({path.split("/")[2] for path in home.listed("agents-deep")}, {"free"})
        before = set(home.files())
        self.assertEqual(home.clean("agents-deep"), (3, 0, ""))
        self.assertEqual({path.split("/")[2] for path in before - set(home.files())}, {"free"})
        self.assertNotIn("free", os.listdir(home.at(".npm/_npx")))

    def test_build_output_is_what_git_ignores_as_a_whole_and_nothing_newer(self):
        home = self.home
        project = home.at("code/app")

        def git(*arguments: str, where: str = project) -> None:
            subprocess.run([*GIT, *arguments], cwd=where, check=True, stdout=subprocess.DEVNULL)

        ignored = "build/\ndist\n.next\nout/\ntarget\ncoverage/*\nnode_modules\n"
        Path(home.write("code/app/.gitignore")).write_text(ignored, "ascii")
        goes = ("build/a.o", "build/deep/b.o", "sub/dist/c.js", ".next/d")
        for path in goes:
            home.write("code/app/" + path, days=15)
        for path in ("out/tracked", "out/e", "node_modules/lib/dist/f", "coverage/g", "src/build.c",
                     "other/h"):
            home.write("code/app/" + path, days=90)
        home.write("code/app/target/new", days=13)
        home.write("code/app/target/old", days=90)
        home.write("code/app/sub/out/repo/i", days=90)
        git("init", "-q")
        git("init", "-q", where=home.at("code/app/sub/out/repo"))
        for path in home.files("code/app/sub/out/repo/.git"):
            home.age("code/app/sub/out/repo/.git/" + path, days=90)
        git("add", "-f", ".gitignore", "out/tracked", "src")
        git("config", "core.fsmonitor", "touch " + home.outside + "/ran")
        for path in ("code/plain/build/a", "build/a"):
            home.write(path, days=90)
        self.assertIn("~/.config/ostrel/product-roots", home.preview("product-builds")["error"])

        def roots(*lines: str) -> None:
            Path(home.write(".config/ostrel/product-roots")).write_text("\n".join(lines) + "\n", "utf-8")

        for line in ("/etc", "~", "~/", home.path, home.path + "/../outside", "code", "~/./code"):
            roots("~/code/app", line)
            self.assertIn("no folder below the home", home.preview("product-builds")["error"], line)
            self.assertEqual(home.clean("product-builds")[0], 0)
        roots("# mine", "~/code/app", project + "/", "~/code/app/sub", "~/code/plain", "~/gone")
        self.assertEqual(home.listed("product-builds"), sorted("code/app/" + path for path in goes))
        before = set(home.files())
        self.assertEqual(home.clean("product-builds"), (4, 0, ""))
        self.assertEqual(before - set(home.files()), {"code/app/" + path for path in goes})
        left = os.listdir(project) + os.listdir(project + "/sub")
        self.assertFalse({"build", "dist", ".next"} & set(left), left)
        self.assertEqual(os.listdir(home.outside), [])
