// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "modules/dbus/desktop/OpenNotifications.h"
#include "support/EventLoop.h"
#include "support/Request.h"
#include "support/Text.h"
#include <core/model/cmcatalog.h>
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <utility>
#include <vector>

using Reason = OpenNotifications::Reason;

inline void PrintTo(Reason reason, std::ostream *stream)
{
    *stream << "reason " << quint32(reason);
}

/// Open notifications and what they report. A derived class provides the display.
class OpenNotificationsTest : public testing::Test
{
protected:
    using Ends = std::vector<std::pair<quint32, Reason>>;

    OpenNotificationsTest()
    {
        QObject::connect(&notifications, &OpenNotifications::closed, &notifications,
                         [this](quint32 id, Reason reason) { ends.emplace_back(id, reason); });
        QObject::connect(&notifications, &OpenNotifications::actionInvoked, &notifications,
                         [this](quint32 id, const QString &key, const QString &token) {
                             invoked.append(QString::number(id) + ' ' + key + ' ' + token);
                         });
    }

    static DesktopNotification
    text(const QString &text, int timeout = 0,
         TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal)
    {
        DesktopNotification notification;
        notification.title = "Title"_s;
        notification.text = text;
        notification.timeout = timeout;
        notification.priority = priority;
        return notification;
    }

    /// Opens a notification and waits until the display has replied and all changes are reported.
    quint32 open(const DesktopNotification &notification)
    {
        const quint32 id = notifications.freeId();
        EXPECT_FALSE(notifications.open(id, notification).isError());
        settle();
        return id;
    }

    static QVector<CMPath> displayed()
    {
        const CMReply<QVariant> reply;
        CMRoot()->getRowsRequest(
            CMGetRowsRequest(TavoNotificationDisplayQueuePath(), 0, -1, reply));
        QVector<CMPath> paths;
        const QVariantList rows = reply.value().toList();
        for (const QVariant &row : rows) {
            paths.append(CMPath::fromQVariant(row));
        }
        return paths;
    }

    static QVariantList rowsOf(quint32 id)
    {
        const CMReply<QVariant> reply;
        CMRoot()->getRowsRequest(CMGetRowsRequest(NotificationNode::pathOf(id), 0, -1, reply));
        return reply.value().toList();
    }
    static TavoRoles rowOf(quint32 id, int index)
    {
        return TavoRoles(rowsOf(id).value(index).toHash());
    }

    /// The number of nodes of all notifications.
    static std::size_t nodes() { return CMCatalog::tree(CMPath("/dbus"_s)).size(); }

    bool ended(quint32 id)
    {
        return waitFor([&] { return !notifications.isOpen(id); });
    }

    CMNodesWorker worker{{}, "Dbus"_s};
    OpenNotifications notifications{worker.nodes()};
    Ends ends;
    QStringList invoked;
};
