// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/SoundFile.h"

#include "playback/RiffHeader.h"
#include "playback/VorbisHeaders.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 bytesPerSample = sizeof(float);

// If the header has no length, the library returns a number near the maximum.
constexpr sf_count_t unknownFrames = SF_COUNT_MAX / 2;

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

std::optional<Failure> SoundFile::open()
{
    if (m_file) {
        return std::nullopt;
    }
    auto failure = m_path.isEmpty() ? openData() : openPath();
    if (failure) {
        closeAll();
    }
    return failure;
}

std::optional<Failure> SoundFile::openPath()
{
    // Non-blocking: opening a FIFO by mistake must not block the thread until it is written to.
    m_descriptor = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
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
    if (auto failure = checkWhole(status.st_size)) {
        return failure;
    }
    return accept(sf_open_fd(m_descriptor, SFM_READ, &m_info, SF_FALSE));
}

std::optional<Failure> SoundFile::openData()
{
    m_offset = 0;
    if (auto failure = checkWhole(m_data.size())) {
        return failure;
    }
    SF_VIRTUAL_IO io{dataLength, dataSeek, dataRead, nullptr, dataTell};
    return accept(sf_open_virtual(&io, SFM_READ, &m_info, this));
}

std::optional<Failure> SoundFile::checkWhole(qint64 size) const
{
    if (size == 0) {
        return failure(QStringLiteral("is empty"));
    }
    const auto readAt = [this](void *target, std::size_t count, qint64 offset) -> bool {
        if (m_descriptor >= 0) {
            return pread(m_descriptor, target, count, offset) == ssize_t(count);
        }
        if (offset + qint64(count) > m_data.size()) {
            return false;
        }
        std::memcpy(target, m_data.constData() + offset, count);
        return true;
    };
    const qint64 missing = riffBytesMissing(readAt, size);
    if (missing > 0) {
        return failure(QStringLiteral("is cut off: %1 bytes are missing").arg(missing));
    }
    if (!hasVorbisHeaders(readAt, size)) {
        return failure(QStringLiteral("is cut off or damaged at its beginning"));
    }
    return std::nullopt;
}

std::optional<Failure> SoundFile::accept(SNDFILE *file)
{
    m_file = file;
    if (!m_file) {
        return failure(QStringLiteral("holds no sound in a known format"));
    }
    if (m_info.frames <= 0) {
        return failure(QStringLiteral("holds no sound: it has no frames"));
    }
    if (!format().isUsable()) {
        return failure(QStringLiteral("can't be played: it claims %1 channels at %2 Hz")
                           .arg(m_info.channels)
                           .arg(m_info.samplerate));
    }
    m_framesRead = 0;
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
}

sf_count_t SoundFile::dataLength(void *self)
{
    return static_cast<SoundFile *>(self)->m_data.size();
}

sf_count_t SoundFile::dataSeek(sf_count_t offset, int whence, void *self)
{
    auto *file = static_cast<SoundFile *>(self);
    const sf_count_t size = file->m_data.size();
    const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file->m_offset : size;
    file->m_offset = std::clamp<sf_count_t>(base + offset, 0, size);
    return file->m_offset;
}

sf_count_t SoundFile::dataRead(void *target, sf_count_t count, void *self)
{
    auto *file = static_cast<SoundFile *>(self);
    const sf_count_t taken = std::min<sf_count_t>(count, file->m_data.size() - file->m_offset);
    std::memcpy(target, file->m_data.constData() + file->m_offset, std::size_t(taken));
    file->m_offset += taken;
    return taken;
}

sf_count_t SoundFile::dataTell(void *self)
{
    return static_cast<SoundFile *>(self)->m_offset;
}
