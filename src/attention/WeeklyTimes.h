// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/base/configuration.h>

#include <QDate>
#include <QTime>
#include <QTimeZone>

#include <bitset>
#include <optional>
#include <vector>

/// Times that come every week, by the clocks of a time zone, such as 22:00 to 07:00 from Monday to Friday.
///
/// When clocks are put forward, a time that they skip is the moment of the change. When they are put back, a
/// time that comes twice is the first one as a beginning and the second one as an end.
///
/// A value. All times are milliseconds since the epoch in UTC.
class WeeklyTimes
{
public:
    /// No times at all.
    WeeklyTimes() = default;

    /// Reads the list of objects at the key: "days" (from "Mon" to "Sun"; all if it is missing), "from" and
    /// "to" ("HH:MM"; "to" may be "24:00", and is on the next day unless it is later than "from"). Throws as
    /// TavoConfiguration does.
    static WeeklyTimes read(TavoConfiguration &configuration, const QString &key,
                            const QTimeZone &zone);

    bool isEmpty() const { return m_spans.empty(); }

    bool contains(qint64 time) const;

    /// When contains() becomes different; nothing if it never does.
    std::optional<qint64> nextChange(qint64 time) const;

private:
    static constexpr int daysOfWeek = 7;

    struct Span
    {
        std::bitset<daysOfWeek> days; ///< on which it begins; the first is Monday
        int from;                     ///< minutes since midnight
        int length;                   ///< minutes by the clock
    };

    struct Interval
    {
        qint64 begin;
        qint64 end;
    };

    enum class IfTwice { First, Second };

    static Span readSpan(TavoConfiguration &configuration);

    qint64 momentOf(QDate date, int minutes, IfTwice ifTwice) const;

    /// The intervals that touch the time or the days after it, joined and in their order.
    std::vector<Interval> intervalsAround(qint64 time, int days) const;

    std::vector<Span> m_spans;
    QTimeZone m_zone;
};
