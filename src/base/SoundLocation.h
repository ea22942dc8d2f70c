// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"

#include <QString>
#include <QUrl>

/// Where a sound is: in a file of this device, or on a server.
struct SoundLocation
{
    QString path; ///< of the file; empty for a server's
    QUrl url;     ///< http: or https:; empty for a file
};

/// Reads the name of a sound. The failure is what to say of the name, such as "is not a valid URI".
///
/// A name that begins with file:, http: or https:, or with any scheme and //, is a URI: it fails if
/// it isn't well formed or can't be played, and is never taken for a path. A file: URI names an
/// absolute path. Every other name is a path, "a:b.wav" too; for a file whose name reads as a URI
/// there is "./http:b.wav".
Result<SoundLocation> parseSoundLocation(const QString &name);

/// Whether the name is read as a URI, well formed or not.
bool isSoundUri(const QString &name);
