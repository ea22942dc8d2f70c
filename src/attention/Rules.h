// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/Rule.h"

#include <functional>
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

    /// Calls the function with the index of each rule that counts.
    Treatment apply(const AttentionInput &input,
                    const std::function<void(std::size_t)> &applied) const;

private:
    std::vector<Rule> m_rules;
    bool m_isOnlyFirst = false;
};
