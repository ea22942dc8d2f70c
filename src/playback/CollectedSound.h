// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

#include <memory>

#include <QByteArray>

class ByteInput;
class SoundFile;

/// A sound file that comes through a FIFO or over the net: collected to its end, then decoded. One
/// that lies on disk whole is decoded where it is.
class CollectedSound : public FrameSource
{
public:
    explicit CollectedSound(const QString &path);
    CollectedSound(int descriptor, const QString &name);
    ~CollectedSound() override;

    bool open() override;
    bool needsLoading() const override;
    Status load(const WakeEvent &wake) override;
    SoundFormat format() const override;
    Result read(float *samples, long frames) override;
    bool rewind() override;

private:
    Status decode();
    template <typename Done>
    Done checked(Done done);

    const QString m_path; // empty: only the input
    const std::unique_ptr<ByteInput> m_input;
    QByteArray m_data;
    std::unique_ptr<SoundFile> m_sound; // once all of it is there
};
