// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/FrameWindow.h"

#include <algorithm>

float *FrameWindow::spaceFor(long frames)
{
    m_samples.resize(std::size_t((m_end + frames) * m_channels));
    return m_samples.data() + m_end * m_channels;
}

void FrameWindow::take(long frames)
{
    m_end += frames;
}

void FrameWindow::sent(long frames, long keep)
{
    m_next += frames;
    m_position += frames;
    // The rest is moved down only when it is the smaller part, which keeps the cost per frame
    // constant.
    const long surplus = m_next - keep;
    if (surplus <= m_end - surplus) {
        return;
    }
    m_samples.erase(m_samples.begin(), m_samples.begin() + surplus * m_channels);
    m_next -= surplus;
    m_end -= surplus;
}

void FrameWindow::goBack(long frames)
{
    const long back = std::clamp(frames, 0L, m_next);
    m_next -= back;
    m_position -= back;
}
