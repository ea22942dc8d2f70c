// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/RiffHeader.h"

#include <QtEndian>

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
bool isOpen(quint32 length)
{
    return length == 0 || length >= 0x7ffff000;
}

Result<std::optional<qint64>> accept(qint64 missingBytes)
{
    if (missingBytes > 0) {
        return Failure{QStringLiteral("is cut off: %1 bytes are missing").arg(missingBytes)};
    }
    return std::nullopt;
}

} // namespace

Result<std::optional<qint64>> checkRiff(const ReadAt &readAt, qint64 size)
{
    ChunkHeader chunk{};
    if (!readAt(&chunk, sizeof chunk, 0) || !isNamed(chunk, "RIFF")) {
        return std::nullopt;
    }
    const quint32 wholeLength = qFromLittleEndian(chunk.size);
    const bool isWholeOpen = isOpen(wholeLength);
    const qint64 promised = isWholeOpen ? 0 : qint64(wholeLength) + qint64(sizeof chunk);

    qint64 offset = riffHeaderSize;
    for (int i = 0; i < maxChunks; ++i) {
        if (!readAt(&chunk, sizeof chunk, offset)) {
            // There is no chunk with samples: the file ends inside its header.
            return accept(promised - size);
        }
        const quint32 length = qFromLittleEndian(chunk.size);
        offset += qint64(sizeof chunk);
        if (isNamed(chunk, "data")) {
            // Without samples, something else may follow, within the promised length.
            if (length == 0 && promised <= offset && size > offset) {
                return std::make_optional(offset - qint64(sizeof chunk.size));
            }
            return accept(isWholeOpen || isOpen(length) ? 0 : offset + length - size);
        }
        offset += length + length % 2;
    }
    if (isWholeOpen) {
        return std::nullopt;
    }
    return Failure{
        QStringLiteral("is damaged: no samples follow its first %1 chunks").arg(maxChunks)};
}
