# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Made-up recordings and timelines, for tests that spoil one thing in them."""

import copy
import functools
import json

import numpy as np

from soundcheck import expectations, recording, timeline

RATE = 48000
START = 1000.0  # on the monotonic clock
LENGTH = 14.0
ATTENUATION, FADE = 20.0, 0.2
LATENCY = 0.03

SOUNDS = {"notifications": {
    "announcement": {"frequency": 1174.7, "length": 4.0},
    "chime": {"frequency": 1568.0, "length": 0.9},
    "ring": {"frequency": 1760.0, "length": 0.6},
    "alarm": {"frequency": 2571.6, "length": 1.2}}}

EXPECTATIONS = {
    "music": {"attenuation": ATTENUATION, "fade": FADE},
    "notifications": {
        "chime": {"label": "Chime", "sound": "chime", "ends": "finished"},
        "news": {"label": "Announcement", "sound": "announcement", "ends": "finished",
                 "interrupted_by": ["alarm"]},
        "alarm": {"label": "Alarm", "sound": "alarm", "ends": "finished"},
        "ring": {"label": "Ringing", "sound": "ring", "ends": "cancelled", "loop": True},
        "broken": {"label": "Missing file", "sound": "chime", "ends": "failed"},
        "second-chime": {"label": "Same id", "ends": "refused"}},
    "display": {
        "tolerance": 0.02,
        "order": ["door", "mail", "menu", "page", "fire", "page", "letter"],
        "notifications": {
            "door": {"label": "Doorbell", "ends": "expired", "together": "chime"},
            "mail": {"label": "Mail", "ends": "expired"},
            "menu": {"label": "Menu", "ends": "closed"},
            "page": {"label": "Page", "ends": "expired", "interrupted_by": ["fire"]},
            "fire": {"label": "Fire", "ends": "expired", "together": "alarm"},
            "note": {"label": "Note", "ends": "cancelled", "shown": False},
            "letter": {"label": "Letter", "ends": "cancelled"}}},
    "fleet": {
        "devices": {"hall": "Hall", "porch": "Porch"},
        "calls": {
            "dinner": {"label": "Dinner", "ends": "expired"},
            "rain": {"label": "Rain", "ends": "closed", "late": ["porch"]},
            "dry": {"answer": "done"}}},
    "commands": {
        "show": {"exit": 0, "prints": [r"\d+"]},
        "cancel": {"exit": 0, "prints": []}}}

TIMELINE = [
    (1.999, "sent", "chime"), (2.0, "queued", "chime"), (2.02, "ducked", None), (2.25, "acquired", None),
    (2.26, "started", "chime"), (3.2, "ended", "chime", "finished"),
    (3.21, "released", None), (3.31, "restored", None),
    (5.0, "queued", "news"), (5.02, "ducked", None), (5.25, "acquired", None),
    (5.26, "started", "news"), (5.4, "refused", "second-chime"), (6.257, "sent", "alarm"),
    (6.26, "queued", "alarm"),
    (6.28, "started", "alarm"), (7.3, "queued", "broken"), (7.4, "queued", "ring"),
    (7.5, "ended", "alarm", "finished"), (10.55, "ended", "news", "finished"),
    (10.56, "ended", "broken", "failed"), (10.57, "started", "ring"),
    (11.9, "ended", "ring", "cancelled"), (12.0, "released", None), (12.01, "restored", None)]

# The same for the display; "display sent" has a timeout instead of a kind.
DISPLAY = [
    (2.0, "display sent", "door", 1.5), (2.0, "display sent", "mail", 0.8),
    (2.001, "display shown", "door"), (2.002, "display opened", "door"),
    (2.003, "display opened", "mail"),
    (3.502, "display hidden", "door"), (3.502, "display closed", "door", "expired"),
    (3.502, "display shown", "mail"),
    (4.303, "display hidden", "mail"), (4.303, "display closed", "mail", "expired"),
    (4.5, "display sent", "menu", 0.0), (4.501, "display shown", "menu"),
    (5.7, "display closing", "menu"),
    (5.701, "display hidden", "menu"), (5.701, "display closed", "menu", "closed"),
    (5.8, "display sent", "page", 2.0), (5.801, "display shown", "page"),
    (5.81, "display sent", "note", 1.0), (5.811, "display opened", "note"),
    (6.258, "display sent", "fire", 1.0), (6.26, "display hidden", "page"),
    (6.26, "display shown", "fire"),
    (7.261, "display hidden", "fire"), (7.261, "display closed", "fire", "expired"),
    (7.261, "display shown", "page"),
    (8.0, "display cancelling", "note"), (8.001, "display closed", "note", "cancelled"),
    (8.803, "display hidden", "page"), (8.803, "display closed", "page", "expired"),
    (11.01, "display shown", "letter"), (11.02, "display sent", "letter", 5.0),
    (11.9, "display cancelling", "letter"), (12.2, "display hidden", "letter"),
    (12.2, "display closed", "letter"), (12.3, "display told", "letter", "cancelled")]

# The typed commands; the last field is the line or the status.
COMMANDS = [
    (11.0, "typed", "show", "tavo show Letter"), (11.02, "printed", "show", "7"),
    (11.03, "returned", "show", 0),
    (11.9, "typed", "cancel", "tavo cancel 7"), (12.3, "returned", "cancel", 0)]
LAST = {"display sent": "timeout", "typed": "line", "printed": "line", "returned": "status"}

# The fleet; the last field is the kind.
FLEET = [
    (2.1, "fleet online", "hall"), (2.1, "fleet online", "porch"), (2.2, "fleet called", "dinner"),
    (2.3, "fleet answered", "dinner on hall", "shown"), (2.3, "fleet answered", "dinner on porch", "shown"),
    (3.3, "fleet ended", "dinner on hall", "expired"), (3.3, "fleet ended", "dinner on porch", "expired"),
    (4.0, "fleet away", "porch"), (4.1, "fleet called", "rain"),
    (4.2, "fleet answered", "rain on hall", "shown"), (5.9, "fleet reconnected", "porch"),
    (6.0, "fleet online", "porch"),
    (6.1, "fleet answered", "rain on porch", "shown"), (6.2, "fleet answered", "rain on porch", "shown"),
    (7.0, "fleet called", "dry"), (7.1, "fleet answered", "dry on hall", "done"),
    (7.1, "fleet answered", "dry on porch", "done"),
    (7.1, "fleet ended", "rain on hall", "closed"), (7.1, "fleet ended", "rain on porch", "closed")]

# What sounds when, in seconds from the start: sound, begin, end.
PLAYED = [("chime", 2.29, 3.19), ("announcement", 5.29, 6.28), ("alarm", 6.3, 7.5),
          ("announcement", 7.53, 10.54), ("ring", 10.6, 11.9)]
# The music's amplitude: from when on, and which share of the usual one.
MUSIC = [(0.0, 1.0), (2.05, 0.1), (3.35, 1.0), (5.05, 0.1), (12.05, 1.0)]


# Cached, with what the checks compute from a track, since most tests spoil something else.
@functools.lru_cache(maxsize=None)
def track(music, played, recorded):
    """What a device plays: tones, and the music if any."""
    time = np.arange(round(LENGTH * RATE)) / RATE
    samples = (music_samples(time, music) if music else 0) + tone_samples(time, played)
    samples = samples[:round(recorded * RATE)].astype(np.float32)
    return recording.Track(np.stack([samples, samples], axis=1), RATE, START)


def music_samples(time, shares):
    samples = sum(np.sin(2 * np.pi * frequency * time + frequency)
                  for frequency in (220, 277.2, 329.6, 440, 659.3)) * 0.08
    gain, before = np.ones_like(samples), 1.0
    for begin, share in shares:
        ramp = np.clip((time - begin) / FADE, 0, 1)
        gain = np.where(time >= begin, before + (share - before) * ramp, gain)
        before = share
    return samples * gain


def tone_samples(time, played):
    samples = np.zeros_like(time)
    for sound, begin, end in played:
        frequency = SOUNDS["notifications"].get(sound, {}).get("frequency", 3333.0)
        during = (time >= begin) & (time < end)
        samples += during * 0.25 * np.sin(2 * np.pi * frequency * time)
    return samples


class Run:
    """A run without faults. A test spoils something in it and then checks it."""

    def __init__(self):
        self.expectations = copy.deepcopy(EXPECTATIONS)
        self.timeline = TIMELINE + DISPLAY + COMMANDS + FLEET
        self.played = list(PLAYED)
        self.music = list(MUSIC)
        self.on_main = []
        self.recorded = LENGTH

    def events(self):
        for moment, event, name, *more in self.timeline:
            line = {"t": START + moment, "event": event}
            if name is not None:
                line["id"] = name
            if more:
                line[LAST.get(event, "kind")] = more[0]
            yield line

    def story(self):
        return timeline.Story(list(self.events()))

    def expected(self):
        return expectations.parse(self.expectations, SOUNDS)

    def tracks(self):
        return {"main": track(tuple(self.music), tuple(self.on_main), self.recorded),
                "notifications": track((), tuple(self.played), self.recorded)}

    def write(self, folder):
        """Writes the files that a real run leaves."""
        devices = {}
        for device, track in self.tracks().items():
            values = np.round(track.samples * 32767).astype("<i2")
            (folder / f"{device}.raw").write_bytes(values.tobytes())
            devices[device] = {"file": f"{device}.raw", "start": START, "frames": len(values)}
        described = {"rate": RATE, "channels": 2, "devices": devices}
        (folder / "recording.json").write_text(json.dumps(described))
        (folder / "timeline.jsonl").write_text(
            "".join(json.dumps(event) + "\n" for event in self.events()))
        (folder / "expectations.json").write_text(json.dumps(self.expectations))
        (folder / "sounds.json").write_text(json.dumps(SOUNDS))
