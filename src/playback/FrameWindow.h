// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <vector>

/// The frames from the last that has certainly been heard to the last that the source has given:
/// those that the device holds, which may have to be written once more, and those still to be
/// written.
class FrameWindow
{
public:
    void setChannels(int channels) { m_channels = channels; }

    /// Where up to so many frames can be added; take() says how many were.
    float *spaceFor(long frames);
    void take(long frames);

    const float *next() const { return m_samples.data() + m_next * m_channels; }
    long unsent() const { return m_end - m_next; }

    /// The number of the next frame to be written, counted from the first that was heard.
    qint64 position() const { return m_position; }

    /// Notes that frames have been written; keeps the last of them for going back.
    void sent(long frames, long keep);

    /// Goes back, so that the last frames written are written again.
    void goBack(long frames);

private:
    std::vector<float> m_samples;
    int m_channels = 1;
    long m_next = 0; // in frames, like the end
    long m_end = 0;
    qint64 m_position = 0;
};
