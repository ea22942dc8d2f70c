// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantHash>

#include <vector>

/// Reads a configuration once, key by key, so that a mistake in it is found at the start and not in
/// the field: each key has a type, numbers have a range, and finish() refuses keys that were not read.
///
/// All functions throw a std::runtime_error that names the key, such as "limits.sounds: must be an
/// integer from 1 to 100". If worker_create throws it, the host reports its text.
///
/// Used from any thread, by one at a time.
class TAVO_API_EXPORT TavoConfiguration
{
public:
    /// The configuration of worker_create, or a part of it.
    explicit TavoConfiguration(const QVariantHash &config);

    /// Reads a JSON object. Errors begin with the file's name; syntax errors begin with
    /// "FILE:LINE:COLUMN".
    static TavoConfiguration fromFile(const QString &file);

    /// Reads JSON that the caller has read from a file. The file's name is used in errors only.
    static TavoConfiguration fromJson(const QByteArray &json, const QString &file);

    /// The key's value, or the default when the key is missing. The range includes both limits.
    QString string(const QString &key, const QString &defaultValue);
    /// A number without a fraction.
    int integer(const QString &key, int defaultValue, int min, int max);
    /// Any number.
    double number(const QString &key, double defaultValue, double min, double max);
    bool boolean(const QString &key, bool defaultValue); ///< true or false; a number is an error.
    /// A list of strings.
    QStringList stringList(const QString &key, const QStringList &defaultValue);

    /// An object, unchecked; empty when the key is missing.
    QVariantHash object(const QString &key);

    /// An object, which the caller reads and finishes; empty when the key is missing. Its errors
    /// name the keys as "section.key".
    TavoConfiguration section(const QString &key);

    /// A list of objects; empty when the key is missing. Errors name the keys as "list[0].key".
    /// Unless @p stringKey is empty, an element may also be a string: it stands for an object in
    /// which that key has the string as its value.
    std::vector<TavoConfiguration> sections(const QString &key, const QString &stringKey = {});

    /// The keys of the configuration, sorted.
    QStringList keys() const;

    /// Throws if a key has not been read.
    void finish() const;

    /// Throws an error that names the key and gives the reason.
    [[noreturn]] void fail(const QString &key, const QString &reason) const;

private:
    TavoConfiguration(const QVariantHash &config, const QString &source, const QString &prefix);

    QVariant take(const QString &key);

    QVariantHash m_config;
    QString m_source; ///< "FILE: " or empty
    QString m_prefix; ///< precedes each key in errors
    QSet<QString> m_read;
};
