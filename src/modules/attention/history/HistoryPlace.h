// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

/// The history's file among others in its folder: makes it, keeps other processes from using it, and puts
/// it aside if it is damaged.
///
/// Owned by HistoryWriter and used in its thread. Everything throws SqliteError.
class HistoryPlace
{
public:
    explicit HistoryPlace(QString file);
    ~HistoryPlace();

    HistoryPlace(const HistoryPlace &) = delete;
    HistoryPlace &operator=(const HistoryPlace &) = delete;

    const QString &file() const { return m_file; }

    /// Makes the folder and the file, which only their user may read, and locks the file until the
    /// object is destroyed. Does nothing if that has been done, but makes a file that is missing.
    void prepare();

    /// Renames the file and its log, and removes the oldest of those that were put aside before. Returns
    /// the new name. The file must not be open.
    QString putAside();

private:
    void lock();
    void removeOldestAside() const;

    const QString m_file;
    int m_lock = -1; ///< the descriptor of the locked file; -1 until prepare()
};
