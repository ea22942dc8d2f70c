// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Result.h"
#include "HistoryEntry.h"

#include <QObject>

#include <functional>
#include <memory>

class HistoryQueue;
class HistoryWriter;

/// What came, and what became of it, kept in a file over restarts.
///
/// Used in the thread of its owner. No call waits for the disk: a thread of the history's own writes
/// entries at the latest 250 ms after they came, and reads pages. The destructor waits until everything
/// is written. While nothing is pending, no timer runs.
///
/// If the file can't be written, the history goes on in memory and tries again every 30 s. Then, or
/// if entries come faster than they can be written, up to 4 MiB wait; if more come, the user who has
/// most waiting loses its oldest. A damaged file is put aside, and a new one begun. Nothing is
/// remembered if another process uses the file, or if it was made by a newer version or by another
/// program; such a file stays as it is.
class History : public QObject
{
    Q_OBJECT

public:
    using PageReceiver = std::function<void(const Result<HistoryPage> &)>;

    // What is longer is cut, in characters.
    static constexpr int maxTitleLength = 1000;
    static constexpr int maxTextLength = 4000;
    static constexpr int maxNameLength = 256;

    explicit History(const HistorySettings &settings, QObject *parent = nullptr);
    ~History() override;

    /// Remembers the entry, and returns its number; 0 if the settings name no file. The entry's own
    /// number is ignored.
    qint64 add(HistoryEntry entry);

    /// Changes what became of an entry. Its end time is 0 as long as it is open. Does nothing if the entry
    /// is no longer in the history. The user is the entry's.
    void change(qint64 number, HistoryEntry::State state, const QString &action, qint64 endTime,
                const QString &user = {});

    /// Changes what leftOpen() reports of an open entry, which has the number that add() returned. Pages go on
    /// to have the text with which it came.
    void replace(HistoryEntry entry);

    /// Marks as seen what was missed, between these numbers.
    void markSeen(qint64 upTo, qint64 from = 0);

    /// Reads a page. It has everything that was added before the call. The receiver is called once,
    /// from the event loop, unless the history is destroyed first. Fails if nothing is remembered.
    void page(const HistoryQuery &query, PageReceiver receiver);

    /// How many entries nobody has seen; 0 until the file has been opened. See missedChanged().
    int missed() const { return m_missed; }

    /// In stateFolder().
    static QString defaultFile();

Q_SIGNALS:
    /// Entries have come or changed. Emitted once for all that are written together.
    void changed();

    void missedChanged(int missed);

    /// The entries with mustSee that were open when the last host ended, as they were last. Emitted at
    /// most once, from the event loop. They stay open until change() ends them.
    void leftOpen(const QVector<HistoryEntry> &entries);

    /// The file can't be used; not emitted again until it has been usable. The reason is a sentence for people.
    void failed(const QString &reason);

    /// The file is written again. So many entries were lost meanwhile.
    void recovered(int lost);

    /// The file was damaged and has been put aside; a new one is in use.
    void damaged(const QString &reason);

private Q_SLOTS:
    void on_writer_missedChanged(int missed);

private:
    int m_missed = 0;
    std::unique_ptr<HistoryQueue> m_queue;
    std::unique_ptr<HistoryWriter> m_writer; ///< uses the queue; null if nothing is remembered
};
