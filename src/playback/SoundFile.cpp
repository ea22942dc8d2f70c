// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/SoundFile.h"

#include "base/ThreadTime.h"
#include "playback/Id3Tags.h"
#include "playback/OggHeaders.h"
#include "playback/RiffHeader.h"
#include "playback/WakeEvent.h"
#include "simpleplayer/OpenedSound.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 bytesPerSample = sizeof(float);

// More than the decoder needs for the frames of one call, in every format.
constexpr qint64 maxBytesPerCall = 16 << 20;

// The least that a read counts as, because many small reads take time, too.
constexpr qint64 minBytesPerRead = 512;

// The same for the processor time of one call, because a few bytes may take long to decode, and the player's thread
// waits for what has begun.
constexpr std::chrono::milliseconds maxTimePerCall(100);

// A call that takes longer is long. Opening a usual file takes half of it.
constexpr std::chrono::milliseconds longCall(10);

// How many bytes are read between two checks of the time, and whether the file is still wanted.
constexpr qint64 bytesPerLook = 16384;

constexpr const char *unknownFormat = "holds no sound in a known format";

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
    if (m_decoder) {
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
    m_header.clear();
    m_size = m_data.size();
    if (!m_path.isEmpty()) {
        if (auto failure = openPath()) {
            return failure;
        }
    }
    return findSound();
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

// Decides what the decoder sees of the file. It knows many more formats, which are rare, and its code for them is little
// tested.
std::optional<Failure> SoundFile::findSound()
{
    if (m_size == 0) {
        return failure(QStringLiteral("is empty"));
    }
    allowCall();
    const auto readAll = [this](void *target, std::size_t count, qint64 offset) {
        return mayRead(qint64(count)) && readAt(target, qint64(count), offset) == qint64(count);
    };
    m_begin = endOfId3Tags(readAll, m_size);
    m_size -= m_begin;
    auto found = findWavSamples(readAll, m_size);
    if (const auto *defect = std::get_if<Failure>(&found)) {
        return failure(defect->reason);
    }
    if (auto &wav = std::get<std::optional<WavSamples>>(found)) {
        m_header = std::move(wav->header);
        m_begin += wav->offset;
        m_size = m_header.size() + wav->bytes;
        return openDecoder(&makeSndfileDecoder);
    }
    std::array<char, 4> name{};
    readAll(name.data(), name.size(), 0);
    if (name[0] == '\xff') {
        return openDecoder(&makeMp3Decoder);
    }
    const auto isNamed = [&name](const char *other) {
        return std::memcmp(name.data(), other, name.size()) == 0;
    };
    if (!isNamed("fLaC") && !isNamed("OggS")) {
        return failure(QString::fromLatin1(unknownFormat));
    }
    if (!hasOggHeaders(readAll, m_size)) {
        return failure(QStringLiteral("is cut off or damaged at its beginning"));
    }
    return openDecoder(&makeSndfileDecoder);
}

std::optional<Failure> SoundFile::openDecoder(MakeDecoder *make)
{
    m_offset = 0;
    m_decoder = make(*this);
    if (m_allowance < 0) {
        return failure(QStringLiteral("is damaged, or takes too long to be opened"));
    }
    if (!m_decoder) {
        return failure(QString::fromLatin1(unknownFormat));
    }
    return checkFormat();
}

std::optional<Failure> SoundFile::checkFormat() const
{
    if (m_decoder->frames() <= 0) {
        return failure(QStringLiteral("holds no sound: it has no frames"));
    }
    if (!format().isUsable()) {
        return failure(QStringLiteral("can't be played: it claims %1 channels at %2 Hz")
                           .arg(format().channels)
                           .arg(format().rate));
    }
    const qint64 expected = m_decoder->expectedFrames();
    return expected == Decoder::unknownFrames ? std::nullopt : checkSize(expected);
}

std::optional<Failure> SoundFile::checkSize(qint64 frames) const
{
    const qint64 frameBytes = bytesPerSample * format().channels;
    if (frames <= m_maxBytes / frameBytes) {
        return std::nullopt;
    }
    return failure(QStringLiteral("is too long: decoded it takes %1, allowed are %2")
                       .arg(megabytes(frames * frameBytes), megabytes(m_maxBytes)));
}

SoundFormat SoundFile::format() const
{
    return m_decoder->format();
}

FrameSource::Read SoundFile::read(float *samples, long frames)
{
    allowCall();
    const long count = m_decoder->read(samples, frames);
    if (count <= 0) {
        return endOfFile();
    }
    m_framesRead += count;
    if (auto failure = checkSize(m_framesRead)) {
        return std::move(*failure);
    }
    return Frames{count};
}

FrameSource::Read SoundFile::endOfFile() const
{
    if (m_allowance < 0) {
        return failure(QStringLiteral("is damaged, or takes too long to be decoded"));
    }
    if (const QString error = m_decoder->error(); !error.isEmpty()) {
        return failure(QStringLiteral("can't be decoded: ") + error);
    }
    const qint64 frames = m_decoder->frames();
    if (frames != Decoder::unknownFrames && m_framesRead < frames) {
        return failure(
            QStringLiteral("is cut off after %1 of %2 frames").arg(m_framesRead).arg(frames));
    }
    return End{};
}

Result<bool> SoundFile::rewind()
{
    m_framesRead = 0;
    allowCall();
    if (m_decoder->rewind()) {
        return true;
    }
    return failure(QStringLiteral("can't be repeated: ") + m_decoder->error());
}

Failure SoundFile::failure(const QString &what) const
{
    return {m_name + QLatin1Char(' ') + what};
}

void SoundFile::closeAll()
{
    m_decoder.reset();
    if (m_descriptor >= 0) {
        OpenedSound::close(m_descriptor);
    }
    m_descriptor = -1;
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

void SoundFile::allowCall()
{
    m_allowance = maxBytesPerCall;
    const std::chrono::nanoseconds now = threadTime();
    m_latest = now + maxTimePerCall;
    m_long = now + longCall;
}

// The decoder takes a refusal for the end of the file.
bool SoundFile::mayRead(qint64 bytes)
{
    const qint64 before =
        std::exchange(m_allowance, m_allowance - std::max(bytes, minBytesPerRead));
    const bool looks = before / bytesPerLook != m_allowance / bytesPerLook;
    if (!looks) {
        return m_allowance >= 0 && !m_interrupted;
    }
    const std::chrono::nanoseconds now = threadTime();
    if (now > m_latest || (now > m_long && !isWanted())) {
        m_allowance = -1;
    }
    if (m_wake != nullptr && m_wake->wait(0)) {
        m_interrupted = true;
    }
    return m_allowance >= 0 && !m_interrupted;
}

qint64 SoundFile::length() const
{
    return m_size;
}

qint64 SoundFile::position() const
{
    return m_offset;
}

qint64 SoundFile::seek(qint64 offset, int whence)
{
    const qint64 base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? m_offset : m_size;
    m_offset = std::clamp<qint64>(base + offset, 0, m_size);
    return m_offset;
}

qint64 SoundFile::read(void *target, qint64 count)
{
    if (!mayRead(count)) {
        return 0;
    }
    auto *bytes = static_cast<char *>(target);
    const qint64 wanted = std::min(count, m_size - m_offset);
    qint64 got = std::clamp<qint64>(m_header.size() - m_offset, 0, wanted);
    if (got > 0) {
        std::memcpy(bytes, m_header.constData() + m_offset, std::size_t(got));
    }
    if (got < wanted) {
        got += std::max<qint64>(
            0, readAt(bytes + got, wanted - got, m_offset + got - m_header.size()));
    }
    m_offset += got;
    return got;
}
