// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/cmpath.h"

#include <vector>

/// A hash table of objects by path(), linked through one of their members. Does not own them. Paths
/// are unique.
///
/// With a QHash instead, the node of a closed message would take 432 bytes, and the goal is 410; an
/// open notification would take 1557, and the goal is 1536 (benchmark tavo_memory_use).
template <typename T, T *T::*Next>
class CMPathTable
{
public:
    int size() const { return m_size; }

    T *find(const CMPath &path) const
    {
        T *entry = m_chains[chainOf(path)];
        while (entry != nullptr && entry->path() != path) {
            entry = entry->*Next;
        }
        return entry;
    }

    /// The table must not have an entry with the same path.
    void insert(T *entry)
    {
        if (m_size == int(m_chains.size())) {
            resize(2 * m_chains.size());
        }
        add(entry);
        ++m_size;
    }

    /// The entry must be in the table.
    void remove(T *entry)
    {
        *linkTo(entry) = entry->*Next;
        --m_size;
        if (m_chains.size() > minChains && m_size < int(m_chains.size() / 8)) {
            resize(m_chains.size() / 2);
        }
    }

    /// Replaces an entry by another one with the same path.
    void replace(T *entry, T *other)
    {
        other->*Next = entry->*Next;
        *linkTo(entry) = other;
    }

    std::vector<T *> entries() const
    {
        std::vector<T *> result;
        result.reserve(std::size_t(m_size));
        for (T *entry : m_chains) {
            for (; entry != nullptr; entry = entry->*Next) {
                result.push_back(entry);
            }
        }
        return result;
    }

    std::vector<T *> takeAll()
    {
        std::vector<T *> result = entries();
        m_chains.assign(minChains, nullptr);
        m_size = 0;
        return result;
    }

private:
    static constexpr std::size_t minChains = 16;

    std::size_t chainOf(const CMPath &path) const
    {
        // All entries of a slice have equal lower bits in their hashes.
        constexpr uint golden = 0x9e3779b1U;
        return std::size_t((quint64(path.hash() * golden) * m_chains.size()) >> 32);
    }

    T **linkTo(const T *entry)
    {
        T **link = &m_chains[chainOf(entry->path())];
        while (*link != entry) {
            link = &((*link)->*Next);
        }
        return link;
    }

    void add(T *entry)
    {
        T *&first = m_chains[chainOf(entry->path())];
        entry->*Next = first;
        first = entry;
    }

    void resize(std::size_t chains)
    {
        const std::vector<T *> all = entries();
        m_chains.assign(chains, nullptr);
        m_chains.shrink_to_fit();
        for (T *entry : all) {
            add(entry);
        }
    }

    std::vector<T *> m_chains = std::vector<T *>(minChains, nullptr);
    int m_size = 0;
};
