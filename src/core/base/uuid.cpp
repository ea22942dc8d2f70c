// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/base/uuid.h"

#include <QRandomGenerator>
#include <QUuid>

#include <array>
#include <cstring>
#include <sys/random.h>

namespace {
/// Random numbers of the system that nobody can guess. To get them 16 bytes at a time, or from the processor as
/// QUuid::createUuid() does, takes half a microsecond: a quarter of the shortest time of a display-open (benchmark
/// displayOpen).
class SystemNumbers
{
public:
    std::array<char, 16> take()
    {
        if (m_next == m_numbers.size()) {
            if (getrandom(m_numbers.data(), m_numbers.size(), 0) != ssize_t(m_numbers.size())) {
                auto *words = reinterpret_cast<quint32 *>(m_numbers.data());
                QRandomGenerator::system()->fillRange(words, int(m_numbers.size() / sizeof *words));
            }
            m_next = 0;
        }
        std::array<char, 16> bytes{};
        std::memcpy(bytes.data(), m_numbers.data() + m_next, bytes.size());
        m_next += bytes.size();
        return bytes;
    }

private:
    alignas(quint32) std::array<char, 256> m_numbers{}; ///< more are not sure to come at once
    std::size_t m_next = m_numbers.size();
};
} // namespace

QString tavoGenerateUuid()
{
    thread_local SystemNumbers numbers;
    std::array<char, 16> bytes = numbers.take();
    bytes[6] = char((bytes[6] & 0x0f) | 0x40); // version 4: random
    bytes[8] = char((bytes[8] & 0x3f) | 0x80); // the variant of RFC 4122
    return QUuid::fromRfc4122(QByteArray::fromRawData(bytes.data(), int(bytes.size())))
        .toString(QUuid::WithoutBraces);
}
