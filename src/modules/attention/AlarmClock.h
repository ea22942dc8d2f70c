// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <optional>

/// Wakes up at a time of day, also if the clock is set in the meantime. Costs nothing until then.
///
/// Times are milliseconds since the epoch in UTC. Used in the thread that made it.
class AlarmClock : public QObject
{
    Q_OBJECT

public:
    /// Throws a std::system_error.
    explicit AlarmClock(QObject *parent = nullptr);
    ~AlarmClock() override;

    static qint64 now();

    /// Replaces the previous time. Without a time, only a change of the clock is told.
    void set(std::optional<qint64> time);

Q_SIGNALS:
    /// The time has come, or the clock has been set. The alarm is off; set it again.
    void rang();

private Q_SLOTS:
    void on_notifier_activated();

private:
    int m_descriptor;
    QSocketNotifier m_notifier;
};
