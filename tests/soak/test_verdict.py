#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""What is a finding of a soak, and what is not."""

import random
import types
import unittest

from soakwatch import report, verdict


def quiet_points(count=14, **courses):
    """Quiet points without findings, except for `courses`: functions of the number of the point."""
    usual = {"fds": 13, "threads": 11, "heap": 800_000, "idle_sleeps": 0, "idle_cpu": 0.0}
    return [dict(usual, **{key: course(number) for key, course in courses.items()})
            for number in range(count)]


class VerdictTest(unittest.TestCase):
    def only_finding(self, quiet):
        findings = verdict.judge(quiet)
        self.assertEqual(len(findings), 1, findings)
        return findings[0]

    def test_finds_nothing_if_nothing_changes(self):
        self.assertEqual(verdict.judge(quiet_points()), [])

    def test_finds_one_file_descriptor_more(self):
        self.assertIn("file descriptors rose from 13 to 14",
                      self.only_finding(quiet_points(fds=lambda number: 13 + (number > 10))))

    def test_finds_one_thread_more(self):
        self.assertIn("threads rose",
                      self.only_finding(quiet_points(threads=lambda number: 11 + (number > 10))))

    def test_finds_a_heap_that_keeps_growing_among_noise(self):
        dice = random.Random(1)
        quiet = quiet_points(heap=lambda number: 800_000 + 5000 * number + dice.randrange(8000))
        self.assertIn("grows steadily", self.only_finding(quiet))

    def test_accepts_noise(self):
        for seed in range(50):
            dice = random.Random(seed)
            quiet = quiet_points(heap=lambda number, dice=dice: 800_000 + dice.randrange(20_000))
            self.assertEqual(verdict.judge(quiet), [], seed)

    def test_accepts_a_heap_that_grows_at_the_beginning(self):
        self.assertEqual(
            verdict.judge(quiet_points(heap=lambda number: 800_000 + 10_000 * min(number, 3))), [])

    def test_accepts_a_heap_that_grows_in_steps(self):
        self.assertEqual(verdict.judge(quiet_points(
            heap=lambda number: 800_000 + 30_000 * (number > 6) + 30_000 * (number > 9))), [])

    def test_accepts_one_late_step(self):
        heap = (635264, 635264, 639920, 640816, 641696, 642064, 642848, 819216, 772432)
        self.assertEqual(verdict.judge(quiet_points(len(heap), heap=heap.__getitem__)), [])

    def test_accepts_growth_of_less_than_a_buffer(self):
        self.assertEqual(verdict.judge(quiet_points(heap=lambda number: 800_000 + 2000 * number)), [])

    def test_finds_a_small_leak_given_time(self):
        quiet = quiet_points(60, heap=lambda number: 800_000 + 2000 * number)
        self.assertIn("grows steadily", self.only_finding(quiet))

    def test_finds_a_heap_that_jumps(self):
        quiet = quiet_points(heap=lambda number: 800_000 + 400_000 * (number > 12))
        self.assertIn("rose by 400000 bytes", self.only_finding(quiet))

    def test_finds_a_host_that_does_not_rest(self):
        self.assertIn("restless", self.only_finding(quiet_points(idle_sleeps=lambda number: 100)))


class ReportTest(unittest.TestCase):
    def phase(self):
        figures = {"requests": {"echo": {"sent": 10, "accepted": 6, "refused": 3,
                                         "slowestMs": 12.3}},
                   "responses": {"started": 4}, "displaysShown": 2, "displaysGone": 2, "counts": {}}
        keys = ("heap", "rss", "pss", "private", "fds", "threads", "idle_sleeps")
        return types.SimpleNamespace(
            name="accelerated", factor=20, loaded=90.0, findings=["something grows"],
            figures=figures,
            quiet=[dict.fromkeys(keys, 2048), dict.fromkeys(keys, 1024)])

    def test_the_table_counts_requests_and_replies(self):
        text = report.report("scripts/soak 1", 7, [self.phase()], dict.fromkeys(report.FAULTS, 0))
        self.assertRegex(text, r"\| - echo +\| +6 / 3 \|")
        self.assertRegex(text, r"unanswered at the end\*\* +\| +1 \|")
        self.assertRegex(text, r"time that passed for the host +\| +0:30:00 \|")
        self.assertRegex(text, r"heap in use, KiB: first / last / max +\| +2.0 / 1.0 / 2.0 \|")

    def test_the_report_names_command_seed_and_findings(self):
        text = report.report("scripts/soak 1", 7, [self.phase()], dict.fromkeys(report.FAULTS, 0))
        self.assertIn("`scripts/soak 1`, seed 7", text)
        self.assertIn("FINDING (accelerated): something grows", text)


if __name__ == "__main__":
    unittest.main()
