// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/SimplePlayer.h"

/// Silence of no length: ends at once, and with loop holds its place until stopped.
///
/// Thread and owner are as for SimplePlayer.
class TAVO_SIMPLEPLAYER_EXPORT FakePlayer : public SimplePlayer
{
    Q_OBJECT

public:
    FakePlayer(const QString &id, QObject *parent);
};
