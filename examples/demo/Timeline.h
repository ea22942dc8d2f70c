// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <chrono>

/// Writes what happens, as it happens, one JSON object a line: {"t": seconds, "event": ..., ...}.
/// The seconds are those of the monotonic clock, so that others can lay recordings beside them.
/// Lines go to the end of the file, where others may add theirs meanwhile.
///
/// Thread and owner: the worker's, the worker.
class Timeline : public QObject
{
    Q_OBJECT

public:
    using Moment = std::chrono::steady_clock::time_point;

    /// An empty file name writes nowhere.
    explicit Timeline(const QString &fileName, QObject *parent);

    /// The moment is given for what is understood only later than it is seen.
    void note(const QString &event, QJsonObject details = {}, Moment moment = now());

    static Moment now() { return std::chrono::steady_clock::now(); }

Q_SIGNALS:
    /// Something has happened. Its name is the event's with the "id", if it has one: "ended chime".
    void noted(const QString &name);

private:
    QFile m_file;
};
