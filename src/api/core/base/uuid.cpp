// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/uuid.h"

#include <QUuid>

#include <array>
#include <cstring>
#include <sys/random.h>

namespace {
/// The kernel's random bytes, fetched for many identifiers at a time: the fetch costs more than the
/// rest of making one.
class RandomBytes
{
public:
    void take(uchar *target, std::size_t size)
    {
        if (m_used + size > m_bytes.size()) {
            fill();
        }
        std::memcpy(target, m_bytes.data() + m_used, size);
        m_used += size;
    }

private:
    void fill()
    {
        // As many as the kernel gives without being interrupted. Qt's generator takes the
        // processor's instead, which costs a microsecond an identifier.
        if (getrandom(m_bytes.data(), m_bytes.size(), 0) != ssize_t(m_bytes.size())) {
            qFatal("The kernel gives no random bytes");
        }
        m_used = 0;
    }

    std::array<uchar, 256> m_bytes{};
    std::size_t m_used = sizeof m_bytes;
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
