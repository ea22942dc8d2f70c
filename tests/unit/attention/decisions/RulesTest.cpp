// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "unit/attention/decisions/AttentionTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

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
    const auto matching = rules.matching(notificationOf("door"));
    EXPECT_THAT(matching, ElementsAre(0, 1));
    EXPECT_EQ(rules.treatment(matching).toString(), "priority Urgent, mute yes");
}

TEST(RulesTest, StopsAtTheFirstMatchIfToldSo)
{
    const Rules rules = rulesOf(R"([
        {"name": "door", "when": {"source": ["door"]}, "then": {"priority": "Urgent"}},
        {"name": "all", "then": {"mute": true}}])",
                                "first");
    EXPECT_THAT(rules.matching(notificationOf("door")), ElementsAre(0));
    EXPECT_THAT(rules.matching(notificationOf("mail")), ElementsAre(1));
}

TEST(RulesTest, FindsTheRulesThatALookAtEachFinds)
{
    const std::vector<std::string> names{"mail",     "Mail*", "ma*",  "*",          "\u00C4rzte",
                                         "\u00E4R*", "",      "im.x", "\U00010400*"};
    const std::vector<std::string> words{"door",    "Parcel 5", "\u00C4pfel", "c++",
                                         "+1",      "\u03B9b",  "\u0345b",    "a\u0345",
                                         "STRASSE", "\u00DF",   "door bell",  "\U00010400x"};
    const std::vector<std::string> patterns{
        "^door",    "5$",  "(a)\\\\1", "p(?:a|b)r", "(?m)^bell$", "(?i)x",       "(?<n>l)\\\\k<n>",
        "\\\\bpar", "[(]", "\\\\Qa(",  "a|door|^$", "(*COMMIT)d", "[[:alpha:]]5"};
    const std::vector<std::string> beginnings{"^door",     "^(?:a|b)r", "^$",        "^.*5$",
                                              "^(?!a)",    "^[KX]",     "^\\\\bpar", "^a?l",
                                              "^\\\\S+ 5", "^(ma|im)",  "^(?=d)",    "^\\\\n"};
    std::vector<std::string> texts = names;
    texts.insert(texts.end(), words.begin(), words.end());
    texts.insert(texts.end(), {"\u212Aa", "kx", "5"});
    texts.insert(texts.end(),
                 {"aa", "all", "outdoor", "Door\nbell", "\u00E4pfel", "a(", "straSSe, c++!",
                  "\u0399B", " \u0345b", "\U00010428x", "parcel 55 parcel 5"});
    std::mt19937 random; // the same numbers each time
    const auto oneOf = [&random](const std::vector<std::string> &list) {
        return list[std::uniform_int_distribution<std::size_t>(0, list.size() - 1)(random)];
    };
    const auto isNow = [&random] { return random() % 3 == 0; };
    std::size_t found = 0;
    for (int run = 0; run < 200; ++run) {
        std::string list;
        for (int i = 0; i < 10; ++i) {
            std::string when;
            const auto add = [&when](const std::string &key, const std::string &value) {
                when += (when.empty() ? "\"" : ", \"") + key + "\": " + value;
            };
            if (isNow()) {
                add("source", "[\"" + oneOf(names) + "\", \"" + oneOf(names) + "\"]");
            }
            if (isNow()) {
                add("category", "[\"" + oneOf(names) + "\"]");
            }
            if (isNow()) {
                add("words", "[\"" + oneOf(words) + "\", \"" + oneOf(words) + "\"]");
            }
            if (isNow()) {
                add("pattern", '"' + oneOf(run % 2 == 0 ? patterns : beginnings) + '"');
            }
            list += (i == 0 ? "" : ", ") + ("{\"name\": \"rule\", \"when\": {" + when + "}}");
        }
        const Rules rules = rulesOf(("[" + list + "]").c_str());
        for (int i = 0; i < 20; ++i) {
            AttentionInput input = notificationOf(oneOf(texts).c_str(), oneOf(texts).c_str(),
                                                  (oneOf(texts) + ' ' + oneOf(texts)).c_str());
            input.category = QString::fromStdString(oneOf(texts));
            std::vector<std::size_t> expected;
            for (std::size_t index = 0; index < rules.list().size(); ++index) {
                if (rules.list()[index].matches(input)) {
                    expected.push_back(index);
                }
            }
            found += expected.size();
            ASSERT_EQ(rules.matching(input), expected)
                << list << " for " << input.title.toStdString();
            const auto atOnce = rules.matchingAtOnce(input);
            ASSERT_EQ(atOnce.value_or(expected), expected) << list;
        }
    }
    EXPECT_GT(found, 1000U);
}

TEST(RulesTest, LeavesPatternsThatMayMatchForLater)
{
    const Rules rules = rulesOf(R"([{"name": "door", "when": {"pattern": "^door"}}])");
    EXPECT_TRUE(rules.matchingAtOnce(notificationOf("x", "bell")));
    EXPECT_FALSE(rules.matchingAtOnce(notificationOf("x", "door")));
    const std::string longTitle = "do" + std::string(2000, 'd');
    EXPECT_FALSE(rules.matchingAtOnce(notificationOf("x", longTitle.c_str())));
}

TEST(RulesTest, ReadsAllThatARuleCanSet)
{
    const Rules rules = rulesOf(R"([{"name": "everything", "then": {
        "priority": "High", "timeout": 0, "sound": "/bell.wav",
        "attenuation": 6, "group": "Door",
        "chime": "/chime.wav", "mute": false, "hide": true, "drop": false, "speak": true,
        "pass": true, "private": true, "mustSee": true}}])");
    EXPECT_EQ(rules.list().front().treatment().toString(),
              "priority High, timeout 0, sound \"/bell.wav\", attenuation 6, group \"Door\", chime "
              "\"/chime.wav\","
              " mute no, hide yes, drop no, speak yes, pass yes, private yes, mustSee yes");
}
} // namespace
