// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

/// Three messages of a source are shown as one.
class AttentionGroupsTest : public AttentionModuleTest
{
protected:
    AttentionGroupsTest()
    {
        setSettings(R"({"groupFrom": 3})");
        load();
    }

    /// Sends messages with these titles, and waits until they are shown as one.
    void notifyGroup(const QStringList &titles)
    {
        for (const QString &title : titles) {
            notify(message(title));
        }
        ASSERT_TRUE(shows("%1 messages of mail"_s.arg(titles.size())));
    }

    static bool shows(const QString &title)
    {
        return waitFor([&title] {
            const auto titles = displayed();
            return std::find(titles.begin(), titles.end(), title) != titles.end();
        });
    }

    /// The titles that a group's node lists.
    static QStringList listed(const CMPath &group)
    {
        QStringList titles;
        for (int row = 1; !rowOf(group, row).path().isEmpty(); ++row) {
            titles.append(rowOf(group, row).title().toString());
        }
        return titles;
    }

    static bool openMember(const CMPath &group, int row)
    {
        const Request request(rowOf(group, row).path(), QVariant());
        return request.succeeds();
    }

    State::Enum stateOf(const QString &id)
    {
        for (const auto &record : history()) {
            if (record.id() == id) {
                return record.state();
            }
        }
        return State::Unknown;
    }
};

TEST_F(AttentionGroupsTest, ShowManyMessagesOfASourceAsOne)
{
    notify(message("chat"_s, "chat"_s));
    notify(message("1"_s));
    notify(message("2"_s));
    EXPECT_THAT(displayed(), ElementsAre("chat"_s, "1"_s, "2"_s));
    EXPECT_TRUE(notify(message("3"_s)).shown());
    EXPECT_THAT(displayed(), ElementsAre("chat"_s, "3 messages of mail"_s));
    notify(message("4"_s));
    EXPECT_THAT(displayed(), ElementsAre("chat"_s, "4 messages of mail"_s)) << "at once";
    EXPECT_EQ(listed(displayedPath(1)), QStringList({"4"_s, "3"_s, "2"_s, "1"_s}));
    EXPECT_THAT(ends(), IsEmpty());
}

TEST_F(AttentionGroupsTest, OpenEachToRead)
{
    notifyGroup({"1"_s, "2"_s, "3"_s});
    const CMPath group = displayedPath();
    ASSERT_TRUE(openMember(group, 2));
    EXPECT_TRUE(shows("2"_s));
    EXPECT_THAT(displayed(), ElementsAre("2"_s, "2 messages of mail"_s));
    EXPECT_EQ(rowOf(displayedPath()).title().toString(), "text"_s);
    CMSubscribe::closeNode(displayedPath());
    EXPECT_EQ(endOf("2"_s).end(), End::Dismissed);
    EXPECT_THAT(displayed(), ElementsAre("2 messages of mail"_s));
    EXPECT_EQ(ends().size(), 1);
}

TEST_F(AttentionGroupsTest, CountWhatWasOpenedAsSeen)
{
    for (const char *title : {"1", "2", "3"}) {
        notify(message(QString(title)).setTimeout(50));
    }
    ASSERT_TRUE(openMember(displayedPath(), 1));
    EXPECT_EQ(endOf("3"_s).end(), End::Expired);
    EXPECT_EQ(stateOf("3"_s), State::Seen);
    EXPECT_EQ(endOf("2"_s).end(), End::Expired);
    EXPECT_EQ(stateOf("2"_s), State::Expired);
}

TEST_F(AttentionGroupsTest, CloseAllOfTheirMessages)
{
    notifyGroup({"1"_s, "2"_s, "3"_s});
    CMSubscribe::closeNode(displayedPath());
    for (const char *id : {"1", "2", "3"}) {
        EXPECT_EQ(endOf(QString(id)).end(), End::Dismissed);
        EXPECT_EQ(stateOf(QString(id)), State::Dismissed);
    }
    EXPECT_THAT(displayed(), IsEmpty());
    EXPECT_EQ(CMCatalog::children(TavoAttentionMessagesPath()).size(), 0U) << "no node is left";
}

TEST_F(AttentionGroupsTest, ReportTheActionOfAnOpenedMessage)
{
    notify(message("1"_s));
    notify(message("2"_s));
    notify(message("3"_s).setActions(
        {TavoAttentionAction().setKey("reply"_s).setLabel(TrString("Reply"))}));
    ASSERT_TRUE(shows("3 messages of mail"_s));
    ASSERT_TRUE(openMember(displayedPath(), 1));
    ASSERT_TRUE(shows("3"_s));
    EXPECT_TRUE(Request(rowOf(displayedPath(), 1).path(), QVariant()).succeeds());
    EXPECT_EQ(endOf("3"_s).end(), End::ActedOn);
    EXPECT_EQ(ends().last().action(), "reply"_s);
}

TEST_F(AttentionGroupsTest, LoseWhatItsRequesterCloses)
{
    notifyGroup({"1"_s, "2"_s, "3"_s});
    EXPECT_TRUE(requestClose("1"_s).succeeds());
    EXPECT_EQ(endOf("1"_s).end(), End::Closed);
    EXPECT_TRUE(shows("2 messages of mail"_s));
    EXPECT_TRUE(requestClose("2"_s).succeeds());
    EXPECT_TRUE(shows("3"_s)) << "one message is no group";
    EXPECT_THAT(displayed(), ElementsAre("3"_s));
    EXPECT_EQ(ends().size(), 2);
}

TEST_F(AttentionGroupsTest, FollowWhatReplacesAMessage)
{
    notifyGroup({"1"_s, "2"_s, "3"_s});
    const auto replace = [](const TavoAttentionItem &item) {
        return Request(TavoAttentionReplacePath(), TavoValue().setAttentionItem(item)).succeeds();
    };
    EXPECT_TRUE(replace(message("1"_s).setTitle(TrString("other"))));
    const CMPath group = displayedPath();
    EXPECT_TRUE(waitFor([&] { return listed(group).last() == "other"_s; }));
    EXPECT_TRUE(replace(message("2"_s).setPriority(Priority::Urgent)));
    EXPECT_TRUE(shows("2"_s));
    EXPECT_THAT(displayed(), ElementsAre("2"_s, "2 messages of mail"_s));
    EXPECT_THAT(ends(), IsEmpty());
}

TEST_F(AttentionGroupsTest, LeaveOutWhatIsUrgentOrMustBeSeen)
{
    setSettings(R"({"groupFrom": 2, "rules": [
        {"name": "leak", "when": {"words": ["leak"]}, "then": {"mustSee": true}}]})");
    notify(message("leak 1"_s));
    notify(message("leak 2"_s));
    notify(message("1"_s).setPriority(Priority::Urgent));
    notify(message("2"_s).setPriority(Priority::Urgent));
    EXPECT_THAT(displayed(), ElementsAre("1"_s, "2"_s, "leak 1"_s, "leak 2"_s));
}

TEST_F(AttentionGroupsTest, AreMadeAsRulesSay)
{
    setSettings(R"({"groupFrom": 0, "rules": [
        {"name": "home", "when": {"source": ["door", "oven"]},
         "then": {"group": "Home", "groupFrom": 2}}]})");
    notify(message("ring"_s, "door"_s));
    notify(message("done"_s, "oven"_s));
    for (const char *title : {"1", "2", "3", "4"}) {
        notify(message(QString(title)));
    }
    EXPECT_THAT(displayed(), ElementsAre("2 messages of Home"_s, "1"_s, "2"_s, "3"_s, "4"_s));
}

TEST_F(AttentionGroupsTest, HideNothingOfAnotherSource)
{
    for (const char *title : {"1", "2", "3"}) {
        notify(message(QString(title), QString(title)).setGroup("all"_s));
    }
    EXPECT_THAT(displayed(), ElementsAre("1"_s, "2"_s, "3"_s));
}

TEST_F(AttentionGroupsTest, EndWithTheDisplay)
{
    notifyGroup({"1"_s, "2"_s, "3"_s});
    unloadNotifications();
    EXPECT_EQ(endOf("1"_s).end(), End::Failed);
    EXPECT_EQ(endOf("3"_s).end(), End::Failed);
}

TEST_F(AttentionGroupsTest, AreGoneWithTheModule)
{
    notifyGroup({"1"_s, "2"_s, "3"_s});
    unload();
    settle();
    EXPECT_THAT(displayed(), IsEmpty());
}
} // namespace
