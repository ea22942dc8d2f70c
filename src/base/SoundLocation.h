// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QString>
#include <QUrl>

/// The location of a sound: a file on this device, or a URL on a server.
struct SoundLocation
{
    QString path; ///< of the file; empty for a URL
    QUrl url;     ///< http: or https:; empty for a file
};

/// Reads the name of a sound. The failure continues a sentence that begins with the name: "is not a
/// valid URI".
///
/// A name that begins with file:, http: or https:, or with any scheme and //, is a URI. It fails if
/// it isn't well formed or its scheme can't be played; it is never read as a path. A file: URI
/// names an absolute path. Every other name is a path, even "a:b.wav". If the name of a file looks
/// like a URI, write "./http:b.wav".
Result<SoundLocation> parseSoundLocation(const QString &name);

/// Returns whether the name is read as a URI, well formed or not.
bool isSoundUri(const QString &name);

/// The text without the user names and passwords of the URLs in it, for logs and for what others may
/// read.
QString withoutUserInfo(const QString &text);
