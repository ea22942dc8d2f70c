// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dice.h"
#include "Situation.h"
#include "SoundMenu.h"

/// Does random things in the model. Each thread has its own.
class Actions
{
public:
    Actions(Situation &situation, std::uint64_t seed);

    void act();

    /// Plays a sound of each kind, and music, so that all one-time allocations are made.
    void warmUp();

    /// The time until the next action, in milliseconds. Mostly short.
    int pauseMs();

    // Names that other parts of the load use.
    static QString moduleName(int number);
    static CMPath responsePath();
    static CMPath echoPath();
    static CMPath sharedPath(int number);
    static CMPath vanishingPath(int number);
    static constexpr int moduleCount = 3;
    static constexpr int sharedCount = 3;
    static constexpr int vanishingCount = 4;

private:
    void enqueueSound();
    void cancelSound();
    void openDisplay();
    void closeDisplay();
    void askPowerManager();
    void duck();
    void changeMusic();
    void read();
    void echo();
    void sendRubbish();
    void forgeRevoke();

    TavoNotificationDisplayItem message();
    TavoNotificationItemPriority::Enum priority();

    Situation &m_situation;
    Ledger &m_ledger;
    Dice m_dice;
    SoundMenu m_menu;
};
