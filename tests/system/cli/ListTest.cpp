// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

using testing::MatchesRegex;

class CliListTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    void open(const char *title, const char *text)
    {
        const QJsonObject item{{"title", title}, {"message", text}, {"timeout", 0}};
        const QJsonObject value{{"notificationDisplayItem", item}};
        EXPECT_EQ(run({"call", "/notifications/display/open",
                       QString::fromUtf8(QJsonDocument(value).toJson())}),
                  s_good);
    }
};

TEST_F(CliListTest, SaysThatThereIsNothing)
{
    EXPECT_EQ(run({"list"}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
    EXPECT_EQ(m_tavo.error(), "No messages.\n");
}

TEST_F(CliListTest, ListsMessagesInTheirOrderTheShownOneFirst)
{
    open("Door", "Somebody rings");
    open("Oven", "The cake\nis done");
    EXPECT_EQ(run({"list"}), s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], MatchesRegex("shown\t/notifications/.*\tDoor\tSomebody rings"));
    EXPECT_THAT(lines[1], MatchesRegex("1\t/notifications/.*\tOven\tThe cake\\\\nis done"));
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

TEST_F(CliListTest, TellsThatThereAreMore)
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
