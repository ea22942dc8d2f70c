// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDateTime>

/// Whether the time of day has been set. It begins in the past on a device without a battery for its clock.
inline bool isClockSet()
{
    constexpr qint64 earliest = Q_INT64_C(1704067200000); // 1 January 2024
    return QDateTime::currentMSecsSinceEpoch() > earliest;
}
