// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <core/base/configuration.h>

#include <functional>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {
/// What a reading function complains about; empty when it doesn't.
std::string complaintOf(const std::function<void()> &read)
{
    try {
        read();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

std::string complaintAbout(const QVariant &value)
{
    return complaintOf([&] { TavoConfiguration({{"key", value}}).integer("key", 0, -10, 10); });
}

TEST(ConfigurationTest, GivesTheFallbackForAMissingKey)
{
    TavoConfiguration configuration({});
    EXPECT_EQ(configuration.text("text", "fallback"), "fallback");
    EXPECT_EQ(configuration.integer("integer", 7, 0, 10), 7);
    EXPECT_EQ(configuration.number("number", 0.5, 0, 1), 0.5);
}

TEST(ConfigurationTest, GivesTheConfiguredValues)
{
    TavoConfiguration configuration({{"text", ""}, {"integer", 3.0}, {"number", 1}});
    EXPECT_EQ(configuration.text("text", "fallback"), "");
    EXPECT_EQ(configuration.integer("integer", 7, 0, 10), 3);
    EXPECT_EQ(configuration.number("number", 0.5, 0, 1), 1.0);
}

TEST(ConfigurationTest, AllowsTheLimitsThemselves)
{
    EXPECT_EQ(complaintAbout(-10), "");
    EXPECT_EQ(complaintAbout(10), "");
}

TEST(ConfigurationTest, RefusesANumberBeyondItsLimitsAndNamesThem)
{
    EXPECT_EQ(complaintAbout(11), "key: must be a number from -10 to 10");
    EXPECT_EQ(complaintAbout(-10.5), "key: must be a number from -10 to 10");
    EXPECT_EQ(complaintAbout(1e300), "key: must be a number from -10 to 10");
}

TEST(ConfigurationTest, RefusesWhatIsNoNumber)
{
    for (const QVariant &value : {QVariant("3"), QVariant(true), QVariant(QVariantList{3}),
                                  QVariant(std::numeric_limits<double>::quiet_NaN())}) {
        EXPECT_EQ(complaintAbout(value), "key: must be a number from -10 to 10");
    }
}

TEST(ConfigurationTest, RefusesAFractionForAWholeNumber)
{
    EXPECT_EQ(complaintAbout(2.5), "key: must be a whole number");
}

TEST(ConfigurationTest, RefusesANumberForAText)
{
    EXPECT_EQ(complaintOf([] {
                  TavoConfiguration({{"key", 3}}).text("key", {});
              }),
              "key: must be a text");
}

TEST(ConfigurationTest, RefusesAKeyThatNobodyRead)
{
    TavoConfiguration configuration({{"known", "a"}, {"unknown", "b"}, {"another", "c"}});
    configuration.text("known", {});
    EXPECT_EQ(complaintOf([&] { configuration.finish(); }), "another: there is no such key");
}

TEST(ConfigurationTest, NamesAKeyWhateverItsCharacters)
{
    const QString key = QStringLiteral("a") + QChar::Null + QStringLiteral("\nb");
    EXPECT_EQ(complaintOf([&] {
                  TavoConfiguration({{key, 1}}).finish();
              }),
              "a\\x00\\nb: there is no such key");
}

TEST(ConfigurationTest, IsContentWhenEveryKeyWasRead)
{
    TavoConfiguration configuration({{"known", "a"}});
    configuration.text("known", {});
    configuration.text("missing", {});
    EXPECT_EQ(complaintOf([&] { configuration.finish(); }), "");
}

TEST(ConfigurationTest, ReadsTruthValuesAndRefusesOthers)
{
    TavoConfiguration configuration({{"yes", true}, {"no", false}});
    EXPECT_TRUE(configuration.truth("yes", false));
    EXPECT_FALSE(configuration.truth("no", true));
    EXPECT_TRUE(configuration.truth("missing", true));
    EXPECT_EQ(complaintOf([] {
                  TavoConfiguration({{"key", 1}}).truth("key", false);
              }),
              "key: must be true or false");
}

TEST(ConfigurationTest, ReadsListsOfTextsAndRefusesOthers)
{
    TavoConfiguration configuration({{"some", QVariantList{"a", "b"}}, {"none", QVariantList()}});
    EXPECT_EQ(configuration.texts("some", {}), (QStringList{"a", "b"}));
    EXPECT_EQ(configuration.texts("none", {"fallback"}), QStringList());
    EXPECT_EQ(configuration.texts("missing", {"fallback"}), QStringList{"fallback"});
    for (const QVariant &value : {QVariant("a"), QVariant(QVariantList{"a", 1}), QVariant(true)}) {
        EXPECT_EQ(complaintOf([&] {
                      TavoConfiguration({{"key", value}}).texts("key", {});
                  }),
                  "key: must be a list of texts");
    }
}

TEST(ConfigurationTest, ReadsASectionAndNamesItsKeysWithItsName)
{
    TavoConfiguration configuration({{"section", QVariantHash{{"key", 3}, {"odd", 1}}}});
    TavoConfiguration section = configuration.section("section");
    EXPECT_EQ(section.integer("key", 0, 0, 10), 3);
    EXPECT_EQ(complaintOf([&] { section.finish(); }), "section.odd: there is no such key");
    EXPECT_EQ(complaintOf([&] { configuration.finish(); }), "");
    EXPECT_EQ(configuration.section("missing").integer("key", 7, 0, 10), 7);
}

TEST(ConfigurationTest, RefusesASectionThatIsNoObject)
{
    EXPECT_EQ(complaintOf([] {
                  TavoConfiguration({{"key", QVariantList()}}).section("key");
              }),
              "key: must be an object");
}
} // namespace
