// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/Rules.h"

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
    return rules;
}

Treatment Rules::apply(const AttentionInput &input,
                       const std::function<void(std::size_t)> &applied) const
{
    Treatment treatment;
    const QString examined = Rule::examinedText(input);
    for (std::size_t index = 0; index < m_rules.size(); ++index) {
        if (!m_rules[index].matches(input, examined)) {
            continue;
        }
        treatment.add(m_rules[index].treatment());
        applied(index);
        if (m_isOnlyFirst) {
            break;
        }
    }
    return treatment;
}
