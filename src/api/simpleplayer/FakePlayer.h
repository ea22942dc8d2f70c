// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Plays nothing: ends at once, or with loop lasts until it is stopped.
///
/// Thread and owner: as SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT FakePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    /// The id is that of its signals.
    FakePlayer(const QString &id, QObject *parent);
};
