// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

#include <QString>

#include <alsa/asoundlib.h>

/// An ALSA device that takes frames of floats. It never blocks, and mends what can be mended:
/// underruns and suspension.
///
/// Thread: the playback thread, one after another. Owner: the PlaybackWriter.
class AlsaDevice
{
public:
    AlsaDevice() = default;
    ~AlsaDevice();
    AlsaDevice(const AlsaDevice &) = delete;
    AlsaDevice &operator=(const AlsaDevice &) = delete;

    /// Opens the device for the format as it is, or through ALSA's conversion where the device
    /// doesn't take it. False: error() says why.
    bool open(const QString &name, SoundFormat format, int usage);

    /// Falls silent at once; what was not heard is lost.
    void close();

    bool isOpen() const { return m_pcm != nullptr; }

    /// Whether the device is a plug-in's, such as a sound server's, which tells late and in steps
    /// what it has played: too late to count what is lost when it is closed.
    bool countsLate() const { return m_countsLate; }

    /// Falls silent at once and returns how many of the frames written were not heard.
    long closeAndCount();

    /// How many frames can be written now; negative when the device failed.
    long room();

    /// Writes frames, the first of which starts the device; returns how many it took, negative when
    /// it failed.
    long write(const float *samples, long frames);

    /// How many frames the device held at the last call of room() or write().
    long held() const { return m_held; }

    /// How many of the frames written are still on their way to the ear, beyond the device's buffer
    /// too.
    long latency();

    /// How many frames were lost to a suspension since this was asked last.
    long takeLost();

    /// How many frames it holds at most.
    long capacity() const;

    long periodFrames() const { return long(m_periodFrames); }

    QString error() const { return m_error; }

private:
    bool openAs(const QString &alsaName, SoundFormat format, int usage, int &result);
    int configure(SoundFormat format, int usage);
    int setHardware(SoundFormat format, int usage);
    int setStart();
    long recover(int result);
    long resume();
    long fail(int result);

    snd_pcm_t *m_pcm = nullptr;
    QString m_name;
    QString m_error;
    snd_pcm_uframes_t m_bufferFrames = 0;
    snd_pcm_uframes_t m_periodFrames = 0;
    long m_held = 0;
    long m_lost = 0;
    int m_failedWrites = 0; // in a row
    bool m_countsLate = false;
};
