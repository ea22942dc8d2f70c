// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/VorbisCodebooks.h"

#include <cmath>

namespace {
// Of numbers that a codebook stands for. The encoder of libvorbis writes at most 52,488 in one, and 87,952 in all.
constexpr long maxNumbers = 1 << 16;
constexpr long maxAllNumbers = 1 << 18;

constexpr int packetMarkBytes = 7; // the type of the packet, and "vorbis"
constexpr long codebookMark = 0x564342;

int bitsFor(long number)
{
    int bits = 0;
    for (; number > 0; number >>= 1) {
        ++bits;
    }
    return bits;
}

/// The bits of a packet, the lowest first. At its end, numbers are -1.
class PacketBits
{
public:
    explicit PacketBits(const ogg_packet &packet)
    {
        oggpack_readinit(&m_bits, packet.packet, int(packet.bytes));
    }

    long read(int count) { return oggpack_read(&m_bits, count); }
    void skip(long count) { oggpack_adv(&m_bits, int(count)); }
    bool isOver() { return oggpack_look1(&m_bits) < 0; }

private:
    oggpack_buffer m_bits{};
};

/// Each length is a run of entries.
bool skipOrderedLengths(PacketBits &bits, long entries)
{
    bits.skip(5);
    for (long entry = 0; entry < entries;) {
        const long count = bits.read(bitsFor(entries - entry));
        if (count < 0) {
            return false;
        }
        entry += count;
    }
    return true;
}

bool skipLengths(PacketBits &bits, long entries)
{
    if (bits.read(1) == 1) {
        return skipOrderedLengths(bits, entries);
    }
    const bool isSparse = bits.read(1) == 1;
    for (long entry = 0; entry < entries; ++entry) {
        if (!isSparse || bits.read(1) == 1) {
            bits.skip(5);
        }
    }
    return !bits.isOver();
}

/// The largest number whose power is not above the entries.
long valuesOfLattice(long entries, long dimensions)
{
    long values = std::lround(std::pow(double(entries), 1.0 / double(dimensions)));
    while (std::pow(double(values), double(dimensions)) > double(entries)) {
        --values;
    }
    return values;
}

bool skipValues(PacketBits &bits, long entries, long dimensions)
{
    const long lookup = bits.read(4);
    if (lookup == 0) {
        return true;
    }
    if (lookup != 1 && lookup != 2) {
        return false;
    }
    bits.skip(32 + 32); // the least value, and the step
    const long width = bits.read(4) + 1;
    bits.skip(1);
    const long values = lookup == 1 ? valuesOfLattice(entries, dimensions) : entries * dimensions;
    bits.skip(values * width);
    return !bits.isOver();
}
} // namespace

bool hasUsualCodebooks(const ogg_packet &setup)
{
    PacketBits bits(setup);
    bits.skip(packetMarkBytes * 8);
    long all = 0;
    for (long left = bits.read(8) + 1; left > 0; --left) {
        if (bits.read(24) != codebookMark) {
            return false;
        }
        const long dimensions = bits.read(16);
        const long entries = bits.read(24);
        if (dimensions < 1 || entries < 1 || entries > maxNumbers / dimensions) {
            return false;
        }
        all += entries * dimensions;
        if (all > maxAllNumbers || !skipLengths(bits, entries) ||
            !skipValues(bits, entries, dimensions)) {
            return false;
        }
    }
    return true;
}
