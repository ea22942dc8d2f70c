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

bool isNamed(const ChunkHeader &chunk, const char *name)
{
    return std::memcmp(chunk.name, name, sizeof chunk.name) == 0;
}

// Writers that can't seek back leave one of these values as the length.
bool isOpen(quint32 length)
{
    return length == 0 || length >= 0x7fffff00;
}

} // namespace

qint64 riffBytesMissing(const ReadAt &readAt, qint64 size)
{
    ChunkHeader chunk{};
    if (!readAt(&chunk, sizeof chunk, 0) || !isNamed(chunk, "RIFF")) {
        return 0;
    }
    const qint64 promised = qint64(qFromLittleEndian(chunk.size)) + qint64(sizeof chunk);
    if (isOpen(qFromLittleEndian(chunk.size))) {
        return 0;
    }

    qint64 offset = riffHeaderSize;
    while (readAt(&chunk, sizeof chunk, offset)) {
        const quint32 length = qFromLittleEndian(chunk.size);
        offset += qint64(sizeof chunk);
        if (isNamed(chunk, "data")) {
            return isOpen(length) ? 0 : qMax<qint64>(0, offset + length - size);
        }
        offset += length + length % 2;
    }
    // There is no chunk with samples: the file ends inside its header.
    return qMax<qint64>(0, promised - size);
}
