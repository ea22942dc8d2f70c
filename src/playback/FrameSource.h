// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "simpleplayer/OpenedSound.h"

#include <functional>
#include <optional>
#include <variant>

class WakeEvent;

/// The format of frames. Samples are interleaved floats.
struct SoundFormat
{
    static constexpr int minRate = 1000;
    static constexpr int maxRate = 768'000;
    static constexpr int maxChannels = 32;

    int rate = 0;
    int channels = 0;

    /// Returns whether a device may be asked for the format. The format determines the sizes of
    /// buffers, so the values of a corrupted header must be refused.
    bool isUsable() const
    {
        return rate >= minRate && rate <= maxRate && channels >= 1 && channels <= maxChannels;
    }
};

/// The source of a sound's frames.
///
/// Constructed in the player's thread and used in the playback thread. A new playback thread may
/// take over after the previous one has ended. Destroyed in either thread. Owned by the
/// PlaybackWriter.
class FrameSource
{
public:
    /// Frames were read.
    struct Frames
    {
        long count;
    };
    /// There are no frames yet. Wait on inputDescriptor().
    struct Waiting
    {
    };
    /// There are no more frames until rewind().
    struct End
    {
    };
    /// After a failure, there are no more frames.
    using Read = std::variant<Frames, Waiting, End, Failure>;

    enum class Loading { Done, Interrupted };

    static bool isDone(const Result<Loading> &loaded)
    {
        const auto *loading = std::get_if<Loading>(&loaded);
        return loading != nullptr && *loading == Loading::Done;
    }

    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource &) = delete;
    FrameSource &operator=(const FrameSource &) = delete;

    /// Called now and then while a call takes long. Returns whether the source is still wanted. If it is not, no
    /// other call follows.
    std::function<bool()> isWanted = [] { return true; };

    /// The file, if it was opened for a client.
    std::optional<OpenedSound::FileId> file;

    /// Opens the source, unless it is open. Waits only for the file system. The event interrupts
    /// it; the next call starts over.
    virtual Result<Loading> open(const WakeEvent &wake) = 0;

    /// Returns whether load() has to wait before the format is known.
    virtual bool needsLoading() const { return false; }

    /// Waits for the data from which the format is read. The event interrupts it; the next call
    /// continues.
    virtual Result<Loading> load(const WakeEvent & /*wake*/) { return Loading::Done; }

    /// Valid once the source is open and loaded.
    virtual SoundFormat format() const = 0;

    /// Reads at most the given number of frames.
    virtual Read read(float *samples, long frames) = 0;

    /// The descriptor to wait on after Waiting.
    virtual int inputDescriptor() const { return -1; }

    /// Goes back to the first frame. Returns false if the source can't be repeated.
    virtual Result<bool> rewind() = 0;
};
