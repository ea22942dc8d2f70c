// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "RulesNode.h"

RulesNode::RulesNode(CMNodes *nodes, const QString &file)
    : CMComputedNode(nodes, TavoAttentionRulesPath())
    , m_file(file)
{
    publish();
}

void RulesNode::setRules(const QString &file, const QStringList &names)
{
    change([&] {
        m_file = file;
        m_names = names;
        m_counts.assign(std::size_t(names.size()), 0);
        m_isRead = true;
        m_error.clear();
    });
}

void RulesNode::setError(const QString &file, const QString &error)
{
    change([&] {
        m_file = file;
        m_error = error;
    });
}

void RulesNode::count(const std::vector<std::size_t> &rules)
{
    if (rules.empty()) {
        return;
    }
    change([&] {
        for (const std::size_t rule : rules) {
            ++m_counts[rule];
        }
    });
}

TavoValue RulesNode::makeValue() const
{
    TavoList<TavoAttentionRule> rules;
    for (int index = 0; index < m_names.size(); ++index) {
        rules.append(
            TavoAttentionRule().setName(m_names.at(index)).setCount(m_counts[std::size_t(index)]));
    }
    return TavoValue().setAttentionRules(
        TavoAttentionRules().setFile(m_file).setRead(m_isRead).setError(m_error).setRules(rules));
}
