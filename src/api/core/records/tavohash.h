// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"
#include "core/records/codec.h"

#include <QVariantHash>

#include <iosfwd>

/// The base of every record: a typed view over a hash of fields.
///
/// A value; copies share the hash. A field that is missing, or has an unsuitable value, reads as
/// the type's default. Fields that a record does not know are kept. The setters write only numbers,
/// texts, bytes, lists and hashes, so a record can leave the process and come back equal.
class TAVO_API_EXPORT TavoHash
{
public:
    TavoHash() = default;
    /// A view of the fields, which may be those of another record.
    TavoHash(const QVariantHash &fields)
        : m_fields(fields)
    {
    }

    /// Returns whether the record has no fields.
    bool isEmpty() const { return m_fields.isEmpty(); }

    /// The record as requests and nodes carry it.
    QVariant __variant() const { return m_fields; } // NOLINT(bugprone-reserved-identifier)

    /// The fields by their keys.
    const QVariantHash &fields() const { return m_fields; }

    /// Returns whether all fields are equal, also those that the record does not know.
    bool operator==(const TavoHash &other) const { return m_fields == other.m_fields; }
    /// Returns whether any field differs.
    bool operator!=(const TavoHash &other) const { return m_fields != other.m_fields; }

protected:
    /// Reads a field. For TAVO_FIELD.
    template <typename T>
    T read(const QString &key) const
    {
        const auto field = m_fields.constFind(key);
        return field == m_fields.constEnd() ? T() : TavoCodec<T>::read(*field);
    }

    /// Writes a field. For TAVO_FIELD.
    template <typename T>
    void write(const QString &key, const T &value)
    {
        m_fields.insert(key, TavoCodec<T>::write(value));
    }

private:
    QVariantHash m_fields;
};

TAVO_API_EXPORT std::ostream &operator<<(std::ostream &stream, const TavoHash &record);

/// Opens the body of a record class.
#define TAVO_RECORD(Name)                                                                          \
public:                                                                                            \
    Name() = default;                                                                              \
    Name(const TavoHash &fields)                                                                   \
        : TavoHash(fields)                                                                         \
    {                                                                                              \
    }                                                                                              \
    Name(const QVariantHash &fields)                                                               \
        : TavoHash(fields)                                                                         \
    {                                                                                              \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    using Self = Name;                                                                             \
                                                                                                   \
public:

/// A field of a record: its getter, its setter, which returns the record so that calls can be
/// chained, and its key.
#define TAVO_FIELD_KEY(Type, getter, setter, key)                                                  \
    Type getter() const                                                                            \
    {                                                                                              \
        return read<Type>(QStringLiteral(key));                                                    \
    }                                                                                              \
    Self &setter(const Type &value)                                                                \
    {                                                                                              \
        write<Type>(QStringLiteral(key), value);                                                   \
        return *this;                                                                              \
    }

/// A field whose key is the getter's name.
#define TAVO_FIELD(Type, getter, setter) TAVO_FIELD_KEY(Type, getter, setter, #getter)
