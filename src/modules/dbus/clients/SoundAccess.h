// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

/// Says which sounds clients of the bus may have played: by the schemes of their URIs and, for files,
/// the folders in which they are. A value; thread: any.
class SoundAccess
{
public:
    /// The schemes, such as "file" or "https", and the folders, absolute; files below them are
    /// allowed, whatever links lead there.
    SoundAccess(QStringList schemes, const QStringList &folders);

    struct Answer
    {
        QString location; ///< what to play; empty: not allowed
        QString refusal;  ///< why not, for people
    };

    /// What may be on disk: a file, or also a pipe that somebody writes into.
    enum class Kind { File, Stream };

    /// Whether the sound at a URI or an absolute path may be played. What is on disk is answered with
    /// its path without links, so that what was looked at is what will be played.
    Answer check(const QString &location, Kind kind = Kind::File) const;

private:
    Answer checkPath(const QString &location, const QString &path, Kind kind) const;

    const QStringList m_schemes;
    QStringList m_folders; ///< without links
};
