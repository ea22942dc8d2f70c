// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/PcmStream.h"

#include "playback/ByteInput.h"

#include <algorithm>

PcmStream::PcmStream(std::unique_ptr<ByteInput> input, const PcmFormat &format)
    : m_input(std::move(input))
    , m_format(format)
{
}

PcmStream::~PcmStream() = default;

Result<FrameSource::Loading> PcmStream::open(const WakeEvent & /*wake*/)
{
    if (auto failure = m_input->open()) {
        return std::move(*failure);
    }
    return Loading::Done;
}

FrameSource::Read PcmStream::read(float *samples, long frames)
{
    const auto frameBytes = std::size_t(m_format.bytesPerFrame());
    m_bytes.resize(std::max(m_held, std::size_t(frames) * frameBytes));
    const auto result = m_input->read(m_bytes.data() + m_held, m_bytes.size() - m_held);
    if (const auto *failure = std::get_if<Failure>(&result)) {
        return *failure;
    }
    const auto got = std::get<std::optional<std::size_t>>(result);
    if (!got) {
        return Waiting{};
    }
    if (*got == 0) {
        return End{};
    }
    const std::size_t all = m_held + *got;
    const std::size_t whole = all / frameBytes;
    decodePcm(m_format.encoding, m_bytes.data(), samples, long(whole) * m_format.sound.channels);
    m_held = all - whole * frameBytes;
    std::copy_n(m_bytes.begin() + std::ptrdiff_t(whole * frameBytes), m_held, m_bytes.begin());
    if (whole == 0) {
        return Waiting{};
    }
    return Frames{long(whole)};
}

int PcmStream::inputDescriptor() const
{
    return m_input->descriptor();
}

Result<bool> PcmStream::rewind()
{
    m_held = 0;
    return m_input->rewind();
}
