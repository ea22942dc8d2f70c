// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/output/Terminal.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

/// Shows in the live line what the program waits for, and how long it has waited.
class LiveClock : public QObject
{
    Q_OBJECT

public:
    explicit LiveClock(Terminal &terminal);

    /// Shows this text from now on, and counts the time from zero.
    void show(const QString &what);

private Q_SLOTS:
    void on_timer_timeout();

private:
    Terminal &m_terminal;
    QString m_what;
    QElapsedTimer m_since;
    QTimer m_timer;
};
