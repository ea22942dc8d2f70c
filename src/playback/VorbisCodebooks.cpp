// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/VorbisCodebooks.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <numeric>
#include <vector>

namespace {
// Of numbers that a codebook stands for. A residue has a table that may be as large as its codebook, which counts once
// more for it. The encoder of libvorbis writes at most 52,488 in a codebook, and 87,976 in all.
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
/// Returns the numbers that each codebook stands for; none if a codebook is broken or too large.
std::vector<long> readCodebooks(PacketBits &bits)
{
    std::vector<long> all;
    for (long left = bits.read(8) + 1; left > 0; --left) {
        if (bits.read(24) != codebookMark) {
            return {};
        }
        const long dimensions = bits.read(16);
        const long entries = bits.read(24);
        if (dimensions < 1 || entries < 1 || entries > maxNumbers / dimensions ||
            !skipLengths(bits, entries) || !skipValues(bits, entries, dimensions)) {
            return {};
        }
        all.push_back(entries * dimensions);
    }
    return all;
}

void skipTimes(PacketBits &bits)
{
    bits.skip((bits.read(6) + 1) * 16);
}

/// A floor of type 1.
bool skipPartitionedFloor(PacketBits &bits)
{
    std::vector<long> classOfPartition;
    long classes = 0;
    for (long left = bits.read(5); left > 0; --left) {
        classOfPartition.push_back(bits.read(4));
        classes = std::max(classes, classOfPartition.back() + 1);
    }
    std::vector<long> dimensionsOfClass;
    for (; classes > 0; --classes) {
        dimensionsOfClass.push_back(bits.read(3) + 1);
        const long subclassBits = bits.read(2);
        if (subclassBits < 0) {
            return false;
        }
        bits.skip(((subclassBits > 0 ? 1 : 0) + (1L << subclassBits)) * 8);
    }
    bits.skip(2);
    const long width = bits.read(4);
    if (width < 0) {
        return false;
    }
    for (const long oneClass : classOfPartition) {
        bits.skip(dimensionsOfClass[size_t(oneClass)] * width);
    }
    return true;
}

bool skipFloors(PacketBits &bits)
{
    for (long left = bits.read(6) + 1; left > 0; --left) {
        switch (bits.read(16)) {
        case 0:
            bits.skip(8 + 16 + 16 + 6 + 8);
            bits.skip((bits.read(4) + 1) * 8);
            break;
        case 1:
            if (!skipPartitionedFloor(bits)) {
                return false;
            }
            break;
        default:
            return false;
        }
    }
    return true;
}

/// Returns the codebook whose entries classify the residue.
long readResidue(PacketBits &bits)
{
    bits.skip(16 + 24 + 24 + 24); // the type, the begin, the end and the size of partitions
    const long classes = bits.read(6) + 1;
    const long codebook = bits.read(8);
    size_t stages = 0;
    for (long left = classes; left > 0; --left) {
        const long low = bits.read(3);
        const long high = bits.read(1) == 1 ? bits.read(5) : 0;
        stages += std::bitset<8>((unsigned long)(high << 3 | low)).count();
    }
    bits.skip(long(stages) * 8);
    return codebook;
}
} // namespace

bool hasUsualCodebooks(const ogg_packet &setup)
{
    PacketBits bits(setup);
    bits.skip(8L * packetMarkBytes);
    const std::vector<long> codebooks = readCodebooks(bits);
    long all = std::accumulate(codebooks.begin(), codebooks.end(), 0L);
    if (codebooks.empty() || all > maxAllNumbers) {
        return false;
    }
    skipTimes(bits);
    if (!skipFloors(bits)) {
        return false;
    }
    for (long left = bits.read(6) + 1; left > 0; --left) {
        const long codebook = readResidue(bits);
        if (codebook < 0 || codebook >= long(codebooks.size())) {
            return false;
        }
        all += codebooks[size_t(codebook)];
    }
    return all <= maxAllNumbers && !bits.isOver();
}
