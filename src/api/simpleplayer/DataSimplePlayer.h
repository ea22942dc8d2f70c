// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

#include <QByteArray>

/// Plays a sound file held in memory.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT DataSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// The data has one of UriSimplePlayer's formats, and is shared, not copied. The device is the
    /// name of an ALSA device.
    DataSimplePlayer(const QByteArray &data, const QString &id, const QString &device,
                     QObject *parent);
};
