# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Checks the recordings against the timeline and the expectations.

On a busy machine a sound may come late, but its length stays the same. So the tolerances are wide for
beginnings and ends, and narrow for lengths.
"""

import numpy as np

from . import commands, displaychecks, fleet, recording
from .check import Check

AUDIBLE = -50.0  # dBFS; less is silence
EDGE = 6.0  # dB; a sound begins and ends this far below its usual loudness
SHARE = 10.0  # dB; a frequency further below the total loudness is part of a click
HEARD_WITHIN = 0.5  # seconds from a start to its sound
SILENT_WITHIN = 0.35  # seconds from an end or a pause to silence
LENGTH_TOLERANCE = 0.1  # seconds
HANDOVER = 0.15  # seconds for which two sounds may overlap at a pause
STRAY = 0.03  # seconds of sound; less is an error of measurement
LOUDNESS_TOLERANCE = 2.0  # dB
REACTION = 0.5  # seconds that the music may take in addition to the fade
CLOCK_TOLERANCE = 0.1  # seconds by which a recording may be too short
MUSIC_GAP = 0.1  # seconds


def seconds(mask):
    """The total length of the mask."""
    return float(np.count_nonzero(mask)) * recording.HOP


def max_run(mask):
    """The length of the mask's longest run."""
    edges = np.flatnonzero(np.diff(np.concatenate(([0], mask.astype(np.int8), [0]))))
    return float(np.max(edges[1::2] - edges[::2], initial=0)) * recording.HOP


class Sounds:
    """When each frequency is audible on the device for notifications."""

    def __init__(self, track, expectations):
        self.track = track
        self.loud = track.loudness() > AUDIBLE
        self.audible = {frequency: self._audible(frequency)
                        for frequency in expectations.frequencies()}

    def _audible(self, frequency):
        level = self.track.band(frequency)
        heard = (level > AUDIBLE) & (level > self.track.loudness(recording.BAND_WINDOW) - SHARE)
        usual = np.median(level[heard]) if np.any(heard) else 0.0
        return heard & (level > usual - EDGE)

    def any(self):
        return np.any(list(self.audible.values()), axis=0) if self.audible else self.loud & False


def check_recordings(tracks, story):
    for device, track in tracks.items():
        covered = track.start <= story.begin and track.end >= story.end - CLOCK_TOLERANCE
        yield Check(device, "is recorded for the whole run", covered,
                    f"{track.start - story.begin:+.2f} s to {track.end - story.begin:.2f} s",
                    f"0.00 s to {story.end - story.begin:.2f} s")


def check_timeline(story, expectations):
    """Checks that each notification got its responses once and in the right order."""
    for expected in expectations.notifications.values():
        item = story.notifications.get(expected.id)
        if item is None:
            yield Check(expected.id, "was requested", False, "not in the timeline", "queued")
            continue
        outcome = item.outcome or "no end"
        yield Check(expected.id, "ends as it should", outcome == expected.outcome, outcome,
                    expected.outcome)
        started = item.started is not None
        yield Check(expected.id, "reports its start", started == expected.starts,
                    "started" if started else "never started",
                    "started" if expected.starts else "never started")
        if item.oddities:
            yield Check(expected.id, "has each response once", False, ", ".join(item.oddities),
                        "each once")
    for unexpected in sorted(set(story.notifications) - set(expectations.notifications)):
        yield Check(unexpected, "is expected", False, "in the timeline", "not expected")


def lifetime(item):
    """From a notification's start until it must be silent."""
    return item.started, (item.ended or item.sounding[-1][1]) + SILENT_WITHIN


def own_audible(item, expected, story, expectations, sounds):
    """When its sound is audible, except while another notification with the same sound plays."""
    audible = sounds.audible[expected.frequency].copy()
    for other in story.notifications.values():
        twin = expectations.notifications.get(other.id)
        if other is not item and other.sounding and twin and twin.frequency == expected.frequency:
            audible &= ~sounds.track.during(*lifetime(other))
    return audible


def check_notification(item, expected, audible, story, track):
    """Checks what is heard of a notification that started."""
    begin, quiet = lifetime(item)
    heard = track.times[audible & track.during(begin - 0.05, quiet)]
    delay = max(0.0, heard[0] - begin) if len(heard) else None
    yield Check(item.id, "sounds once started", delay is not None and delay <= HEARD_WITHIN,
                "nothing heard" if delay is None else f"after {delay:.2f} s",
                f"within {HEARD_WITHIN:.2f} s")
    total = seconds(audible & track.during(begin - 0.05, quiet))
    planned = sum(until - since for since, until in item.sounding)
    if item.outcome == "finished" and not expected.loop:
        yield Check(item.id, displaychecks.HEARD,
                    abs(total - expected.length) <= LENGTH_TOLERANCE, f"{total:.2f} s",
                    f"{expected.length:.2f} s ± {LENGTH_TOLERANCE:.2f} s")
    else:
        slack = HEARD_WITHIN * len(item.sounding)
        yield Check(item.id, displaychecks.HEARD_UNTIL_END, abs(total - planned) <= slack,
                    f"{total:.2f} s", f"{planned:.2f} s ± {slack:.2f} s")
    yield from check_interruptions(item, expected, audible, story, track)
    after = max_run(audible & track.during(quiet, np.inf))
    yield Check(item.id, "is silent after its end", after <= STRAY, f"{after:.2f} s heard",
                f"0 s, {SILENT_WITHIN:.2f} s after the end")


def check_interruptions(item, expected, audible, story, track):
    by = [name for since, until in item.paused for name in story.sounding_within(since, until)]
    if by or expected.interrupted_by:
        yield Check(item.id, "is interrupted", by == expected.interrupted_by,
                    "by " + (", ".join(by) or "nothing"),
                    "by " + (", ".join(expected.interrupted_by) or "nothing"))
    for number, (since, until) in enumerate(item.paused):
        still = seconds(audible & track.during(since + SILENT_WITHIN, until))
        yield Check(item.id, "is silent while interrupted", still <= STRAY, f"{still:.2f} s heard",
                    f"0 s, {SILENT_WITHIN:.2f} s after the pause")
        resumed_until = item.sounding[number + 1][1]
        heard = track.times[audible & track.during(until - 0.05, resumed_until + SILENT_WITHIN)]
        delay = max(0.0, heard[0] - until) if len(heard) else None
        yield Check(item.id, "resumes afterwards", delay is not None and delay <= HEARD_WITHIN,
                    "nothing heard" if delay is None else f"after {delay:.2f} s",
                    f"within {HEARD_WITHIN:.2f} s")


def check_notifications(tracks, story, expectations):
    track = tracks["notifications"]
    sounds = Sounds(track, expectations)
    allowed = np.zeros(len(track.times), dtype=bool)
    for expected in expectations.notifications.values():
        item = story.notifications.get(expected.id)
        if item is None or expected.frequency is None:
            continue
        audible = own_audible(item, expected, story, expectations, sounds)
        if not item.sounding:
            heard = max_run(audible)
            yield Check(item.id, "is never heard", heard <= STRAY, f"{heard:.2f} s heard", "0 s")
            continue
        yield from check_notification(item, expected, audible, story, track)
        for since, until in item.sounding:
            allowed |= track.during(since - 0.05, until + SILENT_WITHIN)
    outside = seconds(sounds.loud & ~allowed)
    yield Check("notifications", "are the only thing on their device", outside <= STRAY,
                f"{outside:.2f} s of other sound", "0 s outside their spans")
    unknown = max_run(sounds.loud & ~sounds.any())
    yield Check("notifications", "have the sounds that they should", unknown <= STRAY,
                f"{unknown:.2f} s of unknown sound", "0 s at a time")
    together = max_run(np.sum(list(sounds.audible.values()) or [[0]], axis=0) > 1)
    yield Check("notifications", "sound one at a time", together <= HANDOVER,
                f"{together:.2f} s together", f"at most {HANDOVER:.2f} s")
    stray = max((max_run(tracks["main"].band(frequency) > AUDIBLE)
                 for frequency in expectations.frequencies()), default=0.0)
    yield Check("notifications", "are not on the main device", stray <= STRAY,
                f"{stray:.2f} s heard", "0 s at a time")


def check_order(story, expectations):
    """Checks that the main audio is ducked and the resource is held while notifications sound."""
    for spans, subject, statement in ((story.ducked, "main audio", "is ducked while they sound"),
                                      (story.acquired, "audio resource", "is held while they sound")):
        free = [item.id for item in story.notifications.values() for since, until in item.sounding
                if not any(begin <= since and until <= end for begin, end in spans)]
        yield Check(subject, statement, not free, ", ".join(sorted(set(free))) or "always", "always")


def check_music(track, story, expectations):
    """Checks that each ducking lowers the main audio by the configured attenuation and ends."""
    level = track.loudness(recording.STEADY_WINDOW)
    playing = track.times[level > AUDIBLE - expectations.attenuation]
    if not len(playing) or not story.ducked:
        yield Check("main audio", "plays and is ducked", False,
                    f"{len(playing) * recording.HOP:.1f} s heard, ducked {len(story.ducked)} times",
                    "music, ducked at least once")
        return
    begin, end = playing[0], playing[-1]
    settle = expectations.fade + REACTION
    before = level[track.during(begin + recording.STEADY_WINDOW, story.ducked[0][0])]
    usual = float(np.median(before)) if len(before) else recording.FLOOR
    yield Check("main audio", "is heard before it is ducked",
                len(before) * recording.HOP >= 0.3 and usual > AUDIBLE, f"{usual:.1f} dBFS",
                f"above {AUDIBLE:.0f} dBFS for 0.30 s")
    goals = [(since, until, "is ducked", usual - expectations.attenuation)
             for since, until in story.ducked]
    nexts = [since for since, _ in story.ducked[1:]] + [end]
    goals += [(until, following, "is restored", usual)
              for (_, until), following in zip(story.ducked, nexts)]
    for since, until, statement, goal in sorted(goals):
        yield from check_level(track, level, since, until, statement, goal, settle)
    quiet = max_run((level <= AUDIBLE - expectations.attenuation) & track.during(begin, end))
    yield Check("main audio", "never stops", quiet <= MUSIC_GAP, f"{quiet:.2f} s silent",
                f"at most {MUSIC_GAP:.2f} s")


def check_level(track, level, since, until, statement, goal, settle):
    """Checks that the loudness reaches the goal soon after `since` and stays there, if it has the time."""
    if until - since < settle:
        return
    near = np.abs(level - goal) <= LOUDNESS_TOLERANCE
    arrived = track.times[near & track.during(since, until)]
    delay = arrived[0] - since if len(arrived) else None
    yield Check("main audio", f"{statement} soon", delay is not None and delay <= settle,
                "never" if delay is None else f"after {delay:.2f} s", f"within {settle:.2f} s")
    steady = level[track.during(since + settle, until)]
    if len(steady):
        measured = float(np.median(steady))
        yield Check("main audio", f"{statement} to the right level",
                    abs(measured - goal) <= LOUDNESS_TOLERANCE, f"{measured:.1f} dBFS",
                    f"{goal:.1f} dBFS ± {LOUDNESS_TOLERANCE:.0f} dB")


def check_all(tracks, story, expectations):
    """Without tracks, only the timeline is checked."""
    results = [*check_timeline(story, expectations), *check_order(story, expectations)]
    if tracks:
        results = [*check_recordings(tracks, story), *results,
                   *check_notifications(tracks, story, expectations),
                   *check_music(tracks["main"], story, expectations)]
    results += displaychecks.check_display(story.display, expectations.display)
    results += commands.check_commands(story.commands, expectations.commands)
    results += fleet.check_fleet(story.fleet, expectations.fleet)
    return [*results, *displaychecks.check_pairs(story, expectations, results)]
