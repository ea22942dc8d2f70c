// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

#include <QString>

#include <alsa/asoundlib.h>

/// An ALSA device that takes frames of floats. It never blocks, and recovers from underruns and
/// suspension.
///
/// Thread: the playback thread, one such thread after another. Owned by the PlaybackWriter.
class AlsaDevice
{
public:
    AlsaDevice() = default;
    ~AlsaDevice();
    AlsaDevice(const AlsaDevice &) = delete;
    AlsaDevice &operator=(const AlsaDevice &) = delete;

    /// Opens the device for the format as it is, or through ALSA's conversion where the device
    /// doesn't take it. Returns why it can't.
    std::optional<Failure> open(const QString &name, SoundFormat format, int usage);

    /// Falls silent at once; what was not heard is lost.
    void close();

    bool isOpen() const { return m_pcm != nullptr; }

    /// Whether the device is a plug-in, such as a sound server's, which tells late and in steps what
    /// it has played: too late to count what is lost when it is closed.
    bool countsLate() const { return m_countsLate; }

    /// Falls silent at once and returns how many of the frames written were not heard.
    long closeAndCount();

    /// How many frames can be written now.
    Result<long> room();

    /// Writes frames, the first of which starts the device; returns how many it took.
    Result<long> write(const float *samples, long frames);

    /// How many frames the device held at the last call of room() or write().
    long held() const { return m_held; }

    /// How many of the frames written have not been heard yet, in the device's buffer and beyond.
    long latency();

    /// How many frames were lost to a suspension since the last call.
    long takeLost();

    /// How many frames it holds at most.
    long capacity() const;

    long periodFrames() const { return long(m_periodFrames); }

private:
    int openAs(const QString &alsaName);
    int configure(SoundFormat format, int usage);
    int setHardware(SoundFormat format, int usage);
    int setStart();
    Result<long> recover(int result);
    Result<long> resume();
    Result<long> prepare();
    Failure gone(int result) const;

    snd_pcm_t *m_pcm = nullptr;
    QString m_name;
    snd_pcm_uframes_t m_bufferFrames = 0;
    snd_pcm_uframes_t m_periodFrames = 0;
    long m_held = 0;
    long m_lost = 0;
    int m_failedWrites = 0; // in a row
    bool m_countsLate = false;
};
