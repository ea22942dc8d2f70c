// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/RiffHeader.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

struct ChunkHeader
{
    char name[4];
    quint32 size; // little-endian
};
static_assert(sizeof(ChunkHeader) == 8);

constexpr qint64 riffHeaderSize = 12;

// Chunks before the samples. Files have a handful.
constexpr int maxChunks = 64;

bool isNamed(const ChunkHeader &chunk, const char *name)
{
    return std::memcmp(chunk.name, name, sizeof chunk.name) == 0;
}

// espeak leaves 0x7ffff000, others one of the largest numbers with 31 or 32 bits.
constexpr quint32 openLength = 0x7ffff000;

bool isOpen(quint32 length)
{
    return length == 0 || length >= openLength;
}

Failure cutOff(qint64 missingBytes)
{
    return Failure{QStringLiteral("is cut off: %1 bytes are missing").arg(missingBytes)};
}

void append(QByteArray &header, const char *name, quint32 length)
{
    const quint32 size = qToLittleEndian(length);
    header.append(name, int(sizeof ChunkHeader::name));
    header.append(reinterpret_cast<const char *>(&size), int(sizeof size));
}

/// Chunks have an even length.
qint64 paddedLength(quint32 length)
{
    return qint64(length) + length % 2;
}

/// Appends a chunk from the file. Returns false if it is too long for one that describes a format.
bool appendChunk(QByteArray &header, const ReadAt &readAt, const ChunkHeader &chunk, qint64 offset)
{
    constexpr quint32 maxLength = 1024;
    const quint32 length = qFromLittleEndian(chunk.size);
    QByteArray content(int(paddedLength(std::min(length, maxLength))), '\0');
    if (length > maxLength || !readAt(content.data(), length, offset)) {
        return false;
    }
    append(header, chunk.name, length);
    header += content;
    return true;
}

/// How many bytes of samples there are; fails if some are missing.
Result<qint64> sampleBytes(quint32 length, qint64 promised, qint64 offset, qint64 size)
{
    const qint64 left = size - offset;
    // Without samples, something else may follow, within the promised length.
    if (length == 0 && promised <= offset) {
        return left;
    }
    if (promised > 0 && !isOpen(length) && length > left) {
        return cutOff(length - left);
    }
    return std::min<qint64>(length, left);
}

WavSamples samplesAt(const QByteArray &formatChunks, qint64 offset, qint64 bytes)
{
    const quint32 length = bytes < openLength ? quint32(bytes) : 0xffffffff;
    QByteArray header;
    append(header, "RIFF",
           length < openLength ? length + quint32(formatChunks.size()) + 12 : length);
    header += "WAVE" + formatChunks;
    append(header, "data", length);
    return {header, offset, bytes};
}

} // namespace

Result<std::optional<WavSamples>> findWavSamples(const ReadAt &readAt, qint64 size)
{
    ChunkHeader chunk{};
    char type[4];
    if (!readAt(&chunk, sizeof chunk, 0) || !isNamed(chunk, "RIFF") ||
        !readAt(type, sizeof type, sizeof chunk) || std::memcmp(type, "WAVE", sizeof type) != 0) {
        return std::nullopt;
    }
    const quint32 wholeLength = qFromLittleEndian(chunk.size);
    const qint64 promised = isOpen(wholeLength) ? 0 : qint64(wholeLength) + qint64(sizeof chunk);

    QByteArray format;
    qint64 offset = riffHeaderSize;
    for (int i = 0; i < maxChunks; ++i) {
        if (!readAt(&chunk, sizeof chunk, offset)) {
            // The file ends inside its header.
            return promised > size ? cutOff(promised - size)
                                   : Failure{QStringLiteral("holds no sound: it has no samples")};
        }
        const quint32 length = qFromLittleEndian(chunk.size);
        offset += qint64(sizeof chunk);
        if (isNamed(chunk, "data")) {
            if (!format.startsWith("fmt ")) {
                break;
            }
            const Result<qint64> bytes = sampleBytes(length, promised, offset, size);
            if (const auto *failure = std::get_if<Failure>(&bytes)) {
                return *failure;
            }
            return samplesAt(format, offset, std::get<qint64>(bytes));
        }
        // The second one has the number of frames, for formats in blocks.
        const bool isWanted =
            isNamed(chunk, "fmt ") ? format.isEmpty() : isNamed(chunk, "fact") && !format.isEmpty();
        if (isWanted && !appendChunk(format, readAt, chunk, offset)) {
            if (promised > size) {
                return cutOff(promised - size);
            }
            break;
        }
        offset += paddedLength(length);
    }
    return Failure{
        QStringLiteral("is damaged: no samples follow its first %1 chunks").arg(maxChunks)};
}
