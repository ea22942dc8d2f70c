// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "cli/output/Terminal.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

/// Keeps the live line saying what is going on and for how long.
class LiveClock : public QObject
{
    Q_OBJECT

public:
    explicit LiveClock(Terminal &terminal);

    /// What goes on from now on; the time begins anew.
    void show(const QString &what);

private Q_SLOTS:
    void on_timer_timeout();

private:
    Terminal &m_terminal;
    QString m_what;
    QElapsedTimer m_since;
    QTimer m_timer;
};
