// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/VorbisHeaders.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr qint64 pieceBytes = 4096;
constexpr int headerPackets = 3;

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

    // Returns false at the end of the file. Skips damaged pages, as the decoder does.
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
        const qint64 count = std::min(pieceBytes, m_size - m_offset);
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

// Reads the headers of one stream of the file.
class VorbisStream
{
public:
    explicit VorbisStream(int serialNumber)
    {
        ogg_stream_init(&m_stream, serialNumber);
        vorbis_info_init(&m_info);
        vorbis_comment_init(&m_comment);
    }
    ~VorbisStream()
    {
        vorbis_comment_clear(&m_comment);
        vorbis_info_clear(&m_info);
        ogg_stream_clear(&m_stream);
    }
    VorbisStream(const VorbisStream &) = delete;
    VorbisStream &operator=(const VorbisStream &) = delete;

    enum class State { Incomplete, Complete, Bad };

    // Ignores the pages of other streams.
    State take(ogg_page *page)
    {
        if (ogg_stream_pagein(&m_stream, page) != 0) {
            return State::Incomplete;
        }
        ogg_packet packet{};
        while (m_taken < headerPackets) {
            const int found = ogg_stream_packetout(&m_stream, &packet);
            if (found == 0) {
                return State::Incomplete;
            }
            if (found < 0 || vorbis_synthesis_headerin(&m_info, &m_comment, &packet) != 0) {
                return State::Bad;
            }
            ++m_taken;
        }
        return State::Complete;
    }

private:
    ogg_stream_state m_stream{};
    vorbis_info m_info{};
    vorbis_comment m_comment{};
    int m_taken = 0;
};

bool beginsVorbis(const ogg_page &page)
{
    constexpr char mark[] = "\x01vorbis";
    constexpr long length = sizeof mark - 1;
    return page.body_len >= length && std::memcmp(page.body, mark, std::size_t(length)) == 0;
}

// Finds the first page of the first Vorbis stream. The first pages of all streams come before all
// other pages.
bool findVorbis(OggPages &pages, ogg_page *page)
{
    while (pages.next(page) && ogg_page_bos(page) != 0) {
        if (beginsVorbis(*page)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool hasVorbisHeaders(const ReadAt &readAt, qint64 size)
{
    constexpr char mark[] = "OggS";
    char begin[sizeof mark - 1] = {};
    if (!readAt(begin, sizeof begin, 0) || std::memcmp(begin, mark, sizeof begin) != 0) {
        return true;
    }
    OggPages pages(readAt, size);
    ogg_page page{};
    if (!findVorbis(pages, &page)) {
        return true;
    }
    VorbisStream stream(ogg_page_serialno(&page));
    VorbisStream::State state = stream.take(&page);
    while (state == VorbisStream::State::Incomplete && pages.next(&page)) {
        state = stream.take(&page);
    }
    return state == VorbisStream::State::Complete;
}
