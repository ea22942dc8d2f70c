// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

#include <algorithm>

/// Names in any case. One that ends with "*" stands for all that begin like it.
class NamePatterns
{
public:
    NamePatterns() = default;
    explicit NamePatterns(const QStringList &patterns)
        : m_patterns(patterns)
    {
    }

    bool isEmpty() const { return m_patterns.isEmpty(); }

    bool match(const QString &name) const
    {
        return std::any_of(m_patterns.begin(), m_patterns.end(), [&name](const QString &pattern) {
            return pattern.endsWith(QLatin1Char('*'))
                       ? name.startsWith(pattern.leftRef(pattern.size() - 1), Qt::CaseInsensitive)
                       : name.compare(pattern, Qt::CaseInsensitive) == 0;
        });
    }

    QString toString() const { return m_patterns.join(QLatin1String(", ")); }

private:
    QStringList m_patterns;
};
