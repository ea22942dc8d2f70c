// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/StreamSimplePlayer.h"

#include "simpleplayer/Playback.h"

StreamSimplePlayer::StreamSimplePlayer(const QString &content, const QString &format,
                                       const QString &id, const QString &device, QObject *parent)
    : SimplePlayer(id,
                   std::make_unique<PlayedSound>(PlayedSound{StreamSound{content, format}, device}),
                   parent)
{
}
