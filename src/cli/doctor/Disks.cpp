// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/doctor/Disks.h"

#include <QDir>
#include <QSet>
#include <QStorageInfo>

namespace {
/// A log or a fetched sound takes more.
constexpr qint64 minFreeBytes = 1 << 20;
} // namespace

QVector<Finding> lookAtDisks()
{
    QVector<Finding> findings;
    QSet<QString> seen;
    for (const QString &folder : {QStringLiteral("/"), QStringLiteral("/var/log"), QDir::tempPath(),
                                  qEnvironmentVariable("XDG_RUNTIME_DIR")}) {
        const QStorageInfo disk(folder);
        const QString root = disk.rootPath();
        if (!disk.isValid() || disk.isReadOnly() || seen.contains(root)) {
            continue;
        }
        seen.insert(root);
        if (disk.bytesAvailable() < minFreeBytes) {
            findings.append(
                {Finding::State::Missing, QStringLiteral("disk"),
                 QStringLiteral("%1 is full: nothing can be logged or kept there").arg(root),
                 QStringLiteral("make room: du -x -d 2 %1 tells what takes it; journalctl "
                                "--vacuum-size=50M shortens the log")
                     .arg(root)});
        }
    }
    return findings;
}
