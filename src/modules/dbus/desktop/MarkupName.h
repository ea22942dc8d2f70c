// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QChar>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

/// The name of a tag or an entity, read letter by letter. It takes no memory from the heap: there may
/// be tens of thousands of names in a body.
class MarkupName
{
public:
    static constexpr std::size_t maxSize = 6; ///< of "strong" and "hellip", the longest known ones

    /// A name and what it means.
    template <typename Value>
    struct Known
    {
        std::string_view name;
        Value value;
    };

    /// Adds an ASCII letter. False, with nothing added, for another character or beyond the size.
    bool add(QChar character)
    {
        const ushort code = character.unicode();
        const bool isLetter = (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z');
        if (!isLetter || m_size == maxSize) {
            return false;
        }
        m_letters[m_size++] = char(code);
        return true;
    }

    /// Adds an ASCII letter as a small one.
    bool addLowered(QChar character)
    {
        constexpr ushort lowerBit = 0x20;
        return add(QChar(ushort(character.unicode() | lowerBit)));
    }

    template <typename Value, std::size_t size>
    std::optional<Value> findIn(const std::array<Known<Value>, size> &table) const
    {
        const std::string_view name(m_letters.data(), m_size);
        for (const Known<Value> &known : table) {
            if (known.name == name) {
                return known.value;
            }
        }
        return std::nullopt;
    }

private:
    std::array<char, maxSize> m_letters{};
    std::size_t m_size = 0;
};
