// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/attention/AttentionModuleTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AttentionRulesTest : public AttentionModuleTest
{
protected:
    static TavoAttentionTrial tryItem(const TavoAttentionItem &item)
    {
        const Request request(TavoAttentionTryPath(), TavoValue().setAttentionItem(item));
        EXPECT_TRUE(request.succeeds());
        return TavoValue(request.value().toHash()).attentionTrial();
    }

    static TavoAttentionRules rules() { return valueAt(TavoAttentionRulesPath()).attentionRules(); }
};

TEST_F(AttentionRulesTest, ApplyToMessageAndSound)
{
    setSettings(R"({"rules": [
        {"name": "door", "when": {"source": ["door"]},
         "then": {"priority": "Urgent", "sound": "/sounds/gong.wav", "attenuation": 20}},
        {"name": "no mail", "when": {"source": ["mail"]}, "then": {"drop": true}}]})");
    load();
    const auto outcome = notify(withSound(message("Ring"_s, "door"_s), "bell"_s));
    EXPECT_THAT(elementsOf(outcome.rules()), ElementsAre("door"_s));
    EXPECT_EQ(playing("bell"_s)->content, "/sounds/gong.wav"_s);
    EXPECT_DOUBLE_EQ(playing("bell"_s)->gain, 0.1);
    EXPECT_EQ(valueAt(TavoNotificationDisplayCurrentPath()).displayCurrent().priority(),
              Priority::Urgent);

    const auto dropped = notify(withSound(message("Mail"_s), "mail"_s));
    EXPECT_FALSE(dropped.shown());
    EXPECT_FALSE(dropped.sounding());
    EXPECT_EQ(dropped.reason(), "a rule"_s);
    EXPECT_EQ(endOf("Mail"_s).end(), End::Silenced);
}

TEST_F(AttentionRulesTest, MayHideAMessageAndShowItAgain)
{
    setSettings(
        R"({"rules": [{"name": "low", "when": {"maxPriority": "Low"}, "then": {"hide": true}}]})");
    load();
    const auto replaceWith = [](Priority::Enum priority) {
        return Request(TavoAttentionReplacePath(),
                       TavoValue().setAttentionItem(message("Door"_s).setPriority(priority)));
    };
    notify(withSound(message("Door"_s), "bell"_s));
    EXPECT_TRUE(replaceWith(Priority::Low).succeeds());
    EXPECT_TRUE(waitFor([] { return displayed().empty(); }));
    EXPECT_TRUE(replaceWith(Priority::Normal).succeeds());
    EXPECT_TRUE(waitFor([] { return displayed() == std::vector{"Door"_s}; }));
    EXPECT_EQ(CMCatalog::children(TavoAttentionMessagesPath()).size(), 1U) << "no node is left";
}

TEST_F(AttentionRulesTest, AreCounted)
{
    setSettings(R"({"rules": [{"name": "all"}, {"name": "door", "when": {"source": ["door"]}}]})");
    load();
    notify(message("1"_s));
    notify(message("2"_s, "door"_s));
    const auto list = elementsOf(rules().rules());
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name(), "all"_s);
    EXPECT_EQ(list[0].count(), 2);
    EXPECT_EQ(list[1].count(), 1);
}

TEST_F(AttentionRulesTest, ThatHaveGoneAreNotNamedByWhatGivesWay)
{
    setSettings(R"({"rules": [{"name": "mail", "when": {"source": ["mail"]}},
                              {"name": "door", "when": {"source": ["door"]}}]})");
    load();
    EXPECT_THAT(elementsOf(notify(message("Ring"_s, "door"_s)).rules()), ElementsAre("door"_s));
    setSettings("{}");
    const auto lower = message("Ring"_s).setPriority(Priority::Low).setGivesWay(true);
    const Request request(TavoAttentionReplacePath(), TavoValue().setAttentionItem(lower));
    ASSERT_TRUE(request.succeeds()) << request.errorText();
    const auto outcome = TavoValue(request.value().toHash()).attentionOutcome();
    EXPECT_TRUE(outcome.shown());
    EXPECT_THAT(elementsOf(outcome.rules()), IsEmpty());
}

TEST_F(AttentionRulesTest, AreReadAgainWhenTheirFileChanges)
{
    load();
    EXPECT_TRUE(notify(message("1"_s)).shown());
    setSettings(R"({"rules": [{"name": "nothing", "then": {"drop": true}}]})");
    EXPECT_FALSE(notify(message("2"_s)).shown());
}

TEST_F(AttentionRulesTest, StayWhenTheirFileIsWrong)
{
    setSettings(R"({"rules": [{"name": "nothing", "then": {"drop": true}}]})");
    load();
    setSettings("{\n\"rules\": 5}");
    EXPECT_THAT(rules().error().toStdString(),
                HasSubstr("attention.json:2: rules: must be a list"));
    EXPECT_FALSE(notify(message("1"_s)).shown());
    setSettings("{}");
    EXPECT_EQ(rules().error(), QString());
    EXPECT_TRUE(notify(message("2"_s)).shown());
}

TEST_F(AttentionRulesTest, StayWhenTheirFileIsGoneAndAreReadWhenItIsBack)
{
    setSettings(R"({"rules": [{"name": "nothing", "then": {"drop": true}}]})");
    load();
    ASSERT_TRUE(QFile::remove(settingsFile()));
    ASSERT_TRUE(waitFor([this] { return !log().find("the previous settings stay").empty(); }));
    EXPECT_FALSE(notify(message("1"_s)).shown());
    setSettings("{}");
    EXPECT_TRUE(notify(message("2"_s)).shown());
}

TEST_F(AttentionRulesTest, AreReadWhenTheirFileAndItsFolderAreMadeLater)
{
    load();
    QDir().mkpath(QFileInfo(settingsFile()).path());
    setSettings(R"({"rules": [{"name": "nothing", "then": {"drop": true}}]})");
    EXPECT_FALSE(notify(message("1"_s)).shown());
}

TEST_F(AttentionRulesTest, DoNotKeepTheModuleFromStartingIfTheirFileIsWrong)
{
    writeSettings("{");
    load();
    EXPECT_THAT(rules().error().toStdString(), HasSubstr("attention.json:1:"));
    EXPECT_TRUE(notify(message("1"_s)).shown());
}

TEST_F(AttentionRulesTest, ExplainATrialAndLeaveNothingBehind)
{
    setSettings(R"({"rules": [
        {"name": "door", "when": {"source": ["door"]}, "then": {"priority": "Urgent"}},
        {"name": "loud", "when": {"minPriority": "High"}, "then": {"speak": true}}]})");
    load();
    const auto trial = tryItem(message("Ring"_s, "door"_s));
    const auto verdicts = elementsOf(trial.verdicts());
    ASSERT_EQ(verdicts.size(), 2U);
    EXPECT_TRUE(verdicts[0].applies());
    EXPECT_EQ(verdicts[0].reason(), "priority Urgent"_s);
    EXPECT_FALSE(verdicts[1].applies());
    EXPECT_EQ(verdicts[1].reason(), "priority Normal is out of range"_s);
    EXPECT_TRUE(trial.shown());
    EXPECT_EQ(trial.priority(), Priority::Urgent);
    EXPECT_THAT(displayed(), IsEmpty());
    EXPECT_EQ(rules().rules().at(0).count(), 0);
}

TEST_F(AttentionRulesTest, ExplainThatASourceHasSentTooMany)
{
    setSettings(R"({"eachSource": {"messages": 1, "seconds": 3600}})");
    load();
    EXPECT_TRUE(tryItem(message("1"_s)).shown());
    EXPECT_TRUE(notify(message("1"_s)).shown()) << "a trial does not count";
    const auto trial = tryItem(message("2"_s));
    EXPECT_FALSE(trial.shown());
    EXPECT_EQ(trial.reason(), "its source has sent too many"_s);
}

TEST_F(AttentionRulesTest, ExplainThatAnEarlierRuleApplies)
{
    setSettings(R"({"apply": "first", "rules": [{"name": "one"}, {"name": "two"}]})");
    load();
    const auto verdicts = elementsOf(tryItem(message("x"_s)).verdicts());
    ASSERT_EQ(verdicts.size(), 2U);
    EXPECT_EQ(verdicts[1].reason(), "an earlier rule applies"_s);
}

TEST_F(AttentionRulesTest, TellThatNoProgramSpeaks)
{
    load();
    const auto trial = tryItem(message("1"_s).setSpeech("One"_s));
    EXPECT_FALSE(trial.spoken());
    EXPECT_EQ(trial.reason(), "no program for speech is configured"_s);
}
} // namespace
