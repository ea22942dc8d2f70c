// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "attention/WeeklyTimes.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace {
constexpr int minutesOfHour = 60;
constexpr int minutesOfDay = 24 * minutesOfHour;
constexpr qint64 msOfMinute = 60000;
constexpr qint64 msOfDay = minutesOfDay * msOfMinute;

const std::array<QString, 7> dayNames{
    QStringLiteral("Mon"), QStringLiteral("Tue"), QStringLiteral("Wed"), QStringLiteral("Thu"),
    QStringLiteral("Fri"), QStringLiteral("Sat"), QStringLiteral("Sun"),
};

int readMinutes(TavoConfiguration &configuration, const QString &key, bool isEnd)
{
    const QString text = configuration.string(key, QString());
    if (isEnd && text == QLatin1String("24:00")) {
        return minutesOfDay;
    }
    const QTime time = QTime::fromString(text, QStringLiteral("HH:mm"));
    if (!time.isValid()) {
        configuration.fail(key, QStringLiteral("must be a time such as \"22:00\""));
    }
    return time.hour() * minutesOfHour + time.minute();
}
} // namespace

WeeklyTimes WeeklyTimes::read(TavoConfiguration &configuration, const QString &key,
                              const QTimeZone &zone)
{
    WeeklyTimes times;
    times.m_zone = zone;
    for (TavoConfiguration &section : configuration.sections(key)) {
        times.m_spans.push_back(readSpan(section));
    }
    return times;
}

WeeklyTimes::Span WeeklyTimes::readSpan(TavoConfiguration &configuration)
{
    const QString daysKey = QStringLiteral("days");
    Span span{};
    const QStringList names = configuration.stringList(daysKey, {});
    for (const QString &name : names) {
        const auto *const day =
            std::find_if(dayNames.begin(), dayNames.end(), [&](const QString &known) {
                return known.compare(name, Qt::CaseInsensitive) == 0;
            });
        if (day == dayNames.end()) {
            configuration.fail(daysKey, QStringLiteral("must be a list of days from Mon to Sun"));
        }
        span.days.set(std::size_t(day - dayNames.begin()));
    }
    if (names.isEmpty()) {
        span.days.set();
    }
    span.from = readMinutes(configuration, QStringLiteral("from"), false);
    const int to = readMinutes(configuration, QStringLiteral("to"), true);
    span.length = to > span.from ? to - span.from : to + minutesOfDay - span.from;
    configuration.finish();
    return span;
}

bool WeeklyTimes::contains(qint64 time) const
{
    const auto intervals = intervalsAround(time, 1);
    return std::any_of(intervals.begin(), intervals.end(), [time](const Interval &interval) {
        return interval.begin <= time && time < interval.end;
    });
}

std::optional<qint64> WeeklyTimes::nextChange(qint64 time) const
{
    // Whatever happens at all happens within a week, even if clocks change in between.
    for (const Interval &interval : intervalsAround(time, daysOfWeek + 1)) {
        if (time < interval.begin) {
            return interval.begin;
        }
        if (time < interval.end) {
            const bool isEndless = interval.end - time > daysOfWeek * msOfDay;
            return isEndless ? std::nullopt : std::optional(interval.end);
        }
    }
    return std::nullopt;
}

std::vector<WeeklyTimes::Interval> WeeklyTimes::intervalsAround(qint64 time, int days) const
{
    if (isEmpty()) {
        return {};
    }
    const QDate today = QDateTime::fromMSecsSinceEpoch(time, m_zone).date();
    std::vector<Interval> intervals;
    for (int day = -2; day <= days; ++day) {
        const QDate date = today.addDays(day);
        for (const Span &span : m_spans) {
            if (span.days.test(std::size_t(date.dayOfWeek() - 1))) {
                intervals.push_back({momentOf(date, span.from, IfTwice::First),
                                     momentOf(date, span.from + span.length, IfTwice::Second)});
            }
        }
    }
    std::sort(intervals.begin(), intervals.end(),
              [](const Interval &left, const Interval &right) { return left.begin < right.begin; });
    std::vector<Interval> joined;
    for (const Interval &interval : intervals) {
        if (!joined.empty() && interval.begin <= joined.back().end) {
            joined.back().end = std::max(joined.back().end, interval.end);
        } else if (interval.begin < interval.end) {
            joined.push_back(interval);
        }
    }
    return joined;
}

qint64 WeeklyTimes::momentOf(QDate date, int minutes, IfTwice ifTwice) const
{
    // As if the zone were UTC. A day on either side, the zone has the offset of before or after a change.
    const qint64 clock =
        QDateTime(date, QTime(0, 0), Qt::UTC).toMSecsSinceEpoch() + minutes * msOfMinute;
    const auto offsetAt = [this](qint64 moment) {
        return m_zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(moment, Qt::UTC)) * qint64(1000);
    };
    const qint64 byOldOffset = clock - offsetAt(clock - msOfDay);
    const qint64 byNewOffset = clock - offsetAt(clock + msOfDay);
    const bool isOld = byOldOffset + offsetAt(byOldOffset) == clock;
    const bool isNew = byNewOffset + offsetAt(byNewOffset) == clock;
    if (isOld && isNew) {
        return ifTwice == IfTwice::First ? byOldOffset : byNewOffset;
    }
    if (isOld || isNew) {
        return isOld ? byOldOffset : byNewOffset;
    }
    // The clocks skip it.
    return m_zone.nextTransition(QDateTime::fromMSecsSinceEpoch(byNewOffset, Qt::UTC))
        .atUtc.toMSecsSinceEpoch();
}
