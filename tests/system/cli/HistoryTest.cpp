// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "AttentionTest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class CliHistoryTest : public CliAttentionTest
{
protected:
    /// Sends notifications that nobody sees.
    void miss(const QStringList &titles)
    {
        setDoNotDisturb("on");
        for (const QString &title : titles) {
            notify({title, "text of " + title, "--source", "mail"});
        }
        setDoNotDisturb("off");
    }

    void missLongTexts(int count)
    {
        setDoNotDisturb("on");
        for (int index = 0; index < count; ++index) {
            notify({QString::number(index), QString(4000, QChar(0x20AC)), "--priority", "urgent"});
        }
    }
};

TEST_F(CliHistoryTest, SaysThatThereAreNoNotifications)
{
    EXPECT_EQ(run({"history"}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
    EXPECT_EQ(m_tavo.error(), "No notifications.\n");
}

TEST_F(CliHistoryTest, ListsTheNewestFirst)
{
    miss({"one"});
    notify({"two", "second\nline", "--app", "Door"});
    EXPECT_EQ(run({"history"}), s_good);
    const auto lines = m_tavo.lines();
    ASSERT_EQ(lines.size(), 2U);
    const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}\t";
    EXPECT_THAT(lines[0], MatchesRegex(time + "shown\tDoor\ttwo\tsecond\\\\nline"));
    EXPECT_THAT(lines[1], MatchesRegex(time + "silenced\ttavo\tone\ttext of one"));
}

TEST_F(CliHistoryTest, FindsWordsAndSources)
{
    miss({"parcel", "letter"});
    notify({"Parcel", "--source", "door"});
    EXPECT_EQ(run({"history", "--search", "parc"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 2U);
    EXPECT_EQ(run({"history", "--search", "parc", "--source", "door"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 1U);
    EXPECT_EQ(run({"history", "--missed"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 2U);
}

TEST_F(CliHistoryTest, SaysThatThereAreMore)
{
    miss({"one", "two"});
    EXPECT_EQ(run({"history", "--limit", "1"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 1U);
    EXPECT_EQ(m_tavo.error(), "There are more: see --limit.\n");
    EXPECT_EQ(run({"history", "--limit", "1", "--json"}), s_good);
    const QJsonObject past = json().toObject();
    EXPECT_EQ(past.value("more"), true);
    ASSERT_EQ(past.value("notifications").toArray().size(), 1);
    const QJsonObject newest = past.value("notifications").toArray().at(0).toObject();
    EXPECT_EQ(newest.value("title"), "two");
    EXPECT_EQ(newest.value("state"), "silenced");
}

/// More than the host sends in one reply, so several pages.
TEST_F(CliHistoryTest, ReadsPagesUntilAllAreThere)
{
    constexpr int count = 40;
    missLongTexts(count);
    EXPECT_EQ(run({"history", "--json"}), s_good) << m_tavo.error();
    const QJsonArray past = json().toObject().value("notifications").toArray();
    ASSERT_EQ(past.size(), count);
    for (int index = 0; index < count; ++index) {
        EXPECT_EQ(past[index].toObject().value("title"), QString::number(count - 1 - index));
    }
}

TEST_F(CliHistoryTest, TheLargestPageOfLongTextsFits)
{
    missLongTexts(40);
    EXPECT_EQ(run({"call", "/attention/history", R"({"attentionQuery": {"limit": 200}})"}), s_good)
        << m_tavo.error();
}

class CliSmallMessagesTest : public CliHistoryTest
{
protected:
    CliSmallMessagesTest() { m_limits = {{"messageBytes", 65536}}; }
};

TEST_F(CliSmallMessagesTest, AUsualPageOfLongTextsFits)
{
    constexpr int count = 10;
    missLongTexts(count);
    EXPECT_EQ(run({"call", "/attention/history"}), s_good) << m_tavo.error();
    EXPECT_EQ(run({"history", "--json"}), s_good) << m_tavo.error();
    EXPECT_EQ(json().toObject().value("notifications").toArray().size(), count);
}

TEST_F(CliHistoryTest, MissedCountsAndListsWhatNobodyHasSeen)
{
    miss({"one", "two"});
    EXPECT_EQ(run({"missed", "--limit", "1"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 1U);
    EXPECT_EQ(m_tavo.error(), "There are more: see --limit.\n2 missed.\n");
    EXPECT_EQ(run({"missed", "--json"}), s_good);
    EXPECT_EQ(json().toObject().value("count"), 2);
}

TEST_F(CliHistoryTest, MissedMarksWhatItHasListedAsSeen)
{
    miss({"one", "two"});
    EXPECT_EQ(run({"missed", "--seen"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 2U);
    EXPECT_EQ(run({"missed"}), s_good);
    EXPECT_EQ(m_tavo.output(), "");
    EXPECT_EQ(m_tavo.error(), "Nothing was missed.\n");
    EXPECT_EQ(run({"history"}), s_good);
    EXPECT_THAT(m_tavo.lines(), ElementsAre(HasSubstr("\tseen\t"), HasSubstr("\tseen\t")));
}

TEST_F(CliTest, AttentionCommandsSayThatTheHostDoesNotRunTheModule)
{
    startHost();
    const std::vector<QStringList> commands{{"history"},
                                            {"missed"},
                                            {"dnd"},
                                            {"dnd", "on"},
                                            {"rules", "list"},
                                            {"rules", "test", "Door"},
                                            {"notify", "Door"},
                                            {"notify", "--wait", "Door"}};
    for (const QStringList &command : commands) {
        EXPECT_EQ(run(command), s_refused) << command.join(' ').toStdString();
        EXPECT_EQ(m_tavo.error(), "tavo: this host does not run the module attention. Add "
                                  "\"attention\" to \"modules\" in its configuration, and start it "
                                  "again\n");
    }
    EXPECT_EQ(run({"get", "/attention/nothing"}), s_refused);
    EXPECT_THAT(m_tavo.error(), StartsWith("tavo: there is no node at /attention/nothing. "));
}
