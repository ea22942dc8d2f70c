// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Messages that clients show by requests to the display, and their limits.

#include "DesktopTest.h"
#include "support/bus/BusClient.h"

namespace {
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;

constexpr const char *limitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";
constexpr int kibi = 1 << 10;

class ModelMessagesTest : public DesktopTest
{
protected:
    explicit ModelMessagesTest(QVariantHash limits = {})
        : DesktopTest({{"limits"_s, limits}})
        , m_client(connect())
    {
    }

    std::unique_ptr<BusClient> connect()
    {
        auto client = std::make_unique<BusClient>(bus().address());
        client->setTarget("org.tavo.Model1", "/org/tavo/Model1", "org.tavo.Model1");
        return client;
    }

    static BusCall send(BusClient &client, const CMPath &path, const TavoValue &value)
    {
        return client.call("Call", [&](BusWriter &writer) {
            writer.writeString(path.toString());
            writer.writeVariant(value.__variant());
        });
    }
    static BusCall open(BusClient &client, const TavoNotificationDisplayItem &item)
    {
        return send(client, TavoNotificationDisplayOpenPath(),
                    TavoValue().setNotificationDisplayItem(item));
    }
    static TavoNotificationDisplayItem message(const QString &text)
    {
        return TavoNotificationDisplayItem().setMessage(text);
    }
    static CMPath pathIn(const BusCall &opened)
    {
        return TavoValue(opened.variant().toHash()).path();
    }
    static int messageNodes()
    {
        return int(CMCatalog::children(TavoNotificationDisplaySimpleMessageNodePath()).size());
    }

    BusClient &client() { return *m_client; }

private:
    std::unique_ptr<BusClient> m_client;
};

TEST_F(ModelMessagesTest, HaveNodesLikeThoseOfTheDisplayItself)
{
    const CMPath path = pathIn(open(client(), message("Text"_s).setTitle(TrString("Title"_s))));
    const CMPath untitled = pathIn(open(client(), message("Text"_s)));
    EXPECT_EQ(path.parent(), TavoNotificationDisplaySimpleMessageNodePath());
    EXPECT_THAT(displayed(), ElementsAre(path, untitled));
    EXPECT_EQ(CMCatalog::entry(path)->title.toString(), "Title"_s);
    EXPECT_EQ(CMCatalog::entry(untitled)->title.toString(), "Message"_s);
    const CMReply<QVariant> reply;
    CMRoot()->getRowsRequest(CMGetRowsRequest(path, 0, -1, reply));
    ASSERT_THAT(reply.value().toList(), SizeIs(1));
    const TavoRoles row(reply.value().toList().first().toHash());
    EXPECT_EQ(row.type(), TavoRolesType::Text);
    EXPECT_EQ(row.title().toString(), "Text"_s);
}

TEST_F(ModelMessagesTest, LeaveNothingBehindWhenTheyEnd)
{
    std::vector<BusCall> opened;
    for (int i = 0; i < 30; ++i) {
        opened.push_back(open(client(), message("Text"_s).setTimeout(i % 3 == 0 ? 1 : 0)));
        // A row that is not ours.
        CMRoot()->invoke(TavoNotificationDisplayOpenPath(),
                         TavoValue().setNotificationDisplayItem(
                             TavoNotificationDisplayItem().setPath(CMPath("/other"_s))),
                         {});
    }
    for (std::size_t i = 0; i < opened.size(); i += 3) {
        const CMPath path = pathIn(opened[i + 1]);
        EXPECT_TRUE(
            send(client(), TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(path))
                .succeeds());
        EXPECT_TRUE(CMSubscribe::closeNode(pathIn(opened[i + 2])));
    }
    // Messages with a timeout get their turn when the others close.
    CMRoot()->invoke(TavoNotificationDisplayCancelNotifyPath(),
                     TavoValue().setPath(CMPath("/other"_s)), {});
    EXPECT_TRUE(waitFor([] { return messageNodes() == 0; }));
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(ModelMessagesTest, MayNotStandBeforeUrgentOnes)
{
    const auto withPriority = [this](int priority) {
        return pathIn(open(
            client(), message("Text"_s).setPriority(TavoNotificationItemPriority::Enum(priority))));
    };
    const CMPath urgent = withPriority(TavoNotificationItemPriority::Urgent);
    const CMPath greedy = withPriority(std::numeric_limits<int>::max());
    EXPECT_THAT(displayed(), ElementsAre(urgent, greedy));
}

TEST_F(ModelMessagesTest, OfManyClientsThatLeaveTakeABoundedAmountOfMemory)
{
    for (int i = 0; i < 40; ++i) {
        const auto leaving = connect();
        std::vector<BusCall> opened;
        for (int j = 0; j < 60; ++j) {
            opened.push_back(open(*leaving, message(QString(60 * kibi, 'x'))));
        }
        opened.back().waitForAnswer();
    }
    // 64 MiB, with two bytes for each character.
    EXPECT_TRUE(waitFor([] { return messageNodes() <= 600; }));
    EXPECT_TRUE(open(client(), message("Text"_s)).succeeds());
}

class ModelRowsTest : public ModelMessagesTest
{
protected:
    ModelRowsTest()
        : ModelMessagesTest({{"openNotifications"_s, 20}, {"totalOpenNotifications"_s, 50}})
    {
    }

    static BusCall openRow(BusClient &by, int number)
    {
        return open(by, TavoNotificationDisplayItem().setPath(CMPath("/attack/%1"_s.arg(number))));
    }
};

TEST_F(ModelRowsTest, OfOneClientAreLimitedHoweverTheyAreShown)
{
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(openRow(client(), i).succeeds());
    }
    EXPECT_EQ(openRow(client(), 20).errorName(), limitsExceeded);
    EXPECT_EQ(open(client(), message("Text"_s)).errorName(), limitsExceeded);
    EXPECT_TRUE(send(client(), TavoNotificationDisplayCancelNotifyPath(),
                     TavoValue().setPath(CMPath("/attack/7"_s)))
                    .succeeds());
    EXPECT_TRUE(waitFor([this] { return openRow(client(), 20).succeeds(); }));
}

TEST_F(ModelRowsTest, OfManyClientsLeaveRoomForOthers)
{
    std::vector<std::unique_ptr<BusClient>> crowd;
    for (int i = 0; i < 10; ++i) {
        crowd.push_back(connect());
        std::vector<BusCall> opened;
        for (int j = 0; j < 20; ++j) {
            opened.push_back(openRow(*crowd.back(), 100 * i + j));
        }
        opened.back().waitForAnswer();
    }
    EXPECT_TRUE(open(client(), message("Text"_s)).succeeds());
    EXPECT_GT(notifySend({"-t"_s, "0"_s, "Title"_s}), 0U);
    EXPECT_TRUE(waitFor([] { return displayed().size() == 50; }));
}

TEST_F(ModelRowsTest, OfClientsThatHaveLeftGoFirst)
{
    for (int i = 0; i < 5; ++i) {
        const auto leaving = connect();
        for (int j = 0; j < 20; ++j) {
            EXPECT_TRUE(openRow(*leaving, 100 * i + j).succeeds());
        }
    }
    const CMPath path = pathIn(open(client(), message("Text"_s)));
    EXPECT_TRUE(waitFor([] { return displayed().size() == 50; }));
    EXPECT_TRUE(displayed().contains(path));
}

TEST_F(ModelMessagesTest, WithOnePathAreFew)
{
    const auto item = TavoNotificationDisplayItem().setPath(CMPath("/test/node"_s));
    constexpr int max = 16;
    ASSERT_TRUE(open(client(), message("Text"_s)).succeeds());
    int opened = 0;
    while (open(client(), item).succeeds()) {
        ++opened;
    }
    // The user of the first may not have been known yet.
    EXPECT_THAT(opened, AllOf(Ge(max), Le(2 * max)));
    EXPECT_EQ(open(client(), item).errorName(), limitsExceeded);
    EXPECT_TRUE(
        open(client(), TavoNotificationDisplayItem().setPath(CMPath("/test/other"_s))).succeeds());
    ASSERT_TRUE(
        send(client(), TavoNotificationDisplayCancelNotifyPath(), TavoValue().setPath(item.path()))
            .succeeds());
    EXPECT_TRUE(waitFor([&] { return open(client(), item).succeeds(); }));
}
} // namespace
