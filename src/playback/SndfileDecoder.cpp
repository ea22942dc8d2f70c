// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/Decoder.h"

#include <sndfile.h>

namespace {

// The library knows many more formats, but they are rare and its code for them is little tested.
bool isKnown(int format)
{
    switch (format & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
    case SF_FORMAT_FLAC:
    case SF_FORMAT_OGG: // hasOggHeaders() refuses all but Vorbis and Opus
        return true;
    default:
        return false;
    }
}

DecoderInput &inputOf(void *input)
{
    return *static_cast<DecoderInput *>(input);
}

sf_count_t length(void *input)
{
    return inputOf(input).length();
}

sf_count_t seek(sf_count_t offset, int whence, void *input)
{
    return inputOf(input).seek(offset, whence);
}

sf_count_t readInput(void *target, sf_count_t count, void *input)
{
    return inputOf(input).read(target, count);
}

sf_count_t tell(void *input)
{
    return inputOf(input).position();
}

/// WAV, FLAC, Ogg Vorbis and Opus.
class SndfileDecoder : public Decoder
{
public:
    explicit SndfileDecoder(DecoderInput &input)
    {
        SF_VIRTUAL_IO io{length, seek, readInput, nullptr, tell};
        m_file = sf_open_virtual(&io, SFM_READ, &m_info, &input);
    }

    ~SndfileDecoder() override
    {
        if (m_file) {
            sf_close(m_file);
        }
    }

    bool isOpen() const { return m_file && isKnown(m_info.format); }

    SoundFormat format() const override { return {m_info.samplerate, m_info.channels}; }

    qint64 frames() const override
    {
        // If the header has no length, the library returns a number near the maximum.
        return m_info.frames < SF_COUNT_MAX / 2 ? m_info.frames : unknownFrames;
    }

    long read(float *samples, long frames) override
    {
        return long(sf_readf_float(m_file, samples, frames));
    }

    bool rewind() override { return sf_seek(m_file, 0, SEEK_SET) == 0; }

    QString error() const override
    {
        return sf_error(m_file) == SF_ERR_NO_ERROR ? QString()
                                                   : QString::fromUtf8(sf_strerror(m_file));
    }

private:
    SNDFILE *m_file = nullptr;
    SF_INFO m_info{};
};

} // namespace

std::unique_ptr<Decoder> makeSndfileDecoder(DecoderInput &input)
{
    auto decoder = std::make_unique<SndfileDecoder>(input);
    if (!decoder->isOpen()) {
        return nullptr;
    }
    return decoder;
}
