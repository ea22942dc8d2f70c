// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/UriSimplePlayer.h"

#include "playback/loader/PlaybackMaker.h"

UriSimplePlayer::UriSimplePlayer(const QString &uri, const QString &id, const QString &device,
                                 QObject *parent)
    : PlaybackPlayer(
          makePlayback(id,
                       [&](const PlaybackMaker &maker) { return maker.fromUri(uri, id, device); }),
          parent)
{
}
