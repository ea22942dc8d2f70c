// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "playback/FrameSource.h"

#include <QString>

#include <limits>
#include <memory>

/// The bytes that a decoder reads. Used like a file.
class DecoderInput
{
public:
    virtual qint64 length() const = 0;
    virtual qint64 position() const = 0;

    /// Takes SEEK_SET, SEEK_CUR or SEEK_END. Returns the new position.
    virtual qint64 seek(qint64 offset, int whence) = 0;

    /// Returns 0 at the end, and when nothing more may be read.
    virtual qint64 read(void *target, qint64 count) = 0;

protected:
    ~DecoderInput() = default;
};

/// Turns the bytes of a sound file into frames. Its input must outlive it.
class Decoder
{
public:
    static constexpr qint64 unknownFrames = std::numeric_limits<qint64>::max();

    Decoder() = default;
    virtual ~Decoder() = default;
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    virtual SoundFormat format() const = 0;

    /// Returns how many frames the file has, or unknownFrames.
    virtual qint64 frames() const = 0;

    /// The same, or an estimate.
    virtual qint64 expectedFrames() const { return frames(); }

    /// Returns how many frames were read: 0 at the end, or after an error.
    virtual long read(float *samples, long frames) = 0;

    /// Goes back to the first frame. Returns whether that worked.
    virtual bool rewind() = 0;

    /// The reason of the last failure; empty if there was none.
    virtual QString error() const = 0;
};

/// Returns nothing if the input holds no sound in a format that the decoder knows.
std::unique_ptr<Decoder> makeMp3Decoder(DecoderInput &input);
std::unique_ptr<Decoder> makeSndfileDecoder(DecoderInput &input);
