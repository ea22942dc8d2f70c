// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"
#include "simpleplayer/SimplePlayerLimits.h"

#include <QByteArray>

#include <memory>

class ByteInput;
class SoundFile;

/// A sound file from a FIFO or over the network: collected to its end, then decoded. A file on disk
/// is decoded in place.
///
/// A paused sound keeps what it has collected. There is no limit for all sounds together, because one could use that up
/// for the others, and because only one of each priority is paused.
class CollectedSound : public FrameSource
{
public:
    CollectedSound(std::unique_ptr<ByteInput> input, const SimplePlayerLimits &limits);

    Result<Loading> open(const WakeEvent &wake) override;
    bool needsLoading() const override;
    Result<Loading> load(const WakeEvent &wake) override;
    SoundFormat format() const override;
    Read read(float *samples, long frames) override;
    Result<bool> rewind() override;

private:
    Result<Loading> decode(std::unique_ptr<SoundFile> sound, const WakeEvent &wake);

    const std::unique_ptr<ByteInput> m_input;
    const SimplePlayerLimits m_limits;
    QByteArray m_data;
    std::unique_ptr<SoundFile> m_sound; // set once all data is there
};
