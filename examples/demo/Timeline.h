// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <chrono>

/// Writes events as they happen, one JSON object per line: {"t": seconds, "event": ..., ...}. The
/// seconds are of the monotonic clock, so they can be compared with recordings. Lines are appended,
/// so others may append to the file too.
///
/// Lives in the worker's thread. Owned by the worker.
class Timeline : public QObject
{
    Q_OBJECT

public:
    using Moment = std::chrono::steady_clock::time_point;

    /// An empty file name writes nothing.
    explicit Timeline(const QString &fileName, QObject *parent);

    /// Takes the moment of an event that is noted later than it happened.
    void note(const QString &event, QJsonObject details = {}, Moment moment = now());

    static Moment now() { return std::chrono::steady_clock::now(); }

Q_SIGNALS:
    /// An event has happened. Its name includes the "id", if there is one: "ended chime".
    void noted(const QString &name);

private:
    QFile m_file;
};
