// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "unit/attention/decisions/AttentionTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {
using testing::StartsWith;

std::string errorOf(const char *json)
{
    try {
        settingsOf(json);
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

TEST(AttentionSettingsTest, LetsEverythingThroughByDefault)
{
    const AttentionSettings settings = settingsOf("{}");
    EXPECT_TRUE(settings.rules.list().empty());
    EXPECT_TRUE(settings.doNotDisturb.times.isEmpty());
}

TEST(AttentionSettingsTest, NamesFileLineKeyAndReason)
{
    EXPECT_EQ(errorOf("{\n \"rules\": [\n  {\"name\": \"x\", \"when\": {\"source\": 5}}\n ]\n}"),
              "attention.json:3: rules[0].when.source: must be a list of strings");
    EXPECT_EQ(errorOf("{\n\n\"rule\": []}"), "attention.json:3: rule: unknown key");
}

TEST(AttentionSettingsTest, NamesLineAndColumnOfASyntaxError)
{
    EXPECT_THAT(errorOf("{\n \"rules\": [}"), StartsWith("attention.json:2:"));
}

TEST(AttentionSettingsTest, AreThoseOfTheSystemForAServiceWithoutAHome)
{
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", "/home/person");
    EXPECT_EQ(AttentionSettings::defaultFiles().first().toStdString(),
              "/home/person/.config/tavo/attention.json");
    qputenv("HOME", "/");
    EXPECT_EQ(AttentionSettings::defaultFiles(), QStringList{"/etc/tavo/attention.json"});
    qputenv("HOME", home);
}

TEST(AttentionSettingsTest, RefusesWhatItDoesNotKnow)
{
    EXPECT_THAT(errorOf(R"({"timeZone": "Mars/Olympus"})"),
                StartsWith("attention.json:1: timeZone: must be a time zone"));
    EXPECT_THAT(errorOf(R"({"apply": "some"})"), StartsWith("attention.json:1: apply: must be"));
    EXPECT_THAT(errorOf(R"({"doNotDisturb": {"silence": "all"}})"),
                StartsWith("attention.json:1: doNotDisturb.silence: must be"));
    EXPECT_THAT(errorOf(R"({"doNotDisturb": {"passSources": ["*bell"]}})"),
                StartsWith("attention.json:1: doNotDisturb.passSources: may have a *"));
    EXPECT_THAT(errorOf(R"({"rules": [{"when": {}}]})"),
                StartsWith("attention.json:1: rules[0].name: must name the rule"));
    EXPECT_THAT(errorOf(R"({"rules": [{"name": "x", "then": {"priority": "Huge"}}]})"),
                StartsWith("attention.json:1: rules[0].then.priority: must be Low"));
    EXPECT_THAT(errorOf(R"({"rules": [{"name": "x",
                            "when": {"minPriority": "High", "maxPriority": "Low"}}]})"),
                StartsWith("attention.json:2: rules[0].when.maxPriority: must not be below"));
    EXPECT_THAT(errorOf(R"({"rules": [{"name": "x", "when": {"pattern": "a(b"}}]})"),
                StartsWith("attention.json:1: rules[0].when.pattern: missing"));
}
} // namespace
