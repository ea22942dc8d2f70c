// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

/// Stands where the caller's wish can't be met, and says so when it is to be played.
class NoSound : public FrameSource
{
public:
    explicit NoSound(const QString &why) { setError(why); }

    bool open() override { return false; }
    SoundFormat format() const override { return {}; }
    Result read(float *, long) override { return {Status::Failed, 0}; }
    bool rewind() override { return false; }
};
