# SPDX-License-Identifier: Apache-2.0
"""Small made-up trees, each with one fault that the check must name, and one without."""
import os
import tempfile
import unittest

from check_architecture import check

CORE = {"core/CMakeLists.txt": "add_library(o_core STATIC\n Text.cpp\n)\n",
        "core/Text.h": "#include <string>\n", "core/Text.cpp": '#include "core/Text.h"\n'}
BAR = {"bar/CMakeLists.txt": "add_library(o_bar STATIC\n Bar.cpp\n)\n"
                             "target_link_libraries(o_bar PUBLIC o_core)\n"
                             "add_library(o_bar_ui STATIC\n View.cpp\n)\n"
                             "target_link_libraries(o_bar_ui PUBLIC o_bar Qt6::Widgets)\n",
       "bar/Bar.h": '#include "core/Text.h"\n',
       "bar/Bar.cpp": '#include "bar/Bar.h"\n#include "core/Text.h"\n',
       "bar/View.h": "#include <QWidget>\n",
       "bar/View.cpp": '#include "bar/View.h"\n#include "core/Text.h"\n'}
GOOD = {**CORE, **BAR, "main.cpp": '#include "bar/View.h"\n'}

FAULTS = {
    "a lower room uses a higher one": ({"core/Text.cpp": '#include "bar/Bar.h"\n'}, "stands above"),
    "a rule draws": ({"bar/Bar.cpp": "#include <QString>\n"}, "belongs into o_bar_ui"),
    "a rule draws through a header": (
        {"bar/Paint.h": "#include <QPainter>\n", "bar/Bar.cpp": '#include "bar/Paint.h"\n'}, "which draws"),
    "an arrow that isn't declared": (
        {"bar/CMakeLists.txt": BAR["bar/CMakeLists.txt"].replace("PUBLIC o_core", "PUBLIC")}, "doesn't say"),
    "a file of no target": ({"bar/Lost.cpp": "\n"}, "belongs to no target"),
    "rooms that use each other": (
        {"janitor/CMakeLists.txt": "add_library(o_janitor STATIC\n J.cpp\n)\n"
                                   "target_link_libraries(o_janitor PUBLIC o_bar)\n",
         "janitor/J.h": "\n", "janitor/J.cpp": '#include "bar/Bar.h"\n',
         "bar/Bar.cpp": '#include "janitor/J.h"\n'},
        "use each other"),
    "logic that knows a real platform part": (
        {"platform/linux/CMakeLists.txt": "add_library(o_linux STATIC\n L.cpp\n)\n",
         "platform/linux/L.h": "\n", "platform/linux/L.cpp": "\n",
         "bar/Bar.cpp": '#include "platform/linux/L.h"\n'},
        "only the application"),
}


class CheckArchitecture(unittest.TestCase):
    def problems(self, files: dict) -> list:
        with tempfile.TemporaryDirectory() as root:
            for name, text in files.items():
                path = os.path.join(root, name)
                os.makedirs(os.path.dirname(path), exist_ok=True)
                with open(path, "w", encoding="utf-8") as file:
                    file.write(text)
            return check(root)

    def test_a_sound_tree_has_no_problems(self):
        self.assertEqual(self.problems(GOOD), [])

    def test_each_fault_is_named(self):
        for name, (change, words) in FAULTS.items():
            with self.subTest(name):
                self.assertIn(words, "\n".join(self.problems({**GOOD, **change})))


class TheProjectItself(unittest.TestCase):
    def test_keeps_to_its_arrows(self):
        here = os.path.dirname(os.path.abspath(__file__))
        self.assertEqual(check(os.path.join(here, "..", "..", "src")), [])
