// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Situation.h"

#include <QObject>
#include <QTimer>

/// Ends everything that the load has begun and checks that nothing is left: cancels sounds, closes
/// displays, releases resources. Then a last sound goes through the whole audio sequence, after
/// which the device must be as before the first sound.
///
/// Lives in the worker's thread. The load rests meanwhile.
class Settling : public QObject
{
    Q_OBJECT

public:
    Settling(Situation &situation, QObject *parent);

    void start();

    bool isActive() const { return m_step != Step::Done; }

    /// What it waits for, to explain why it is stuck.
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
