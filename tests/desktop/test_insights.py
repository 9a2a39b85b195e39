# SPDX-License-Identifier: Apache-2.0
"""The insights tab on the real program: analyst and maintenance commands, pressed as a screen reader does."""
import glob
import json
import os
import re
import subprocess
import tempfile
from pathlib import Path

from desktop_case import POINTS, SAMPLES, PanelCase
from fabricated_machine import put

SAVED = 130


class Insights(PanelCase):
    def press_until(self, process: subprocess.Popen, button: str, pattern: str) -> None:
        """Presses until it says so: beside a snapshot a command only says that it waits."""
        whole = re.compile(pattern)

        def done() -> bool:
            names = self.names(process)
            if any(map(whole.fullmatch, names)):
                return True
            if button in names and not any("running…" in name for name in names):
                self.press(process, button)
            return False

        self.wait_for(pattern, done)

    def test_the_analyst_answers_and_a_compaction_keeps_the_latest_samples_and_a_backup_of_all(self):
        self.home = tempfile.mkdtemp(dir=self.desktop.folder)
        history = f"{self.home}/{SAMPLES}"
        folder = os.path.dirname(history)
        put(history, b"".join(b'{"swap": 1, "load": 2, "mcp": 3, "ts": "sample %d"}\n' % number
                              for number in range(SAVED)))
        process = self.start_again()
        self.go_to("5")
        self.said(process, "verdict of the snapshot collector")
        self.press(process, "▶ run local analyst")
        self.said(process, r"local analyst · .+ · \d+ actions?")
        self.press_until(process, "1 audit mcp (read-only)", r"MCP audit: \d+ observed; .* protected\.")
        self.press_until(process, "2 preview own history", r"Own history: preview; \d+ → \d+ bytes\. .*")

        self.press(process, "compact own history…")
        self.said(process, "Compact OSTREL history\\?")
        self.press(process, "Compact own history")
        self.said(process, r"(\d\d:){2}\d\d (Own history: .*|Wait .*|compacting own history…)")
        self.wait_for("compaction", lambda: len(self.samples(history)) <= 125 or self.asked_again(process))
        backups = [path for path in glob.glob(f"{folder}/*") if len(self.samples(path)) >= SAVED
                   and path not in (history, f"{self.home}/{POINTS}")]
        self.assertEqual(len(backups), 1, os.listdir(folder))
        kept = [sample["ts"] for sample in self.samples(history)]
        self.assertIn(f"sample {SAVED - 1}", kept)
        self.assertNotIn("sample 0", kept)

    def asked_again(self, process: subprocess.Popen) -> bool:
        """Presses once more where a snapshot was on its way."""
        if any(name.startswith("Wait for the current snapshot") for name in self.names(process)):
            self.press(process, "compact own history…")
            self.said(process, "Compact OSTREL history\\?")
            self.press(process, "Compact own history")
        return False

    @staticmethod
    def samples(path: str) -> list[dict]:
        try:
            lines = Path(path).read_text("ascii").splitlines()
            return [sample for sample in map(json.loads, lines) if "ts" in sample]
        except (ValueError, TypeError, OSError):
            return []
