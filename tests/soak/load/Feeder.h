// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dice.h"
#include "Situation.h"

#include <QObject>

/// Writes to the FIFOs that sounds are read from: whole sounds, parts of them, or nothing at all,
/// and then it is gone. Thread: the worker's.
class Feeder : public QObject
{
public:
    Feeder(Situation &situation, Dice &dice, QObject *parent);
    ~Feeder() override;

    /// A sound with that id has started: feeds its FIFO if it has one.
    void feed(const QString &id);

    /// Closes what is still open.
    void rest();

private:
    Situation &m_situation;
    Dice &m_dice;
    QByteArray m_wave;
    std::vector<int> m_open;
};
