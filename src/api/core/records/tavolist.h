// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/records/codec.h"

#include <QVariantList>

#include <algorithm>
#include <initializer_list>

/// A list of values of one type in a record. A value; copies share their data.
template <typename T>
class TavoList
{
public:
    TavoList() = default;
    /// A list of these elements.
    TavoList(std::initializer_list<T> elements)
    {
        for (const T &element : elements) {
            append(element);
        }
    }
    /// A view of a list from a variant.
    explicit TavoList(const QVariantList &elements)
        : m_elements(elements)
    {
    }

    /// The number of elements.
    int size() const { return m_elements.size(); }
    /// Returns whether there are no elements.
    bool isEmpty() const { return m_elements.isEmpty(); }
    /// The element at the index, which must exist; the type's default for one of another type.
    T at(int index) const { return TavoCodec<T>::read(m_elements.at(index)); }
    /// Adds an element at the end.
    void append(const T &element) { m_elements.append(TavoCodec<T>::write(element)); }

    /// An element of another type equals nothing, although at() returns the type's default for it.
    bool contains(const T &element) const
    {
        const QVariant carried = TavoCodec<T>::write(element);
        return std::any_of(m_elements.begin(), m_elements.end(), [&carried](const QVariant &each) {
            // Variants compare by converting: "2" would equal 2, and false would equal 0.
            return tavoIsNumber(each) == tavoIsNumber(carried) && each == carried;
        });
    }

    /// The elements as variants carry them.
    const QVariantList &elements() const { return m_elements; }
    /// Returns whether all elements are equal.
    bool operator==(const TavoList &other) const { return m_elements == other.m_elements; }
    /// Returns whether any element differs.
    bool operator!=(const TavoList &other) const { return m_elements != other.m_elements; }

private:
    QVariantList m_elements;
};

/// Lets a record have a list as a field.
template <typename T>
struct TavoCodec<TavoList<T>>
{
    /// Anything but a list gives an empty list.
    static TavoList<T> read(const QVariant &value) { return TavoList<T>(value.toList()); }
    /// A list of variants.
    static QVariant write(const TavoList<T> &value) { return value.elements(); }
};
