// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>

#include <ctime>

/// Nanoseconds of the monotonic clock, which all processes share.
inline long long monotonicNanoseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

/// Writes the time of the call as one line; ends the process where that can't be done.
inline void writeAnswerTime(const QString &file)
{
    const long long now = monotonicNanoseconds();
    QFile answer(file);
    if (!answer.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        answer.write(QByteArray::number(now) + '\n') < 0) {
        qFatal("%s: %s", qPrintable(file), qPrintable(answer.errorString()));
    }
}
