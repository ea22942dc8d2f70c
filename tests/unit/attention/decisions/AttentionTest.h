// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDateTime>

#include <attention/AttentionSettings.h>

/// The settings of a file with this content.
inline AttentionSettings settingsOf(const char *json)
{
    return AttentionSettings::fromJson(json, QStringLiteral("attention.json"));
}

/// Milliseconds since the epoch, from a time with its offset, such as "2026-03-29T00:30:00Z".
inline qint64 at(const char *time)
{
    return QDateTime::fromString(QString::fromLatin1(time), Qt::ISODate).toMSecsSinceEpoch();
}

inline AttentionInput notificationOf(const char *source, const char *title = "",
                                     const char *text = "")
{
    AttentionInput input;
    input.source = QString::fromUtf8(source);
    input.title = QString::fromUtf8(title);
    input.text = QString::fromUtf8(text);
    return input;
}
