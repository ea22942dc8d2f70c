// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/tavo/export.h"

#include <QSet>
#include <QString>
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

    /// Call when all keys are read: throws when there are others.
    void finish() const;

private:
    QVariant take(const QString &key);

    const QVariantHash m_config;
    QSet<QString> m_read;
};
