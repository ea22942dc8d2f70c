// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/FakePlayer.h"

#include "simpleplayer/Playback.h"

FakePlayer::FakePlayer(const QString &id, QObject *parent)
    : SimplePlayer(id, nullptr, parent)
{
}
