// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/DataSimplePlayer.h"

#include "playback/loader/PlaybackMaker.h"

DataSimplePlayer::DataSimplePlayer(const QByteArray &data, const QString &id, const QString &device,
                                   QObject *parent)
    : PlaybackPlayer(
          makePlayback(
              id, [&](const PlaybackMaker &maker) { return maker.fromData(data, id, device); }),
          parent)
{
}
