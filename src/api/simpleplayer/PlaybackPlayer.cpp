// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/PlaybackPlayer.h"

#include "playback/loader/Playback.h"

PlaybackPlayer::PlaybackPlayer(std::unique_ptr<Playback> playback, QObject *parent)
    : SimplePlayer(parent)
    , m_playback(std::move(playback))
{
    m_playback->setPlayer(this);
}

PlaybackPlayer::~PlaybackPlayer() = default;

bool PlaybackPlayer::play()
{
    return m_playback->play();
}

void PlaybackPlayer::pause()
{
    m_playback->pause();
}

void PlaybackPlayer::stop()
{
    m_playback->stop();
}

void PlaybackPlayer::setGain(double gain, int fadeMs)
{
    m_playback->setGain(gain, fadeMs);
}
