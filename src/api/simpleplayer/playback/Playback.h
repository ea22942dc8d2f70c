// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/playback/PlaybackWriter.h"

#include <memory>

#include <QString>

class HttpFetch;
class SimplePlayer;

/// A sounding player's life: what it may do next, and its one end signal.
///
/// Thread and owner: the player's. Destroyed, it is silent and reports nothing any more.
class Playback
{
public:
    /// The fetch, if there is one, feeds the source.
    Playback(std::unique_ptr<FrameSource> source, const QString &id, const QString &device,
             std::unique_ptr<HttpFetch> fetch = nullptr);
    ~Playback();

    /// The player whose signals report the end; set once, before anything else is called.
    void setPlayer(SimplePlayer *player) { m_player = player; }

    bool play();
    void pause();
    void stop();
    void setGain(double gain, int fadeMs);

private:
    enum class State { Ready, Playing, Paused, Done };

    void reportLater(const QString &error);
    void report(const QString &error);
    void startFetch();

    const QString m_id;
    SimplePlayer *m_player = nullptr; // owns this
    State m_state = State::Ready;
    std::unique_ptr<HttpFetch> m_fetch;
    bool m_fetchStarted = false;
    PlaybackWriter m_writer;
};
