// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"
#include "playback/PcmFormat.h"

#include <memory>
#include <vector>

class ByteInput;

/// A raw stream, which is played as it arrives.
class PcmStream : public FrameSource
{
public:
    PcmStream(std::unique_ptr<ByteInput> input, const PcmFormat &format);
    ~PcmStream() override;

    Result<Loading> open(const WakeEvent &wake) override;
    SoundFormat format() const override { return m_format.sound; }
    Read read(float *samples, long frames) override;
    int inputDescriptor() const override;
    Result<bool> rewind() override;

private:
    const std::unique_ptr<ByteInput> m_input;
    const PcmFormat m_format;
    std::vector<char> m_bytes;
    std::size_t m_held = 0; // bytes of an incomplete frame
};
