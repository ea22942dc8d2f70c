// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "../Moment.h"

#include <QFile>

/// Writes the current time as a line. Ends the process on error.
inline void writeAnswerTime(const QString &file)
{
    const qint64 now = momentNow();
    QFile answer(file);
    if (!answer.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        answer.write(QByteArray::number(now) + '\n') < 0) {
        qFatal("%s: %s", qPrintable(file), qPrintable(answer.errorString()));
    }
}
