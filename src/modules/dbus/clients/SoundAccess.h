// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <base/Result.h>

#include <QString>
#include <QStringList>

/// Which sounds clients may play: by the scheme of a URI and, for files, by the folder. A value, used
/// from any thread.
class SoundAccess
{
public:
    /// Allows files in the folders, which are absolute paths, at any depth. Links are followed first.
    SoundAccess(QStringList schemes, const QStringList &folders);

    /// What the path may lead to: a file, or a FIFO. A file that is played as a raw stream could be
    /// any file, not only a sound.
    enum class Kind { File, Stream };

    /// The location to play for a URI or an absolute path, or the reason why it is not allowed. For a
    /// file it is the path without links, so that what was checked is what is played.
    Result<QString> check(const QString &location, Kind kind = Kind::File) const;

private:
    Result<QString> checkPath(const QString &location, const QString &path, Kind kind) const;

    const QStringList m_schemes;
    QStringList m_folders; ///< without links
};
