// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/doctor/HostModules.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>

namespace {
const char *const s_subject = "modules";
const char *const s_usual[] = {"powermanager", "player", "notifications", "attention", "dbus"};
} // namespace

QVector<Finding> lookAtModules(const QByteArray &list)
{
    QVector<Finding> findings;
    QStringList names;
    const QString subject = QString::fromLatin1(s_subject);
    for (const QByteArray &line : list.split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() < 2) {
            continue;
        }
        names.append(QString::fromUtf8(fields[0]));
        if (fields.size() > 2) {
            const bool isOfAnotherVersion = fields[2].contains("undefined symbol");
            findings.append(
                {Finding::State::Missing, subject,
                 QStringLiteral("%1: %2").arg(names.last(), QString::fromUtf8(fields[2])),
                 isOfAnotherVersion
                     ? QStringLiteral("install the version of it for this version of Tavo")
                     : QStringLiteral("install what %1 needs: ldd shows what is missing")
                           .arg(QString::fromUtf8(fields[1]))});
        }
    }
    for (const char *usual : s_usual) {
        if (!names.contains(QLatin1String(usual))) {
            findings.append({Finding::State::Missing, subject,
                             QStringLiteral("there is no module %1").arg(QLatin1String(usual)),
                             QStringLiteral("install it, or name its folder: TAVO_MODULE_PATH")});
        }
    }
    if (findings.isEmpty()) {
        findings.append({Finding::State::Good,
                         subject,
                         QStringLiteral("installed: %1").arg(names.join(QStringLiteral(", "))),
                         {}});
    }
    return findings;
}

QString programBeside(const QString &name)
{
    const QString beside =
        QStandardPaths::findExecutable(name, {QCoreApplication::applicationDirPath()});
    return beside.isEmpty() ? QStandardPaths::findExecutable(name) : beside;
}
