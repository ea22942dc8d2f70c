// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/DataSimplePlayer.h"

#include "simpleplayer/playback/HttpFetch.h"
#include "simpleplayer/playback/Playback.h"
#include "simpleplayer/playback/SoundFile.h"

DataSimplePlayer::DataSimplePlayer(const QByteArray &data, const QString &id, const QString &device,
                                   QObject *parent)
    : PlaybackPlayer(std::make_unique<Playback>(
                         SoundFile::fromData(data, QStringLiteral("The sound data")), id, device),
                     parent)
{
}
