// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The two display request nodes: the values that they take, and their answers.

#include "DisplayTest.h"

#include <limits>

namespace {
using log4cplus::TRACE_LOG_LEVEL;

class DisplayRequestsTest : public DisplayTest
{
protected:
    static void expectFailure(const CMReply<QVariant> &reply, const char *text)
    {
        EXPECT_EQ(reply.error().name(), "Notifications"_s);
        EXPECT_EQ(reply.error().message(),
                  TrString(TrCharData{"NotificationsWorker", text, nullptr, -1}, {}));
        EXPECT_EQ(reply.error().title(), CMError::DefaultTitle());
    }

    /// Calls the request's handler and returns the reply as it is when the handler returns.
    CMReply<QVariant> handle(const char *handler, const QVariant &value) const
    {
        const CMReply<QVariant> reply;
        const CMSetDataRequest request(CMPath("/any"_s), value, reply);
        QMetaObject::invokeMethod(worker(), handler, Qt::DirectConnection,
                                  Q_ARG(CMSetDataRequest, request));
        EXPECT_TRUE(reply.isFinished()) << handler;
        return reply.isFinished() ? reply : CMReply<QVariant>();
    }
    CMReply<QVariant> handleOpen(const TavoNotificationDisplayItem &item) const
    {
        return handle("on_notificationDisplayEnqueue_activated",
                      TavoValue().setNotificationDisplayItem(item).__variant());
    }
    CMReply<QVariant> handleCancel(const QVariant &value) const
    {
        return handle("on_notificationDisplayCancel_activated", value);
    }
};
} // namespace

TEST_F(DisplayRequestsTest, AnswersAnOpenedMessageWithThePathOfItsNode)
{
    const CMReply<QVariant> reply = request(message("hello"_s));
    const TavoValue value(reply.value().toHash());
    EXPECT_EQ(value.fields().keys(), QStringList{"path"_s});
    EXPECT_EQ(value.path().parent(), TavoNotificationDisplaySimpleMessageNodePath());
    EXPECT_EQ(rows(), QVector<CMPath>{value.path()});
}

TEST_F(DisplayRequestsTest, AnswersAnOpenRequestBeforeItsHandlerReturnsWithARecordOfAText)
{
    const CMReply<QVariant> reply = handleOpen(message("hello"_s));
    ASSERT_TRUE(reply.isFinished());
    const QVariant value = reply.value();
    ASSERT_EQ(value.userType(), int(QMetaType::QVariantHash));
    const QVariant path = value.toHash().value("path"_s);
    EXPECT_EQ(path.userType(), int(QMetaType::QString));
    EXPECT_EQ(path.toString(), rows().value(0).toString());
}

TEST_F(DisplayRequestsTest, AnswersACancelRequestBeforeItsHandlerReturnsWithABoolean)
{
    const QVariant path = open("hello"_s).toQVariant();
    const CMReply<QVariant> reply = handleCancel(path);
    ASSERT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value().userType(), int(QMetaType::Bool));
    EXPECT_TRUE(reply.value().toBool());
}

TEST_F(DisplayRequestsTest, RefusesARequestBeforeItsHandlerReturns)
{
    open("hello"_s);
    log().clear();
    expectFailure(handleOpen(TavoNotificationDisplayItem()), "Failed to enqueue notification");
    expectFailure(handleCancel(QVariant()), "Path to close empty");
    expectFailure(handleCancel("/nowhere"_s), "Node already closed or non-existent");
}

TEST_F(DisplayRequestsTest, LogsNothingOfItsOwnForARefusal)
{
    open("hello"_s);
    log().clear();
    request(TavoNotificationDisplayOpenPath(), QVariant());
    EXPECT_THAT(log().messages(),
                testing::ElementsAre(
                    "Enter void NotificationsWorker::on_notificationDisplayEnqueue_activated(const "
                    "CMSetDataRequest&): (none)",
                    "Enter bool NotificationDisplay::enqueue(TavoNotificationDisplayItem*): ",
                    "Dropping empty notification",
                    "Leave bool NotificationDisplay::enqueue(TavoNotificationDisplayItem*): "));
    log().clear();
    request(TavoNotificationDisplayCancelNotifyPath(), QVariant());
    EXPECT_THAT(log().messages(),
                testing::ElementsAre(
                    "Enter void NotificationsWorker::on_notificationDisplayCancel_activated(const "
                    "CMSetDataRequest&): (none)"));
}

TEST_F(DisplayRequestsTest, AnswersAnOpenedReferenceWithTheRequestersPath)
{
    EXPECT_EQ(open(reference(CMPath("/client/node"_s))), CMPath("/client/node"_s));
}

TEST_F(DisplayRequestsTest, ReplacesThePathOfARequestThatHasAMessage)
{
    const CMPath path = open(message("hello"_s).setPath(CMPath("/client/node"_s)));
    EXPECT_EQ(path.parent(), TavoNotificationDisplaySimpleMessageNodePath());
}

TEST_F(DisplayRequestsTest, CancelsWithTheReplyOfTheOpenRequest)
{
    const CMReply<QVariant> opened = request(message("hello"_s));
    const CMReply<QVariant> cancelled =
        request(TavoNotificationDisplayCancelNotifyPath(), opened.value());
    EXPECT_FALSE(cancelled.error().isError());
    EXPECT_EQ(cancelled.value(), QVariant(true));
    EXPECT_TRUE(rows().isEmpty());
}

TEST_F(DisplayRequestsTest, CancelsWithABarePath)
{
    const CMPath path = open("hello"_s);
    for (const QVariant &value : {path.toQVariant(), QVariant::fromValue(open("again"_s))}) {
        EXPECT_EQ(request(TavoNotificationDisplayCancelNotifyPath(), value).value(),
                  QVariant(true));
    }
    EXPECT_TRUE(rows().isEmpty());
}

TEST_F(DisplayRequestsTest, KnowsAPathByItsCanonicalText)
{
    const QVariantHash item{{"path"_s, "/client//node/"_s}};
    const CMReply<QVariant> reply = request(TavoNotificationDisplayOpenPath(),
                                            QVariantHash{{"notificationDisplayItem"_s, item}});
    const CMPath path = TavoValue(reply.value().toHash()).path();
    EXPECT_EQ(path.toString(), "/client/node"_s);
    EXPECT_EQ(rows(), QVector<CMPath>{path});
    EXPECT_FALSE(cancelDisplay(path).error().isError());
}

TEST_F(DisplayRequestsTest, AcceptsAMapAsAHash)
{
    const QVariantMap item{{"message"_s, "hello"_s}};
    EXPECT_FALSE(
        request(TavoNotificationDisplayOpenPath(), QVariantMap{{"notificationDisplayItem"_s, item}})
            .error()
            .isError());
    EXPECT_EQ(rowOf(rows().first()).title(), TrString("hello"));
}

TEST_F(DisplayRequestsTest, RefusesACancelOfAClosedNotification)
{
    const CMPath path = open("hello"_s);
    cancelDisplay(path);
    expectFailure(cancelDisplay(path), "Node already closed or non-existent");
}

TEST_F(DisplayRequestsTest, RefusesACancelOfAnUnknownPathWhileOthersAreOpen)
{
    open("hello"_s);
    expectFailure(cancelDisplay(CMPath("/nowhere"_s)), "Node already closed or non-existent");
    EXPECT_EQ(rows().size(), 1);
}

TEST_F(DisplayRequestsTest, LogsBothRequestsAtTraceWithTheirValues)
{
    const QVariant value(QVariantHash{{"path"_s, "/nowhere"_s}});
    request(TavoNotificationDisplayOpenPath(), value);
    request(TavoNotificationDisplayCancelNotifyPath(), value);
    EXPECT_EQ(
        entered(TRACE_LOG_LEVEL, "on_notificationDisplayEnqueue_activated", "{path: \"/nowhere\"}"),
        1);
    EXPECT_EQ(
        entered(TRACE_LOG_LEVEL, "on_notificationDisplayCancel_activated", "{path: \"/nowhere\"}"),
        1);
}

class UnsuitableDisplayValuesTest : public DisplayRequestsTest,
                                    public testing::WithParamInterface<QVariant>
{
};

TEST_P(UnsuitableDisplayValuesTest, AreAnsweredWithTheFailureTexts)
{
    open("other"_s);
    log().clear();
    expectFailure(request(TavoNotificationDisplayOpenPath(), GetParam()),
                  "Failed to enqueue notification");
    expectFailure(request(TavoNotificationDisplayCancelNotifyPath(), GetParam()),
                  "Path to close empty");
    EXPECT_EQ(entered(TRACE_LOG_LEVEL, "cancel", ""), 0);
    EXPECT_EQ(rows().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Values, UnsuitableDisplayValuesTest,
    testing::Values(QVariant(), QVariant(7), QVariant("no path"_s), QVariant(QVariantList{"/a"_s}),
                    QVariant(QVariantHash()), QVariant(QVariantHash{{"path"_s, 3}}),
                    QVariant(QVariantHash{{"notificationDisplayItem"_s, QVariantHash()}}),
                    QVariant(QVariantHash{{"notificationDisplayItem"_s,
                                           QVariantHash{{"title"_s, "a title alone"_s}}}}),
                    QVariant(QVariantHash{{"notificationDisplayItem"_s,
                                           QVariantHash{{"message"_s, 5}, {"path"_s, 5}}}})));

class KeptTextTest : public DisplayRequestsTest, public testing::WithParamInterface<QString>
{
};

TEST_P(KeptTextTest, IsShownUnchanged)
{
    const CMPath path = open(message(GetParam()).setTitle(GetParam()).setId(GetParam()));
    EXPECT_EQ(rowOf(path).title(), TrString(GetParam()));
    cancelDisplay(path);
    EXPECT_TRUE(rows().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Texts, KeptTextTest,
                         testing::Values(QString(1 << 20, QLatin1Char('x')),
                                         QString::fromUtf8("a\0b", 3), "\x01\x1b[31m\n\t\x7f"_s,
                                         QString(QChar(0xd800)) + QLatin1Char('!'),
                                         QString(QChar(0xdc00)), " "_s, "<b>&amp;"_s));

TEST_F(DisplayRequestsTest, TakesTheExtremesOfTimeoutAndPriority)
{
    constexpr int least = std::numeric_limits<int>::min();
    constexpr int most = std::numeric_limits<int>::max();
    const CMPath low = open("low"_s, least, least);
    const CMPath middle = open("middle"_s, 0, most);
    const CMPath high = open("high"_s, most, -1);
    EXPECT_EQ(rows(), (QVector<CMPath>{high, middle, low}));
    EXPECT_FALSE(closeTimer()->isActive());
    cancelDisplay(high);
    EXPECT_TRUE(closeTimer()->isActive());
    EXPECT_GT(closeTimer()->interval(), most - 60000);
}
