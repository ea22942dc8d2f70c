// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

QObject *DisplayTest::display() const
{
    for (QObject *child : worker()->children()) {
        if (qstrcmp(child->metaObject()->className(), "NotificationDisplay") == 0) {
            return child;
        }
    }
    return nullptr;
}

QTimer *DisplayTest::closeTimer() const
{
    return display()->findChild<QTimer *>();
}

void DisplayTest::fireCloseTimer()
{
    closeTimer()->stop();
    QMetaObject::invokeMethod(closeTimer(), "timeout");
    settle();
}

TavoNotificationDisplayItem DisplayTest::message(const QString &text, int priority, int timeout)
{
    return TavoNotificationDisplayItem()
        .setMessage(text)
        .setPriority(TavoNotificationItemPriority::Enum(priority))
        .setTimeout(timeout);
}

TavoNotificationDisplayItem DisplayTest::reference(const CMPath &path, int priority, int timeout)
{
    return TavoNotificationDisplayItem()
        .setPath(path)
        .setPriority(TavoNotificationItemPriority::Enum(priority))
        .setTimeout(timeout);
}

CMReply<QVariant> DisplayTest::request(const TavoNotificationDisplayItem &item)
{
    return request(TavoNotificationDisplayOpenPath(),
                   TavoValue().setNotificationDisplayItem(item).__variant());
}

CMPath DisplayTest::open(const TavoNotificationDisplayItem &item)
{
    const CMReply<QVariant> reply = request(item);
    EXPECT_FALSE(reply.error().isError()) << errorOf(reply).toStdString();
    return TavoValue(reply.value().toHash()).path();
}

CMReply<QVariant> DisplayTest::cancelDisplay(const CMPath &path)
{
    return request(TavoNotificationDisplayCancelNotifyPath(),
                   TavoValue().setPath(path).__variant());
}

void DisplayTest::close(const CMPath &path)
{
    CMSubscribe::closeNode(path);
    settle();
}

QVector<CMPath> DisplayTest::rows()
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(TavoNotificationDisplayQueuePath(), 0, -1, reply));
    QVector<CMPath> paths;
    const QVariantList rows = reply.value().toList();
    for (const QVariant &row : rows) {
        paths.append(CMPath::fromQVariant(row));
    }
    return paths;
}

TavoRoles DisplayTest::rowOf(const CMPath &path)
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
    const QVariantList rows = reply.value().toList();
    return rows.size() == 1 ? TavoRoles(rows.first().toHash()) : TavoRoles();
}

bool DisplayTest::exists(const CMPath &path)
{
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
    return reply.error().name() != CMErrors::noSuchNode();
}
