// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DisplayRanks.h"
#include "DisplayStatus.h"
#include <core/tavo.h>

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QTimer>
#include <QVarLengthArray>

/// Queues display notifications. The head is on display until its timeout passes or it is closed.
///
/// The queue node has one row for each notification: its path. The module publishes a node for each
/// message. A notification without a message refers to a node that the client has published. A
/// client closes a notification by raising a rows change with the close marker on that node.
///
/// Used in the worker's thread only. Owned by the worker.
///
/// Guarantees:
/// - the rows of the queue node match the queue whenever the event loop runs;
/// - more urgent notifications come first, equally urgent ones in their order of arrival;
/// - a notification is on display no longer in total than its timeout, however often it is
///   pre-empted. Each showing is counted in whole milliseconds;
/// - each new head is reported once, and each end once, with its kind.
class NotificationDisplay : public QObject
{
    Q_OBJECT

public:
    NotificationDisplay(CMNodes *nodes, QObject *parent);

    /// Queues a copy of the notification, and sets the item's path to the notification's. Returns
    /// false, and changes nothing, if the item has neither a message nor a path.
    bool enqueue(TavoNotificationDisplayItem *item);

    /// Closes all queued notifications with that path. Returns whether there was one.
    bool cancel(const CMPath &path);

private Q_SLOTS:
    void on_subscribe_rowsChanged(const CMPath &path, const QStringList &changes, int, int);
    void on_closeTimer_timeout();

private:
    friend struct NotificationDisplayAccess; // for tests

    /// The position for a new notification of that priority.
    int queuePosition(TavoNotificationItemPriority::Enum priority) const;

    /// Pauses the head's timeout for a more urgent notification. Removes the head if its timeout
    /// has passed.
    void preemptHead();

    /// Starts the head's timeout, if it has one.
    void startTimer();

    /// Publishes a node for the message. Moves the texts to that node from the item, which is the
    /// queue's copy, and sets the item's path to the node's.
    void setPathToNotification(TavoNotificationDisplayItem *item);

    /// Removes one notification with its subscription and row, and reports its end. Does not change the
    /// timer.
    bool removeNotificationItem(int index);

    CMListRowsNode *m_queueNode = nullptr; ///< owned by the worker's node set
    /// The first one is on display. The timeout of a pre-empted one is its remaining time. Messages
    /// are stored without their texts.
    QList<TavoNotificationDisplayItem> m_queue;
    /// The nodes of messages by the last segments of their paths.
    QMap<QString, CMListRowsNode *> m_messageNodes;
    QTimer m_closeTimer;        ///< closes the head at its timeout
    QElapsedTimer m_shownTimer; ///< since m_closeTimer was started
    CMNodes *m_nodes;           ///< owned by the worker

    /// Reports what is on display now.
    void reportHead();

    DisplayStatus m_status;
    /// How the notifications end that are removed.
    TavoNotificationDisplayEnd::Enum m_end = TavoNotificationDisplayEnd::Cancelled;
    /// The whole timeouts of pre-empted notifications, by arrival.
    QHash<quint64, int> m_wholeTimeouts;

    using Positions = QVarLengthArray<int, 4>; ///< on the stack for the usual one

    /// The positions of the notifications with that path, the last one first.
    Positions positionsOf(const CMPath &path) const;

    /// Removes the rank of a removed notification from the index, if it is still there.
    void forgetRank(const CMPath &path, const DisplayRanks::Rank &rank);

    /// The rank of each item in the queue, in the same order, and by path. An item is found by a
    /// binary search for its rank, instead of reading every item of the queue.
    DisplayRanks m_ranks;
    QMultiHash<CMPath, DisplayRanks::Rank> m_ranksOfPaths;
    quint64 m_arrivals = 0;
};
