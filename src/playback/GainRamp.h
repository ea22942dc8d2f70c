// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <mutex>

/// The gain of each frame of a sound: constant, or changing linearly from one value to another. It
/// depends only on the number of the frame, so a frame that is written twice sounds the same.
///
/// set() is called from any thread, everything else in the playback thread.
class GainRamp
{
public:
    /// Takes effect at the next frame that is written.
    void set(double gain, int fadeMs);

    /// Copies frames and applies their gain. The position is that of the first frame.
    void apply(const float *from, float *to, long frames, int channels, qint64 position, int rate);

private:
    double at(qint64 position) const;
    void begin(qint64 position, int rate);

    std::mutex m_mutex;
    double m_wanted = 1.0; // protected by the mutex, like the next two
    int m_fadeMs = 0;
    bool m_changed = false;

    double m_from = 1.0;
    double m_to = 1.0;
    qint64 m_start = 0;
    qint64 m_length = 0;
};
