// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/FleetLog.h"

#include "base/Printable.h"

#include <cstdio>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {
constexpr int maxLength = 1000; // what others send may be in it

bool goesToJournal()
{
    struct stat status = {};
    return fstat(STDERR_FILENO, &status) == 0 &&
           qEnvironmentVariable("JOURNAL_STREAM") ==
               QStringLiteral("%1:%2").arg(status.st_dev).arg(status.st_ino);
}

void write(int level, const QString &text)
{
    static const bool s_goesToJournal = goesToJournal();
    const QByteArray line = printable(shortened(text, maxLength)).toUtf8();
    if (s_goesToJournal) {
        std::fprintf(stderr, "<%d>%s\n", level, line.constData());
    } else {
        std::fprintf(stderr, "tavo-fleet: %s\n", line.constData());
    }
}
} // namespace

void FleetLog::error(const QString &text)
{
    write(LOG_ERR, text);
}

void FleetLog::warning(const QString &text)
{
    write(LOG_WARNING, text);
}

void FleetLog::info(const QString &text)
{
    write(LOG_INFO, text);
}
