// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/Rule.h"
#include "attention/RuleIndex.h"

#include <optional>
#include <vector>

/// Rules in their order. If several match, a later one goes before an earlier one in what both set;
/// or only the first one counts. A value.
class Rules
{
public:
    Rules() = default;

    /// Reads the keys "rules" and "apply" ("all" or "first"). Throws as TavoConfiguration does.
    static Rules read(TavoConfiguration &configuration, const QTimeZone &zone);

    const std::vector<Rule> &list() const { return m_rules; }
    bool isOnlyFirst() const { return m_isOnlyFirst; }

    /// The indexes of the rules that count.
    std::vector<std::size_t> matching(const AttentionInput &input) const;

    /// The same; nothing if that might take long, because a pattern may match.
    std::optional<std::vector<std::size_t>> matchingAtOnce(const AttentionInput &input) const;

    /// What these rules want.
    Treatment treatment(const std::vector<std::size_t> &matching) const;

private:
    QString textFor(const AttentionInput &input) const;
    std::vector<std::size_t> matching(const AttentionInput &input, const QString &text,
                                      const RuleIndex::Indexes &candidates) const;

    std::vector<Rule> m_rules;
    RuleIndex m_index;
    bool m_isOnlyFirst = false;
};
