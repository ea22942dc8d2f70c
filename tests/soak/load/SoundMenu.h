// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Situation.h"

/// Makes random sounds of every kind, valid and broken, from the folder of sounds.
class SoundMenu
{
public:
    SoundMenu(const Situation &situation, Dice &dice);

    /// Without id and response path. A stream from a FIFO waits for a writer, which writes
    /// after the sound has started; the id has the number of the FIFO.
    struct Choice
    {
        TavoNotificationPlayerItem item;
        int fifo = -1;
    };
    Choice choose();

    /// A sound of each kind, so that a process allocates what it allocates once.
    std::vector<TavoNotificationPlayerItem> oneOfEach();

    /// A sound fetched over http, or empty if there is no server.
    QString httpSound() const;

    static constexpr int fifoCount = 8;

    static QString fifo(const Situation &situation, int number);

private:
    TavoNotificationPlayerItem uri();
    TavoNotificationPlayerItem data();
    Choice stream();
    TavoNotificationPlayerItem stranger();
    QString file(bool good);

    const Situation &m_situation;
    Dice &m_dice;
    const QStringList m_good;
    const QStringList m_bad;
};
