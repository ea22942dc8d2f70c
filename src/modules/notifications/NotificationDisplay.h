// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayRanks.h"

#include <core/tavo.h>

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QTimer>
#include <QVector>

/// Queues display notifications: the head is on display until its time is over or it is closed.
///
/// Each notification stands in the queue node as a row with its path. A message gets a node of its
/// own, which a client closes by raising a rows change with the close marker; a notification
/// without a message refers to a node that the requester published.
///
/// Thread: the worker's. Owner: the worker.
///
/// Guarantees:
/// - the queue and the rows of the queue node are in step whenever control is back in the event loop;
/// - more urgent notifications stand ahead of less urgent ones, equal ones in their order of arrival;
/// - a notification is on display no longer in total than its timeout, however often it was
///   pre-empted, each showing counted in whole milliseconds.
class NotificationDisplay : public QObject
{
    Q_OBJECT

public:
    NotificationDisplay(CMNodes *nodes, QObject *parent);

    /// Queues a copy of the notification; false, with nothing changed, for one without message and
    /// path. On success the item carries the path by which the notification is known.
    bool enqueue(TavoNotificationDisplayItem *item);

    /// Closes every notification queued under the path; true when there was one.
    bool cancel(const CMPath &path);

private Q_SLOTS:
    void on_subscribe_rowsChanged(const CMPath &path, const QStringList &changes, int, int);
    void on_closeTimer_timeout();

private:
    friend struct NotificationDisplayAccess; // of the tests

    /// Where a new notification of that priority stands.
    int queuePosition(TavoNotificationItemPriority::Enum priority) const;

    /// Makes way for a more urgent notification: the head keeps the rest of its time.
    void preemptHead();

    /// Shows the head for its time, if it has one.
    void startTimer();

    /// Publishes a node for the message, leaves the texts to it and gives the item its path. The item
    /// is the queue's copy.
    void setPathToNotification(TavoNotificationDisplayItem *item);

    /// Takes one notification and all that it has in the model away. Leaves the timer alone.
    bool removeNotificationItem(int index);

    CMListRowsNode *m_queueNode = nullptr; ///< the model's
    /// The head, on display, first. A pre-empted item's timeout is what it has left. A message stands
    /// here without its texts.
    QList<TavoNotificationDisplayItem> m_queue;
    /// The messages' nodes by the identifiers made for them.
    QMap<QString, CMListRowsNode *> m_messageNodes;
    QTimer m_closeTimer;        ///< ends the head's time
    QElapsedTimer m_shownTimer; ///< how much of it is over
    CMNodes *m_nodes;           ///< the worker's

    /// Where the notifications with the path stand, the last first.
    QVector<int> positionsOf(const CMPath &path) const;

    /// Takes the rank of a removed notification out of the index, unless it is out already.
    void forgetRank(const CMPath &path, const DisplayRanks::Rank &rank);

    /// The items' ranks, in step with the queue, and the same by their paths: an item is found by a
    /// search in the order instead of a walk that reads every item.
    DisplayRanks m_ranks;
    QMultiHash<CMPath, DisplayRanks::Rank> m_ranksOfPaths;
    quint64 m_arrivals = 0;
};
