// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/doctor/RunningHost.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QVersionNumber>

#include <algorithm>
#include <chrono>

namespace {
/// The time of a moment that systemd has measured since the machine was started. Its own times of day are wrong if the
/// clock was set later.
QDateTime timeOf(qint64 monotonicUs)
{
    using namespace std::chrono;
    const microseconds ago = duration_cast<microseconds>(steady_clock::now().time_since_epoch()) -
                             microseconds(monotonicUs);
    return QDateTime::currentDateTimeUtc().addMSecs(-duration_cast<milliseconds>(ago).count());
}

using Properties = QHash<QByteArray, QByteArray>;

Properties propertiesIn(const QByteArray &output)
{
    Properties values;
    const QList<QByteArray> lines = output.split('\n');
    for (const QByteArray &line : lines) {
        values.insert(line.left(line.indexOf('=')), line.mid(line.indexOf('=') + 1));
    }
    return values;
}

/// How the service has ended; empty if it runs or was stopped.
QString failureOf(const Properties &values)
{
    const QByteArray state = values.value("ActiveState");
    const bool isRestarted = state == "activating" && values.value("NRestarts").toInt() > 0;
    if (state != "failed" && values.value("SubState") != "auto-restart" && !isRestarted) {
        return {};
    }
    const QByteArray result = values.value("Result");
    if (result == "success") {
        return QStringLiteral("it is restarted again and again");
    }
    const QString status = QString::fromLatin1(values.value("ExecMainStatus"));
    if (result == "exit-code") {
        return QStringLiteral("exit status ") + status;
    }
    if (result == "signal" || result == "core-dump") {
        return QStringLiteral("it crashed, or was killed, by signal ") + status;
    }
    return QString::fromLatin1(result);
}
} // namespace

bool isOutdated(const QString &hostVersion)
{
    return QVersionNumber::fromString(hostVersion) <
           QVersionNumber::fromString(QStringLiteral(TAVO_VERSION));
}

QString outdatedText(const QString &hostVersion)
{
    return QStringLiteral("version %1 runs, but %2 is installed")
        .arg(hostVersion, QStringLiteral(TAVO_VERSION));
}

QDateTime changeOfConfiguration(const QString &file)
{
    // Packages give files older times of modification, so the time of the metadata counts.
    QDateTime newest = QFileInfo(file).metadataChangeTime();
    const QString folder = file + QStringLiteral(".d");
    newest = std::max(newest, QFileInfo(folder).metadataChangeTime());
    const auto fragments = QDir(folder).entryInfoList({QStringLiteral("*.json")});
    for (const QFileInfo &fragment : fragments) {
        newest = std::max(newest, fragment.metadataChangeTime());
    }
    return newest;
}

QString serviceProperties()
{
    return QStringLiteral(
        "ActiveState,SubState,Result,ExecMainStatus,NRestarts,StateChangeTimestampMonotonic,"
        "StatusText");
}

std::optional<Finding> lookAtService(const QByteArray &properties, const QString &file)
{
    const Properties values = propertiesIn(properties);
    const QString user = file.isEmpty() ? QStringLiteral(" --user") : QString();
    if (const QString failure = failureOf(values); !failure.isEmpty()) {
        return Finding{Finding::State::Missing, QStringLiteral("service"),
                       QStringLiteral("tavo-host has failed: ") + failure,
                       QStringLiteral("journalctl%1 -u tavo-host -n 30 says why, and names the "
                                      "module; then systemctl%1 restart tavo-host")
                           .arg(user)};
    }
    if (values.value("ActiveState") != "active") {
        return std::nullopt;
    }
    // A start and a reload change the state.
    if (!file.isEmpty() && changeOfConfiguration(file) >
                               timeOf(values.value("StateChangeTimestampMonotonic").toLongLong())) {
        return Finding{Finding::State::Notice, QStringLiteral("configuration"),
                       QStringLiteral("has changed since the host has read it"),
                       QStringLiteral("systemctl reload tavo-host; then systemctl status tavo-host "
                                      "says whether it needs a restart")};
    }
    const QString status = QString::fromUtf8(values.value("StatusText"));
    if (status.isEmpty() || status == QLatin1String("Reloaded the configuration")) {
        return std::nullopt;
    }
    return Finding{Finding::State::Notice, QStringLiteral("configuration"), status,
                   QStringLiteral("systemctl%1 restart tavo-host").arg(user)};
}

std::optional<Finding> lookAtOtherService(const OtherService &service, const QByteArray &properties)
{
    const QString subject = QString::fromLatin1(service.subject);
    const QString name = QString::fromLatin1(service.name);
    const Properties values = propertiesIn(properties);
    if (const QString failure = failureOf(values); !failure.isEmpty()) {
        return Finding{
            Finding::State::Missing, subject,
            QStringLiteral("the service %1 has failed: %2").arg(name, failure),
            QStringLiteral("journalctl -u %1 -n 5 says why; then systemctl restart %1").arg(name)};
    }
    if (values.value("ActiveState") != "active") {
        return std::nullopt;
    }
    return Finding{Finding::State::Good,
                   subject,
                   QStringLiteral("the service %1 %2").arg(name, QLatin1String(service.purpose)),
                   {}};
}
