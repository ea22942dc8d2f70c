// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ClientTest.h"

#include <limits>

using testing::HasSubstr;

class ClientRequestsTest : public ClientTest
{
protected:
    ClientRequestsTest() { startHost(); }

    /// The value that was sent to the node at the path.
    QVariant sentTo(const CMPath &path) const
    {
        const auto requests = m_service.requests(path);
        return requests.empty() ? QVariant() : requests.back().value();
    }
};

TEST_F(ClientRequestsTest, ReadsTheVersionOfTheHost)
{
    const auto reply = connectedClient().version();
    ASSERT_TRUE(succeeds(reply));
    EXPECT_EQ(reply.value(), TAVO_VERSION ""_s);
}

TEST_F(ClientRequestsTest, ReadsAValue)
{
    m_service.publish(path("/door/state"), TavoValue().setString_("closed"));
    const auto reply = connectedClient().getValue(path("/door/state"));
    ASSERT_TRUE(succeeds(reply));
    EXPECT_EQ(TavoValue(reply.value().toHash()).string_(), "closed"_s);
}

TEST_F(ClientRequestsTest, ReadingAMissingNodeFailsWithTheModelsError)
{
    EXPECT_EQ(errorOf(connectedClient().getValue(path("/nothing"))).name(), CMErrors::noSuchNode());
}

TEST_F(ClientRequestsTest, SendsAValueAndGetsTheReply)
{
    m_service.take(path("/door/open"), [](const CMSetDataRequest &request) {
        request.reply().setValue(QVariantList{request.value(), "done"});
    });
    const QVariantHash value{{"wide", true},
                             {"stamp", std::numeric_limits<qulonglong>::max()},
                             {"key", QByteArray("\x00\xff", 2)}};
    const auto reply = connectedClient().call(path("/door/open"), value);
    ASSERT_TRUE(succeeds(reply));
    EXPECT_EQ(reply.value().toList(), QVariantList({value, "done"}));
}

TEST_F(ClientRequestsTest, SendsARequestWithoutAValue)
{
    m_service.take(path("/door/open"), ScriptedService::accept());
    ASSERT_TRUE(succeeds(connectedClient().call(path("/door/open"))));
    EXPECT_FALSE(sentTo(path("/door/open")).isValid());
}

TEST_F(ClientRequestsTest, KeepsTheNameMessageAndTitleOfAnError)
{
    m_service.take(path("/door/open"), [](const CMSetDataRequest &request) {
        CMError error("Door 1: strange", "The door is \u201clocked\u201d"_s);
        error.insert(CMError::Title(), "No way"_s);
        request.reply().setError(error);
    });
    const CMError error = errorOf(connectedClient().call(path("/door/open")));
    EXPECT_EQ(error.name(), "Door 1: strange"_s);
    EXPECT_EQ(error.message().toString(), "The door is \u201clocked\u201d"_s);
    EXPECT_EQ(error.title().toString(), "No way"_s);
}

TEST_F(ClientRequestsTest, ReadsRows)
{
    auto *list = CMListRowsNode::create(m_service.nodes(), path("/list"));
    for (const char *row : {"/a", "/b", "/c"}) {
        list->rowsAppend(path(row));
    }
    const auto all = connectedClient().rows(path("/list"));
    ASSERT_TRUE(succeeds(all));
    EXPECT_EQ(all.value(), QVariantList({"/a", "/b", "/c"}));
    const auto some = connectedClient().rows(path("/list"), 1, 1);
    ASSERT_TRUE(succeeds(some));
    EXPECT_EQ(some.value(), QVariantList({"/b"}));
}

/// A host that sends little in one message.
class ClientSmallMessagesTest : public ClientTest
{
protected:
    static constexpr int s_messageBytes = 65536;

    ClientSmallMessagesTest()
    {
        startHost({{"limits", QVariantHash{{"messageBytes", s_messageBytes}}}});
    }

    CMPath publishText(const char *where, int length)
    {
        auto *node = CMListRowsNode::create(m_service.nodes(), path(where));
        node->setTitle("Door"_s);
        node->rowsAppend(TavoRoles().setTitle(QString(length, 'x')));
        return path(where);
    }
};

TEST_F(ClientSmallMessagesTest, RowsThatDoNotFitIntoOneReplyAreReadInParts)
{
    constexpr int count = 100;
    auto *list = CMListRowsNode::create(m_service.nodes(), path("/list"));
    QVariantList rows;
    for (int i = 0; i < count; ++i) {
        const QString row = QString::asprintf("/%04d", i).repeated(800);
        list->rowsAppend(CMPath(row));
        rows.append(row);
    }
    const auto all = connectedClient().rows(path("/list"));
    ASSERT_TRUE(succeeds(all));
    EXPECT_EQ(all.value(), rows);
    const auto some = connectedClient().rows(path("/list"), 9, 50);
    ASSERT_TRUE(succeeds(some));
    EXPECT_EQ(some.value(), rows.mid(9, 50));
    const auto last = connectedClient().rows(path("/list"), 55, 100'000);
    ASSERT_TRUE(succeeds(last));
    EXPECT_EQ(last.value(), rows.mid(55));
}

TEST_F(ClientSmallMessagesTest, ARowThatFitsIntoNoReplyHasTheErrorInItsPlace)
{
    auto *list = CMListRowsNode::create(m_service.nodes(), path("/list"));
    list->rowsAppend(path("/a"));
    list->rowsAppend(TavoRoles().setTitle(QString(s_messageBytes, 'x')));
    list->rowsAppend(path("/b"));
    const auto reply = connectedClient().rows(path("/list"));
    ASSERT_TRUE(succeeds(reply));
    ASSERT_EQ(reply.value().size(), 3);
    EXPECT_EQ(reply.value()[0], "/a");
    const QVariantHash error{{"name", "UnsupportedValue"},
                             {"message", "The value is too large for a message"}};
    EXPECT_EQ(reply.value()[1].toHash(), error);
    EXPECT_EQ(reply.value()[2], "/b");
}

TEST_F(ClientTest, ARequestForRowsFailsWhileTheHostRefusesEveryRequest)
{
    startHost({{"limits", QVariantHash{{"requestsPerSecond", 1}}}});
    CMListRowsNode::create(m_service.nodes(), path("/list"));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(succeeds(connectedClient().rows(path("/list"))));
    }
    EXPECT_EQ(errorOf(connectedClient().rows(path("/list"))).name(),
              TavoClientError::limitExceeded());
}

TEST_F(ClientSmallMessagesTest, NodesThatDoNotFitIntoOneReplyAreDescribedInParts)
{
    constexpr int length = 40'000;
    const QVector<CMPath> paths{publishText("/a", length), path("/none"), publishText("/b", length),
                                publishText("/c", length)};
    const auto reply = connectedClient().describe(paths);
    ASSERT_TRUE(succeeds(reply));
    const auto nodes = reply.value();
    ASSERT_EQ(nodes.size(), 3);
    EXPECT_EQ(nodes[0].path, path("/a"));
    EXPECT_EQ(nodes[1].path, path("/b"));
    EXPECT_EQ(nodes[2].path, path("/c"));
    EXPECT_EQ(nodes[2].text.size(), length);
}

TEST_F(ClientSmallMessagesTest, ANodeThatFitsIntoNoReplyIsDescribedByItsPathOnly)
{
    const auto reply =
        connectedClient().describe({publishText("/a", s_messageBytes), publishText("/b", 10)});
    ASSERT_TRUE(succeeds(reply));
    const auto nodes = reply.value();
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes[0].path, path("/a"));
    EXPECT_EQ(nodes[0].title, ""_s);
    EXPECT_EQ(nodes[0].text, ""_s);
    EXPECT_EQ(nodes[1].title, "Door"_s);
}

TEST_F(ClientRequestsTest, ReadsWhatAPersonSeesOfAList)
{
    auto *list = CMListRowsNode::create(m_service.nodes(), path("/list"));
    list->setTitle("The list"_s);
    list->rowsAppend(TavoRoles().setTitle(QString(1000, 'a')).setApplication("mail"_s));
    list->rowsAppend(path("/b"));
    const auto preview = connectedClient().preview(path("/list"), 1, 10);
    ASSERT_TRUE(succeeds(preview));
    EXPECT_EQ(preview.value().title, "The list"_s);
    ASSERT_EQ(preview.value().rows.size(), 1);
    const TavoRoles row(preview.value().rows[0].toHash());
    EXPECT_EQ(row.title().toString(), QString(10, 'a'));
    EXPECT_EQ(row.application(), "mail"_s);
    EXPECT_EQ(errorOf(connectedClient().preview(path("/none"), 1, 10)).name(),
              CMErrors::noSuchNode());
}

TEST_F(ClientRequestsTest, FindsARow)
{
    auto *list = CMListRowsNode::create(m_service.nodes(), path("/list"));
    list->rowsAppend(path("/a"));
    list->rowsAppend(path("/b"));
    const auto found = connectedClient().matchRow(path("/list"), "/b");
    ASSERT_TRUE(succeeds(found));
    EXPECT_EQ(found.value(), 1);
    const auto none = connectedClient().matchRow(path("/list"), "/z");
    ASSERT_TRUE(succeeds(none));
    EXPECT_EQ(none.value(), -1);
}

TEST_F(ClientRequestsTest, ListsNodes)
{
    m_service.publish(path("/house/door/state"), TavoValue().setBool_(true));
    CMListRowsNode::create(m_service.nodes(), path("/house/rooms"))->setTitle("The rooms"_s);
    const auto reply = connectedClient().list(path("/house"));
    ASSERT_TRUE(succeeds(reply));
    const auto nodes = reply.value();
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes[0].path, path("/house/door"));
    EXPECT_EQ(nodes[0].kind, "group"_s);
    EXPECT_EQ(nodes[1].path, path("/house/rooms"));
    EXPECT_EQ(nodes[1].kind, "list"_s);
    EXPECT_EQ(nodes[1].title, "The rooms"_s);
}

TEST_F(ClientRequestsTest, ReadsTheTreeBelowAPath)
{
    m_service.publish(path("/house/door/state"), TavoValue().setBool_(true));
    m_service.take(path("/house/door/open"), ScriptedService::accept());
    const auto reply = connectedClient().tree(path("/house"));
    ASSERT_TRUE(succeeds(reply));
    ASSERT_EQ(reply.value().size(), 2);
    EXPECT_EQ(reply.value()[0].path, path("/house/door/open"));
    EXPECT_EQ(reply.value()[0].kind, "request"_s);
    EXPECT_EQ(reply.value()[1].kind, "value"_s);
}

TEST_F(ClientRequestsTest, ReadsTheTreeOfTheWholeModel)
{
    m_service.publish(path("/house/door/state"), TavoValue().setBool_(true));
    const auto reply = connectedClient().tree();
    ASSERT_TRUE(succeeds(reply));
    EXPECT_GE(reply.value().size(), 1);
}

TEST_F(ClientRequestsTest, DescribesNodes)
{
    auto *rooms = CMListRowsNode::create(m_service.nodes(), path("/house/rooms"));
    rooms->setTitle("The rooms"_s);
    rooms->rowsAppend(TavoRoles().setTitle("Kitchen"_s));
    m_service.publish(path("/house/door/state"), TavoValue().setBool_(true));
    const auto reply = connectedClient().describe(
        {path("/house/rooms"), CMPath(), path("/house"), path("/house/door/state")});
    ASSERT_TRUE(succeeds(reply));
    const auto nodes = reply.value();
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes[0].path, path("/house/rooms"));
    EXPECT_EQ(nodes[0].kind, "list"_s);
    EXPECT_EQ(nodes[0].title, "The rooms"_s);
    EXPECT_EQ(nodes[0].text, "Kitchen"_s);
    EXPECT_EQ(nodes[1].path, path("/house/door/state"));
    EXPECT_EQ(nodes[1].text, ""_s);
}

TEST_F(ClientRequestsTest, ClosesANodeAndKnowsWhetherAnybodyListened)
{
    const auto reply = connectedClient().close(path("/nobody/listens"));
    ASSERT_TRUE(succeeds(reply));
    EXPECT_FALSE(reply.value());
}

TEST_F(ClientRequestsTest, EnqueuesASound)
{
    m_service.take(TavoNotificationPlayerEnqueuePath(), ScriptedService::accept());
    const auto item = TavoNotificationPlayerItem()
                          .setId("bell")
                          .setType(TavoNotificationPlayerItemType::Data)
                          .setContent("AAAA")
                          .setPriority(TavoNotificationItemPriority::High)
                          .setLoop(true);
    ASSERT_TRUE(succeeds(connectedClient().enqueue(item)));
    const auto sent = TavoValue(sentTo(TavoNotificationPlayerEnqueuePath()).toHash());
    EXPECT_EQ(sent.notificationPlayerItem().id(), "bell"_s);
    EXPECT_EQ(sent.notificationPlayerItem().priority(), TavoNotificationItemPriority::High);
    EXPECT_TRUE(sent.notificationPlayerItem().loop());
}

TEST_F(ClientRequestsTest, CancelsASound)
{
    m_service.take(TavoNotificationPlayerCancelPath(), ScriptedService::accept());
    ASSERT_TRUE(succeeds(connectedClient().cancelSound("bell")));
    EXPECT_EQ(TavoValue(sentTo(TavoNotificationPlayerCancelPath()).toHash()).string_(), "bell"_s);
}

TEST_F(ClientRequestsTest, OpensAMessageAndGetsItsPath)
{
    m_service.take(TavoNotificationDisplayOpenPath(), [](const CMSetDataRequest &request) {
        request.reply().setValue(TavoValue().setPath(CMPath("/shown/1"_s)).__variant());
    });
    const auto reply = connectedClient().open(TavoNotificationDisplayItem().setMessage("Hello"_s));
    ASSERT_TRUE(succeeds(reply));
    EXPECT_EQ(reply.value(), path("/shown/1"));
}

TEST_F(ClientRequestsTest, CancelsAMessage)
{
    m_service.take(TavoNotificationDisplayCancelNotifyPath(), ScriptedService::accept());
    ASSERT_TRUE(succeeds(connectedClient().cancelMessage(path("/shown/1"))));
    EXPECT_EQ(TavoValue(sentTo(TavoNotificationDisplayCancelNotifyPath()).toHash()).path(),
              path("/shown/1"));
}

TEST_F(ClientRequestsTest, AValueThatCanNotBeSentOnlyFailsItsOwnRequest)
{
    m_service.take(path("/door/open"), ScriptedService::accept());
    const auto reply = connectedClient().call(path("/door/open"), QVariant("a"_s + QChar(0)));
    EXPECT_TRUE(errorOf(reply).isError());
    EXPECT_TRUE(succeeds(connectedClient().call(path("/door/open"), "a")));
}

TEST_F(ClientRequestsTest, ARequestWithoutAReplyFailsAtItsTimeout)
{
    m_service.take(path("/door/open"), ScriptedService::keep());
    connectedClient().setTimeout(50);
    const CMError error = errorOf(connectedClient().call(path("/door/open")));
    EXPECT_EQ(error.name(), TavoClientError::timedOut());
    EXPECT_THAT(error.message().toString().toStdString(), HasSubstr("0.05 seconds"));
}

TEST_F(ClientRequestsTest, ALimitOfTheHostHasItsOwnError)
{
    m_service.take(path("/door/open"), ScriptedService::accept());
    const QByteArray tooMuch(4 << 20, 'x');
    EXPECT_EQ(errorOf(connectedClient().call(path("/door/open"), tooMuch)).name(),
              TavoClientError::limitExceeded());
}

TEST_F(ClientRequestsTest, ARefusalOfTheBusHasItsOwnError)
{
    const PrivateBus strict(
        "<policy context=\"mandatory\"><deny send_interface=\"org.tavo.Model1\"/></policy>");
    const LoadedModule host(TAVO_DBUS_MODULE, "dbus",
                            {{"bus", strict.address()}, {"notifications", false}});
    TavoClient client(strict.address());
    ASSERT_TRUE(waitFor([&] { return client.isAvailable(); }));
    EXPECT_EQ(errorOf(client.call(path("/door/open"))).name(), TavoClientError::notPermitted());
}

TEST_F(ClientRequestsTest, ASlowReplyDelaysNoOther)
{
    m_service.take(path("/slow"), ScriptedService::keep());
    m_service.take(path("/fast"), ScriptedService::accept());
    const auto slow = connectedClient().call(path("/slow"));
    EXPECT_TRUE(succeeds(connectedClient().call(path("/fast"))));
    EXPECT_FALSE(slow.isFinished());
    m_service.requests(path("/slow")).back().reply().setValue(7);
    ASSERT_TRUE(succeeds(slow));
    EXPECT_EQ(slow.value(), QVariant(7));
}
