// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

#include <algorithm>

namespace {
using testing::IsEmpty;
using testing::SizeIs;

class AttentionHistoryTest : public AttentionModuleTest
{
protected:
    AttentionHistoryTest() { load(); }

    State::Enum stateOf(const QString &id)
    {
        for (const auto &record : history()) {
            if (record.id() == id) {
                return record.state();
            }
        }
        return State::Unknown;
    }

    /// A rule for messages with one of the words.
    void setMustSee()
    {
        setSettings(
            R"({"rules": [{"name": "leak", "when": {"words": ["leak"]}, "then": {"mustSee": true}}]})");
    }

    static void replace(const TavoAttentionItem &item)
    {
        const Request request(TavoAttentionReplacePath(), TavoValue().setAttentionItem(item));
        EXPECT_TRUE(request.succeeds()) << request.errorText();
    }

    static TavoAttentionItem changed(const QString &id, const QString &title)
    {
        return message(title).setId(id);
    }

    void openOfOneUser(int number)
    {
        const QString name = "leak %1"_s.arg(number);
        notify(message(name, name).setUser("1000"_s));
    }

    void openManyOfOneUser(int count)
    {
        for (int number = 0; number < count; ++number) {
            openOfOneUser(number);
        }
    }

    /// Waits until so many are displayed, and none of before a restart.
    static bool shows(std::size_t count)
    {
        return waitFor([count] {
            const std::vector<QString> titles = displayed();
            return titles.size() == count &&
                   std::find(titles.begin(), titles.end(), QString()) == titles.end();
        });
    }

    static int missed() { return valueAt(TavoAttentionMissedPath()).int_(); }
};

TEST_F(AttentionHistoryTest, RemembersWhatCameAndWhatBecameOfIt)
{
    notify(message("open"_s));
    notify(message("expired"_s).setPriority(Priority::Urgent).setTimeout(1));
    endOf("expired"_s);
    notify(message("closed"_s));
    requestClose("closed"_s).succeeds();
    setDoNotDisturb(true);
    notify(message("silenced"_s));
    EXPECT_EQ(stateOf("open"_s), State::Shown);
    EXPECT_EQ(stateOf("expired"_s), State::Expired);
    EXPECT_EQ(stateOf("closed"_s), State::Dismissed);
    EXPECT_EQ(stateOf("silenced"_s), State::Silenced);
    const auto newest = history(TavoAttentionQuery().setLimit(1));
    ASSERT_THAT(newest, SizeIs(1));
    EXPECT_EQ(newest[0].title(), "silenced"_s);
    EXPECT_EQ(newest[0].text(), "text"_s);
    EXPECT_EQ(newest[0].source(), "mail"_s);
    EXPECT_GT(newest[0].time(), 0);
}

TEST_F(AttentionHistoryTest, OneUserFillsAtMostATenth)
{
    constexpr int tenth = 1000;
    notify(message("first"_s).setUser("1000"_s));
    for (int i = 0; i <= tenth; ++i) {
        const QString name = "made up %1"_s.arg(i);
        EXPECT_TRUE(notify(message(name).setUser("1001"_s).setSource(name)).shown());
    }
    EXPECT_FALSE(log().find("The user 1001 sends too many notifications").empty());
    notify(message("last"_s).setUser("1000"_s));
    const auto newest = history(TavoAttentionQuery().setLimit(2));
    ASSERT_THAT(newest, SizeIs(2));
    EXPECT_EQ(newest[0].title(), "last"_s);
    EXPECT_EQ(newest[1].title(), "made up %1"_s.arg(tenth - 1));
}

TEST_F(AttentionHistoryTest, OneUserFillsAtMostATenthOfItsBytes)
{
    constexpr int most = 400;
    const TrString text(QString(4000, QLatin1Char('x')));
    for (int i = 0; i < most; ++i) {
        const QString name = "made up %1"_s.arg(i);
        notify(message(name).setText(text).setUser("1001"_s).setSource(name));
    }
    EXPECT_FALSE(log().find("The user 1001 sends too many notifications").empty());
    const auto newest = history(TavoAttentionQuery().setLimit(1));
    ASSERT_THAT(newest, SizeIs(1));
    EXPECT_EQ(newest[0].title(), "made up 332"_s);
}

TEST_F(AttentionHistoryTest, OneUserFillsAtMostATenthOfItsBytesWithNames)
{
    constexpr int most = 400;
    const QString name(250, QChar(0x20AC));
    for (int i = 0; i < most; ++i) {
        notify(message("private"_s)
                   .setId(name + QString::number(i))
                   .setUser("1001"_s)
                   .setSource(QString::number(i) + name)
                   .setApplication(name)
                   .setCategory(name)
                   .setGroup(name)
                   .setTransient(true));
    }
    EXPECT_FALSE(log().find("The user 1001 sends too many notifications").empty());
    const auto newest = history(TavoAttentionQuery().setLimit(1));
    ASSERT_THAT(newest, SizeIs(1));
    EXPECT_EQ(newest[0].id(), name + "332"_s);
}

TEST_F(AttentionHistoryTest, ReportsThatItHasChanged)
{
    const auto changes = [] {
        return valueAt(TavoAttentionHistoryStatePath()).attentionHistory().changes();
    };
    notify(message("1"_s));
    EXPECT_TRUE(waitFor([&] { return changes() == 1; }));
    requestClose("1"_s).succeeds();
    EXPECT_TRUE(waitFor([&] { return changes() == 2; }));
    EXPECT_EQ(stateOf("1"_s), State::Dismissed);
}

TEST_F(AttentionHistoryTest, CountsWhatNobodyHasSeen)
{
    setDoNotDisturb(true);
    notify(message("1"_s));
    notify(message("2"_s));
    EXPECT_TRUE(waitFor([] { return missed() == 2; }));
    EXPECT_THAT(history(TavoAttentionQuery().setMissed(true)), SizeIs(2));
    EXPECT_TRUE(Request(TavoAttentionMarkSeenPath(), QVariant()).succeeds());
    EXPECT_TRUE(waitFor([] { return missed() == 0; }));
    EXPECT_EQ(stateOf("1"_s), State::Seen);
}

TEST_F(AttentionHistoryTest, KeepsNoTextOfTransientAndPrivateOnes)
{
    setSettings(
        R"({"rules": [{"name": "bank", "when": {"source": ["bank"]}, "then": {"private": true}}]})");
    notify(message("transient"_s).setTransient(true));
    notify(message("bank"_s, "bank"_s));
    const auto records = history();
    ASSERT_THAT(records, SizeIs(2));
    for (const auto &record : records) {
        EXPECT_EQ(record.title(), QString());
        EXPECT_EQ(record.text(), QString());
    }
}

TEST_F(AttentionHistoryTest, SurvivesARestart)
{
    notify(message("Parcel"_s));
    requestClose("Parcel"_s).succeeds();
    load();
    EXPECT_EQ(stateOf("Parcel"_s), State::Dismissed);
}

TEST_F(AttentionHistoryTest, CountsWhatWasOpenAtTheEndAsMissed)
{
    notify(message("Parcel"_s));
    load();
    EXPECT_TRUE(waitFor([] { return missed() == 1; }));
    EXPECT_EQ(stateOf("Parcel"_s), State::LeftOpen);
    EXPECT_TRUE(Request(TavoAttentionMarkSeenPath(), QVariant()).succeeds());
    EXPECT_EQ(stateOf("Parcel"_s), State::Seen);
}

TEST_F(AttentionHistoryTest, FindsWords)
{
    notify(message("Parcel"_s));
    notify(message("Doorbell"_s));
    EXPECT_THAT(history(TavoAttentionQuery().setSearch("door"_s)), SizeIs(1));
    EXPECT_THAT(history(TavoAttentionQuery().setSearch("window"_s)), IsEmpty());
    EXPECT_THAT(history(TavoAttentionQuery().setSource("chat"_s)), IsEmpty());
}

TEST_F(AttentionHistoryTest, OpensAgainWhatMustBeSeen)
{
    setSettings(
        R"({"rules": [{"name": "leak", "when": {"source": ["leak"]}, "then": {"mustSee": true}}]})");
    notify(message("Water"_s, "leak"_s).setTimeout(1));
    notify(message("Mail"_s));
    load();
    ASSERT_TRUE(waitFor([] { return displayed() == std::vector{"Water"_s}; }));
    CMSubscribe::closeNode(displayedPath());
    EXPECT_EQ(endOf("Water"_s).end(), End::Dismissed);
    load();
    EXPECT_EQ(stateOf("Water"_s), State::Dismissed);
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(AttentionHistoryTest, OpensAgainWhatMustBeSeenAsItWasLast)
{
    setMustSee();
    notify(message("leak"_s));
    replace(changed("leak"_s, "leak in the cellar"_s).setText("shut the valve"_s));
    load();
    ASSERT_TRUE(waitFor([] { return displayed() == std::vector{"leak in the cellar"_s}; }));
    EXPECT_EQ(rowOf(displayedPath()).title().toString(), "shut the valve"_s);
    replace(changed("leak"_s, "leak everywhere"_s));
    load();
    EXPECT_TRUE(waitFor([] { return displayed() == std::vector{"leak everywhere"_s}; }));
}

TEST_F(AttentionHistoryTest, OpensAgainWhatMustBeSeenOnlySinceAChange)
{
    setMustSee();
    notify(message("dry"_s));
    replace(changed("dry"_s, "leak"_s));
    load();
    EXPECT_TRUE(waitFor([] { return displayed() == std::vector{"leak"_s}; }));
}

TEST_F(AttentionHistoryTest, DoesNotOpenAgainWhatNeedNotBeSeenAnyMore)
{
    setMustSee();
    notify(message("leak"_s));
    replace(changed("leak"_s, "dry"_s));
    notify(message("other leak"_s));
    load();
    EXPECT_TRUE(waitFor([] { return displayed() == std::vector{"other leak"_s}; }));
    EXPECT_EQ(stateOf("leak"_s), State::LeftOpen);
}

TEST_F(AttentionHistoryTest, OpensAgainOlderOnesOfAUserWhoseOthersAreClosed)
{
    constexpr int most = 100;
    constexpr int closed = 10;
    setMustSee();
    openManyOfOneUser(most + 2 * closed);
    for (int number = 0; number < closed; ++number) {
        requestClose("leak %1"_s.arg(number)).succeeds();
    }
    load();
    ASSERT_TRUE(shows(most));
    EXPECT_THAT(displayed(), testing::Contains("leak %1"_s.arg(most + closed - 1)));
    EXPECT_THAT(displayed(), testing::Not(testing::Contains("leak %1"_s.arg(most + closed))));
}

TEST_F(AttentionHistoryTest, OpensAgainWhatOnlyItsUserMayChange)
{
    setMustSee();
    notify(message("leak"_s).setUser("1000"_s));
    load();
    ASSERT_TRUE(waitFor([] { return displayed() == std::vector{"leak"_s}; }));
    const auto other = TavoValue().setAttentionItem(changed("leak"_s, "dry"_s).setUser("1001"_s));
    const Request refused(TavoAttentionReplacePath(), other);
    EXPECT_EQ(refused.errorText(), "The notification is another user's");
    replace(changed("leak"_s, "leak in the cellar"_s).setUser("1000"_s));
    EXPECT_TRUE(waitFor([] { return displayed() == std::vector{"leak in the cellar"_s}; }));
}

TEST_F(AttentionHistoryTest, OpensAgainNoMoreOfAUserAfterTheSecondRestart)
{
    constexpr int most = 100;
    setMustSee();
    openManyOfOneUser(most);
    load();
    ASSERT_TRUE(shows(most));
    openOfOneUser(most);
    notify(message("own leak"_s));
    load();
    ASSERT_TRUE(waitFor([] {
        const std::vector<QString> titles = displayed();
        return std::find(titles.begin(), titles.end(), "own leak"_s) != titles.end();
    }));
    EXPECT_THAT(displayed(), SizeIs(most + 1));
    EXPECT_THAT(displayed(), testing::Not(testing::Contains("leak %1"_s.arg(most))));
}

TEST_F(AttentionHistoryTest, OpensAgainOnesOfAUserWhoseOthersNeedNotBeSeenAnyMore)
{
    constexpr int most = 100;
    setMustSee();
    openManyOfOneUser(most + 1);
    replace(changed("leak 0"_s, "dry"_s).setUser("1000"_s));
    load();
    ASSERT_TRUE(shows(most));
    EXPECT_THAT(displayed(), testing::Contains("leak %1"_s.arg(most)));
}

TEST_F(AttentionHistoryTest, OpensAgainAHundredOfAnotherUser)
{
    setSettings(R"({"rules": [{"name": "all", "when": {}, "then": {"mustSee": true}}]})");
    constexpr std::size_t most = 100;
    for (std::size_t number = 0; number <= most; ++number) {
        const QString name = QString::number(number);
        notify(message(name, name).setUser("1000"_s));
    }
    notify(message("own"_s));
    notify(message("other"_s).setUser("1001"_s));
    load();
    EXPECT_TRUE(waitFor([] { return displayed().size() == most + 2; }));
    EXPECT_THAT(displayed(), testing::IsSupersetOf({"own"_s, "other"_s}));
}
} // namespace
