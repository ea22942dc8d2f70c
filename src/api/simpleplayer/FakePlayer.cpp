// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/FakePlayer.h"

#include "playback/loader/Playback.h"

FakePlayer::FakePlayer(const QString &id, QObject *parent)
    : SimplePlayer(id, nullptr, parent)
{
}
