// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dice.h"
#include "Situation.h"
#include "SoundMenu.h"

/// Does one random thing after another in the model. One thread each.
class Actions
{
public:
    Actions(Situation &situation, std::uint64_t seed);

    void act();

    /// Plays one of each kind of sound, and music: what a process takes up once, it has behind it.
    void warmUp();

    /// Until the next action, in milliseconds: most are short.
    int pauseMs();

    // Names that others have to know.
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
