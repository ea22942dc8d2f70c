// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

#include <QDateTime>
#include <QFile>

#include <limits>

namespace {
using testing::ElementsAre;
using testing::IsEmpty;

class AttentionQuietTest : public AttentionModuleTest
{
protected:
    AttentionQuietTest() { load(); }
};

TEST_F(AttentionQuietTest, IsOffByDefault)
{
    EXPECT_FALSE(doNotDisturb().on());
    EXPECT_EQ(doNotDisturb().until(), 0);
}

TEST_F(AttentionQuietTest, KeepsMessagesAndSoundsFromPeople)
{
    ASSERT_TRUE(setDoNotDisturb(true).succeeds());
    EXPECT_TRUE(doNotDisturb().on());
    EXPECT_TRUE(doNotDisturb().chosen());
    const auto outcome = notify(withSound(message("Mail"_s), "ping"_s));
    EXPECT_FALSE(outcome.shown());
    EXPECT_FALSE(outcome.sounding());
    EXPECT_EQ(outcome.reason(), "do-not-disturb is on"_s);
    EXPECT_EQ(endOf("Mail"_s).end(), End::Silenced);
}

TEST_F(AttentionQuietTest, CountsForRequestsThatAreSentAfterIt)
{
    const Request quiet(
        TavoAttentionSetDoNotDisturbPath(),
        TavoValue().setAttentionDoNotDisturb(TavoAttentionDoNotDisturb().setOn(true)));
    const auto outcome = notify(message("Mail"_s).setPath(CMPath("/mail/message"_s)));
    EXPECT_FALSE(outcome.shown());
}

TEST_F(AttentionQuietTest, LetsUrgentOnesPass)
{
    setDoNotDisturb(true);
    const auto outcome = notify(message("Fire"_s).setPriority(Priority::Urgent));
    EXPECT_TRUE(outcome.shown());
    EXPECT_EQ(outcome.reason(), "do-not-disturb is on, but its priority passes"_s);
}

TEST_F(AttentionQuietTest, LetsTheSecondCallPass)
{
    setDoNotDisturb(true);
    EXPECT_FALSE(notify(message("+49 30 1"_s, "phone"_s).setId("call"_s)).shown());
    EXPECT_FALSE(notify(message("+49 30 2"_s, "phone"_s).setId("call"_s)).shown());
    EXPECT_TRUE(notify(message("+49 30 1"_s, "phone"_s).setId("call"_s)).shown());
}

TEST_F(AttentionQuietTest, SilencesOnlySoundsIfToldSo)
{
    setSettings(R"({"doNotDisturb": {"silence": "sound"}})");
    setDoNotDisturb(true);
    const auto outcome = notify(withSound(message("Mail"_s), "ping"_s));
    EXPECT_TRUE(outcome.shown());
    EXPECT_FALSE(outcome.sounding());
    EXPECT_EQ(outcome.reason(), "do-not-disturb is on and silences sounds and speech"_s);
}

TEST_F(AttentionQuietTest, CountsAHiddenMessageAsMissedAlsoIfItsSoundIsHeard)
{
    setSettings(R"({"doNotDisturb": {"silence": "message"}})");
    setDoNotDisturb(true);
    const auto outcome = notify(withSound(message("Mail"_s), "ping"_s));
    EXPECT_FALSE(outcome.shown());
    EXPECT_EQ(outcome.reason(), "do-not-disturb is on and hides messages"_s);
    playing("ping"_s)->reportEnded();
    EXPECT_EQ(endOf("Mail"_s).end(), End::Expired);
    const auto records = history();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].state(), State::Silenced);
}

TEST_F(AttentionQuietTest, EndsAtTheChosenTime)
{
    ASSERT_TRUE(setDoNotDisturb(true, QDateTime::currentMSecsSinceEpoch() + 1000).succeeds());
    EXPECT_TRUE(doNotDisturb().on());
    EXPECT_TRUE(waitFor([] { return !doNotDisturb().on(); }));
}

TEST_F(AttentionQuietTest, FollowsAScheduleThatIsAlways)
{
    setSettings(R"({"doNotDisturb": {"times": [{"from": "00:00", "to": "24:00"}]}})");
    EXPECT_TRUE(doNotDisturb().on());
    EXPECT_FALSE(doNotDisturb().chosen());
    setSettings("{}");
    EXPECT_FALSE(doNotDisturb().on());
}

TEST_F(AttentionQuietTest, SumsUpWhatCame)
{
    setDoNotDisturb(true);
    notify(message("1"_s));
    notify(message("2"_s));
    notify(message("3"_s, "chat"_s));
    setDoNotDisturb(false);
    ASSERT_TRUE(waitFor([] { return !displayed().empty(); }));
    EXPECT_THAT(displayed(), ElementsAre("While you were not to be disturbed"_s));
    EXPECT_EQ(rowOf(displayedPath()).title().toString(), "chat: 1\nmail: 2"_s);
}

TEST_F(AttentionQuietTest, SumsUpAThousandPrograms)
{
    constexpr int most = 1000;
    for (const QString &time : {"first"_s, "second"_s}) {
        setDoNotDisturb(true);
        for (int number = 0; number <= most / 2; ++number) {
            const QString program = time + QString::number(number);
            notify(message(program, program));
        }
        setDoNotDisturb(false);
    }
    ASSERT_TRUE(waitFor([] { return !displayed().empty(); }));
    EXPECT_TRUE(waitFor([] {
        const QString text = rowOf(displayedPath()).title().toString();
        return text.contains("second"_s) && text.count('\n') == most - 1;
    }));
}

TEST_F(AttentionQuietTest, SumsUpTheProgramsOfOneUserWhateverNamesAnotherMakesUp)
{
    setDoNotDisturb(true);
    for (int number = 0; number < 1000; ++number) {
        const QString program = "%1 "_s.arg(number) + QString(200, u'\u4e2d');
        notify(message(program, program).setUser("1000"_s));
    }
    notify(message("1"_s, "mail"_s).setUser("1001"_s));
    setDoNotDisturb(false);
    ASSERT_TRUE(waitFor([] { return !displayed().empty(); }));
    const QString text = rowOf(displayedPath()).title().toString();
    EXPECT_TRUE(text.endsWith("mail: 1"_s));
    EXPECT_LT(text.size(), 10000);
}

TEST_F(AttentionQuietTest, SumsUpTheProgramsOfOneUserWhateverNamesManyOthersMakeUp)
{
    setDoNotDisturb(true);
    for (int user = 0; user < 10; ++user) {
        for (int number = 0; number < 100; ++number) {
            const QString program = "%1 %2"_s.arg(user).arg(number);
            notify(message(program, program).setUser(QString::number(user)));
        }
    }
    notify(message("1"_s, "mail"_s).setUser("1001"_s));
    setDoNotDisturb(false);
    ASSERT_TRUE(waitFor([] { return !displayed().empty(); }));
    EXPECT_TRUE(rowOf(displayedPath()).title().toString().endsWith("mail: 1"_s));
}

TEST_F(AttentionQuietTest, SumsUpNothingIfNothingCame)
{
    setDoNotDisturb(true);
    setDoNotDisturb(false);
    settle();
    EXPECT_THAT(displayed(), IsEmpty());
}

TEST_F(AttentionQuietTest, KeepsAChoiceOverARestart)
{
    setDoNotDisturb(true);
    load();
    EXPECT_TRUE(doNotDisturb().on());
    EXPECT_TRUE(doNotDisturb().chosen());
    setDoNotDisturb(false);
    load();
    EXPECT_FALSE(doNotDisturb().on());
}

TEST_F(AttentionQuietTest, KeepsAChoiceForTheLongestTimeOverARestart)
{
    ASSERT_TRUE(setDoNotDisturb(true, std::numeric_limits<qint64>::max()).succeeds());
    load();
    EXPECT_TRUE(doNotDisturb().on());
}

TEST_F(AttentionQuietTest, KeepsTheLastOfManyChoicesOverARestart)
{
    for (int times = 0; times < 20; ++times) {
        ASSERT_TRUE(setDoNotDisturb(times % 2 != 0).succeeds());
    }
    unload();
    load();
    EXPECT_TRUE(doNotDisturb().on());
}

TEST_F(AttentionQuietTest, KeepsNoChoiceWhoseTimeIsOver)
{
    const qint64 until = QDateTime::currentMSecsSinceEpoch() + 200;
    setDoNotDisturb(true, until);
    unload();
    ASSERT_TRUE(waitFor([until] { return QDateTime::currentMSecsSinceEpoch() > until; }));
    load();
    EXPECT_FALSE(doNotDisturb().on());
}

TEST_F(AttentionQuietTest, SumsUpAlsoWhatCameBeforeARestart)
{
    setDoNotDisturb(true);
    notify(message("1"_s));
    load();
    EXPECT_THAT(displayed(), IsEmpty());
    notify(message("2"_s));
    setDoNotDisturb(false);
    ASSERT_TRUE(waitFor([] { return !displayed().empty(); }));
    EXPECT_EQ(rowOf(displayedPath()).title().toString(), "mail: 2"_s);
}

TEST_F(AttentionQuietTest, SumsUpAtTheStartIfItIsOverByThen)
{
    setSettings(R"({"doNotDisturb": {"times": [{"from": "00:00", "to": "24:00"}]}})");
    notify(message("1"_s));
    unload();
    writeSettings("{}");
    load();
    ASSERT_TRUE(waitFor([] { return !displayed().empty(); }));
    EXPECT_EQ(rowOf(displayedPath()).title().toString(), "mail: 1"_s);
    load();
    settle();
    EXPECT_THAT(displayed(), IsEmpty()) << "once";
}

TEST_F(AttentionQuietTest, StartsWithoutAChoiceIfItsFileIsDamaged)
{
    setDoNotDisturb(true);
    unload();
    QFile file(historyFile() + "-do-not-disturb.json"_s);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_EQ(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
    file.resize(10);
    file.close();
    load();
    EXPECT_FALSE(doNotDisturb().on());
}

TEST_F(AttentionQuietTest, RefusesAChoiceWithoutSense)
{
    EXPECT_EQ(Request(TavoAttentionSetDoNotDisturbPath(), QVariant()).errorText(),
              "The request does not say whether it is to be on");
    EXPECT_EQ(setDoNotDisturb(true, 1000).errorText(), "The time is over");
}
} // namespace
