// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QUrl>

/// Where a sound is: on disk, or behind an http: URI.
struct Location
{
    QString path;  ///< on disk; empty: not there
    QUrl url;      ///< http: or https:; empty: not there
    QString error; ///< why it is neither
};

/// Takes a URI or a bare path apart.
Location parseLocation(const QString &text);
