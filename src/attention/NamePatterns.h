// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/base/configuration.h>

#include <QString>
#include <QStringList>

#include <algorithm>

/// Names in any case. One that ends with "*" stands for all that begin like it.
class NamePatterns
{
public:
    /// Reads the list at the key. Throws as TavoConfiguration does.
    static NamePatterns read(TavoConfiguration &configuration, const QString &key)
    {
        NamePatterns names;
        names.m_patterns = configuration.stringList(key, {});
        for (const QString &pattern : qAsConst(names.m_patterns)) {
            if (pattern.leftRef(pattern.size() - 1).contains(QLatin1Char('*'))) {
                configuration.fail(key, QStringLiteral("may have a * only at the end of a name"));
            }
        }
        return names;
    }

    bool isEmpty() const { return m_patterns.isEmpty(); }
    const QStringList &patterns() const { return m_patterns; }

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
