// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/System.h"

#include "explorer/engine/Recorder.h"

namespace exploration {

System::~System() = default;

void System::inspect() {}

void System::finish() {}

int System::choose(int alternatives)
{
    return m_recorder->choose(alternatives);
}

void System::finding(const std::string &rule, const std::string &detail)
{
    m_recorder->observe({Observation::Kind::Finding, rule, detail});
}

void System::note(const std::string &rule, const std::string &detail)
{
    m_recorder->observe({Observation::Kind::Note, rule, detail});
}

bool System::hasFinding() const
{
    return m_recorder->hasFinding();
}

void System::tried()
{
    m_recorder->countTried();
}

bool System::isReplaying() const
{
    return m_recorder->position().phase == Position::Phase::Replaying;
}

bool System::isNarrating() const
{
    return m_recorder->isNarrating();
}

void System::say(const std::string &words)
{
    m_recorder->say(words, true);
}

void System::sayMore(const std::string &words)
{
    m_recorder->say(words, false);
}

void System::lastWords(const char *words)
{
    if (m_recorder != nullptr) {
        m_recorder->position().setMessage(words);
    }
}

} // namespace exploration
