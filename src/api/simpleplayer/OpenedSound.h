// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simpleplayer/export.h"

#include <QString>

#include <memory>
#include <optional>
#include <sys/types.h>

/// A file or a FIFO that is opened before it is played. While this object exists, players in this
/// process that are given its path play this file, even if the path now leads to another one:
/// nobody can replace the file between a check and the playing.
///
/// A value; copies refer to the same file. Used from any thread.
class TAVO_SIMPLEPLAYER_EXPORT OpenedSound
{
public:
    /// Which file it is, and whose.
    struct FileId
    {
        uid_t owner;  ///< the user
        dev_t device; ///< that it is on
        ino_t number; ///< on that device

        /// Returns whether it is the same file, whoever it belongs to by now.
        bool isSameFile(const FileId &other) const
        {
            return device == other.device && number == other.number;
        }
    };

    /// Opens an absolute path, with links. Returns nothing if there is no such file, or while many deleted
    /// sounds of its owner have yet to be freed. Nothing is read, and the writer of a FIFO goes on waiting
    /// for a reader. May wait for as long as a file system hangs.
    static std::optional<OpenedSound> open(const QString &path);

    /// The same if the system has the whole path in memory, so that it need not wait; nothing otherwise.
    static std::optional<OpenedSound> openAtOnce(const QString &path);

    /// Returns where the file is, without links.
    QString path() const;

    /// Returns whether it is a file, not a FIFO or a device.
    bool isRegularFile() const;
    /// Returns whether it is a FIFO.
    bool isFifo() const;

    /// For players: opens the file that was last opened for the path, or else the path, for reading
    /// and without waiting for a FIFO's writer. Returns a descriptor, or -1 and sets errno.
    static int openForReading(const QString &path);

    /// For players: closes that descriptor. Where that may take the system seconds, as for a FIFO and for a
    /// large deleted file, a thread does it that is kept for such files of the owner.
    static void close(int descriptor);

    /// For players: returns the file that was last opened for the path; nothing if there is none.
    static std::optional<FileId> idOf(const QString &path);

private:
    class File;

    explicit OpenedSound(std::shared_ptr<const File> file);

    static std::optional<OpenedSound> take(int descriptor);

    std::shared_ptr<const File> m_file;
};
