#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""A short soak passes, and one with a planted fault finds that fault.

Called with the preset to use.
"""

import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRESET = "dev"
HOURS = "0.008"  # 29 s
TIMEOUT = 150


class SoakCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.output = pathlib.Path(folder.name) / "soak"

    def command(self, *options):
        return [str(ROOT / "scripts" / "soak"), "--no-build", "--preset", PRESET,
                "--output", str(self.output), *options]

    def soak(self, *options):
        return subprocess.run(self.command(*options), capture_output=True, text=True, check=False,
                              timeout=TIMEOUT)


class Passes(SoakCase):
    def test_passes_and_prints_its_table(self):
        result = self.soak("--seed", "1", HOURS)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"\*\*findings\*\* +\| +0 \| +0 \|")
        self.assertRegex(result.stdout, r"sounds finished +\| +[1-9]\d* \| +[1-9]\d* \|")
        for name in ("table.md", "samples.csv", "soak.png"):
            self.assertGreater((self.output / name).stat().st_size, 0, name)


class Finds(SoakCase):
    def find(self, fault):
        return self.soak("--seed", "1", "--only", "accelerated", "--stuck-after", "6",
                         "--plant", fault, HOURS)

    def assert_found(self, result, text):
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertRegex(result.stdout, "FINDING .*" + text)

    def test_finds_what_is_not_released(self):
        result = self.find("memory,descriptors,threads")
        self.assert_found(result, "the heap in use grows steadily")
        self.assert_found(result, "file descriptors rose")
        self.assert_found(result, "threads rose")

    def test_finds_a_request_that_is_never_answered(self):
        self.assert_found(self.find("answer"), r"nothing has gone on .* unanswered: \d+ echo")

    def test_finds_a_sound_that_never_ends(self):
        self.assert_found(self.find("sound"), "nothing has gone on .* sounds: o-stuck")


class Behaves(SoakCase):
    def test_ends_early_with_the_table_when_interrupted(self):
        process = subprocess.Popen(self.command("1"), stdout=subprocess.PIPE, text=True)
        for line in process.stdout:
            if "requests" in line:  # the first line of progress
                break
        process.send_signal(signal.SIGINT)
        rest = process.communicate(timeout=TIMEOUT)[0]
        self.assertEqual(process.returncode, 0, rest)
        self.assertIn("quiet points", rest)

    def test_refuses_wrong_arguments(self):
        for options in ((), ("soon",), ("0",), ("--plant", "doubt", "1"), ("1", "2")):
            self.assertEqual(self.soak(*options).returncode, 2, options)


if __name__ == "__main__":
    PRESET = sys.argv.pop(1)
    unittest.main()
