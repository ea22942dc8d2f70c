// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <vector>

/// The frames that may not have been heard yet: those that the device holds, which may have to be
/// written again, and those that have been read from the source but not yet written.
class FrameWindow
{
public:
    void setChannels(int channels) { m_channels = channels; }

    /// Space for adding frames. take() then sets how many were added.
    float *spaceFor(long frames);
    void take(long frames);

    const float *next() const { return m_samples.data() + m_next * m_channels; }
    long unsent() const { return m_end - m_next; }

    /// The number of the next frame to write, counted from the start of the sound.
    qint64 position() const { return m_position; }

    /// Records that frames have been written. Keeps the last ones for going back.
    void sent(long frames, long keep);

    /// Goes back, so that the last written frames are written again.
    void goBack(long frames);

private:
    std::vector<float> m_samples;
    int m_channels = 1;
    long m_next = 0; // in frames, like the end
    long m_end = 0;
    qint64 m_position = 0;
};
