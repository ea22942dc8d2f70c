// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <base/Result.h>
#include <simpleplayer/OpenedSound.h>

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVector>

#include <functional>
#include <optional>

/// A sound that a client may play. It must be kept until the sound has ended.
struct AllowedSound
{
    QString location;                ///< a URL, or the path of a file without links
    std::optional<OpenedSound> file; ///< what was checked, and what players play; empty for a URL
};

/// Which sounds clients may play: by the scheme of a URI, for files by the folder, and for others by
/// the server. A value, used from any thread.
class SoundAccess
{
public:
    /// Allows files in the folders, which are absolute paths, at any depth. Links are followed first.
    /// Only the host and port of a server matter; without a port, it is the scheme's default. A
    /// client that may name any server could ask every port that the host reaches.
    SoundAccess(QStringList schemes, const QStringList &folders, QVector<QUrl> servers);

    /// What the path may lead to: a file, or a FIFO. A file that is played as a raw stream could be
    /// any file, not only a sound.
    enum class Kind { File, Stream };

    /// Checks a URI or an absolute path. Returns what to play, or the reason why it is not allowed. May wait
    /// for as long as a file system hangs.
    Result<AllowedSound> check(const QString &location, Kind kind = Kind::File) const;

    /// The same if that need not wait; nothing otherwise.
    std::optional<Result<AllowedSound>> checkAtOnce(const QString &location, Kind kind) const;

private:
    using Open = std::function<std::optional<OpenedSound>(const QString &path)>;

    Result<AllowedSound> check(const QString &location, Kind kind, const Open &open) const;
    Result<AllowedSound> checkUrl(const QString &location, const QUrl &url) const;
    Result<AllowedSound> checkFile(const QString &requested, const std::optional<OpenedSound> &file,
                                   Kind kind) const;

    QStringList m_schemes;
    QStringList m_folders; ///< without links
    QVector<QUrl> m_servers;
    /// Whoever closes a file takes all locks of the process from it, so nobody may open a database of ours.
    QString m_ownFolder;
};
