// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace exploration {

/// Values sent between processes of the same program, as plain memory one after the other.
class Bytes
{
public:
    template <typename T>
    void add(T value)
    {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>);
        m_bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }

    void add(const std::string &text)
    {
        add(std::uint32_t(text.size()));
        m_bytes += text;
    }

    template <typename Container, typename Function>
    void addAll(const Container &container, Function addOne)
    {
        add(std::uint32_t(container.size()));
        for (const auto &element : container) {
            addOne(element);
        }
    }

    const std::string &bytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

class BytesReader
{
public:
    explicit BytesReader(const std::string &bytes)
        : m_bytes(bytes)
    {
    }

    template <typename T>
    T get()
    {
        T value{};
        std::memcpy(&value, at(sizeof value), sizeof value);
        return value;
    }

    std::string text()
    {
        const auto size = get<std::uint32_t>();
        return {at(size), size};
    }

    template <typename Container, typename Function>
    void getAll(Container *container, Function getOne)
    {
        const auto size = get<std::uint32_t>();
        container->reserve(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            container->push_back(getOne());
        }
    }

private:
    const char *at(std::size_t size)
    {
        if (size > m_bytes.size() - m_position) {
            throw std::out_of_range("message cut short");
        }
        m_position += size;
        return m_bytes.data() + m_position - size;
    }

    const std::string &m_bytes;
    std::size_t m_position = 0;
};

} // namespace exploration
