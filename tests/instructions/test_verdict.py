#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Which made-up counts count.py accepts, and which it does not."""

import contextlib
import io
import json
import pathlib
import tempfile
import unittest

import count

EXPECTED = {"sound-enqueue": 10_000, "sound-cancel": 20_000}


class VerdictTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.expected = pathlib.Path(folder.name) / "expected.json"
        self.seen = pathlib.Path(folder.name) / "seen.json"
        self.expect(EXPECTED)

    def expect(self, instructions, **others):
        usual = {"requests": 1000, "tolerance_percent": 3, "made_with": count.versions()}
        self.expected.write_text(json.dumps({**usual, **others, "instructions": instructions}))

    def judge(self, *options, **seen):
        """Compares the expected counts with the same ones changed by `seen`. Returns the exit status and
        what was printed."""
        self.seen.write_text(json.dumps(
            EXPECTED | {name.replace("_", "-"): value for name, value in seen.items()}))
        said, remarked = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(said), contextlib.redirect_stderr(remarked):
            status = count.main(["--build", "none", "--expected", str(self.expected),
                                 "--seen", str(self.seen), *options])
        return status, said.getvalue(), remarked.getvalue()

    def test_accepts_the_expected_counts(self):
        status, said, remarked = self.judge()
        self.assertEqual((status, remarked), (0, ""))
        self.assertEqual(said.count("ok\n"), 2)

    def test_accepts_counts_just_within_the_tolerance(self):
        self.assertEqual(self.judge(sound_enqueue=10_299, sound_cancel=19_401)[0], 0)

    def test_finds_a_count_over_the_tolerance(self):
        status, said, remarked = self.judge(sound_enqueue=10_301)
        self.assertEqual(status, 1)
        self.assertRegex(said, r"sound-enqueue +10000 +10301 +\+3\.01 % +over")
        self.assertRegex(said, r"sound-cancel .* ok")
        self.assertIn("Over:", remarked)

    def test_finds_a_count_under_the_tolerance(self):
        status, said, remarked = self.judge(sound_cancel=19_399)
        self.assertEqual(status, 1)
        self.assertRegex(said, r"sound-cancel .* under")
        self.assertIn("--write", remarked)

    def test_does_not_balance_operations_against_each_other(self):
        self.assertEqual(self.judge(sound_enqueue=12_000, sound_cancel=10_000)[0], 1)

    def test_finds_a_counted_operation_that_was_not_expected(self):
        status, said, _ = self.judge(display_open=5)
        self.assertEqual(status, 1)
        self.assertRegex(said, r"display-open +- +5 +- +unknown")

    def test_finds_an_expected_operation_that_was_not_counted(self):
        self.expect(EXPECTED | {"display-open": 5})
        status, said, _ = self.judge()
        self.assertEqual(status, 1)
        self.assertRegex(said, r"display-open +5 +- +- +unknown")

    def test_says_which_library_differs_when_a_count_does(self):
        self.expect(EXPECTED, made_with=count.versions() | {"libc6": "0.1"})
        self.assertIn("libc6: it was 0.1", self.judge(sound_enqueue=20_000)[2])
        self.assertNotIn("libc6", self.judge()[2])

    def test_writes_the_counts_and_keeps_the_tolerance(self):
        self.assertEqual(self.judge("--write", sound_enqueue=9000)[0], 0)
        self.assertEqual(self.judge(sound_enqueue=9000)[0], 0)
        self.assertEqual(self.judge()[0], 1)
        written = json.loads(self.expected.read_text())
        self.assertEqual((written["tolerance_percent"], written["requests"]), (3, 1000))

    def test_there_is_an_expected_count_for_each_operation(self):
        figures = json.loads(count.EXPECTED.read_text())
        self.assertEqual(sorted(figures["instructions"]), sorted([*count.OPERATIONS, count.NOTIFY]))


if __name__ == "__main__":
    unittest.main()
