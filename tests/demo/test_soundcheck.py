# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""demo/analyse.py passes a run without faults and finds each kind of fault."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import sounds
import synthetic
from soundcheck import checks, fleet, screen

DEMO = pathlib.Path(sounds.__file__).parent


class RecordingCheckTest(unittest.TestCase):
    PAIRS = False  # a fault of a sound is also one of its pair

    def setUp(self):
        self.run_ = synthetic.Run()
        if not self.PAIRS:
            for expected in self.run_.expectations["display"]["notifications"].values():
                expected.pop("together", None)

    def failures(self):
        results = checks.check_all(self.run_.tracks(), self.run_.story(), self.run_.expected())
        return {(check.subject, check.statement) for check in results if not check.passed}

    def assert_found(self, *failures):
        """Asserts that these checks fail, and no others."""
        self.assertEqual(self.failures(), set(failures))

    def replace_event(self, old, *new):
        position = self.run_.timeline.index(old)
        self.run_.timeline[position:position + 1] = new

    def replace_sound(self, old, *new):
        position = self.run_.played.index(old)
        self.run_.played[position:position + 1] = new


class FaultlessRunTest(RecordingCheckTest):
    PAIRS = True

    def test_passes_a_run_without_faults(self):
        self.assert_found()

    def test_passes_the_same_run_with_pause_and_resume_events(self):
        self.run_.timeline += [(6.27, "paused", "news"), (7.51, "resumed", "news")]
        self.assert_found()


class MusicTest(RecordingCheckTest):
    def test_finds_music_that_is_not_ducked(self):
        self.run_.music = [(0.0, 1.0), (5.05, 0.1), (12.05, 1.0)]
        self.assert_found(("main audio", "is ducked soon"),
                          ("main audio", "is ducked to the right level"))

    def test_finds_music_that_is_ducked_too_little(self):
        self.run_.music[1] = (2.05, 0.2)
        self.assert_found(("main audio", "is ducked soon"),
                          ("main audio", "is ducked to the right level"))

    def test_finds_music_that_is_ducked_too_late(self):
        self.run_.music[3] = (6.0, 0.1)
        self.assert_found(("main audio", "is ducked soon"))

    def test_finds_music_that_is_not_restored(self):
        self.run_.music[4] = (12.05, 0.1)
        self.assert_found(("main audio", "is restored soon"),
                          ("main audio", "is restored to the right level"))

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

    def test_finds_that_another_sound_is_heard(self):
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
        self.assertIn(("news", "resumes afterwards"), failures)
        self.assertIn(("news", "sounds for its whole length"), failures)

    def test_finds_an_interrupted_sound_that_begins_again(self):
        self.replace_sound(("announcement", 7.53, 10.54), ("announcement", 7.53, 11.53))
        self.assertIn(("news", "sounds for its whole length"), self.failures())

    def test_finds_that_nothing_was_interrupted(self):
        self.run_.expectations["notifications"]["alarm"]["interrupted_by"] = ["ring"]
        self.assert_found(("alarm", "is interrupted"))

    def test_finds_a_failed_sound_that_is_heard(self):
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

    def test_finds_an_unexpected_start(self):
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
        self.assert_found(("second-chime", "is expected"))


class DisplayTest(RecordingCheckTest):
    PAIRS = True

    def move(self, old, *new):
        """Replaces all events that begin with the same fields (moment, event, id)."""
        for event in list(self.run_.timeline):
            if event[:len(old)] == old:
                self.run_.timeline.remove(event)
        self.run_.timeline += new

    def leave_at(self, name, before, after, kind):
        """Changes when the notification leaves the display."""
        self.move((before, "display hidden", name), (after, "display hidden", name))
        self.move((before, "display closed", name), (after, "display closed", name, kind))

    def test_finds_one_that_is_shown_too_long(self):
        self.leave_at("page", 8.803, 8.85, "expired")
        self.assert_found(("display page", "is on display for its time"))

    def test_finds_one_that_is_shown_too_briefly(self):
        self.leave_at("page", 8.803, 8.77, "expired")
        self.assert_found(("display page", "is on display for its time"))

    def test_finds_a_message_that_is_disturbed_by_its_sound(self):
        self.leave_at("fire", 7.261, 7.2, "expired")
        self.move((7.261, "display shown", "page"), (7.2, "display shown", "page"))
        self.leave_at("page", 8.803, 8.742, "expired")
        self.assert_found(("display fire", "is on display for its time"),
                          ("alarm + fire", "do not disturb each other"))

    def test_finds_a_sound_that_is_disturbed_by_its_message(self):
        self.replace_sound(("chime", 2.29, 3.19), ("chime", 2.29, 3.0))
        self.assert_found(("chime", "sounds for its whole length"),
                          ("chime + door", "do not disturb each other"))

    def test_finds_an_interrupted_one_that_gets_its_whole_time_again(self):
        self.leave_at("page", 8.803, 9.262, "expired")
        self.assert_found(("display page", "is on display for its time"))

    def test_finds_an_interrupted_one_that_does_not_come_back(self):
        self.move((7.261, "display shown", "page"))
        self.move((8.803, "display hidden", "page"))
        self.assert_found(("display page", "is on display for its time"),
                          ("display page", "is interrupted"),
                          ("display", "shows them in their order"),
                          ("display", "is not empty while one is due"))

    def test_finds_an_urgent_one_that_waits(self):
        self.move((6.26, "display hidden", "page"))
        self.move((6.26, "display shown", "fire"))
        self.leave_at("fire", 7.261, 8.803, "expired")
        self.move((7.261, "display shown", "page"), (7.803, "display hidden", "page"),
                  (7.803, "display shown", "fire"))
        self.leave_at("page", 8.803, 7.803, "expired")
        failures = self.failures()
        self.assertIn(("display page", "is interrupted"), failures)
        self.assertIn(("display", "shows them in their order"), failures)

    def test_finds_a_wrong_order(self):
        self.run_.expectations["display"]["order"][:2] = ["mail", "door"]
        self.assert_found(("display", "shows them in their order"))

    def test_finds_one_that_stays_when_it_is_closed(self):
        self.leave_at("menu", 5.701, 5.78, "closed")
        self.assert_found(("display menu", "is on display for its time"))

    def test_finds_one_that_nobody_closed(self):
        self.move((5.7, "display closing", "menu"))
        self.assert_found(("display menu", "is closed"))

    def test_finds_an_end_of_another_kind(self):
        self.move((5.701, "display closed", "menu"), (5.701, "display closed", "menu", "expired"))
        self.assert_found(("display menu", "ends as it should"))

    def test_finds_one_that_never_ends(self):
        self.move((8.803, "display hidden", "page"))
        self.move((8.803, "display closed", "page"))
        self.assert_found(("display page", "ends as it should"),
                          ("display page", "is on display for its time"),
                          ("display letter", "is seen in the right order"))

    def test_finds_one_that_is_shown_before_its_cancel(self):
        self.move((7.261, "display shown", "page"), (7.261, "display shown", "note"),
                  (7.3, "display hidden", "note"), (7.3, "display shown", "page"))
        failures = self.failures()
        self.assertIn(("display note", "is never on display"), failures)
        self.assertIn(("display", "shows them in their order"), failures)

    def test_finds_one_that_still_waits_after_its_cancel(self):
        self.move((8.001, "display closed", "note"), (8.1, "display closed", "note", "cancelled"))
        self.assert_found(("display note", "goes when cancelled"))

    def test_finds_two_at_a_time(self):
        self.move((3.502, "display shown", "mail"), (3.49, "display shown", "mail"))
        self.assertIn(("display mail", "is seen in the right order"), self.failures())

    def test_finds_a_second_end(self):
        self.run_.timeline.append((8.9, "display closed", "page", "expired"))
        self.assert_found(("display page", "is seen in the right order"))

    def test_finds_an_empty_display_while_one_is_due(self):
        self.move((4.501, "display shown", "menu"), (4.9, "display shown", "menu"))
        self.assert_found(("display", "is not empty while one is due"))

    def test_finds_a_refusal(self):
        for event in [event for event in self.run_.timeline if event[2] == "menu"]:
            self.run_.timeline.remove(event)
        self.run_.timeline += [(4.5, "display sent", "menu", 0.0), (4.501, "display refused", "menu")]
        self.assertIn(("display menu", "ends as it should"), self.failures())

    def test_finds_a_request_that_was_never_made(self):
        self.run_.expectations["display"]["notifications"]["other"] = {"ends": "expired"}
        self.assert_found(("display other", "was requested"))

    def test_finds_one_that_was_not_expected(self):
        self.run_.timeline += [(10.0, "display shown", "/other"), (10.5, "display hidden", "/other")]
        self.assert_found(("display /other", "is expected"),
                          ("display", "shows them in their order"))

    def test_finds_a_pair_that_is_not_sent_together(self):
        self.replace_event((1.999, "sent", "chime"), (1.9, "sent", "chime"))
        self.assert_found(("chime + door", "are sent together"))

    def test_finds_a_pair_that_is_not_on_at_the_same_time(self):
        self.run_.expectations["display"]["notifications"]["mail"]["together"] = "chime"
        self.assertIn(("chime + mail", "are on at the same time"), self.failures())

    def test_finds_one_that_ends_after_its_cancel_command(self):
        self.move((12.3, "display told", "letter"), (12.1, "display told", "letter", "cancelled"))
        self.assert_found(("display letter", "is on display for its time"))

    def test_finds_one_whose_sender_is_not_told_of_its_end(self):
        self.move((12.3, "display told", "letter"))
        self.assertIn(("display letter", "ends as it should"), self.failures())

    def test_finds_one_whose_sender_is_told_a_different_end(self):
        self.move((12.3, "display told", "letter"), (12.3, "display told", "letter", "expired"))
        self.assert_found(("display letter", "ends as it should"))

    def test_finds_one_with_two_different_ends(self):
        self.run_.timeline.append((8.804, "display told", "page", "expired"))
        self.assert_found(("display page", "is seen in the right order"))

    def test_checks_the_display_without_a_recording(self):
        results = checks.check_all(None, self.run_.story(), self.run_.expected())
        self.assertIn(("display page", "is on display for its time", True),
                      {(check.subject, check.statement, check.passed) for check in results})
        self.assertEqual([check for check in results if not check.passed], [])


class ScreenTest(unittest.TestCase):
    def setUp(self):
        self.run_ = synthetic.Run()
        self.colours = {}
        messages = self.run_.expectations["display"]["notifications"]
        for number, (name, message) in enumerate(messages.items()):
            self.colours[name] = (200, 30 * number, 0)
            message["colour"] = f"rgb(200, {30 * number}, 0)"
        # What the screen shows from which moment on; 20 ms later than the queue has it.
        self.shown = [(0.0, screen.EMPTY)]
        for name, begin, end in self.run_.story().display.heads:
            self.shown += [(begin - synthetic.START + 0.02, self.colours[name]),
                           (end - synthetic.START + 0.02, screen.EMPTY)]

    def failures(self):
        begins = [synthetic.START + moment for moment, _ in self.shown]
        ends = begins[1:] + [synthetic.START + synthetic.LENGTH]
        shots = [screen.Shot(begin, end, pixel)
                 for begin, end, (_, pixel) in zip(begins, ends, self.shown) if begin < end]
        display = self.run_.expected().display
        results = screen.check_screen(screen.seen(shots, display), self.run_.story().display, display)
        return {check.subject for check in results if not check.passed}

    def replace(self, name, pixel):
        self.shown = [(moment, pixel if shown == self.colours[name] else shown)
                      for moment, shown in self.shown]

    def test_passes_a_screen_that_shows_what_is_on_display(self):
        self.assertEqual(self.failures(), set())

    def test_passes_several_pictures_of_the_same_message(self):
        position = [pixel for _, pixel in self.shown].index(self.colours["door"])
        self.shown.insert(position + 1, (2.5, self.colours["door"]))
        self.assertEqual(self.failures(), set())

    def test_finds_a_message_that_is_not_shown(self):
        self.replace("menu", screen.EMPTY)
        self.assertEqual(self.failures(), {"screen", "screen menu"})

    def test_finds_something_else_in_place_of_a_message(self):
        self.replace("menu", (1, 2, 3))
        self.assertEqual(self.failures(), {"screen", "screen menu"})

    def test_finds_one_message_in_place_of_another(self):
        self.replace("mail", self.colours["note"])
        self.assertEqual(self.failures(), {"screen", "screen mail", "screen note"})

    def test_finds_a_message_that_stays_too_long(self):
        position = [pixel for _, pixel in self.shown].index(self.colours["menu"])
        self.shown[position - 1:position + 1] = [(5.2, self.colours["menu"])]
        self.assertEqual(self.failures(), {"screen mail", "screen menu"})


class FleetTest(RecordingCheckTest):
    def failures(self):
        results = fleet.check_fleet(self.run_.story().fleet, self.run_.expected().fleet)
        return {(check.subject, check.statement) for check in results if not check.passed}

    def test_finds_a_device_that_does_not_answer(self):
        self.replace_event((2.3, "fleet answered", "dinner on hall", "shown"))
        self.assert_found(("fleet dinner on hall", "is answered"))

    def test_finds_a_device_that_refuses(self):
        self.replace_event((7.1, "fleet answered", "dry on porch", "done"),
                           (7.1, "fleet answered", "dry on porch", "refused"))
        self.assert_found(("fleet dry on porch", "is answered"))

    def test_finds_a_message_that_is_shown_twice(self):
        self.run_.timeline.append((8.0, "fleet ended", "rain on porch", "closed"))
        self.assert_found(("fleet rain on porch", "ends once, as it should"))

    def test_finds_a_message_that_never_ends(self):
        self.replace_event((3.3, "fleet ended", "dinner on porch", "expired"))
        self.assert_found(("fleet dinner on porch", "ends once, as it should"))

    def test_finds_a_device_that_was_not_cut_off(self):
        self.replace_event((4.0, "fleet away", "porch"))
        self.assert_found(("fleet rain on porch", "is answered when the device is back"),
                          ("fleet rain on hall", "does not wait for other devices"))

    def test_finds_a_device_that_does_not_catch_up(self):
        self.replace_event((6.1, "fleet answered", "rain on porch", "shown"))
        self.replace_event((6.2, "fleet answered", "rain on porch", "shown"))
        self.assert_found(("fleet rain on porch", "is answered"),
                          ("fleet rain on porch", "is answered when the device is back"))

    def test_finds_a_device_that_waits_for_another(self):
        self.replace_event((4.2, "fleet answered", "rain on hall", "shown"),
                           (6.1, "fleet answered", "rain on hall", "shown"))
        self.assert_found(("fleet rain on hall", "does not wait for other devices"))

    def test_finds_a_call_that_was_not_expected(self):
        self.run_.timeline.append((8.0, "fleet answered", "snow on hall", "shown"))
        self.assert_found(("fleet snow on hall", "is expected"))


class TypedCommandTest(RecordingCheckTest):
    def test_finds_another_exit_status(self):
        self.replace_event((11.03, "returned", "show", 0), (11.03, "returned", "show", 1))
        self.assert_found(("command show", "exits as it should"))

    def test_finds_one_that_never_ends(self):
        self.replace_event((11.03, "returned", "show", 0))
        self.assert_found(("command show", "exits as it should"))

    def test_finds_one_that_prints_something_else(self):
        self.replace_event((11.02, "printed", "show", "7"), (11.02, "printed", "show", "seven"))
        self.assert_found(("command show", "prints what it should"))

    def test_finds_one_that_prints_too_little(self):
        self.replace_event((11.02, "printed", "show", "7"))
        self.assert_found(("command show", "prints what it should"))

    def test_finds_one_that_prints_too_much(self):
        self.run_.timeline.append((12.0, "printed", "cancel", "There is no such message."))
        self.assert_found(("command cancel", "prints what it should"))

    def test_finds_one_that_was_never_typed(self):
        self.run_.expectations["commands"]["list"] = {"exit": 0, "prints": []}
        self.assert_found(("command list", "was typed"))

    def test_finds_one_that_was_not_expected(self):
        del self.run_.expectations["commands"]["cancel"]
        self.assert_found(("command cancel", "is expected"))


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
        self.assertRegex(result.stdout, r"(?m)^page +5\.801 - 6\.260, 7\.261 - 8\.803 +"
                                        r"459\.0 \+ 1542\.0 = 2001\.0 ms +2000\.0 ms +\+1\.0 ms")
        self.assertTrue(picture.startswith(b"\x89PNG"))

    def test_marks_what_failed_draws_a_picture_and_fails(self):
        run = synthetic.Run()
        run.played.remove(("chime", 2.29, 3.19))
        result, picture = self.analyse(run)
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"(?m)^FAILED +chime +sounds once started +nothing heard")
        self.assertRegex(result.stdout, r"\d+ of \d+ checks passed, 3 FAILED")
        self.assertTrue(picture.startswith(b"\x89PNG"))

    def test_finds_a_wrong_time_on_display_without_a_recording(self):
        run = synthetic.Run()
        run.timeline[run.timeline.index((8.803, "display hidden", "page"))] = (
            8.77, "display hidden", "page")
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            run.write(folder)
            result = subprocess.run(
                [sys.executable, str(DEMO / "analyse.py"),
                 "--timeline", str(folder / "timeline.jsonl"),
                 "--expect", str(folder / "expectations.json"),
                 "--sounds", str(folder / "sounds.json")],
                capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"(?m)^FAILED +display page +is on display for its time")
        self.assertRegex(result.stdout, r"\d+ of \d+ checks passed, 1 FAILED")

    def test_reports_input_that_it_cannot_read(self):
        run = synthetic.Run()
        run.timeline = []
        result, _ = self.analyse(run)
        self.assertEqual(result.returncode, 2)
        self.assertIn("the timeline is empty", result.stderr)


class SoundsTest(unittest.TestCase):
    def test_no_sound_can_be_mistaken_for_another(self):
        frequencies = [frequency for _, frequency, _ in sounds.NOTIFICATIONS.values()]
        heard = sorted(frequencies + [frequency / 2 for frequency in frequencies])
        for frequency in frequencies:
            others = [other for other in heard if other != frequency]
            self.assertGreater(min(abs(other - frequency) for other in others), 105)
            self.assertGreater(frequency, sounds.MUSIC_CEILING + 100)

    def test_music_keeps_its_loudness_and_stays_below_the_notifications(self):
        loop = synthetic.recording.Track(sounds.music(), sounds.RATE, 0.0)
        inner = loop.loudness(synthetic.recording.STEADY_WINDOW)[10:-10]
        self.assertLess(max(abs(inner - sounds.MUSIC_LOUDNESS)), checks.LOUDNESS_TOLERANCE)
        for _, frequency, _ in sounds.NOTIFICATIONS.values():
            self.assertLess(max(loop.band(frequency)[10:-10]), checks.AUDIBLE)


if __name__ == "__main__":
    unittest.main()
