# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""The sounds of the load: short ones in several formats, broken ones, and FIFOs."""

import os
import random
import struct
import wave

import numpy as np
from sounds import write_sound

FIFOS = 8
LENGTHS_MS = (5, 20, 50, 100)


def write_wave(path, rate, channels, length_ms):
    frames = rate * length_ms // 1000
    with wave.open(str(path), "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(b"".join(struct.pack("<h", 1000) * channels for _ in range(frames)))


def make_sounds(folder, seed):
    good, bad = folder / "good", folder / "bad"
    for each in (good, bad):
        each.mkdir(parents=True)
    write_wave(folder / "music.wav", 22050, 1, 300)
    for rate, channels in ((8000, 1), (44100, 2), (48000, 1)):
        for length in LENGTHS_MS:
            write_wave(good / f"{rate}-{channels}-{length}.wav", rate, channels, length)
    for suffix in ("flac", "ogg"):
        write_sound(good / f"tone.{suffix}", np.full((2400, 1), 0.03))
    whole = (good / "48000-1-100.wav").read_bytes()
    (bad / "cut.wav").write_bytes(whole[:len(whole) // 2])
    (bad / "cut.ogg").write_bytes((good / "tone.ogg").read_bytes()[:-200])
    (bad / "empty.wav").write_bytes(b"")
    (bad / "text.wav").write_text("This is not a sound.\n")
    (bad / "noise.wav").write_bytes(random.Random(seed).randbytes(5000))
    (bad / "folder.wav").mkdir()
    for number in range(FIFOS):
        os.mkfifo(folder / f"fifo{number}")
