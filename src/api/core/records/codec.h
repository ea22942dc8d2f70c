// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/numbers.h"
#include "core/base/trstring.h"
#include "core/records/cmpath.h"

#include <QByteArray>
#include <QVariant>

#include <limits>
#include <type_traits>

class TavoHash;

/// How a hash carries a value of the type. read() takes any variant, and returns the type's default
/// if the variant is not suitable.
template <typename T, typename Enable = void>
struct TavoCodec;

template <>
struct TavoCodec<bool>
{
    static bool read(const QVariant &value) { return tavoReadBool(value); }
    static QVariant write(bool value) { return value; }
};

template <>
struct TavoCodec<double>
{
    static double read(const QVariant &value) { return tavoReadDouble(value); }
    static QVariant write(double value) { return value; }
};

template <>
struct TavoCodec<int>
{
    static int read(const QVariant &value)
    {
        if (value.userType() == QMetaType::Int) {
            return *static_cast<const int *>(value.constData());
        }
        return int(tavoReadInteger(value, std::numeric_limits<int>::min(),
                                   std::numeric_limits<int>::max()));
    }
    static QVariant write(int value) { return value; }
};

template <>
struct TavoCodec<qint64>
{
    static qint64 read(const QVariant &value)
    {
        return tavoReadInteger(value, std::numeric_limits<qint64>::min(),
                               std::numeric_limits<qint64>::max());
    }
    static QVariant write(qint64 value) { return value; }
};

/// Enumerators are carried as their numbers, including those without a name.
template <typename T>
struct TavoCodec<T, std::enable_if_t<std::is_enum_v<T>>>
{
    static T read(const QVariant &value) { return static_cast<T>(TavoCodec<int>::read(value)); }
    static QVariant write(T value) { return static_cast<int>(value); }
};

template <>
struct TavoCodec<QString>
{
    static QString read(const QVariant &value)
    {
        return value.userType() == QMetaType::QString ? value.toString() : QString();
    }
    static QVariant write(const QString &value) { return value; }
};

template <>
struct TavoCodec<QByteArray>
{
    static QByteArray read(const QVariant &value)
    {
        return value.userType() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
    }
    static QVariant write(const QByteArray &value) { return value; }
};

template <>
struct TavoCodec<QVariant>
{
    static QVariant read(const QVariant &value) { return value; }
    static QVariant write(const QVariant &value) { return value; }
};

template <>
struct TavoCodec<CMPath>
{
    static CMPath read(const QVariant &value) { return CMPath::fromQVariant(value); }
    static QVariant write(const CMPath &value) { return value.toQVariant(); }
};

template <>
struct TavoCodec<TrString>
{
    static TrString read(const QVariant &value) { return TrString::fromQVariant(value); }
    static QVariant write(const TrString &value) { return value; }
};

/// A record within a record.
template <typename T>
struct TavoCodec<T, std::enable_if_t<std::is_base_of_v<TavoHash, T>>>
{
    static T read(const QVariant &value) { return T(value.toHash()); }
    static QVariant write(const T &value) { return value.__variant(); }
};
