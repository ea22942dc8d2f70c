// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/sqlite/SqliteError.h"
#include "HistoryFile.h"
#include "HistoryPlace.h"
#include "HistoryQueue.h"

#include <QObject>

#include <memory>
#include <thread>

/// The thread of the history: writes what is in the queue, and reads pages.
///
/// Owned by History and lives in its thread; the signals come from the history's own thread. The
/// destructor waits until the queue has been written.
///
/// While the file can't be written, steps are applied to a transaction that is not committed, or to a
/// database in memory if the file can't even be opened. So pages are always read from a database. The
/// steps are kept, to apply them again.
class HistoryWriter : public QObject
{
    Q_OBJECT

public:
    HistoryWriter(const HistorySettings &settings, HistoryQueue &queue);
    ~HistoryWriter() override;

    /// Starts the thread. Called once, when the signals are connected.
    void start();

Q_SIGNALS:
    void changed();
    void missedChanged(int missed);
    void leftOpen(const QVector<HistoryEntry> &entries);
    void failed(const QString &reason);
    void recovered(int lost);
    void damaged(const QString &reason);

private:
    using Clock = HistoryQueue::Clock;

    void run();
    std::optional<Clock::time_point> nextRound() const;
    void doRound(HistoryQueue::Work work);
    void takeOver(HistoryQueue::Work &work);
    void applyAll();
    void commit();

    /// Undoes what is not committed; applyAll() applies it again.
    void startAgain();

    /// Opens the file; if that fails for now, a database in memory.
    void open();
    void openFile();

    /// Called with an error of the file, which is closed. Puts a damaged file aside. Returns whether the file
    /// is to be opened; otherwise a database in memory is used, or none.
    bool mend(const SqliteError &error);
    void replaceFile(const SqliteError &error);
    void useMemory();
    void fail(const SqliteError &error);
    void refuse(const SqliteError &error);

    void readPage();
    Result<HistoryPage> page(const HistoryQuery &query);
    void reportMissed();

    const HistorySettings m_settings;
    HistoryQueue &m_queue;

    // Used in the history's own thread.
    HistoryPlace m_place;
    std::unique_ptr<HistoryFile> m_file; ///< null if nothing is remembered
    bool m_isInMemory = false;           ///< of m_file
    QString m_refusal;                   ///< why m_file is null
    bool m_wasOpen = false;              ///< since the start
    qint64 m_shift = 0;
    std::deque<HistoryStep> m_uncommitted;
    std::size_t m_uncommittedBytes = 0;
    std::size_t m_applied = 0; ///< of m_uncommitted
    std::deque<HistoryQueue::Request> m_requests;
    bool m_hasFailed = false;
    int m_lost = 0;
    int m_missed = 0;                             ///< last reported
    std::optional<Clock::time_point> m_nextRound; ///< a try, or the rest of what is over the limits
    std::optional<Clock::time_point> m_putAside;

    std::thread m_thread;
};
