// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/Id3Tags.h"

#include <algorithm>
#include <array>
#include <cstring>

qint64 endOfId3Tags(const ReadAt &readAt, qint64 size)
{
    constexpr int maxTags = 64;
    constexpr unsigned char hasFooter = 0x10;
    std::array<unsigned char, 10> header{};
    qint64 end = 0;
    for (int tag = 0; tag < maxTags; ++tag) {
        if (!readAt(header.data(), header.size(), end) ||
            std::memcmp(header.data(), "ID3", 3) != 0) {
            break;
        }
        qint64 length = 0;
        for (std::size_t i = 6; i < header.size(); ++i) {
            length = length << 7 | (header[i] & 0x7f);
        }
        end += qint64(header.size()) * ((header[5] & hasFooter) != 0 ? 2 : 1) + length;
    }
    return std::min(end, size);
}
