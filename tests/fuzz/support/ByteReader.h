// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstdint>
#include <cstring>

/// Reads an input from front to back, so seeds can be written by hand or by ValueWriter, and a
/// mutation does not change what was read before it. After the end it reads zeros, so every input
/// is valid.
class ByteReader
{
public:
    ByteReader(const std::uint8_t *data, std::size_t size)
        : m_next(data)
        , m_end(data + size)
    {
    }

    bool isEmpty() const { return m_next == m_end; }
    int left() const { return int(m_end - m_next); }

    std::uint8_t byte() { return isEmpty() ? std::uint8_t(0) : *m_next++; }

    /// A choice among `count`, at most 256.
    int below(int count) { return byte() % count; }

    /// Little-endian.
    template <typename T>
    T number()
    {
        T result{};
        const auto size = std::min(sizeof result, std::size_t(m_end - m_next));
        if (size > 0) {
            std::memcpy(&result, m_next, size);
        }
        m_next += size;
        return result;
    }

    /// At most `count` bytes.
    QByteArray bytes(int count)
    {
        const int size = std::min(count, left());
        QByteArray result(reinterpret_cast<const char *>(m_next), size);
        m_next += size;
        return result;
    }

    QByteArray rest() { return bytes(left()); }

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};
