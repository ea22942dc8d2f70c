// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/loader/Playback.h"
#include "playback/PlaybackWriter.h"

#include <memory>

#include <QString>

class HttpFetch;
class SimplePlayer;

/// A sound on its way to a device: what its player may do next, and the player's one end signal.
///
/// Thread and owner: the player's. Destroyed, it is silent and reports nothing any more.
class DevicePlayback : public Playback
{
public:
    /// The fetch, if there is one, feeds the source.
    DevicePlayback(std::unique_ptr<FrameSource> source, const QString &id, const QString &device,
                   std::unique_ptr<HttpFetch> fetch = nullptr);
    ~DevicePlayback() override;

    void setPlayer(SimplePlayer *player) override { m_player = player; }
    bool play() override;
    void pause() override;
    void stop() override;
    void setGain(double gain, int fadeMs) override;

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
