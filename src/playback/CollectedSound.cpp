// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/CollectedSound.h"

#include "playback/ByteInput.h"
#include "playback/SoundFile.h"
#include "playback/WakeEvent.h"

#include <array>

namespace {

constexpr std::size_t chunkBytes = 65536;

// How often an input without data is asked whether it has exceeded its timeout.
constexpr int idleCheckMs = 250;

} // namespace

CollectedSound::CollectedSound(std::unique_ptr<ByteInput> input, const SimplePlayerLimits &limits)
    : m_input(std::move(input))
    , m_limits(limits)
{
}

Result<FrameSource::Loading> CollectedSound::open(const WakeEvent &wake)
{
    if (m_sound) {
        return Loading::Done;
    }
    if (auto failure = m_input->open()) {
        return std::move(*failure);
    }
    if (!m_input->isRegularFile()) {
        return Loading::Done;
    }
    return decode(SoundFile::fromPath(m_input->path(), m_limits.maxSoundBytes), wake);
}

bool CollectedSound::needsLoading() const
{
    return !m_sound;
}

Result<FrameSource::Loading> CollectedSound::load(const WakeEvent &wake)
{
    std::array<char, chunkBytes> chunk{};
    for (;;) {
        const auto result = m_input->read(chunk.data(), chunk.size());
        if (const auto *failure = std::get_if<Failure>(&result)) {
            return *failure;
        }
        const auto got = std::get<std::optional<std::size_t>>(result);
        if (!got) {
            wake.waitForInput(m_input->descriptor(), idleCheckMs);
        } else if (*got == 0) {
            break;
        } else if (m_data.size() + qint64(*got) > m_limits.httpMaxBytes) {
            return Failure{m_input->name() +
                           QStringLiteral(" is larger than the %1 bytes that are allowed")
                               .arg(m_limits.httpMaxBytes)};
        } else {
            m_data.append(chunk.data(), int(*got));
        }
        if (wake.wait(0)) {
            return Loading::Interrupted;
        }
    }
    return decode(SoundFile::fromData(m_data, m_input->name(), m_limits.maxSoundBytes), wake);
}

Result<FrameSource::Loading> CollectedSound::decode(std::unique_ptr<SoundFile> sound,
                                                    const WakeEvent &wake)
{
    sound->isWanted = isWanted;
    auto opened = sound->open(wake);
    if (isDone(opened)) {
        m_sound = std::move(sound);
    }
    return opened;
}

SoundFormat CollectedSound::format() const
{
    return m_sound->format();
}

FrameSource::Read CollectedSound::read(float *samples, long frames)
{
    return m_sound->read(samples, frames);
}

Result<bool> CollectedSound::rewind()
{
    return m_sound->rewind();
}
