// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

#include <QByteArray>

/// Plays a sound file held in memory.
///
/// Thread and owner are as for SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT DataSimplePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// Data in one of UriSimplePlayer's formats; it is shared, not copied. The device is an ALSA
    /// device's name.
    DataSimplePlayer(const QByteArray &data, const QString &id, const QString &device,
                     QObject *parent);
};
