// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ProcessState.h"

#include "support/EventLoop.h"
#include "support/Sanitized.h"
#include "support/sound/SoundFiles.h"

#include <QDir>

namespace {

long valueAfter(const QByteArray &text, const QByteArray &key)
{
    const int at = text.indexOf(key);
    return at < 0 ? -1
                  : text.mid(at + key.size())
                        .simplified()
                        .split(' ')
                        .first()
                        .split('\n')
                        .first()
                        .toLong();
}

} // namespace

ProcessState ProcessState::of(qint64 process)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(process);
    const QByteArray status = readFile(folder + QStringLiteral("status"));
    const QByteArray stat = readFile(folder + QStringLiteral("stat"));
    // What follows the name, which is in parentheses.
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    constexpr int userTime = 11;
    constexpr int systemTime = 12;
    ProcessState state;
    state.descriptors =
        int(QDir(folder + QStringLiteral("fd")).entryList(QDir::AllEntries | QDir::System).size());
    state.threads = int(valueAfter(status, "\nThreads:"));
    state.residentKiB = valueAfter(status, "\nVmRSS:");
    state.processorTicks = fields.value(userTime).toLong() + fields.value(systemTime).toLong();
    return state;
}

bool waitForSettled(qint64 process, const ProcessState &before)
{
    constexpr std::chrono::seconds timeout{10};
    // ThreadSanitizer starts a program that finds names, over two pipes that it keeps.
    constexpr int ofSanitizer = threadSanitized ? 2 : 0;
    return waitFor(
        [&] {
            const ProcessState now = ProcessState::of(process);
            return now.descriptors <= before.descriptors + ofSanitizer &&
                   now.threads <= before.threads;
        },
        timeout);
}

std::ostream &operator<<(std::ostream &stream, const ProcessState &state)
{
    return stream << state.descriptors << " descriptors, " << state.threads << " threads, "
                  << state.residentKiB << " KiB";
}
