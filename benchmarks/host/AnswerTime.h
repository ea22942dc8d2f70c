// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "../Moment.h"

#include <QFile>

/// Writes the time of the call as one line; ends the process where that can't be done.
inline void writeAnswerTime(const QString &file)
{
    const qint64 now = momentNow();
    QFile answer(file);
    if (!answer.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        answer.write(QByteArray::number(now) + '\n') < 0) {
        qFatal("%s: %s", qPrintable(file), qPrintable(answer.errorString()));
    }
}
