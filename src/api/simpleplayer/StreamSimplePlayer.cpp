// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/StreamSimplePlayer.h"

#include "playback/loader/PlaybackMaker.h"

StreamSimplePlayer::StreamSimplePlayer(const QString &content, const QString &format,
                                       const QString &id, const QString &device, QObject *parent)
    : PlaybackPlayer(makePlayback(id,
                                  [&](const PlaybackMaker &maker) {
                                      return maker.fromStream(content, format, id, device);
                                  }),
                     parent)
{
}
