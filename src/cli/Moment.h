// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QDateTime>

/// Reads a time that is to come: "07:00" or "07:00:30", the next one by the clock; a date and a time, such as
/// "2026-12-24 18:00" or, by ISO 8601, "2026-12-24T18:00:00+01:00"; or a duration from now on, such as "2h", "30m" or
/// "1h30m". By the time zone of `now`, unless the text has an offset from UTC.
Result<QDateTime> momentFromText(const QString &text, const QDateTime &now);

/// The time of day, by the local clock, after the date unless that is today.
QString momentText(const QDateTime &moment, const QDateTime &now);
