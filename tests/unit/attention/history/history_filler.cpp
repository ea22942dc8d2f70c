// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Fills the history in a file until it is killed: history_filler FILE NAME. The entries are numbered from
// 0; every second one is dismissed at once. Prints a line when the first entries may be on the disk.

#include "modules/attention/history/History.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QThread>

#include <cstdio>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    HistorySettings settings;
    settings.file = arguments.at(1);
    settings.maxEntries = 1'000'000;
    History history(settings);
    for (int i = 0;; ++i) {
        HistoryEntry entry;
        entry.time = QDateTime::currentMSecsSinceEpoch();
        entry.source = arguments.at(2);
        entry.title = QString::number(i);
        entry.text = arguments.at(2) + QLatin1String(" text");
        const qint64 number = history.add(entry);
        if (i % 2 == 1) {
            history.change(number, HistoryEntry::State::Dismissed, {}, entry.time);
        }
        if (i == 1) {
            std::printf("started\n");
            std::fflush(stdout);
        }
        QThread::usleep(500);
    }
}
