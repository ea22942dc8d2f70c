// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/sound/SoundFacts.h"
#include "support/scripted/ScriptedPlayers.h"

/// The device's side of the players that the module makes: what the module may ask of them, and their
/// ends.
class SoundDevice : public QObject
{
public:
    enum class End { Ended, Stopped, Error };

    SoundDevice(SoundJudge *judge, SoundFacts *facts, bool mayBeLate);

    /// A fresh module is to come.
    void clear();

    /// The module is being deleted: its players go with it.
    void close() { m_closing = true; }

    /// The player's one end signal.
    void report(int id, End end);

    /// Whether a player that could not go on had its end on the way already, and it is yet to come.
    bool hasLateEnd() const { return m_late.player != nullptr; }
    int lateId() const { return m_late.id; }

    /// Lets it come. The item has ended before, so that nothing may follow.
    void reportLate(End end);

    /// Players that there are and that the module has not released.
    int alive() const;

private:
    /// A player whose end is on its way: calls that were posted before it come first, so that it is
    /// kept from being deleted meanwhile.
    struct Late
    {
        int id = -1;
        SimplePlayer *player = nullptr;
        ScriptedPlayer *script = nullptr;
        bool released = false; ///< by the module
    };

    bool eventFilter(QObject *player, QEvent *event) override;
    void keepForLateEnd(int id);
    void on_call(const QString &call, const QString &name);
    bool play(SoundItem *item);
    void checkPlay(const SoundItem &item);
    void pause(SoundItem *item);
    void stop(SoundItem *item);
    void destroy(const SoundItem *item);
    bool isReleased(const ScriptedPlayer *player) const;

    SoundJudge *m_judge;
    SoundFacts *m_facts;
    bool m_mayBeLate;
    bool m_closing = false;
    Late m_late;
};
