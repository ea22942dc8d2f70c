// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/OggHeaders.h"

#include "playback/VorbisCodebooks.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

constexpr qint64 pieceBytes = 4096;

// Large enough for a picture in the headers. Limits how far a file without pages is searched, and
// how much of a header without an end is collected.
constexpr qint64 maxHeaderBytes = 1 << 20;

// Reads the pages of an Ogg file, one after another.
class OggPages
{
public:
    OggPages(const ReadAt &readAt, qint64 size)
        : m_readAt(readAt)
        , m_size(size)
    {
        ogg_sync_init(&m_sync);
    }
    ~OggPages() { ogg_sync_clear(&m_sync); }
    OggPages(const OggPages &) = delete;
    OggPages &operator=(const OggPages &) = delete;

    // Returns false at the end of the file and after maxHeaderBytes. Skips damaged pages, as the
    // decoder does.
    bool next(ogg_page *page)
    {
        int found = ogg_sync_pageout(&m_sync, page);
        while (found != 1) {
            if (found == 0 && !readPiece()) {
                return false;
            }
            found = ogg_sync_pageout(&m_sync, page);
        }
        return true;
    }

private:
    bool readPiece()
    {
        const qint64 count = std::min(pieceBytes, std::min(m_size, maxHeaderBytes) - m_offset);
        if (count <= 0) {
            return false;
        }
        char *target = ogg_sync_buffer(&m_sync, pieceBytes);
        if (target == nullptr || !m_readAt(target, std::size_t(count), m_offset)) {
            return false;
        }
        ogg_sync_wrote(&m_sync, long(count));
        m_offset += count;
        return true;
    }

    const ReadAt &m_readAt;
    const qint64 m_size;
    qint64 m_offset = 0;
    ogg_sync_state m_sync{};
};

enum class Codec { Vorbis, Opus };

/// A file may have 255 streams for one channel. All of them are decoded, and as many frames as it says before the first
/// one is heard.
bool isUsualOpusHead(const ogg_packet &packet)
{
    constexpr long familyAt = 18;
    constexpr long streamsAt = 19;
    constexpr long skippedAt = 10;
    constexpr int maxStreams = 8;
    constexpr int maxSkipped = 65535; // of all streams: 1.4 s of one
    if (packet.bytes <= familyAt) {
        return false;
    }
    if (packet.packet[familyAt] == 0) {
        return true; // one stream
    }
    if (packet.bytes <= streamsAt) {
        return false;
    }
    const int streams = packet.packet[streamsAt];
    const int skipped = packet.packet[skippedAt] | packet.packet[skippedAt + 1] << 8;
    return streams <= maxStreams && streams * skipped <= maxSkipped;
}

// Reads the headers of one stream of the file.
class HeaderStream
{
public:
    HeaderStream(int serialNumber, Codec codec)
        : m_codec(codec)
    {
        ogg_stream_init(&m_stream, serialNumber);
        vorbis_info_init(&m_info);
        vorbis_comment_init(&m_comment);
    }
    ~HeaderStream()
    {
        vorbis_comment_clear(&m_comment);
        vorbis_info_clear(&m_info);
        ogg_stream_clear(&m_stream);
    }
    HeaderStream(const HeaderStream &) = delete;
    HeaderStream &operator=(const HeaderStream &) = delete;

    enum class State { Incomplete, Complete, Bad };

    // Ignores the pages of other streams.
    State take(ogg_page *page)
    {
        if (ogg_stream_pagein(&m_stream, page) != 0) {
            return State::Incomplete;
        }
        ogg_packet packet{};
        for (const int all = m_codec == Codec::Vorbis ? 3 : 2; m_taken < all; ++m_taken) {
            const int found = ogg_stream_packetout(&m_stream, &packet);
            if (found == 0) {
                return State::Incomplete;
            }
            if (found < 0 || !isGood(&packet)) {
                return State::Bad;
            }
        }
        return State::Complete;
    }

private:
    bool isGood(ogg_packet *packet)
    {
        constexpr unsigned char setup = 5;
        if (m_codec == Codec::Opus) {
            return m_taken > 0 || isUsualOpusHead(*packet);
        }
        const bool isSetup = packet->bytes > 0 && packet->packet[0] == setup;
        return (!isSetup || hasUsualCodebooks(*packet)) &&
               vorbis_synthesis_headerin(&m_info, &m_comment, packet) == 0;
    }

    const Codec m_codec;
    ogg_stream_state m_stream{};
    vorbis_info m_info{};
    vorbis_comment m_comment{};
    int m_taken = 0;
};

template <int size>
bool begins(const ogg_page &page, const char (&mark)[size])
{
    constexpr long length = size - 1;
    return page.body_len >= length && std::memcmp(page.body, mark, std::size_t(length)) == 0;
}

// Finds the first page of the first stream of sound. The first pages of all streams come before all
// other pages.
std::optional<Codec> findSound(OggPages &pages, ogg_page *page)
{
    while (pages.next(page) && ogg_page_bos(page) != 0) {
        if (begins(*page, "\x01vorbis")) {
            return Codec::Vorbis;
        }
        if (begins(*page, "OpusHead")) {
            return Codec::Opus;
        }
    }
    return std::nullopt;
}

} // namespace

bool hasOggHeaders(const ReadAt &readAt, qint64 size)
{
    constexpr char mark[] = "OggS";
    char begin[sizeof mark - 1] = {};
    if (!readAt(begin, sizeof begin, 0) || std::memcmp(begin, mark, sizeof begin) != 0) {
        return true;
    }
    OggPages pages(readAt, size);
    ogg_page page{};
    const auto codec = findSound(pages, &page);
    if (!codec) {
        return false;
    }
    HeaderStream stream(ogg_page_serialno(&page), *codec);
    HeaderStream::State state = stream.take(&page);
    while (state == HeaderStream::State::Incomplete && pages.next(&page)) {
        state = stream.take(&page);
    }
    return state == HeaderStream::State::Complete;
}
