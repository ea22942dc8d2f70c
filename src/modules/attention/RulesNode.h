// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <QString>
#include <QStringList>

#include <vector>

/// Publishes the rules, and how often each has applied. Counting costs next to nothing unless somebody
/// subscribes.
class RulesNode : public CMComputedNode
{
public:
    RulesNode(CMNodes *nodes, const QString &file);

    /// Other rules, which have not applied yet, and no error.
    void setRules(const QString &file, const QStringList &names);
    void setError(const QString &file, const QString &error);

    /// The rules at these indexes have applied.
    void count(const std::vector<std::size_t> &rules);

private:
    TavoValue makeValue() const override;

    QString m_file;
    bool m_isRead = false;
    QString m_error;
    QStringList m_names;
    std::vector<qint64> m_counts;
};
