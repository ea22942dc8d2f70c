// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "simpleplayer/DataSimplePlayer.h"

#include "simpleplayer/Playback.h"

DataSimplePlayer::DataSimplePlayer(const QByteArray &data, const QString &id, const QString &device,
                                   QObject *parent)
    : SimplePlayer(id, std::make_unique<PlayedSound>(PlayedSound{DataSound{data}, device}), parent)
{
}
