// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/CollectedSound.h"

#include "playback/ByteInput.h"
#include "playback/SoundFile.h"
#include "playback/WakeEvent.h"

#include <array>

namespace {

constexpr std::size_t chunkBytes = 65536;

constexpr int noLimit = -1;

} // namespace

CollectedSound::CollectedSound(std::unique_ptr<ByteInput> input, const SimplePlayerLimits &limits)
    : m_input(std::move(input))
    , m_limits(limits)
{
}

CollectedSound::~CollectedSound() = default;

bool CollectedSound::open()
{
    if (m_sound)
        return true;
    if (!m_input->open()) {
        setError(m_input->error());
        return false;
    }
    if (!m_input->isRegularFile())
        return true;
    m_sound = SoundFile::fromPath(m_input->path(), m_limits.maxSoundBytes);
    return decode() == Status::Frames;
}

bool CollectedSound::needsLoading() const
{
    return !m_sound;
}

FrameSource::Status CollectedSound::load(const WakeEvent &wake)
{
    const qint64 limit = m_limits.httpMaxBytes;
    std::array<char, chunkBytes> chunk{};
    for (;;) {
        const ssize_t got = m_input->read(chunk.data(), chunk.size());
        if (got == 0)
            break;
        if (got < 0) {
            wake.waitForInput(m_input->descriptor(), noLimit);
        } else if (m_data.size() + got > limit) {
            setError(m_input->name() +
                     QStringLiteral(" is larger than the %1 bytes that are allowed").arg(limit));
            return Status::Failed;
        } else {
            m_data.append(chunk.data(), int(got));
        }
        if (wake.wait(0))
            return Status::Waiting;
    }
    m_sound = SoundFile::fromData(m_data, m_input->name(), m_limits.maxSoundBytes);
    return decode();
}

FrameSource::Status CollectedSound::decode()
{
    if (m_sound->open())
        return Status::Frames;
    setError(m_sound->error());
    m_sound.reset();
    return Status::Failed;
}

SoundFormat CollectedSound::format() const
{
    return m_sound->format();
}

FrameSource::Result CollectedSound::read(float *samples, long frames)
{
    return checked(m_sound->read(samples, frames));
}

bool CollectedSound::rewind()
{
    return checked(m_sound->rewind());
}

template <typename Done>
Done CollectedSound::checked(Done done)
{
    setError(m_sound->error());
    return done;
}
