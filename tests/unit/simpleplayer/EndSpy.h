// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include <simpleplayer/SimplePlayer.h>

#include <QSignalSpy>

/// Watches a player's three end signals.
class EndSpy
{
public:
    explicit EndSpy(SimplePlayer &player)
        : ended(&player, &SimplePlayer::playbackEnded)
        , stopped(&player, &SimplePlayer::playbackStopped)
        , failed(&player, &SimplePlayer::playbackErrorReported)
    {
    }

    int count() const { return ended.count() + stopped.count() + failed.count(); }

    /// Waits for the end, and then makes sure that no second one comes.
    bool hasEndedOnce()
    {
        const bool came = waitFor([this] { return count() > 0; }, std::chrono::seconds(20));
        settle();
        return came && count() == 1;
    }

    std::string error() const
    {
        return failed.isEmpty() ? std::string() : failed[0][1].toString().toStdString();
    }

    QSignalSpy ended;
    QSignalSpy stopped;
    QSignalSpy failed;
};
