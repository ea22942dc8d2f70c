// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/FakePlayer.h"

#include <QMetaObject>

FakePlayer::FakePlayer(const QString &id, QObject *parent)
    : SimplePlayer(parent)
    , m_id(id)
{
}

FakePlayer::~FakePlayer() = default;

bool FakePlayer::play()
{
    if (m_state == State::Done)
        return false;
    if (m_state == State::Playing)
        return true;
    if (m_state == State::Ready)
        m_loop = loop;
    m_state = State::Playing;
    if (m_loop)
        return true;
    // The end waits in the event loop, where a pause or stop can still overtake it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_state == State::Playing)
                finish(&SimplePlayer::playbackEnded);
        },
        Qt::QueuedConnection);
    return true;
}

void FakePlayer::pause()
{
    if (m_state == State::Playing)
        m_state = State::Paused;
}

void FakePlayer::stop()
{
    if (m_state == State::Done)
        return;
    m_state = State::Done;
    QMetaObject::invokeMethod(
        this, [this] { finish(&SimplePlayer::playbackStopped); }, Qt::QueuedConnection);
}

void FakePlayer::finish(void (SimplePlayer::*signal)(const QString &))
{
    m_state = State::Done;
    Q_EMIT(this->*signal)(m_id);
}
