#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
"""Makes the sounds of the demo.

Each notification has its own frequency and the music stays below all of them, so a recording shows which
sound was on which device. Each sound keeps its loudness from beginning to end, so a change of loudness in a
recording comes from the player. FOLDER/sounds.json describes the sounds.
"""

import argparse
import base64
import ctypes
import json
import pathlib

import numpy as np

RATE = 48000
RAMP = 0.005  # seconds; without it a sound's edges click in every frequency band
NOTIFICATION_LOUDNESS = -15.0  # RMS, dBFS
MUSIC_LOUDNESS = -20.0
MUSIC_CEILING = 1050.0  # Hz
MUSIC_BEAT = 0.6

# name: file, frequency in Hz, length in seconds. The frequencies keep away from each other and from the
# halves of each other, because a sound also has a quiet tone an octave below.
NOTIFICATIONS = {
    "announcement": ("announcement.wav", 1174.7, 5.0),
    "stream": ("stream.l16", 1396.9, 1.5),
    "chime": ("chime.flac", 1568.0, 0.9),
    "ring": ("ring.ogg", 1760.0, 0.6),
    "message": ("message.ogg", 1975.5, 1.1),
    "alarm": ("alarm.wav", 2571.6, 1.2),
    "knock": ("knock.flac", 2093.0, 0.8),
    "bell": ("bell.flac", 4434.9, 0.5),
}

SNDFILE_FORMATS = {".wav": 0x010002, ".flac": 0x170002, ".ogg": 0x200060}
SNDFILE_WRITE = 0x20
SNDFILE_PIECE = 4096  # frames; its Vorbis encoder keeps a piece on the stack


class SndfileInfo(ctypes.Structure):
    _fields_ = [("frames", ctypes.c_int64)] + [
        (name, ctypes.c_int) for name in ("rate", "channels", "format", "sections", "seekable")]


def write_sound(path, samples):
    """Writes samples (frames, or frames by channels, within -1..1) in the format of the suffix."""
    samples = samples.reshape(len(samples), -1)
    if path.suffix == ".l16":
        path.write_bytes(np.round(samples * 32767).astype(">i2").tobytes())
        return
    library = ctypes.CDLL("libsndfile.so.1")
    library.sf_open.restype = ctypes.c_void_p
    library.sf_writef_double.restype = ctypes.c_int64
    info = SndfileInfo(0, RATE, samples.shape[1], SNDFILE_FORMATS[path.suffix])
    file = ctypes.c_void_p(library.sf_open(str(path).encode(), SNDFILE_WRITE, ctypes.byref(info)))
    if not file:
        raise OSError(f"cannot write {path}")
    written = 0
    for start in range(0, len(samples), SNDFILE_PIECE):
        piece = np.ascontiguousarray(samples[start:start + SNDFILE_PIECE], dtype=np.float64)
        written += library.sf_writef_double(
            file, piece.ctypes.data_as(ctypes.c_void_p), ctypes.c_int64(len(piece)))
    if library.sf_close(file) != 0 or written != len(samples):
        raise OSError(f"cannot write {path}")


def to_loudness(samples, dbfs):
    return samples * (10 ** (dbfs / 20) / np.sqrt(np.mean(np.square(samples))))


def tone(frequency, length):
    """A steady tone with a quiet one an octave below."""
    time = np.arange(round(length * RATE)) / RATE
    samples = np.sin(2 * np.pi * frequency * time) + 0.3 * np.sin(np.pi * frequency * time)
    ramp = np.sin(np.linspace(0, np.pi / 2, round(RAMP * RATE))) ** 2
    samples[:len(ramp)] *= ramp
    samples[-len(ramp):] *= ramp[::-1]
    return to_loudness(samples, NOTIFICATION_LOUDNESS)


def pitch(semitones):
    """The frequency of a note, counted in semitones from the A below middle C."""
    return 220.0 * 2 ** (semitones / 12)


def pluck(semitones, length):
    """A note that rises quickly and fades, with the harmonics below the ceiling."""
    time = np.arange(round(length * RATE)) / RATE
    samples = np.zeros_like(time)
    for harmonic in range(1, 7):
        frequency = harmonic * pitch(semitones)
        if frequency < MUSIC_CEILING:
            samples += np.sin(2 * np.pi * frequency * time) / harmonic ** 1.3
    return samples * np.exp(-2.2 * time / length) * np.minimum(1, time / 0.02)


def even_out(samples, half):
    """Gives a loop the same loudness throughout, measured over windows of twice `half` seconds."""
    power = np.mean(np.square(samples), axis=1)
    window = np.zeros(len(power))
    half = round(half * RATE)
    window[:half] = window[-half:] = 1 / (2 * half)
    smooth = np.fft.irfft(np.fft.rfft(power) * np.fft.rfft(window), len(power))
    return samples / np.sqrt(np.maximum(smooth, 1e-9))[:, None]


def music():
    """Four chords, each a bass note, a held pad and an arpeggio. The end overlaps the beginning."""
    chords = [(0, 3, 7), (-4, 0, 3), (3, 7, 10), (-2, 2, 5)]  # A minor, F, C, G
    length = round(len(chords) * 4 * MUSIC_BEAT * RATE)
    loop = np.zeros((length, 2))

    def add(samples, start, loudness, pan):
        where = (round(start * RATE) + np.arange(len(samples))) % length
        for channel, share in enumerate((1 - pan, pan)):
            np.add.at(loop[:, channel], where, samples * loudness * share)

    for number, chord in enumerate(chords):
        start = number * 4 * MUSIC_BEAT
        add(pluck(chord[0] - 12, 5 * MUSIC_BEAT), start, 1.4, 0.5)
        for voice, note in enumerate(chord):
            add(pluck(note, 6 * MUSIC_BEAT), start, 0.6, 0.3 + 0.2 * voice)
        for step, voice in enumerate((0, 1, 2, 1, 0, 2, 1, 2)):
            octave = 12 if step % 4 == 3 else 0
            add(pluck(chord[voice] + octave, 1.5 * MUSIC_BEAT), start + step * MUSIC_BEAT / 2, 0.9,
                0.35 if step % 2 else 0.65)
    for half in (0.06, 0.03, 0.015):
        loop = even_out(loop, half)
    return to_loudness(loop, MUSIC_LOUDNESS)


def make_sounds(folder):
    folder.mkdir(parents=True, exist_ok=True)
    loop = music()
    write_sound(folder / "music.ogg", loop)
    described = {}
    for name, (file, frequency, length) in NOTIFICATIONS.items():
        write_sound(folder / file, tone(frequency, length))
        described[name] = {"file": file, "frequency": frequency, "length": length}
    described["stream"]["format"] = f"audio/L16;rate={RATE};channels=1"
    data = base64.b64encode((folder / described["message"]["file"]).read_bytes())
    (folder / "message.base64").write_bytes(data)
    (folder / "sounds.json").write_text(json.dumps({
        "music": {"file": "music.ogg", "length": len(loop) / RATE, "below": MUSIC_CEILING},
        "notifications": described}, indent=2) + "\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=pathlib.Path, help="where to write the sounds")
    make_sounds(parser.parse_args().folder)


if __name__ == "__main__":
    main()
