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

// Writers that can't seek back leave one of these values as the length.
bool isOpen(quint32 length)
{
    return length == 0 || length >= 0x7fffff00;
}

std::optional<QString> missing(qint64 bytes)
{
    if (bytes <= 0) {
        return std::nullopt;
    }
    return QStringLiteral("is cut off: %1 bytes are missing").arg(bytes);
}

} // namespace

std::optional<QString> riffDefect(const ReadAt &readAt, qint64 size)
{
    ChunkHeader chunk{};
    if (!readAt(&chunk, sizeof chunk, 0) || !isNamed(chunk, "RIFF") ||
        isOpen(qFromLittleEndian(chunk.size))) {
        return std::nullopt;
    }
    const qint64 promised = qint64(qFromLittleEndian(chunk.size)) + qint64(sizeof chunk);

    qint64 offset = riffHeaderSize;
    for (int i = 0; i < maxChunks; ++i) {
        if (!readAt(&chunk, sizeof chunk, offset)) {
            // There is no chunk with samples: the file ends inside its header.
            return missing(promised - size);
        }
        const quint32 length = qFromLittleEndian(chunk.size);
        offset += qint64(sizeof chunk);
        if (isNamed(chunk, "data")) {
            return isOpen(length) ? std::nullopt : missing(offset + length - size);
        }
        offset += length + length % 2;
    }
    return QStringLiteral("is damaged: no samples follow its first %1 chunks").arg(maxChunks);
}
