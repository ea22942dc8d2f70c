// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Sequence.h"

#include <limits>
#include <sstream>
#include <stdexcept>

namespace exploration {
namespace {
/// Reads one number up to the limit, from the position on.
unsigned long numberAt(const std::string &text, std::size_t *position, unsigned long limit)
{
    std::size_t length = 0;
    const unsigned long number = std::stoul(text.substr(*position), &length);
    if (number > limit) {
        throw std::invalid_argument("number too large in " + text);
    }
    *position += length;
    return number;
}

Step stepFrom(const std::string &word)
{
    Step step;
    std::size_t position = 0;
    step.action = Action(numberAt(word, &position, std::numeric_limits<Action>::max()));
    while (position < word.size()) {
        if (word[position++] != '.') {
            throw std::invalid_argument("not a step: " + word);
        }
        step.picks += char(numberAt(word, &position, std::numeric_limits<std::uint8_t>::max()));
    }
    return step;
}
} // namespace

std::string toString(const Sequence &sequence)
{
    std::string text;
    for (const Step &step : sequence) {
        text += (text.empty() ? "" : " ") + std::to_string(step.action);
        for (const char pick : step.picks) {
            text += '.' + std::to_string(std::uint8_t(pick));
        }
    }
    return text;
}

Sequence sequenceFrom(const std::string &text)
{
    Sequence sequence;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        sequence.push_back(stepFrom(word));
    }
    return sequence;
}

bool nextPicks(const std::vector<Pick> &made, std::string *next)
{
    for (std::size_t i = made.size(); i-- > 0;) {
        if (made[i].value + 1 < made[i].alternatives) {
            next->clear();
            for (std::size_t j = 0; j < i; ++j) {
                *next += char(made[j].value);
            }
            *next += char(made[i].value + 1);
            return true;
        }
    }
    return false;
}

} // namespace exploration
