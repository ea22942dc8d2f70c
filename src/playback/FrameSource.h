// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

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
/// Thread: everything is called in the playback thread, one such thread after another; the caller's
/// thread only constructs and destroys, and prepare() is its own. Owner: the Playback.
class FrameSource
{
public:
    /// What became of a read.
    enum class Status {
        Frames,  ///< some frames were read
        Waiting, ///< none there yet; inputDescriptor() tells when
        End,     ///< there will be no more, unless rewound
        Failed   ///< there will be no more; error() says why
    };

    struct Result
    {
        Status status = Status::End;
        long frames = 0;
    };

    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource &) = delete;
    FrameSource &operator=(const FrameSource &) = delete;

    /// Opens the source, or does nothing when it is open. Fast but for what the file system takes.
    /// False: error() says why, and it may be tried again.
    virtual bool open() = 0;

    /// Whether load() has something to wait for before the format is known.
    virtual bool needsLoading() const { return false; }

    /// Waits for what has to be there before the format is known; returns Waiting when the event
    /// was set meanwhile, and goes on at the next call.
    virtual Status load(const WakeEvent &) { return Status::Frames; }

    /// Valid once open and loaded.
    virtual SoundFormat format() const = 0;

    /// Reads at most so many frames.
    virtual Result read(float *samples, long frames) = 0;

    /// What to wait on after Waiting.
    virtual int inputDescriptor() const { return -1; }

    /// Goes back to the first frame; false when the source can't.
    virtual bool rewind() = 0;

    QString error() const { return m_error; }

protected:
    void setError(const QString &error) { m_error = error; }

private:
    QString m_error;
};
