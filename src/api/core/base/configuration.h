// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantHash>

/// Reads a module's configuration once, key by key, so that a mistake in it is found at the start
/// and not in the field: every key has a type and a range, and keys that nobody reads are refused.
///
/// Everything throws a std::runtime_error whose text names the key; thrown out of worker_create, it
/// is what the host reports. Thread: any, one at a time.
class TAVO_API_EXPORT TavoConfiguration
{
public:
    explicit TavoConfiguration(const QVariantHash &config);

    /// The key's value, or the fallback when the key is missing. The limits are allowed themselves.
    QString text(const QString &key, const QString &fallback);
    int integer(const QString &key, int fallback, int least, int most);
    double number(const QString &key, double fallback, double least, double most);
    bool truth(const QString &key, bool fallback);
    QStringList texts(const QString &key, const QStringList &fallback);

    /// The keys of an object within, which is read and finished by itself; none for a missing key.
    /// Texts of errors name such a key as "section.key".
    TavoConfiguration section(const QString &key);

    /// Call when all keys are read: throws when there are others.
    void finish() const;

private:
    TavoConfiguration(const QVariantHash &config, const QString &prefix);

    QVariant take(const QString &key);
    [[noreturn]] void fail(const QString &key, const QString &reason) const;

    const QVariantHash m_config;
    const QString m_prefix; ///< what stands before the keys in errors
    QSet<QString> m_read;
};
