// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QHash>
#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

/// 2^bits texts that have equal qHash() without a seed; on processors for which Qt has no faster
/// hash, also with any seed.
inline std::vector<QString> textsOfOneHash(int bits)
{
    std::vector<QString> texts;
    for (int number = 0; number < 1 << bits; ++number) {
        QString text;
        for (int bit = 0; bit < bits; ++bit) {
            // 31 * 'A' + 'a' = 31 * 'B' + 'B'
            text += QLatin1String((number >> bit & 1) != 0 ? "Aa" : "BB");
        }
        texts.push_back(text);
    }
    return texts;
}

/// 2^bits texts that have equal qHash() with any seed, on processors that can compute a CRC: there,
/// Qt uses a CRC as the hash. In a CRC, changing a bit of a text always changes the same bits of
/// the hash, so changes that cancel each other are found by linear algebra.
inline std::vector<QString> textsOfOneSeededHash(int bits)
{
    constexpr uint seed = 1;
    constexpr int bitsPerCharacter = 4;
    const QString base(12, QLatin1Char('@'));
    const auto changed = [&base](std::uint64_t changes) {
        QString text = base;
        for (int i = 0; i < text.size(); ++i, changes >>= bitsPerCharacter) {
            text[i] = QChar(ushort(text[i].unicode() | (changes & 0xf)));
        }
        return text;
    };
    std::vector<std::pair<uint, std::uint64_t>> basis; // of hashes, each with its changes
    std::vector<std::uint64_t> cancelling;
    for (int bit = 0; bit < base.size() * bitsPerCharacter; ++bit) {
        std::uint64_t changes = std::uint64_t(1) << bit;
        uint hash = qHash(changed(changes), seed) ^ qHash(base, seed);
        for (const auto &[basisHash, basisChanges] : basis) {
            if ((hash ^ basisHash) < hash) {
                hash ^= basisHash;
                changes ^= basisChanges;
            }
        }
        if (hash == 0) {
            cancelling.push_back(changes);
        } else {
            basis.emplace_back(hash, changes);
        }
    }
    if (int(cancelling.size()) < bits ||
        qHash(changed(cancelling.front()), seed + 1) != qHash(base, seed + 1)) {
        return textsOfOneHash(bits);
    }
    std::vector<QString> texts;
    for (int number = 0; number < 1 << bits; ++number) {
        std::uint64_t changes = 0;
        for (int bit = 0; bit < bits; ++bit) {
            changes ^= (number >> bit & 1) != 0 ? cancelling[std::size_t(bit)] : 0;
        }
        texts.push_back(changed(changes));
    }
    return texts;
}
