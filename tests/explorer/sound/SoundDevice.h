// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/sound/SoundFacts.h"
#include "support/scripted/ScriptedPlayers.h"

/// The players that the module makes, from the device's side: checks what the module asks of them
/// and reports their ends.
class SoundDevice
{
public:
    enum class End { Ended, Stopped, Error };

    SoundDevice(SoundJudge *judge, SoundFacts *facts);

    /// Call before a new module is made.
    void clear();

    /// Call before the module is deleted: its players go with it.
    void close() { m_closing = true; }

    /// The player's one end signal.
    void report(int id, End end);

    /// The number of players.
    static int alive();

private:
    void on_call(const QString &call, const QString &name);
    bool play(SoundItem *item);
    void checkPlay(const SoundItem &item);
    void pause(SoundItem *item);
    void stop(SoundItem *item);
    void destroy(const SoundItem *item);

    SoundJudge *m_judge;
    SoundFacts *m_facts;
    bool m_closing = false;
};
