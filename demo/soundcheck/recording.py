# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The recordings of scripts/sound-server, and their loudness."""

import functools
import json
import pathlib

import numpy as np

HOP = 0.01  # seconds between two measurements
FLOOR = -100.0  # dBFS; the loudness of digital silence
CURVE_WINDOW = 0.02
STEADY_WINDOW = 0.1  # long enough for music to have a loudness
BAND_WINDOW = 0.04
BAND_HALF_WIDTH = 60.0  # Hz


def to_dbfs(power):
    """0 dBFS is a constant signal of 1, so a sine of full amplitude has -3 dBFS."""
    return 10 * np.log10(np.maximum(power, 10 ** (FLOOR / 10)))


class Track:
    """What one device played. All its curves share the moments `times`."""

    def __init__(self, samples, rate, start):
        """samples: frames by channels, within -1..1; start: when the first one was heard."""
        self.rate = rate
        self.start = start
        self.samples = samples
        self.end = start + len(samples) / rate
        self.hop = round(HOP * rate)
        self.times = start + np.arange(len(samples) // self.hop) * self.hop / rate

    def _windows(self, length):
        """A window around each moment, padded with silence at both ends of the recording."""
        size = round(length * self.rate)
        padded = np.pad(self.samples, ((size // 2, size), (0, 0)))
        views = np.lib.stride_tricks.sliding_window_view(padded, size, axis=0)
        return views[::self.hop][:len(self.times)]

    @functools.lru_cache(maxsize=None)
    def loudness(self, window=CURVE_WINDOW):
        """RMS in dBFS over all channels."""
        return to_dbfs(np.array([np.mean(np.square(part)) for part in self._windows(window)]))

    @functools.cached_property
    def _spectrum(self):
        windows = self._windows(BAND_WINDOW)
        size = windows.shape[-1]
        shape = np.hanning(size)
        scale = 2 / (size * np.sum(np.square(shape)))
        power = [np.mean(np.abs(np.fft.rfft(part * shape)) ** 2, axis=0) * scale for part in windows]
        return np.fft.rfftfreq(size, 1 / self.rate), np.array(power)

    @functools.lru_cache(maxsize=None)
    def band(self, frequency):
        """The loudness at this frequency, in dBFS."""
        frequencies, power = self._spectrum
        near = np.abs(frequencies - frequency) <= BAND_HALF_WIDTH
        return to_dbfs(np.sum(power[:, near], axis=1))

    def during(self, begin, end):
        """The mask of the moments from begin to end."""
        return (self.times >= begin) & (self.times < end)


def load(folder):
    """The tracks by device."""
    folder = pathlib.Path(folder)
    described = json.loads((folder / "recording.json").read_text(encoding="utf-8"))
    tracks = {}
    for device, track in described["devices"].items():
        values = np.fromfile(folder / track["file"], dtype="<i2")
        values = values[:len(values) // described["channels"] * described["channels"]]
        samples = values.reshape(-1, described["channels"]).astype(np.float32) / 32768
        tracks[device] = Track(samples, described["rate"], track["start"])
    return tracks
