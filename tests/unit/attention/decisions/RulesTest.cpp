// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "unit/attention/decisions/AttentionTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace {
using testing::ElementsAre;
using testing::HasSubstr;
using Priority = TavoNotificationItemPriority;

Rules rulesOf(const QByteArray &list, const char *apply = "all")
{
    return settingsOf(R"({"timeZone": "UTC", "apply": ")" + QByteArray(apply) + R"(", "rules": )" +
                      list + "}")
        .rules;
}

/// One rule with these conditions.
Rule ruleWhen(const QByteArray &when)
{
    return rulesOf(R"([{"name": "rule", "when": )" + when + "}]").list().front();
}

TEST(RulesTest, MatchesEverythingWithoutConditions)
{
    EXPECT_TRUE(ruleWhen("{}").matches(notificationOf("mail")));
}

TEST(RulesTest, MatchesASourceInAnyCase)
{
    const Rule rule = ruleWhen(R"({"source": ["Mail", "door*"]})");
    EXPECT_TRUE(rule.matches(notificationOf("mail")));
    EXPECT_TRUE(rule.matches(notificationOf("Doorbell")));
    EXPECT_FALSE(rule.matches(notificationOf("mailer")));
    EXPECT_EQ(rule.mismatch(notificationOf("chat")), "source \"chat\" is not in Mail, door*");
}

TEST(RulesTest, MatchesACategory)
{
    const Rule rule = ruleWhen(R"({"category": ["im.*"]})");
    AttentionInput input = notificationOf("chat");
    EXPECT_FALSE(rule.matches(input));
    input.category = QStringLiteral("im.received");
    EXPECT_TRUE(rule.matches(input));
}

TEST(RulesTest, MatchesARangeOfPriorities)
{
    const Rule rule = ruleWhen(R"({"minPriority": "normal", "maxPriority": "high"})");
    AttentionInput input = notificationOf("mail");
    for (const auto &[priority, matches] :
         {std::pair(Priority::Low, false), std::pair(Priority::Normal, true),
          std::pair(Priority::High, true), std::pair(Priority::Urgent, false)}) {
        input.priority = priority;
        EXPECT_EQ(rule.matches(input), matches) << priority;
    }
}

TEST(RulesTest, MatchesWholeWordsOfTitleAndText)
{
    const Rule rule = ruleWhen(R"({"words": ["parcel", "door"]})");
    EXPECT_TRUE(rule.matches(notificationOf("x", "Parcel", "It is at the door.")));
    EXPECT_FALSE(rule.matches(notificationOf("x", "Parcel", "It is outdoors.")));
    EXPECT_FALSE(rule.matches(notificationOf("x", "door")));
}

TEST(RulesTest, FindsAWordBehindOneThatOnlyContainsIt)
{
    EXPECT_TRUE(ruleWhen(R"({"words": ["door"]})").matches(notificationOf("x", "outdoors, door")));
}

TEST(RulesTest, MatchesAPattern)
{
    const Rule rule = ruleWhen(R"({"pattern": "^call from \\+49"})");
    EXPECT_TRUE(rule.matches(notificationOf("phone", "Call from +49 30 1")));
    EXPECT_FALSE(rule.matches(notificationOf("phone", "Missed call from +49 30 1")));
}

TEST(RulesTest, MatchesDuringItsTimes)
{
    const Rule rule = ruleWhen(R"({"times": [{"from": "22:00", "to": "07:00"}]})");
    AttentionInput input = notificationOf("mail");
    input.time = at("2026-11-22T23:00:00Z");
    EXPECT_TRUE(rule.matches(input));
    input.time = at("2026-11-22T12:00:00Z");
    EXPECT_EQ(rule.mismatch(input), "it is another time");
}

TEST(RulesTest, GivesUpAPatternThatWouldTakeForEver)
{
    const Rule rule = ruleWhen(R"({"pattern": "^(a+)+$"})");
    const AttentionInput input = notificationOf("x", (std::string(4000, 'a') + '!').c_str());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(rule.matches(input));
    // Without the limit, the age of the universe would not do.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(RulesTest, LetsALaterRuleGoBeforeAnEarlierOne)
{
    const Rules rules = rulesOf(R"([
        {"name": "all", "then": {"priority": "Low", "mute": true}},
        {"name": "door", "when": {"source": ["door"]}, "then": {"priority": "Urgent"}},
        {"name": "mail", "when": {"source": ["mail"]}, "then": {"drop": true}}])");
    std::vector<std::size_t> applied;
    const Treatment treatment = rules.apply(
        notificationOf("door"), [&applied](std::size_t index) { applied.push_back(index); });
    EXPECT_THAT(applied, ElementsAre(0, 1));
    EXPECT_EQ(treatment.toString(), "priority Urgent, mute yes");
}

TEST(RulesTest, StopsAtTheFirstMatchIfToldSo)
{
    const Rules rules = rulesOf(R"([
        {"name": "door", "when": {"source": ["door"]}, "then": {"priority": "Urgent"}},
        {"name": "all", "then": {"mute": true}}])",
                                "first");
    EXPECT_EQ(rules.apply(notificationOf("door"), [](std::size_t) {}).toString(),
              "priority Urgent");
    EXPECT_EQ(rules.apply(notificationOf("mail"), [](std::size_t) {}).toString(), "mute yes");
}

TEST(RulesTest, ReadsAllThatARuleCanSet)
{
    const Rules rules = rulesOf(R"([{"name": "everything", "then": {
        "priority": "High", "timeout": 0, "sound": "/bell.wav", "group": "Door",
        "chime": "/chime.wav", "mute": false, "hide": true, "drop": false, "speak": true,
        "pass": true, "private": true, "mustSee": true}}])");
    EXPECT_EQ(rules.list().front().treatment().toString(),
              "priority High, timeout 0, sound \"/bell.wav\", group \"Door\", chime \"/chime.wav\","
              " mute no, hide yes, drop no, speak yes, pass yes, private yes, mustSee yes");
}
} // namespace
