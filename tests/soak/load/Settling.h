// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Situation.h"

#include <QObject>
#include <QTimer>

/// Brings everything that the load has begun to its end and checks that nothing of it is left: what
/// is live is cancelled, what is open closed, what is held given back. A last sound goes through
/// the whole audio sequence; behind it the device must be as it was before the first.
///
/// Thread: the worker's. The load rests meanwhile.
class Settling : public QObject
{
    Q_OBJECT

public:
    Settling(Situation &situation, QObject *parent);

    void start();

    bool isActive() const { return m_step != Step::Done; }

    /// What is waited for, for whoever has to explain why nothing goes on.
    QString awaited() const;

Q_SIGNALS:
    void settled();

private:
    enum class Step { Emptying, Closing, Looking, Done };

    void on_timer_timeout();
    void giveBack();
    void emptySounds();
    void emptyDisplays();
    bool isEmpty() const;
    void close();
    QString disquiet() const;
    void lookForNodes();
    void finish();

    Situation &m_situation;
    Ledger &m_ledger;
    QTimer m_timer;
    Step m_step = Step::Done;
    int m_rounds = 0;
};
