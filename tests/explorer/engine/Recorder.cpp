// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Recorder.h"

#include <algorithm>
#include <cstring>

namespace exploration {

void Position::setMessage(const char *text)
{
    std::strncpy(message, text, maxMessage);
    message[maxMessage] = '\0';
}

void Recorder::begin(const std::string &prescribed)
{
    m_prescribed = prescribed;
    m_position->picks = 0;
    ++m_position->steps;
}

int Recorder::choose(int alternatives)
{
    const int index = m_position->picks;
    if (index >= Position::maxPicks) {
        // A step that never stops choosing gets the first alternative until it counts as hanging.
        return 0;
    }
    const int value =
        index < int(m_prescribed.size())
            ? std::min(int(std::uint8_t(m_prescribed[std::size_t(index)])), alternatives - 1)
            : 0;
    m_position->pick[index] = {std::uint8_t(value), std::uint8_t(alternatives)};
    m_position->picks = index + 1;
    return value;
}

std::vector<Pick> Recorder::picks() const
{
    return {m_position->pick, m_position->pick + m_position->picks};
}

void Recorder::observe(Observation observation)
{
    m_hasFinding = m_hasFinding || observation.kind == Observation::Kind::Finding;
    m_observations.push_back(std::move(observation));
}

std::vector<Observation> Recorder::takeObservations()
{
    m_hasFinding = false;
    std::vector<Observation> observations;
    observations.swap(m_observations);
    return observations;
}

unsigned Recorder::takeTried()
{
    const unsigned tried = m_tried;
    m_tried = 0;
    return tried;
}

void Recorder::setNarrator(Narrator narrator)
{
    m_narrator = std::move(narrator);
}

void Recorder::say(const std::string &words, bool newLine)
{
    if (m_narrator) {
        m_narrator(words, newLine);
    }
}

} // namespace exploration
