// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Situation.h"

/// Puts together random sounds: of every kind, good and bad, from the folder of sounds.
class SoundMenu
{
public:
    SoundMenu(const Situation &situation, Dice &dice);

    /// Without id and response path. A stream from a FIFO waits for a writer, which writes once the
    /// sound has started; its number is then in the id.
    struct Choice
    {
        TavoNotificationPlayerItem item;
        int fifo = -1;
    };
    Choice choose();

    /// One of each kind: what makes a process take up whatever it takes up once.
    std::vector<TavoNotificationPlayerItem> oneOfEach();

    /// A sound fetched over http; empty where nobody serves any.
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
