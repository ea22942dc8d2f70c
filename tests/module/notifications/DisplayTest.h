// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NotificationsTest.h"

/// The built module, loaded, with what a test needs of its display side.
class DisplayTest : public NotificationsTest
{
protected:
    DisplayTest() { load(); }

    QObject *display() const;
    QTimer *closeTimer() const;
    void fireCloseTimer(); ///< the head's time is over, now

    static TavoNotificationDisplayItem message(const QString &text, int priority = 1,
                                               int timeout = 0);
    /// A notification that refers to a node of the requester's.
    static TavoNotificationDisplayItem reference(const CMPath &path, int priority = 1,
                                                 int timeout = 0);

    /// Sends the open request and gives its answer.
    CMReply<QVariant> request(const TavoNotificationDisplayItem &item);
    /// The same, expected to succeed: the notification's path.
    CMPath open(const TavoNotificationDisplayItem &item);
    CMPath open(const QString &text, int priority = 1, int timeout = 0)
    {
        return open(message(text, priority, timeout));
    }
    CMReply<QVariant> cancelDisplay(const CMPath &path);
    static QString errorOf(const CMReply<QVariant> &reply)
    {
        return reply.error().message().toString();
    }

    /// Closes the node as a client does.
    void close(const CMPath &path);

    /// What is open, by the queue node's rows.
    static QVector<CMPath> rows();
    /// The one row of a message's node; empty when the node is gone.
    static TavoRoles rowOf(const CMPath &path);
    static bool exists(const CMPath &path);

    using NotificationsTest::request;
};
