// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

/// Reads an object that comes from elsewhere, key by key. Every function throws an Error, which is caught in this
/// library.
class JsonFields
{
public:
    struct Error
    {
        Failure failure;
    };

    /// Larger integers lose digits in JSON.
    static constexpr qint64 maxExact = Q_INT64_C(1) << 53;

    explicit JsonFields(QJsonObject object)
        : m_object(std::move(object))
    {
    }

    const QJsonObject &all() const { return m_object; }
    bool has(const QString &key) const { return m_object.contains(key); }

    /// Undefined if the key is missing.
    QJsonValue take(const QString &key);
    QString string(const QString &key); ///< empty if the key is missing
    QString name(const QString &key);   ///< one that isFleetName(); must be there
    bool boolean(const QString &key);   ///< false if the key is missing
    qint64 integer(const QString &key, qint64 defaultValue, qint64 min, qint64 max)
    {
        return integer(key, take(key), defaultValue, min, max);
    }
    /// The same of a value that has been taken.
    qint64 integer(const QString &key, const QJsonValue &value, qint64 defaultValue, qint64 min,
                   qint64 max) const;

    /// Throws if a key has not been taken.
    void finish() const;

    [[noreturn]] void fail(const QString &key, const QString &reason) const;

private:
    QJsonObject m_object;
    QStringList m_taken;
};

/// Reads an object.
Result<QJsonObject> jsonObject(const QByteArray &json);
