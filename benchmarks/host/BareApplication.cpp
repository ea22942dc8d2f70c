// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The floor of a start: an application of Qt's core that handles one queued call, writes the time,
// and then waits like a host.

#include "AnswerTime.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    const QString file = QCoreApplication::arguments().value(1);
    QMetaObject::invokeMethod(
        &application, [file] { writeAnswerTime(file); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
