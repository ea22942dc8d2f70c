// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/SimplePlayer.h"

SimplePlayer::SimplePlayer(QObject *parent)
    : QObject(parent)
{
}

SimplePlayer::~SimplePlayer() = default;
