// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NotificationsTest.h"

/// The built module, loaded, with helpers for its display side.
class DisplayTest : public NotificationsTest
{
protected:
    DisplayTest() { load(); }

    QObject *display() const;
    QTimer *closeTimer() const;
    void fireCloseTimer(); ///< as at the head's timeout

    static TavoNotificationDisplayItem message(const QString &text, int priority = 1,
                                               int timeout = 0);
    /// A notification that refers to a client's node.
    static TavoNotificationDisplayItem reference(const CMPath &path, int priority = 1,
                                                 int timeout = 0);

    /// Sends the open request and returns the reply.
    CMReply<QVariant> request(const TavoNotificationDisplayItem &item);
    /// Opens a notification, expects success, and returns its path.
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

    /// The open notifications: the queue node's rows.
    static QVector<CMPath> rows();
    /// The only row of a message's node; empty if there is no node or another number of rows.
    static TavoRoles rowOf(const CMPath &path);
    static bool exists(const CMPath &path);

    using NotificationsTest::request;
};
