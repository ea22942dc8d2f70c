// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/GainRamp.h"

#include <algorithm>

namespace {

constexpr int msPerSecond = 1000;

} // namespace

void GainRamp::set(double gain, int fadeMs)
{
    const std::lock_guard lock(m_mutex);
    m_wanted = std::clamp(gain, 0.0, 1.0);
    m_fadeMs = std::max(0, fadeMs);
    m_changed = true;
}

void GainRamp::begin(qint64 position, int rate)
{
    const std::lock_guard lock(m_mutex);
    if (!m_changed) {
        return;
    }
    m_changed = false;
    m_from = at(position);
    m_to = m_wanted;
    m_start = position;
    m_length = qint64(m_fadeMs) * rate / msPerSecond;
}

double GainRamp::at(qint64 position) const
{
    if (position < m_start) {
        return m_from;
    }
    if (position >= m_start + m_length) {
        return m_to;
    }
    return m_from + (m_to - m_from) * double(position - m_start) / double(m_length);
}

void GainRamp::apply(const float *from, float *to, long frames, int channels, qint64 position,
                     int rate)
{
    begin(position, rate);
    for (long frame = 0; frame < frames; ++frame) {
        const double gain = at(position + frame);
        for (int channel = 0; channel < channels; ++channel) {
            *to++ = float(*from++ * gain);
        }
    }
}
