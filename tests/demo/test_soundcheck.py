# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The checker of the demonstration's recordings passes what is right and finds what is wrong."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).resolve().parent
DEMO = TESTS.parents[1] / "demo"
sys.path[:0] = [str(DEMO), str(TESTS)]

import sounds
import synthetic
from soundcheck import checks


class RecordingCheckTest(unittest.TestCase):
    def setUp(self):
        self.run_ = synthetic.Run()

    def failures(self):
        results = checks.check_all(self.run_.tracks(), self.run_.story(), self.run_.expected())
        return {(check.subject, check.statement) for check in results if not check.passed}

    def assert_found(self, *failures):
        """These checks fail, and no other one."""
        self.assertEqual(self.failures(), set(failures))

    def replace_event(self, old, *new):
        position = self.run_.timeline.index(old)
        self.run_.timeline[position:position + 1] = new

    def replace_sound(self, old, *new):
        position = self.run_.played.index(old)
        self.run_.played[position:position + 1] = new


class RightRunTest(RecordingCheckTest):
    def test_passes_a_right_run(self):
        self.assert_found()

    def test_follows_pause_and_resume_events_as_well_as_their_absence(self):
        self.run_.timeline += [(6.27, "paused", "news"), (7.51, "resumed", "news")]
        self.assert_found()


class MusicTest(RecordingCheckTest):
    def test_finds_music_that_is_not_ducked(self):
        self.run_.music = [(0.0, 1.0), (5.05, 0.1), (12.05, 1.0)]
        self.assert_found(("main audio", "is ducked soon"),
                          ("main audio", "is ducked by what is configured"))

    def test_finds_music_that_is_ducked_too_little(self):
        self.run_.music[1] = (2.05, 0.2)
        self.assert_found(("main audio", "is ducked soon"),
                          ("main audio", "is ducked by what is configured"))

    def test_finds_music_that_is_ducked_too_late(self):
        self.run_.music[3] = (6.0, 0.1)
        self.assert_found(("main audio", "is ducked soon"))

    def test_finds_music_that_is_not_restored(self):
        self.run_.music[4] = (12.05, 0.1)
        self.assert_found(("main audio", "is restored soon"),
                          ("main audio", "is restored by what is configured"))

    def test_finds_music_that_stops(self):
        self.run_.music[3] = (5.05, 0.0)
        self.assertIn(("main audio", "never stops"), self.failures())

    def test_finds_that_there_is_no_music(self):
        self.run_.music = [(-1.0, 0.0)]
        self.assert_found(("main audio", "plays and is ducked"))

    def test_finds_a_notification_that_sounds_while_nothing_is_ducked(self):
        self.replace_event((3.31, "restored", None), (2.9, "restored", None))
        self.assertIn(("main audio", "is ducked while they sound"), self.failures())

    def test_finds_a_notification_that_sounds_without_the_resource(self):
        self.replace_event((2.25, "acquired", None), (2.3, "acquired", None))
        self.assert_found(("audio resource", "is held while they sound"))


class NotificationTest(RecordingCheckTest):
    def test_finds_a_sound_that_is_missing(self):
        self.replace_sound(("chime", 2.29, 3.19))
        self.assert_found(("chime", "sounds once started"), ("chime", "sounds for its whole length"))

    def test_finds_a_sound_that_comes_late(self):
        self.replace_sound(("ring", 10.6, 11.9), ("ring", 11.2, 11.9))
        self.assertIn(("ring", "sounds once started"), self.failures())

    def test_finds_a_sound_that_is_cut_off(self):
        self.replace_sound(("chime", 2.29, 3.19), ("chime", 2.29, 3.0))
        self.assert_found(("chime", "sounds for its whole length"))

    def test_finds_a_sound_with_a_hole(self):
        self.replace_sound(("announcement", 7.53, 10.54),
                           ("announcement", 7.53, 8.5), ("announcement", 8.7, 10.54))
        self.assert_found(("news", "sounds for its whole length"))

    def test_finds_another_sound_than_the_one_that_started(self):
        self.replace_sound(("chime", 2.29, 3.19), ("another", 2.29, 3.19))
        self.assert_found(("chime", "sounds once started"), ("chime", "sounds for its whole length"),
                          ("notifications", "have the sounds that they should"))

    def test_finds_a_sound_that_goes_on_after_its_cancel(self):
        self.replace_sound(("ring", 10.6, 11.9), ("ring", 10.6, 13.0))
        failures = self.failures()
        self.assertIn(("ring", "is silent after its end"), failures)
        self.assertIn(("notifications", "are the only thing on their device"), failures)

    def test_finds_a_loop_that_falls_silent_before_its_cancel(self):
        self.replace_sound(("ring", 10.6, 11.9), ("ring", 10.6, 11.2))
        self.assert_found(("ring", "sounds until its end"))

    def test_finds_an_interrupted_sound_that_does_not_pause(self):
        self.replace_sound(("announcement", 5.29, 6.28), ("announcement", 5.29, 7.5))
        failures = self.failures()
        self.assertIn(("news", "is silent while interrupted"), failures)
        self.assertIn(("notifications", "sound one at a time"), failures)

    def test_finds_an_interrupted_sound_that_does_not_go_on(self):
        self.replace_sound(("announcement", 7.53, 10.54))
        failures = self.failures()
        self.assertIn(("news", "goes on afterwards"), failures)
        self.assertIn(("news", "sounds for its whole length"), failures)

    def test_finds_an_interrupted_sound_that_begins_again(self):
        self.replace_sound(("announcement", 7.53, 10.54), ("announcement", 7.53, 11.53))
        self.assertIn(("news", "sounds for its whole length"), self.failures())

    def test_finds_that_nothing_was_interrupted(self):
        self.run_.expectations["notifications"]["alarm"]["interrupted_by"] = ["ring"]
        self.assert_found(("alarm", "is interrupted"))

    def test_finds_a_failed_one_that_sounded(self):
        self.run_.played.append(("chime", 13.0, 13.3))
        failures = self.failures()
        self.assertIn(("broken", "is never heard"), failures)
        self.assertIn(("notifications", "are the only thing on their device"), failures)

    def test_finds_a_sound_that_nobody_asked_for(self):
        self.run_.played.append(("another", 4.0, 4.2))
        self.assertIn(("notifications", "are the only thing on their device"), self.failures())

    def test_finds_a_notification_on_the_main_device(self):
        self.run_.on_main.append(("chime", 2.29, 3.19))
        self.assertIn(("notifications", "are not on the main device"), self.failures())

    def test_finds_a_recording_that_ends_too_early(self):
        self.run_.recorded = 11.5
        failures = self.failures()
        self.assertIn(("main", "is recorded for the whole run"), failures)
        self.assertIn(("notifications", "is recorded for the whole run"), failures)


class TimelineTest(RecordingCheckTest):
    def test_finds_an_end_of_another_kind(self):
        self.replace_event((10.56, "ended", "broken", "failed"),
                           (10.56, "ended", "broken", "finished"))
        self.assert_found(("broken", "ends as it should"))

    def test_finds_a_notification_that_never_ends(self):
        self.replace_event((10.56, "ended", "broken", "failed"))
        self.assert_found(("broken", "ends as it should"))

    def test_finds_a_start_that_was_not_to_be(self):
        self.replace_event((10.56, "ended", "broken", "failed"), (10.555, "started", "broken"),
                           (10.56, "ended", "broken", "failed"))
        self.assertIn(("broken", "reports its start"), self.failures())

    def test_finds_a_missing_start(self):
        self.replace_event((2.26, "started", "chime"))
        self.assertIn(("chime", "reports its start"), self.failures())

    def test_finds_a_second_end(self):
        self.run_.timeline.append((3.25, "ended", "chime", "finished"))
        self.assert_found(("chime", "has each response once"))

    def test_finds_a_request_that_was_never_made(self):
        self.replace_event((5.4, "refused", "second-chime"))
        self.assert_found(("second-chime", "was requested"))

    def test_finds_a_notification_that_was_not_expected(self):
        del self.run_.expectations["notifications"]["second-chime"]
        self.assert_found(("second-chime", "was asked for"))


class CommandTest(unittest.TestCase):
    def analyse(self, run):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            run.write(folder)
            picture = folder / "picture.png"
            result = subprocess.run(
                [sys.executable, str(DEMO / "analyse.py"), name,
                 "--timeline", str(folder / "timeline.jsonl"),
                 "--expect", str(folder / "expectations.json"),
                 "--sounds", str(folder / "sounds.json"), "--picture", str(picture)],
                capture_output=True, text=True, check=False)
            return result, picture.read_bytes() if picture.exists() else b""

    def test_prints_a_table_draws_a_picture_and_succeeds(self):
        result, picture = self.analyse(synthetic.Run())
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"All \d+ checks passed")
        self.assertTrue(picture.startswith(b"\x89PNG"))

    def test_marks_what_failed_draws_a_picture_and_fails(self):
        run = synthetic.Run()
        run.played.remove(("chime", 2.29, 3.19))
        result, picture = self.analyse(run)
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"(?m)^FAILED +chime +sounds once started +nothing heard")
        self.assertRegex(result.stdout, r"\d+ of \d+ checks passed, 2 FAILED")
        self.assertTrue(picture.startswith(b"\x89PNG"))

    def test_says_what_it_can_not_read(self):
        run = synthetic.Run()
        run.timeline = []
        result, _ = self.analyse(run)
        self.assertEqual(result.returncode, 2)
        self.assertIn("the timeline is empty", result.stderr)


class SoundsTest(unittest.TestCase):
    def test_no_sound_can_be_taken_for_another(self):
        frequencies = [frequency for _, frequency, _ in sounds.NOTIFICATIONS.values()]
        heard = sorted(frequencies + [frequency / 2 for frequency in frequencies])
        for frequency in frequencies:
            others = [other for other in heard if other != frequency]
            self.assertGreater(min(abs(other - frequency) for other in others), 105)
            self.assertGreater(frequency, sounds.MUSIC_CEILING + 100)

    def test_music_has_one_loudness_and_leaves_the_notifications_their_frequencies(self):
        loop = synthetic.recording.Track(sounds.music(), sounds.RATE, 0.0)
        inner = loop.loudness(synthetic.recording.STEADY_WINDOW)[10:-10]
        self.assertLess(max(abs(inner - sounds.MUSIC_LOUDNESS)), checks.LOUDNESS_TOLERANCE)
        for _, frequency, _ in sounds.NOTIFICATIONS.values():
            self.assertLess(max(loop.band(frequency)[10:-10]), checks.AUDIBLE)


if __name__ == "__main__":
    unittest.main()
