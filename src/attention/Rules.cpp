// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/Rules.h"

#include <algorithm>

namespace {
constexpr std::size_t maxRules = 1000;
} // namespace

Rules Rules::read(TavoConfiguration &configuration, const QTimeZone &zone)
{
    Rules rules;
    const QString applyKey = QStringLiteral("apply");
    const QString apply = configuration.string(applyKey, QStringLiteral("all"));
    if (apply != QLatin1String("all") && apply != QLatin1String("first")) {
        configuration.fail(applyKey, QStringLiteral("must be \"all\" or \"first\""));
    }
    rules.m_isOnlyFirst = apply == QLatin1String("first");
    const QString rulesKey = QStringLiteral("rules");
    for (TavoConfiguration &section : configuration.sections(rulesKey)) {
        rules.m_rules.push_back(Rule::read(section, zone));
    }
    if (rules.m_rules.size() > maxRules) {
        configuration.fail(rulesKey, QStringLiteral("must have at most %1 rules").arg(maxRules));
    }
    for (const Rule &rule : rules.m_rules) {
        rules.m_index.add(rule);
    }
    rules.m_index.finish();
    return rules;
}

std::vector<std::size_t> Rules::matching(const AttentionInput &input) const
{
    const QString text = textFor(input);
    return matching(input, text, m_index.candidates(input, text));
}

std::optional<std::vector<std::size_t>> Rules::matchingAtOnce(const AttentionInput &input) const
{
    const QString text = textFor(input);
    if (m_index.isLong(text)) {
        return std::nullopt;
    }
    const RuleIndex::Indexes candidates = m_index.candidates(input, text);
    const bool hasPattern =
        std::any_of(candidates.begin(), candidates.end(),
                    [this](std::size_t index) { return m_rules[index].hasPattern(); });
    return hasPattern ? std::nullopt : std::optional(matching(input, text, candidates));
}

QString Rules::textFor(const AttentionInput &input) const
{
    return m_index.looksAtText() ? Rule::examinedText(input) : QString();
}

std::vector<std::size_t> Rules::matching(const AttentionInput &input, const QString &text,
                                         const RuleIndex::Indexes &candidates) const
{
    std::vector<std::size_t> matching;
    for (const std::size_t index : candidates) {
        if (m_rules[index].matches(input, text)) {
            matching.push_back(index);
            if (m_isOnlyFirst) {
                break;
            }
        }
    }
    return matching;
}

Treatment Rules::treatment(const std::vector<std::size_t> &matching) const
{
    Treatment treatment;
    for (const std::size_t index : matching) {
        treatment.add(m_rules[index].treatment());
    }
    return treatment;
}
