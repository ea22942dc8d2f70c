// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMetaType>
#include <QString>
#include <QVector>

#include <chrono>

/// One notification in the history.
struct HistoryEntry
{
    /// What became of it.
    enum class State {
        Shown = 1, ///< on the screen, or played
        Seen,
        Dismissed,
        ActedOn,
        Expired,  ///< missed: it ended by its timeout, or with the host
        Silenced, ///< missed: it came while nobody was to be disturbed
        Refused
    };

    /// Given by the history. A later entry has a higher one. They are those of one session: the same
    /// entry may have another number after a restart.
    qint64 number = 0;
    QString id;      ///< the notification's
    qint64 time = 0; ///< when it came, in milliseconds since 1970 (UTC)
    QString user;    ///< empty: the host's own; not known of entries in pages
    QString source;
    QString application; ///< the source's name for people
    QString category;
    QString group;
    int priority = 0;
    QString title; ///< at most 1,000 characters are kept
    QString text;  ///< at most 4,000 characters are kept
    State state = State::Shown;
    QString action;         ///< the key of the action, if it was acted on
    qint64 endTime = 0;     ///< as time; 0 while it is open
    bool isPrivate = false; ///< its title and text are not kept
    bool mustSee = false;   ///< reported by History::leftOpen() if it was open when the host ended
    bool wasLeft = false;   ///< it expired because it was open when the host ended

    /// Whether nobody has seen it.
    bool isMissed() const { return state == State::Expired || state == State::Silenced; }
};

Q_DECLARE_METATYPE(HistoryEntry)

/// Which entries a page has.
struct HistoryQuery
{
    static constexpr int maxLimit = 200;

    qint64 before = 0;       ///< only entries with lower numbers; 0: from the newest on
    int limit = 50;          ///< of entries in the page; from 1 to maxLimit
    QString text;            ///< words; each must begin a word of title, text or application
    QString source;          ///< only of this source; empty: of all
    bool onlyMissed = false; ///< only what nobody has seen
};

/// Some entries, newest first.
struct HistoryPage
{
    QVector<HistoryEntry> entries;
    /// The next page's HistoryQuery::before; 0 if there are no more. A page may be short, or even
    /// empty, although more follow: one with long texts ends early so that it fits into a message of the bus,
    /// and a long search is split over several pages.
    qint64 next = 0;
};

/// Where the history is stored, and how much of it. The oldest entries go first.
struct HistorySettings
{
    QString file; ///< empty: nothing is remembered
    int maxEntries = 10000;
    int maxDays = 30;
    qint64 maxBytes = qint64(32) << 20; ///< about the size of the file
    std::chrono::milliseconds betweenTries =
        std::chrono::seconds(30); ///< after a failure; tests shorten it
};
