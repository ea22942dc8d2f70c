// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/Moment.h"

#include <QRegularExpression>

#include <optional>

namespace {
constexpr int maxDays = 366;
constexpr int secondsOfMinute = 60;
constexpr int secondsOfHour = 3600;
constexpr int secondsOfDay = 86400;

std::optional<QDateTime> timeOfDay(const QString &text, const QDateTime &now)
{
    QTime time = QTime::fromString(text, QStringLiteral("H:mm"));
    if (!time.isValid()) {
        time = QTime::fromString(text, QStringLiteral("H:mm:ss"));
    }
    if (!time.isValid()) {
        return std::nullopt;
    }
    QDateTime moment = now;
    moment.setTime(time);
    if (moment <= now) {
        moment.setDate(now.date().addDays(1));
        moment.setTime(time); // clocks that are put forward may have moved it
    }
    return moment;
}

/// In the format of ISO 8601, with a space for the T and hours of one digit, too.
std::optional<QDateTime> dateAndTime(const QString &text, const QDateTime &now)
{
    static const QRegularExpression s_separator(QStringLiteral("^(.{10})[T ](?=\\d\\d)"));
    static const QRegularExpression s_shortHour(QStringLiteral("^(.{10})[T ](?=\\d:)"));
    QString iso = text;
    iso.replace(s_separator, QStringLiteral("\\1T")).replace(s_shortHour, QStringLiteral("\\1T0"));
    const auto read = QDateTime::fromString(iso, Qt::ISODateWithMs);
    if (!read.isValid() || !iso.contains(QLatin1Char('T'))) {
        return std::nullopt;
    }
    QDateTime moment = now;
    if (read.timeSpec() == Qt::LocalTime) {
        moment.setDate(read.date());
        moment.setTime(read.time());
    } else {
        moment.setMSecsSinceEpoch(read.toMSecsSinceEpoch());
    }
    return moment;
}

std::optional<QDateTime> afterDuration(const QString &text, const QDateTime &now)
{
    static const QRegularExpression s_duration(
        QStringLiteral("^(?:(\\d{1,5})d)?(?:(\\d{1,5})h)?(?:(\\d{1,5})m)?(?:(\\d{1,5})s)?$"));
    const auto match = s_duration.match(text);
    if (text.isEmpty() || !match.hasMatch()) {
        return std::nullopt;
    }
    const auto part = [&match](int index) { return match.captured(index).toLongLong(); };
    return now.addSecs(part(1) * secondsOfDay + part(2) * secondsOfHour +
                       part(3) * secondsOfMinute + part(4));
}
} // namespace

Result<QDateTime> momentFromText(const QString &text, const QDateTime &now)
{
    std::optional<QDateTime> moment = timeOfDay(text, now);
    if (!moment) {
        moment = dateAndTime(text, now);
    }
    if (!moment) {
        moment = afterDuration(text, now);
    }
    if (!moment) {
        return Failure{QStringLiteral("\"%1\" is not a time: use one such as 07:00, "
                                      "\"2026-12-24 18:00\", 2026-12-24T18:00:00Z, 2h or 30m")
                           .arg(text)};
    }
    if (*moment <= now) {
        return Failure{QStringLiteral("%1 is over").arg(text)};
    }
    if (*moment > now.addDays(maxDays)) {
        return Failure{QStringLiteral("%1 is more than %2 days from now").arg(text).arg(maxDays)};
    }
    return *moment;
}

QString momentText(const QDateTime &moment, const QDateTime &now)
{
    const bool isToday = moment.date() == now.date();
    return moment.toString(isToday ? QStringLiteral("HH:mm") : QStringLiteral("yyyy-MM-dd HH:mm"));
}
