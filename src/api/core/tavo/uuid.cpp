// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/tavo/uuid.h"

#include <array>
#include <cstring>

#include <QRandomGenerator>
#include <QUuid>

namespace {
/// The kernel's random bytes, fetched for many identifiers at a time: the fetch costs more than the
/// rest of making one.
class RandomBytes
{
public:
    void take(uchar *target, std::size_t size)
    {
        if (m_used + size > sizeof m_words) {
            QRandomGenerator::system()->fillRange(m_words.data(), m_words.size());
            m_used = 0;
        }
        std::memcpy(target, reinterpret_cast<const uchar *>(m_words.data()) + m_used, size);
        m_used += size;
    }

private:
    std::array<quint32, 256> m_words{};
    std::size_t m_used = sizeof m_words;
};
} // namespace

QString tavoGenerateUuid()
{
    static thread_local RandomBytes random;
    std::array<uchar, 16> bytes{};
    random.take(bytes.data(), bytes.size());
    bytes[6] = (bytes[6] & 0x0f) | 0x40; // version 4: random
    bytes[8] = (bytes[8] & 0x3f) | 0x80; // the variant of RFC 4122
    const auto raw =
        QByteArray::fromRawData(reinterpret_cast<const char *>(bytes.data()), int(bytes.size()));
    return QUuid::fromRfc4122(raw).toString(QUuid::WithoutBraces);
}
