// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

#include <QString>

#include <alsa/asoundlib.h>

#include <chrono>

/// An ALSA device that takes frames of floats. It never blocks, and recovers from underruns and
/// suspension.
///
/// Used in the playback thread; there may be several, one after the other. Owned by the
/// PlaybackWriter.
class AlsaDevice
{
public:
    AlsaDevice() = default;
    ~AlsaDevice();
    AlsaDevice(const AlsaDevice &) = delete;
    AlsaDevice &operator=(const AlsaDevice &) = delete;

    /// Opens the device for the format, with ALSA's conversion if the device doesn't support it.
    /// Returns the reason if it fails.
    std::optional<Failure> open(const QString &name, SoundFormat format, int usage);

    /// Silences the device at once. Frames that were not heard are lost.
    void close();

    /// Lets ALSA's device "null", which takes everything at once, take no more than a device that plays.
    void keepTime();

    /// Returns whether the device is a plug-in, such as a sound server's. It reports what it has
    /// played late and in steps: too late for closeAndCount().
    bool countsLate() const { return m_countsLate; }

    /// Silences the device at once. Returns how many of the written frames were not heard.
    long closeAndCount();

    /// How many frames can be written now.
    Result<long> room();

    /// Writes frames. The first one starts the device. Returns how many frames the device took.
    Result<long> write(const float *samples, long frames);

    /// How many frames the device held at the last call of room() or write().
    long held() const { return m_held; }

    /// How many of the written frames have not been heard yet, in the device's buffer and beyond.
    long latency();

    /// How many frames a suspension has lost since the last call.
    long takeLost();

    /// How many frames the device can hold.
    long capacity() const;

    long periodFrames() const { return long(m_periodFrames); }

private:
    int openAs(const QString &alsaName);
    int configure(SoundFormat format, int usage);
    int setHardware(SoundFormat format, int usage);
    int setStart();
    long heldByClock();
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
    bool m_keepsTime = false;
    std::chrono::steady_clock::time_point m_counted; // when m_held was right, if m_keepsTime
    long m_rate = 0;
};
