// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/SoundFile.h"

#include "playback/Id3Tags.h"
#include "playback/OggHeaders.h"
#include "playback/RiffHeader.h"
#include "playback/WakeEvent.h"
#include "simpleplayer/OpenedSound.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 bytesPerSample = sizeof(float);

// If the header has no length, the library returns a number near the maximum.
constexpr sf_count_t unknownFrames = SF_COUNT_MAX / 2;

// More than the decoder needs for the frames of one call, in every format.
constexpr qint64 maxBytesPerCall = 16 << 20;

// Larger reads of an MP3 file are for tags between frames, which the decoder would keep in memory, several times.
constexpr qint64 maxBytesPerMp3Read = 1 << 20;

// The least that a read counts as, because many small reads take time, too.
constexpr qint64 minBytesPerRead = 512;

// How many bytes are read between two checks whether the file is still wanted.
constexpr qint64 bytesPerLook = 65536;

// The decoder knows many more formats, but they are rare and its code for them is little tested.
bool isKnown(int format)
{
    switch (format & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
    case SF_FORMAT_FLAC:
    case SF_FORMAT_MPEG:
    case SF_FORMAT_OGG: // hasOggHeaders() refuses all but Vorbis and Opus
        return true;
    default:
        return false;
    }
}

QString megabytes(qint64 bytes)
{
    return QString::number(double(bytes) / (1 << 20), 'f', 1) + QStringLiteral(" MiB");
}

} // namespace

std::unique_ptr<SoundFile> SoundFile::fromPath(const QString &path, qint64 maxBytes)
{
    return std::unique_ptr<SoundFile>(
        new SoundFile(path, QByteArray(), QStringLiteral("The file \"%1\"").arg(path), maxBytes));
}

std::unique_ptr<SoundFile> SoundFile::fromData(const QByteArray &data, const QString &name,
                                               qint64 maxBytes)
{
    return std::unique_ptr<SoundFile>(new SoundFile(QString(), data, name, maxBytes));
}

SoundFile::SoundFile(const QString &path, const QByteArray &data, const QString &name,
                     qint64 maxBytes)
    : m_path(path)
    , m_data(data)
    , m_name(name)
    , m_maxBytes(maxBytes)
{
}

SoundFile::~SoundFile()
{
    closeAll();
}

Result<FrameSource::Loading> SoundFile::open(const WakeEvent &wake)
{
    if (m_file) {
        return Loading::Done;
    }
    m_wake = &wake;
    m_interrupted = false;
    auto failure = openBytes();
    m_wake = nullptr;
    if (!failure && !m_interrupted) {
        return Loading::Done;
    }
    closeAll();
    if (m_interrupted) {
        return Loading::Interrupted;
    }
    return std::move(*failure);
}

std::optional<Failure> SoundFile::openBytes()
{
    m_begin = 0;
    m_size = m_data.size();
    if (!m_path.isEmpty()) {
        if (auto failure = openPath()) {
            return failure;
        }
    }
    if (auto failure = checkWhole()) {
        return failure;
    }
    return openDecoder();
}

std::optional<Failure> SoundFile::openPath()
{
    // Non-blocking: opening a FIFO by mistake must not block the thread until it is written to.
    m_descriptor = OpenedSound::openForReading(m_path);
    if (m_descriptor < 0) {
        return failure(QStringLiteral("can't be opened: ") + qt_error_string(errno));
    }
    struct stat status
    {
    };
    fstat(m_descriptor, &status);
    if (S_ISDIR(status.st_mode)) {
        return failure(QStringLiteral("is a directory, not a sound"));
    }
    if (!S_ISREG(status.st_mode)) {
        return failure(QStringLiteral("is not a regular file"));
    }
    m_size = status.st_size;
    return std::nullopt;
}

std::optional<Failure> SoundFile::checkWhole()
{
    if (m_size == 0) {
        return failure(QStringLiteral("is empty"));
    }
    const auto readAll = [this](void *target, std::size_t count, qint64 offset) {
        return readAt(target, qint64(count), offset) == qint64(count);
    };
    m_begin = endOfId3Tags(readAll, m_size);
    m_size -= m_begin;
    const auto riff = checkRiff(readAll, m_size);
    if (const auto *defect = std::get_if<Failure>(&riff)) {
        return failure(defect->reason);
    }
    m_openLengthAt = std::get<std::optional<qint64>>(riff);
    if (!hasOggHeaders(readAll, m_size)) {
        return failure(QStringLiteral("is cut off or damaged at its beginning"));
    }
    return std::nullopt;
}

std::optional<Failure> SoundFile::openDecoder()
{
    m_offset = 0;
    m_maxBytesPerRead = isMp3() ? maxBytesPerMp3Read : maxBytesPerCall;
    allowReading(isMp3() ? std::max(m_maxBytes, maxBytesPerCall) : maxBytesPerCall);
    SF_VIRTUAL_IO io{length, seek, read, nullptr, tell};
    m_file = sf_open_virtual(&io, SFM_READ, &m_info, this);
    if (m_allowance < 0) {
        return failure(QStringLiteral("is damaged, or too large to be opened"));
    }
    if (!m_file || !isKnown(m_info.format)) {
        return failure(QStringLiteral("holds no sound in a known format"));
    }
    return checkFormat();
}

// The decoder reads an MP3 file to its end to count the frames. This is bounded, because the
// decoded sound, whose size is limited, is larger than the file.
bool SoundFile::isMp3() const
{
    char begin = 0;
    readAt(&begin, sizeof begin, 0);
    return begin == '\xff';
}

std::optional<Failure> SoundFile::checkFormat() const
{
    if (m_info.frames <= 0) {
        return failure(QStringLiteral("holds no sound: it has no frames"));
    }
    if (!format().isUsable()) {
        return failure(QStringLiteral("can't be played: it claims %1 channels at %2 Hz")
                           .arg(m_info.channels)
                           .arg(m_info.samplerate));
    }
    if (m_info.frames >= unknownFrames) {
        return std::nullopt;
    }
    return checkSize(m_info.frames);
}

std::optional<Failure> SoundFile::checkSize(sf_count_t frames) const
{
    if (frames <= m_maxBytes / (bytesPerSample * m_info.channels)) {
        return std::nullopt;
    }
    return failure(
        QStringLiteral("is too long: decoded it takes %1, allowed are %2")
            .arg(megabytes(frames * bytesPerSample * m_info.channels), megabytes(m_maxBytes)));
}

SoundFormat SoundFile::format() const
{
    return {m_info.samplerate, m_info.channels};
}

FrameSource::Read SoundFile::read(float *samples, long frames)
{
    allowReading(maxBytesPerCall);
    const sf_count_t count = sf_readf_float(m_file, samples, frames);
    if (count <= 0) {
        return endOfFile();
    }
    m_framesRead += count;
    if (auto failure = checkSize(m_framesRead)) {
        return std::move(*failure);
    }
    return Frames{long(count)};
}

FrameSource::Read SoundFile::endOfFile() const
{
    if (sf_error(m_file) != SF_ERR_NO_ERROR) {
        return failure(QStringLiteral("can't be decoded: ") +
                       QString::fromUtf8(sf_strerror(m_file)));
    }
    if (m_info.frames < unknownFrames && m_framesRead < m_info.frames) {
        return failure(QStringLiteral("is cut off after %1 of %2 frames")
                           .arg(m_framesRead)
                           .arg(m_info.frames));
    }
    return End{};
}

Result<bool> SoundFile::rewind()
{
    m_framesRead = 0;
    allowReading(maxBytesPerCall);
    if (sf_seek(m_file, 0, SEEK_SET) == 0) {
        return true;
    }
    return failure(QStringLiteral("can't be repeated: ") + QString::fromUtf8(sf_strerror(m_file)));
}

Failure SoundFile::failure(const QString &what) const
{
    return {m_name + QLatin1Char(' ') + what};
}

void SoundFile::closeAll()
{
    if (m_file) {
        sf_close(m_file);
    }
    m_file = nullptr;
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
    m_descriptor = -1;
    m_info = SF_INFO{};
    m_framesRead = 0;
}

qint64 SoundFile::readAt(void *target, qint64 count, qint64 offset) const
{
    offset += m_begin;
    if (m_descriptor >= 0) {
        return pread(m_descriptor, target, std::size_t(count), offset);
    }
    const qint64 taken = std::clamp<qint64>(m_data.size() - offset, 0, count);
    std::memcpy(target, m_data.constData() + offset, std::size_t(taken));
    return taken;
}

void SoundFile::allowReading(qint64 bytes)
{
    m_allowance = bytes;
}

// The decoder takes a refusal for the end of the file.
bool SoundFile::mayRead(qint64 bytes)
{
    const qint64 before =
        std::exchange(m_allowance, m_allowance - std::max(bytes, minBytesPerRead));
    const bool looks = before / bytesPerLook != m_allowance / bytesPerLook;
    if (m_wake != nullptr && looks && m_wake->wait(0)) {
        m_interrupted = true;
    }
    return m_allowance >= 0 && !m_interrupted;
}

sf_count_t SoundFile::length(void *self)
{
    return static_cast<SoundFile *>(self)->m_size;
}

sf_count_t SoundFile::seek(sf_count_t offset, int whence, void *self)
{
    auto *file = static_cast<SoundFile *>(self);
    const qint64 base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file->m_offset : file->m_size;
    file->m_offset = std::clamp<qint64>(base + offset, 0, file->m_size);
    return file->m_offset;
}

sf_count_t SoundFile::read(void *target, sf_count_t count, void *self)
{
    auto *file = static_cast<SoundFile *>(self);
    if (count > file->m_maxBytesPerRead || !file->mayRead(count)) {
        return 0;
    }
    const qint64 got = std::max<qint64>(0, file->readAt(target, count, file->m_offset));
    file->openLength(static_cast<char *>(target), got);
    file->m_offset += got;
    return got;
}

/// Makes a length of 0 that means "to the end" one that the decoder knows as such.
void SoundFile::openLength(char *bytes, qint64 count) const
{
    if (m_openLengthAt) {
        const qint64 begin = *m_openLengthAt - m_offset;
        for (qint64 at = begin; at < begin + qint64(sizeof(quint32)); ++at) {
            if (at >= 0 && at < count) {
                bytes[at] = '\xff';
            }
        }
    }
}

sf_count_t SoundFile::tell(void *self)
{
    return static_cast<SoundFile *>(self)->m_offset;
}
