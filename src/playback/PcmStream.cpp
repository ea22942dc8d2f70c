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

bool PcmStream::open()
{
    if (m_input->open())
        return true;
    setError(m_input->error());
    return false;
}

FrameSource::Result PcmStream::read(float *samples, long frames)
{
    const auto frameBytes = std::size_t(m_format.bytesPerFrame());
    m_bytes.resize(std::max(m_held, std::size_t(frames) * frameBytes));
    const ssize_t got = m_input->read(m_bytes.data() + m_held, m_bytes.size() - m_held);
    if (got < 0)
        return {Status::Waiting, 0};
    if (got == 0) {
        setError(m_input->error());
        return {error().isEmpty() ? Status::End : Status::Failed, 0};
    }
    const std::size_t all = m_held + std::size_t(got);
    const std::size_t whole = all / frameBytes;
    decodePcm(m_format.encoding, m_bytes.data(), samples, long(whole) * m_format.sound.channels);
    m_held = all - whole * frameBytes;
    std::copy_n(m_bytes.begin() + std::ptrdiff_t(whole * frameBytes), m_held, m_bytes.begin());
    return {whole > 0 ? Status::Frames : Status::Waiting, long(whole)};
}

int PcmStream::inputDescriptor() const
{
    return m_input->descriptor();
}

bool PcmStream::rewind()
{
    m_held = 0;
    const bool again = m_input->rewind();
    setError(m_input->error());
    return again;
}
