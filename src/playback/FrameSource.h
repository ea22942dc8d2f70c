// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <optional>
#include <variant>

class WakeEvent;

/// How frames are to be understood; samples are floats, interleaved.
struct SoundFormat
{
    static constexpr int minRate = 1000;
    static constexpr int maxRate = 768'000;
    static constexpr int maxChannels = 32;

    int rate = 0;
    int channels = 0;

    /// Whether a device may be asked for it. Buffers are sized by it, so what a corrupted header
    /// claims must not get through.
    bool isUsable() const
    {
        return rate >= minRate && rate <= maxRate && channels >= 1 && channels <= maxChannels;
    }
};

/// Where a sound's frames come from.
///
/// Thread: everything is called in the playback thread, one such thread after another; only the
/// constructor and the destructor run in the caller's. Owned by the PlaybackWriter.
class FrameSource
{
public:
    /// So many frames were read.
    struct Frames
    {
        long count;
    };
    /// There are none yet; inputDescriptor() tells when.
    struct Waiting
    {
    };
    /// There will be no more, unless rewound.
    struct End
    {
    };
    /// After a failure there will be no more either.
    using Read = std::variant<Frames, Waiting, End, Failure>;

    enum class Loading { Done, Interrupted };

    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource &) = delete;
    FrameSource &operator=(const FrameSource &) = delete;

    /// Opens the source, or does nothing when it is open. Returns why it can't. Fast but for what the
    /// file system takes.
    virtual std::optional<Failure> open() = 0;

    /// Whether load() has something to wait for before the format is known.
    virtual bool needsLoading() const { return false; }

    /// Waits for what has to be there before the format is known. Interrupted by the event; goes on
    /// at the next call.
    virtual Result<Loading> load(const WakeEvent &) { return Loading::Done; }

    /// Valid once open and loaded.
    virtual SoundFormat format() const = 0;

    /// Reads up to so many frames.
    virtual Read read(float *samples, long frames) = 0;

    /// What to wait on after Waiting.
    virtual int inputDescriptor() const { return -1; }

    /// Goes back to the first frame. False for a source that can't be repeated.
    virtual Result<bool> rewind() = 0;
};
