// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <core/base/configuration.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>

namespace {
/// The text of the thrown error; empty if nothing is thrown.
std::string errorOf(const std::function<void()> &read)
{
    try {
        read();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return {};
}

std::string integerErrorOf(const QVariant &value)
{
    return errorOf([&] { TavoConfiguration({{"key", value}}).integer("key", 0, -10, 10); });
}

std::string numberErrorOf(const QVariant &value)
{
    return errorOf([&] { TavoConfiguration({{"key", value}}).number("key", 0, -0.5, 10); });
}

TEST(ConfigurationTest, ReturnsTheDefaultForAMissingKey)
{
    TavoConfiguration configuration({});
    EXPECT_EQ(configuration.string("string", "default"), "default");
    EXPECT_EQ(configuration.integer("integer", 7, 0, 10), 7);
    EXPECT_EQ(configuration.number("number", 0.5, 0, 1), 0.5);
    EXPECT_TRUE(configuration.boolean("boolean", true));
    EXPECT_EQ(configuration.stringList("list", {"default"}), QStringList{"default"});
    EXPECT_EQ(configuration.object("object"), QVariantHash());
}

TEST(ConfigurationTest, ReturnsTheConfiguredValues)
{
    TavoConfiguration configuration({{"string", ""},
                                     {"integer", 3.0},
                                     {"number", 1},
                                     {"yes", true},
                                     {"no", false},
                                     {"some", QVariantList{"a", "b"}},
                                     {"none", QVariantList()},
                                     {"object", QVariantMap{{"key", 1}}}});
    EXPECT_EQ(configuration.string("string", "default"), "");
    EXPECT_EQ(configuration.integer("integer", 7, 0, 10), 3);
    EXPECT_EQ(configuration.number("number", 0.5, 0, 1), 1.0);
    EXPECT_TRUE(configuration.boolean("yes", false));
    EXPECT_FALSE(configuration.boolean("no", true));
    EXPECT_EQ(configuration.stringList("some", {}), (QStringList{"a", "b"}));
    EXPECT_EQ(configuration.stringList("none", {"default"}), QStringList());
    EXPECT_EQ(configuration.object("object"), (QVariantHash{{"key", 1}}));
}

TEST(ConfigurationTest, IncludesTheEndsOfARange)
{
    EXPECT_EQ(integerErrorOf(-10), "");
    EXPECT_EQ(integerErrorOf(10), "");
    EXPECT_EQ(numberErrorOf(-0.5), "");
    EXPECT_EQ(numberErrorOf(10), "");
}

TEST(ConfigurationTest, RefusesAnythingButAnIntegerInTheRange)
{
    for (const QVariant &value :
         {QVariant(11), QVariant(-11), QVariant(2.5), QVariant(1e300), QVariant("3"),
          QVariant(true), QVariant(QVariantList{3}),
          QVariant(std::numeric_limits<double>::quiet_NaN()), QVariant::fromValue(nullptr)}) {
        EXPECT_EQ(integerErrorOf(value), "key: must be an integer from -10 to 10");
    }
}

TEST(ConfigurationTest, RefusesAnythingButANumberInTheRange)
{
    for (const QVariant &value : {QVariant(10.5), QVariant(-1), QVariant("3"), QVariant(true),
                                  QVariant(std::numeric_limits<double>::quiet_NaN())}) {
        EXPECT_EQ(numberErrorOf(value), "key: must be a number from -0.5 to 10");
    }
}

TEST(ConfigurationTest, RefusesAValueOfAnotherType)
{
    EXPECT_EQ(errorOf([] {
                  TavoConfiguration({{"key", 3}}).string("key", {});
              }),
              "key: must be a string");
    EXPECT_EQ(errorOf([] {
                  TavoConfiguration({{"key", 1}}).boolean("key", false);
              }),
              "key: must be a boolean");
    EXPECT_EQ(errorOf([] {
                  TavoConfiguration({{"key", QVariantList()}}).section("key");
              }),
              "key: must be an object");
    for (const QVariant &value : {QVariant("a"), QVariant(QVariantList{"a", 1}), QVariant(true)}) {
        EXPECT_EQ(errorOf([&] {
                      TavoConfiguration({{"key", value}}).stringList("key", {});
                  }),
                  "key: must be a list of strings");
    }
}

TEST(ConfigurationTest, RefusesTheFirstKeyThatWasNotRead)
{
    TavoConfiguration configuration({{"known", "a"}, {"unknown", "b"}, {"another", "c"}});
    configuration.string("known", {});
    EXPECT_EQ(errorOf([&] { configuration.finish(); }), "another: unknown key");
}

TEST(ConfigurationTest, FinishesIfEveryKeyWasRead)
{
    TavoConfiguration configuration({{"known", "a"}});
    configuration.string("known", {});
    configuration.string("missing", {});
    EXPECT_EQ(errorOf([&] { configuration.finish(); }), "");
}

TEST(ConfigurationTest, NamesAKeyWithAnyCharacters)
{
    const QString key = QStringLiteral("a") + QChar::Null + QStringLiteral("\nb");
    EXPECT_EQ(errorOf([&] { TavoConfiguration({{key, 1}}).finish(); }), "a\\x00\\nb: unknown key");
}

TEST(ConfigurationTest, ReadsASectionAndPrefixesItsKeysWithItsName)
{
    TavoConfiguration configuration({{"section", QVariantHash{{"key", 3}, {"odd", 1}}}});
    TavoConfiguration section = configuration.section("section");
    EXPECT_EQ(section.integer("key", 0, 0, 10), 3);
    EXPECT_EQ(section.keys(), (QStringList{"key", "odd"}));
    EXPECT_EQ(errorOf([&] { section.finish(); }), "section.odd: unknown key");
    EXPECT_EQ(errorOf([&] { configuration.finish(); }), "");
    EXPECT_EQ(configuration.section("missing").integer("key", 7, 0, 10), 7);
}

TEST(ConfigurationTest, ReadsAListOfSectionsAndPrefixesTheirKeysWithTheirIndex)
{
    const QVariantList list{QVariantHash{{"key", 3}}, QVariantMap{{"key", "three"}}};
    TavoConfiguration configuration({{"list", list}});
    auto sections = configuration.sections("list");
    ASSERT_EQ(sections.size(), 2U);
    EXPECT_EQ(sections[0].integer("key", 0, 0, 10), 3);
    EXPECT_EQ(errorOf([&] { sections[1].integer("key", 0, 0, 10); }),
              "list[1].key: must be an integer from 0 to 10");
    EXPECT_EQ(errorOf([&] { configuration.finish(); }), "");
    EXPECT_TRUE(configuration.sections("missing").empty());
}

TEST(ConfigurationTest, AcceptsAStringAsASectionOnlyIfAKeyForItIsGiven)
{
    TavoConfiguration configuration({{"list", QVariantList{"a", 1}}});
    EXPECT_EQ(errorOf([&] { configuration.sections("list", "name"); }),
              "list[1]: must be a string or an object");
    EXPECT_EQ(errorOf([&] { configuration.sections("list"); }), "list[0]: must be an object");
    auto sections = TavoConfiguration({{"list", QVariantList{"a"}}}).sections("list", "name");
    ASSERT_EQ(sections.size(), 1U);
    EXPECT_EQ(sections[0].string("name", {}), "a");
    EXPECT_EQ(errorOf([] {
                  TavoConfiguration({{"list", "a"}}).sections("list", "name");
              }),
              "list: must be a list");
}

TEST(ConfigurationTest, NamesTheFileInEveryError)
{
    auto configuration =
        TavoConfiguration::fromJson(R"({"list": [{"deep": {"key": 1}}]})", "/a/b.json");
    auto sections = configuration.sections("list");
    EXPECT_EQ(errorOf([&] { sections.at(0).section("deep").finish(); }),
              "/a/b.json: list[0].deep.key: unknown key");
    EXPECT_EQ(errorOf([&] { configuration.fail("key", "must be better"); }),
              "/a/b.json: key: must be better");
}

std::string jsonErrorOf(const QByteArray &json)
{
    return errorOf([&] { TavoConfiguration::fromJson(json, "f"); });
}

struct SyntaxError
{
    const char *name;
    const char *json;
    const char *message;
};

void PrintTo(const SyntaxError &error, std::ostream *stream)
{
    *stream << error.json;
}

class ConfigurationSyntaxTest : public testing::TestWithParam<SyntaxError>
{
};

TEST_P(ConfigurationSyntaxTest, IsReportedWithLineAndColumn)
{
    EXPECT_EQ(jsonErrorOf(GetParam().json), std::string("f:") + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Errors, ConfigurationSyntaxTest,
    testing::Values(
        SyntaxError{"Empty", "", "1:1: illegal value"},
        SyntaxError{"OnlyBlanks", " \n ", "1:1: illegal value"},
        SyntaxError{"WrongBracket", "{\n \"a\": [1\n}\n", "3:1: unterminated array"},
        SyntaxError{"MissingColon", "{\"a\" 1}", "1:6: missing name separator"},
        SyntaxError{"ExtraComma", "{\"a\":1,\n}", "2:1: object is missing after a comma"},
        SyntaxError{"MissingComma", "{\"a\":1\n \"b\":2}", "2:2: unterminated object"},
        SyntaxError{"Comment", "{\"a\":1,\n\n  // no\n \"b\":2}", "3:3: unterminated object"},
        SyntaxError{"WordAsValue", "{\"a\": x}", "1:7: illegal number"},
        SyntaxError{"TextAfterTheEnd", "{} x", "1:4: garbage at the end of the document"},
        SyntaxError{"ColumnsAreCharacters", "{\"\xc3\xa9\xc3\xa9\": x}", "1:8: illegal number"}),
    [](const auto &info) { return info.param.name; });

TEST(ConfigurationTest, RefusesBytesThatAreNotUtf8)
{
    EXPECT_THAT(jsonErrorOf("{\"modules\": [\"a\xff\"]}"), testing::StartsWith("f:1:"));
}

TEST(ConfigurationTest, RefusesJsonThatIsNotAnObject)
{
    EXPECT_EQ(jsonErrorOf("[]"), "f: must be a JSON object");
}

TEST(ConfigurationTest, ReportsAMissingFile)
{
    EXPECT_EQ(errorOf([] { TavoConfiguration::fromFile("/nonexistent/host.json"); }),
              "/nonexistent/host.json: No such file or directory");
}

TEST(ConfigurationTest, ReportsAFileThatCanBeOpenedButNotRead)
{
    // A process can open its memory as a file, but not read its beginning.
    EXPECT_EQ(errorOf([] { TavoConfiguration::fromFile("/proc/self/mem"); }),
              "/proc/self/mem: Input/output error");
}
} // namespace
