// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/UriSimplePlayer.h"

#include "simpleplayer/Playback.h"

UriSimplePlayer::UriSimplePlayer(const QString &uri, const QString &id, const QString &device,
                                 QObject *parent)
    : SimplePlayer(id, std::make_unique<PlayedSound>(PlayedSound{UriSound{uri}, device}), parent)
{
}
