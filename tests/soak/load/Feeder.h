// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dice.h"
#include "Situation.h"

#include <QObject>

/// Writes to the FIFOs from which sounds are read: whole sounds, parts of them, or nothing. Then it
/// closes the FIFO. Lives in the worker's thread.
class Feeder : public QObject
{
public:
    Feeder(Situation &situation, Dice &dice, QObject *parent);
    ~Feeder() override;

    /// A sound with that id has started: writes to its FIFO, if it has one.
    void feed(const QString &id);

    /// Closes all FIFOs.
    void rest();

private:
    Situation &m_situation;
    Dice &m_dice;
    QByteArray m_wave;
    std::vector<int> m_open;
};
