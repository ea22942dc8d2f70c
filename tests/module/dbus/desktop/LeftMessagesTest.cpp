// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Urgent messages of clients that have left, which would stand before those of others for ever.

#include "DesktopTest.h"
#include "support/bus/BusClient.h"

namespace {
using testing::ElementsAre;
using Priority = TavoNotificationItemPriority;

class LeftMessagesTest : public DesktopTest
{
protected:
    /// Shows a critical notification with notify-send, which leaves at once.
    quint32 leave(const QString &timeout = "0"_s)
    {
        return notifySend({"-u"_s, "critical"_s, "-t"_s, timeout, "Left"_s});
    }

    std::unique_ptr<BusClient> connect()
    {
        auto client = std::make_unique<BusClient>(bus().address());
        client->setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
        return client;
    }

    /// Requests the display to show the item.
    static CMPath open(BusClient &client, const TavoNotificationDisplayItem &item)
    {
        const BusCall call = client.call("Call", [&](BusWriter &writer) {
            writer.writeString(TavoNotificationDisplayOpenPath().toString());
            writer.writeVariant(TavoValue().setNotificationDisplayItem(item).__variant());
        });
        return TavoValue(call.variant().toHash()).path();
    }
    static TavoNotificationDisplayItem urgent()
    {
        return TavoNotificationDisplayItem().setMessage("Text"_s).setPriority(Priority::Urgent);
    }

    /// Whether the display's queue becomes this one.
    static bool shows(const QVector<CMPath> &paths)
    {
        return waitFor([&] { return displayed() == paths; });
    }
};

TEST_F(LeftMessagesTest, GiveWayToTheNextThatIsAsUrgent)
{
    const quint32 first = leave();
    const quint32 second = leave();
    EXPECT_TRUE(shows({pathOf(second), pathOf(first)}));
    const quint32 third = leave();
    EXPECT_TRUE(shows({pathOf(third), pathOf(first), pathOf(second)}));
    EXPECT_TRUE(isOpen(first));
}

TEST_F(LeftMessagesTest, AreShownAgainAfterwards)
{
    const quint32 left = leave();
    const quint32 brief = notifySend({"-u"_s, "critical"_s, "-t"_s, "200"_s, "Brief"_s});
    EXPECT_TRUE(shows({pathOf(brief), pathOf(left)}));
    EXPECT_TRUE(shows({pathOf(left)}));
}

TEST_F(LeftMessagesTest, StandBeforeWhatIsLessUrgent)
{
    const quint32 left = leave();
    const quint32 normal = notifySend({"-t"_s, "0"_s, "Normal"_s});
    settle();
    EXPECT_THAT(displayed(), ElementsAre(pathOf(left), pathOf(normal)));
}

TEST_F(LeftMessagesTest, StandBeforeWhatIsLessUrgentEvenAfterTheyHaveGivenWay)
{
    const quint32 normal = notifySend({"-t"_s, "0"_s, "Normal"_s});
    const quint32 critical = leave();
    const auto client = connect();
    const CMPath path = open(*client, urgent());
    EXPECT_TRUE(shows({path, pathOf(critical), pathOf(normal)}));
    const quint32 high = notifySend({"-t"_s, "0"_s, "-h"_s, "int:x-tavo-priority:2"_s, "High"_s});
    EXPECT_TRUE(shows({path, pathOf(critical), pathOf(high), pathOf(normal)}));
}

TEST_F(LeftMessagesTest, WithALongTimeoutGiveWayAndKeepTheRestOfIt)
{
    const quint32 left = leave("60300"_s);
    const quint32 brief = leave("60000"_s);
    EXPECT_TRUE(shows({pathOf(brief), pathOf(left)}));
    // A minute is not long.
    const quint32 next = leave();
    EXPECT_TRUE(waitFor([] { return displayed().size() == 3; }));
    settle();
    EXPECT_THAT(displayed(), ElementsAre(pathOf(brief), pathOf(next), pathOf(left)));
}

TEST_F(LeftMessagesTest, GiveWayHoweverManyTheyAre)
{
    python("for i in range(1000): Notify(hints={'x-tavo-priority': 2**31 - 1})"_s);
    const quint32 next = leave();
    EXPECT_TRUE(waitFor([&] { return displayed().value(0) == pathOf(next); }));
    EXPECT_TRUE(waitFor([] { return displayed().size() == 1001; }));
}

TEST_F(LeftMessagesTest, OfRequestsToTheDisplayGiveWayToo)
{
    auto leaving = connect();
    const CMPath message = open(*leaving, urgent());
    const CMPath node = open(*leaving, TavoNotificationDisplayItem()
                                           .setPath(CMPath("/no/such/node"_s))
                                           .setPriority(Priority::Urgent)
                                           .setTimeout(1'000'000));
    leaving->leave();
    EXPECT_THAT(displayed(), ElementsAre(message, node));
    const quint32 next = leave();
    EXPECT_TRUE(shows({pathOf(next), message, node}));
    const auto nodes = [] {
        return CMCatalog::children(TavoNotificationDisplaySimpleMessageNodePath()).size();
    };
    EXPECT_EQ(nodes(), 1U);
    CMSubscribe::closeNode(message);
    EXPECT_TRUE(shows({pathOf(next), node}));
    EXPECT_TRUE(waitFor([&] { return nodes() == 0; }));
}

TEST_F(LeftMessagesTest, GiveWayAndStayIfManyNameOneNode)
{
    const CMPath path("/no/such/node"_s);
    const auto shared = urgent().setMessage({}).setPath(path).setTimeout(1'000'000);
    auto leaving = connect();
    constexpr int count = 15;
    for (int i = 0; i < count; ++i) {
        open(*leaving, shared);
    }
    const auto staying = connect();
    open(*staying, shared);
    leaving->leave();
    const quint32 next = leave();
    EXPECT_TRUE(waitFor([&] {
        const QVector<CMPath> shown = displayed();
        return shown.value(0) == pathOf(next) && shown.count(path) == count + 1;
    }));
}

TEST_F(LeftMessagesTest, ThatAreNotUrgentKeepTheirOrder)
{
    const quint32 first = notifySend({"-t"_s, "0"_s, "-h"_s, "int:x-tavo-priority:2"_s, "First"_s});
    const quint32 second =
        notifySend({"-t"_s, "0"_s, "-h"_s, "int:x-tavo-priority:2"_s, "Second"_s});
    settle();
    EXPECT_THAT(displayed(), ElementsAre(pathOf(first), pathOf(second)));
}

TEST_F(LeftMessagesTest, OfClientsThatAreThereStay)
{
    const auto client = connect();
    const CMPath first = open(*client, urgent());
    const quint32 second = leave();
    const auto other = connect();
    const CMPath third = open(*other, urgent());
    EXPECT_TRUE(shows({first, third, pathOf(second)}));
}

TEST_F(LeftMessagesTest, AreUrgentAgainAfterAChange)
{
    const quint32 first = leave();
    const quint32 second = leave();
    ASSERT_TRUE(shows({pathOf(second), pathOf(first)}));
    notifySend({"-u"_s, "critical"_s, "-t"_s, "0"_s, "-r"_s, QString::number(first), "Again"_s});
    EXPECT_TRUE(shows({pathOf(first), pathOf(second)}));
}

TEST_F(LeftMessagesTest, EndOnce)
{
    const auto reported = monitor();
    const quint32 first = leave();
    const quint32 second = leave();
    ASSERT_TRUE(shows({pathOf(second), pathOf(first)}));
    result("CloseNotification"_s, {QString::number(first)});
    EXPECT_TRUE(reported->writes(closedSignal(first, 3)));
    CMSubscribe::closeNode(pathOf(second));
    EXPECT_TRUE(reported->writes(closedSignal(second, 2)));
    EXPECT_EQ(reported->output().count("NotificationClosed"_s), 2);
    EXPECT_TRUE(shows({}));
}
} // namespace
