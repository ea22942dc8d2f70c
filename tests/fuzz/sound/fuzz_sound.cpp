// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sound data, valid and corrupted, decoded like in the players: from memory and from a file, to the
// end, and again from the first frame.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/MemoryFile.h"
#include <core/base/stream.h>
#include <playback/SoundFile.h>
#include <playback/WakeEvent.h>

#include <vector>

namespace {
constexpr qint64 maxBytes = 1 << 20;
constexpr long chunkFrames = 960;
constexpr int maxChannels = 1024;

struct Decoded
{
    bool opened = false;
    qint64 frames = 0;
};

Decoded decode(SoundFile &sound)
{
    Decoded result;
    const SoundFormat format = sound.format();
    std::vector<float> samples(std::size_t(chunkFrames) * std::size_t(format.channels));
    for (;;) {
        const FrameSource::Read read = sound.read(samples.data(), chunkFrames);
        if (std::holds_alternative<FrameSource::End>(read)) {
            return result;
        }
        if (const auto *failure = std::get_if<Failure>(&read)) {
            FUZZ_CHECK(!failure->reason.isEmpty(), "a failure without a reason");
            return result;
        }
        const auto *frames = std::get_if<FrameSource::Frames>(&read);
        FUZZ_CHECK(frames != nullptr, "a file has no frames yet");
        FUZZ_CHECK(frames->count > 0 && frames->count <= chunkFrames, frames->count);
        result.frames += frames->count;
        FUZZ_CHECK(result.frames * format.channels * qint64(sizeof(float)) <= maxBytes,
                   result.frames);
    }
}

Decoded check(SoundFile &sound)
{
    const WakeEvent wake;
    const auto opened = sound.open(wake);
    if (const auto *failure = std::get_if<Failure>(&opened)) {
        FUZZ_CHECK(!failure->reason.isEmpty(), "refused without a reason");
        return {};
    }
    const SoundFormat format = sound.format();
    FUZZ_CHECK(format.rate > 0, format.rate);
    FUZZ_CHECK(format.channels > 0 && format.channels <= maxChannels, format.channels);
    Decoded first = decode(sound);
    first.opened = true;
    const Result<bool> rewound = sound.rewind();
    if (const auto *failure = std::get_if<Failure>(&rewound)) {
        FUZZ_CHECK(!failure->reason.isEmpty(), "can't be repeated, without a reason");
        return first;
    }
    decode(sound); // which finds more or less than before in some damaged files
    return first;
}
} // namespace

void fuzzOne(ByteReader &input)
{
    const QByteArray data = input.rest();
    const auto inMemory = SoundFile::fromData(data, QStringLiteral("The sound data"), maxBytes);
    const Decoded fromData = check(*inMemory);
    const MemoryFile file(data);
    const auto onDisk = SoundFile::fromPath(file.path(), maxBytes);
    const Decoded fromFile = check(*onDisk);
    FUZZ_CHECK(fromData.opened == fromFile.opened, "opened from only one of memory and file");
    FUZZ_CHECK(fromData.frames == fromFile.frames,
               fromData.frames << " frames, from a file " << fromFile.frames);
}
