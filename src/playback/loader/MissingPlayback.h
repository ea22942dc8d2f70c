// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/loader/Playback.h"

#include <QString>

/// Stands where libtavo_playback can't be loaded: its play() logs why and fails, and all else is as
/// a player promises.
class MissingPlayback : public Playback
{
public:
    MissingPlayback(const QString &id, const QString &why);

    void setPlayer(SimplePlayer *player) override { m_player = player; }
    bool play() override;
    void pause() override {}
    void stop() override;
    void setGain(double /*gain*/, int /*fadeMs*/) override {}

private:
    const QString m_id;
    const QString m_why;
    SimplePlayer *m_player = nullptr; // owns this
    bool m_stopped = false;
};
