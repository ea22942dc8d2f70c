// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// libsndfile could decode MP3 files, too, with the same library. But then that keeps tags between the frames in memory
// and writes a line to standard error for each fault of a file: millions, if a file is made for it.

#include "playback/Decoder.h"

#include <mpg123.h>

namespace {

ssize_t readInput(void *input, void *target, size_t count)
{
    return ssize_t(static_cast<DecoderInput *>(input)->read(target, qint64(count)));
}

off_t seekInput(void *input, off_t offset, int whence)
{
    return off_t(static_cast<DecoderInput *>(input)->seek(offset, whence));
}

class Mp3Decoder : public Decoder
{
public:
    Mp3Decoder()
        : m_mpg123(mpg123_new(nullptr, nullptr))
    {
    }

    ~Mp3Decoder() override { mpg123_delete(m_mpg123); }

    bool open(DecoderInput &input)
    {
        constexpr long flags =
            MPG123_QUIET | MPG123_SKIP_ID3V2 | MPG123_FORCE_FLOAT | MPG123_NO_FRANKENSTEIN;
        int encoding = 0;
        return m_mpg123 != nullptr &&
               mpg123_param(m_mpg123, MPG123_ADD_FLAGS, flags, 0) == MPG123_OK &&
               mpg123_replace_reader_handle(m_mpg123, readInput, seekInput, nullptr) == MPG123_OK &&
               mpg123_open_handle(m_mpg123, &input) == MPG123_OK &&
               mpg123_getformat(m_mpg123, &m_rate, &m_channels, &encoding) == MPG123_OK &&
               mpg123_format_none(m_mpg123) == MPG123_OK &&
               mpg123_format(m_mpg123, m_rate, m_channels, MPG123_ENC_FLOAT_32) == MPG123_OK;
    }

    SoundFormat format() const override { return {int(m_rate), m_channels}; }

    // To count them, the whole file would have to be read, which takes a second if it is long.
    qint64 frames() const override { return unknownFrames; }
    qint64 expectedFrames() const override { return mpg123_length(m_mpg123); }

    long read(float *samples, long frames) override
    {
        const size_t frameBytes = sizeof(float) * size_t(m_channels);
        size_t bytes = 0;
        do {
            m_result = mpg123_read(m_mpg123, samples, size_t(frames) * frameBytes, &bytes);
        } while (m_result == MPG123_NEW_FORMAT && bytes == 0);
        return long(bytes / frameBytes);
    }

    bool rewind() override
    {
        const off_t position = mpg123_seek(m_mpg123, 0, SEEK_SET);
        m_result = position < 0 ? int(position) : MPG123_OK;
        return position == 0;
    }

    QString error() const override
    {
        return m_result == MPG123_OK || m_result == MPG123_DONE
                   ? QString()
                   : QString::fromUtf8(mpg123_strerror(m_mpg123));
    }

private:
    mpg123_handle *const m_mpg123;
    long m_rate = 0;
    int m_channels = 0;
    int m_result = MPG123_OK;
};

} // namespace

std::unique_ptr<Decoder> makeMp3Decoder(DecoderInput &input)
{
    auto decoder = std::make_unique<Mp3Decoder>();
    if (!decoder->open(input)) {
        return nullptr;
    }
    return decoder;
}
