// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QTimer>

/// Counts the seconds that are left of a timeout, rounded up. Its timer fires only when the number
/// changes.
class Countdown : public QObject
{
    Q_OBJECT

public:
    static constexpr int none = -1;

    explicit Countdown(QObject *parent = nullptr);

    /// @p since is in milliseconds of the monotonic clock.
    void start(qint64 since, int remainingMs);
    void stop();

    /// From the number of seconds at the start down to 0, or none.
    int seconds() const { return m_seconds; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void on_timer_timeout();

private:
    void update();

    qint64 m_end = 0;
    int m_seconds = none;
    QTimer m_timer;
};
