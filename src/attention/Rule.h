// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "attention/AttentionInput.h"
#include "attention/NamePatterns.h"
#include "attention/Treatment.h"
#include "attention/WeeklyTimes.h"

#include <QRegularExpression>
#include <QStringList>

#include <optional>

/// What becomes of the notifications that meet all of its conditions. A value.
class Rule
{
public:
    /// Reads the keys "name", "when" and "then". Throws as TavoConfiguration does.
    static Rule read(TavoConfiguration &configuration, const QTimeZone &zone);

    const QString &name() const { return m_name; }
    const Treatment &treatment() const { return m_treatment; }

    const NamePatterns &sources() const { return m_sources; }
    const NamePatterns &categories() const { return m_categories; }
    const QStringList &words() const { return m_words; }
    bool hasPattern() const { return m_pattern.has_value(); }
    const QString &pattern() const { return m_patternText; }

    /// A pattern as rules search for it, within the limit.
    static QRegularExpression expression(const QString &limit, const QString &pattern);

    /// What words and patterns are looked for in.
    static QString examinedText(const AttentionInput &input);

    bool matches(const AttentionInput &input) const { return matches(input, examinedText(input)); }

    /// The same if many rules examine the same text.
    bool matches(const AttentionInput &input, const QString &examined) const
    {
        return !unmetCondition(input, examined);
    }

    /// Why the notification does not match, such as "source is not doorbell"; empty if it does.
    QString mismatch(const AttentionInput &input) const;

private:
    enum class Condition { Source, Category, Priority, Words, Pattern, Times };

    void readConditions(TavoConfiguration configuration, const QTimeZone &zone);
    void readTreatment(TavoConfiguration configuration);

    /// The first condition that is not met. They are in the order of what they cost.
    std::optional<Condition> unmetCondition(const AttentionInput &input,
                                            const QString &examined) const;

    QString m_name;
    NamePatterns m_sources;
    NamePatterns m_categories;
    std::optional<TavoNotificationItemPriority::Enum> m_minPriority;
    std::optional<TavoNotificationItemPriority::Enum> m_maxPriority;
    QStringList m_words;
    QString m_patternText;
    std::optional<QRegularExpression> m_pattern;
    WeeklyTimes m_times;
    Treatment m_treatment;
};
