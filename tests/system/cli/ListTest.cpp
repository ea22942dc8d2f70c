// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;

class CliListTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    void open(const char *title, const char *text, int timeout = 0)
    {
        open({{"title", title}, {"message", text}, {"timeout", timeout}});
    }
    void open(const QJsonObject &item)
    {
        const QJsonObject value{{"notificationDisplayItem", item}};
        EXPECT_EQ(run({"call", "/notifications/display/open", "-"}, QJsonDocument(value).toJson()),
                  s_good);
    }

    /// Runs the program to its end and returns the methods of the host that it called.
    std::vector<std::string> requestsOf(const QStringList &arguments)
    {
        Program monitor("busctl"_s);
        monitor.start({"--address=" + m_bus.address(), "monitor", "--json=short",
                       "--match=type='method_call',interface='org.tavo.Model1'"});
        EXPECT_TRUE(
            waitFor([&] { return monitor.error().find("Monitoring") != std::string::npos; }));
        EXPECT_EQ(run(arguments), s_good);
        // The monitor sees this last.
        m_other.run({"get", "/last"});
        EXPECT_TRUE(monitor.waitForOutput("/last"));
        std::vector<std::string> methods;
        for (const std::string &line : monitor.lines()) {
            methods.push_back(object(line).value("member").toString().toStdString());
        }
        methods.pop_back();
        return methods;
    }
};

TEST_F(CliListTest, SaysThatThereAreNoMessages)
{
    EXPECT_EQ(run({"list"}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
    EXPECT_EQ(m_tavo.error(), "No messages.\n");
}

TEST_F(CliListTest, ListsMessagesInOrderBeginningWithTheShownOne)
{
    open("Door", "Somebody rings");
    open("Oven", "The cake\nis done");
    EXPECT_EQ(run({"list"}), s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], MatchesRegex("shown\t/notifications/.*\tDoor\tSomebody rings"));
    EXPECT_THAT(lines[1], MatchesRegex("1\t/notifications/.*\tOven\tThe cake\\\\nis done"));
}

TEST_F(CliListTest, SaysHowLongTheShownOneStays)
{
    open("Door", "Somebody rings", 600'000);
    open("Oven", "The cake is done", 600'000);
    EXPECT_EQ(run({"list", "--json"}), s_good);
    const QJsonArray messages = json().toObject().value("messages").toArray();
    ASSERT_EQ(messages.size(), 2);
    const int remaining = messages[0].toObject().value("remaining").toInt();
    EXPECT_GT(remaining, 500'000);
    EXPECT_LE(remaining, 600'000);
    EXPECT_FALSE(messages[1].toObject().contains("remaining"));
}

class CliLongListTest : public CliListTest
{
protected:
    void SetUp() override
    {
        startHost({}, {{"unreadBytes", 1 << 20}, {"totalUnreadBytes", 1 << 20}});
    }
};

TEST_F(CliLongListTest, ListsMoreTextThanTheHostSendsInOneReply)
{
    constexpr int count = 11;
    for (int i = 0; i < count; ++i) {
        open(QByteArray::number(i).constData(), QByteArray(60'000, char('a' + i)).constData());
    }
    EXPECT_EQ(run({"list", "--json"}), s_good);
    const QJsonArray messages = json().toObject().value("messages").toArray();
    ASSERT_EQ(messages.size(), count);
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(messages[i].toObject().value("text").toString(), QString(60'000, 'a' + i));
    }
}

TEST_F(CliListTest, ListsThemAsJson)
{
    open("Door", "Somebody rings");
    open("Oven", "The cake is done");
    EXPECT_EQ(run({"list", "--json"}), s_good);
    const QJsonArray messages = json().toObject().value("messages").toArray();
    ASSERT_EQ(messages.size(), 2);
    EXPECT_EQ(messages[1].toObject().value("title"), "Oven");
    EXPECT_EQ(messages[1].toObject().value("text"), "The cake is done");
    EXPECT_EQ(json().toObject().value("more"), false);
}

TEST_F(CliListTest, SaysThatThereAreMore)
{
    open("Door", "one");
    open("Door", "two");
    EXPECT_EQ(run({"list", "--count", "1"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 1U);
    EXPECT_EQ(m_tavo.error(), "There are more: see --count.\n");
    EXPECT_EQ(run({"list", "--json", "--count", "1"}), s_good);
    EXPECT_EQ(json().toObject().value("messages").toArray().size(), 1);
    EXPECT_EQ(json().toObject().value("more"), true);
}

TEST_F(CliListTest, SendsThreeRequestsForAnyNumberOfMessages)
{
    for (const char *text : {"one", "two", "three", "four", "five"}) {
        open("Door", text);
    }
    EXPECT_THAT(requestsOf({"list"}), ElementsAre("GetValue", "GetRows", "Describe"));
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_THAT(lines[4], MatchesRegex("4\t/notifications/.*\tDoor\tfive"));
}

TEST_F(CliListTest, SendsTwoRequestsWhenThereIsNothing)
{
    EXPECT_THAT(requestsOf({"list"}), ElementsAre("GetValue", "GetRows"));
}

TEST_F(CliListTest, ListsMessagesWithoutANode)
{
    open({{"path", "/my/message"}, {"timeout", 0}});
    open("Door", "Somebody rings");
    EXPECT_EQ(run({"list"}), s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "shown\t/my/message\t\t");
    EXPECT_THAT(lines[1], MatchesRegex("1\t/notifications/.*\tDoor\tSomebody rings"));
}

class CliListLimitsTest : public CliListTest
{
protected:
    void SetUp() override { startHost({}, {{"valueBytes", 1024}}); }
};

TEST_F(CliListLimitsTest, ListsMoreMessagesThanTheHostDescribesAtOnce)
{
    constexpr int messages = 30;
    for (int i = 0; i < messages; ++i) {
        open("Door", "Somebody rings");
    }
    EXPECT_EQ(run({"list"}), s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), std::size_t(messages));
    for (const std::string &line : lines) {
        EXPECT_THAT(line, EndsWith("\tDoor\tSomebody rings"));
    }
}

/// A host that sends little in one message, and a queue of paths that take more.
class CliLongPathsTest : public CliListTest
{
protected:
    static constexpr int s_count = 21;

    void SetUp() override
    {
        startHost({}, {{"messageBytes", 65536}});
        for (int i = 0; i < s_count; ++i) {
            m_paths.append(QString::asprintf("/%04d", i).repeated(800));
            open({{"path", m_paths.last()}, {"timeout", 0}});
        }
        open("Door", "Somebody rings");
    }

    QStringList m_paths;
};

TEST_F(CliLongPathsTest, AreListed)
{
    EXPECT_EQ(run({"list"}), s_good) << m_tavo.error();
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), std::size_t(s_count + 1));
    EXPECT_EQ(lines[s_count - 1],
              std::to_string(s_count - 1) + '\t' + m_paths.last().toStdString() + "\t\t");
    EXPECT_THAT(lines[s_count], EndsWith("\tDoor\tSomebody rings"));
}

TEST_F(CliLongPathsTest, ArePrintedAsRows)
{
    EXPECT_EQ(run({"rows", "/notifications/display/queue"}), s_good) << m_tavo.error();
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), std::size_t(s_count + 1));
    EXPECT_EQ(lines[s_count - 1], m_paths.last().toStdString());
}

TEST_F(CliLongPathsTest, AreWatched)
{
    m_tavo.start({"watch", "--json", "/notifications/display/queue"});
    ASSERT_TRUE(m_tavo.waitForOutput("\"]}")) << "the end of the line";
    const QJsonObject line = object(m_tavo.lines().back());
    EXPECT_EQ(line.value("rows").toArray().size(), 20);
    EXPECT_EQ(line.value("more"), true);
}
