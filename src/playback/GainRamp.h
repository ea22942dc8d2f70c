// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <mutex>

/// The loudness of a sound over its frames: constant, or changing linearly from one value to
/// another. It depends on the frame's number only, so frames that are written twice sound the same.
///
/// set() is called from any thread, everything else in the playback thread.
class GainRamp
{
public:
    /// Takes effect at the next frame to be written.
    void set(double gain, int fadeMs);

    /// Copies frames with their gain; the first has this position.
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
