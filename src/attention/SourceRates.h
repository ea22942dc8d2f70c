// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMap>
#include <QString>

/// How many notifications each source may send within a time. A source that was quiet for that time may
/// send them all at once.
///
/// Times are milliseconds of a clock that never goes back.
class SourceRates
{
public:
    struct Limit
    {
        int count = 60;
        int periodMs = 60000;
    };

    void setLimit(const Limit &limit) { m_limit = limit; }

    /// Whether another one of the source is within its limit. Counts it, if so, as this many.
    bool take(const QString &source, qint64 now, int weight = 1);

private:
    /// The time at which all that the source has sent would have been sent, had it kept to the rate.
    QMap<QString, qint64> m_busyUntil;
    Limit m_limit;
};
