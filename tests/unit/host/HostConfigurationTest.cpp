// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HostConfiguration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {
HostConfiguration good(const QByteArray &json)
{
    const auto result = HostConfiguration::fromJson(json, "/etc/tavo/host.json");
    if (const auto *error = std::get_if<ConfigurationError>(&result)) {
        ADD_FAILURE() << error->text().toStdString();
        return {};
    }
    return std::get<HostConfiguration>(result);
}

std::string errorOf(const QByteArray &json)
{
    const auto result = HostConfiguration::fromJson(json, "f");
    const auto *error = std::get_if<ConfigurationError>(&result);
    return error != nullptr ? error->text().toStdString() : std::string("no error");
}
} // namespace

TEST(HostConfigurationTest, RunsFourModulesInOrderWhenNobodySaysOtherwise)
{
    const auto configuration = HostConfiguration::builtIn();
    ASSERT_EQ(configuration.modules.size(), 4);
    EXPECT_EQ(configuration.modules[0].name, "powermanager");
    EXPECT_EQ(configuration.modules[1].name, "player");
    EXPECT_EQ(configuration.modules[2].name, "notifications");
    EXPECT_EQ(configuration.modules[3].name, "dbus");
    EXPECT_EQ(configuration.modules[3].libraryName, "dbus");
}

TEST(HostConfigurationTest, TakesAModulesNameForItsLibrary)
{
    const auto configuration = good(R"({"modules": ["a", {"name": "b"}]})");
    ASSERT_EQ(configuration.modules.size(), 2);
    EXPECT_EQ(configuration.modules[0].name, "a");
    EXPECT_EQ(configuration.modules[0].libraryName, "a");
    EXPECT_EQ(configuration.modules[1].libraryName, "b");
}

TEST(HostConfigurationTest, KeepsTheOrderOfTheModules)
{
    const auto configuration = good(R"({"modules": ["z", "a", "m"]})");
    ASSERT_EQ(configuration.modules.size(), 3);
    EXPECT_EQ(configuration.modules[0].name, "z");
    EXPECT_EQ(configuration.modules[2].name, "m");
}

TEST(HostConfigurationTest, AllowsTwoModulesOfOneLibrary)
{
    const auto configuration =
        good(R"({"modules": [{"name": "a", "library": "x"}, {"name": "b", "library": "x"}]})");
    ASSERT_EQ(configuration.modules.size(), 2);
    EXPECT_EQ(configuration.modules[1].libraryName, "x");
}

TEST(HostConfigurationTest, TakesALibraryWithASlashFromTheFoldersOfTheFile)
{
    const auto configuration = good(R"({"modules": [{"name": "a", "library": "../lib/x.so"}]})");
    ASSERT_EQ(configuration.modules.size(), 1);
    EXPECT_EQ(configuration.modules[0].libraryName, "/etc/lib/x.so");
}

TEST(HostConfigurationTest, PassesAModulesConfigurationOnAsItIs)
{
    const auto configuration = good(R"({"modules": [
        {"name": "a", "config": {"text": "x", "number": 1.5, "list": [1], "deep": {"k": true}}}]})");
    ASSERT_EQ(configuration.modules.size(), 1);
    const QVariantHash &config = configuration.modules[0].config;
    EXPECT_EQ(config.value("text"), QVariant("x"));
    EXPECT_EQ(config.value("number"), QVariant(1.5));
    EXPECT_EQ(config.value("list").toList().size(), 1);
    EXPECT_TRUE(config.value("deep").toMap().value("k").toBool());
}

TEST(HostConfigurationTest, TakesFoldersFromTheFolderOfTheFile)
{
    const auto configuration = good(R"({"modules": ["a"], "modulePath": ["m", "/abs"]})");
    EXPECT_EQ(configuration.modulePath, QStringList({"/etc/tavo/m", "/abs"}));
}

TEST(HostConfigurationTest, TakesANameThatBeginsWithAColonForAName)
{
    const auto configuration = good(R"({"modules": ["a"], "modulePath": [":/m", "../:m"]})");
    EXPECT_EQ(configuration.modulePath, QStringList({"/etc/tavo/:/m", "/etc/:m"}));
}

TEST(HostConfigurationTest, ReadsLogLevelsWithTheRootLoggersFirst)
{
    const auto configuration =
        good(R"({"modules": ["a"], "log": {"levels": {"Host": "trace"}, "level": "WARN"}})");
    const auto &levels = configuration.log.levels;
    ASSERT_EQ(levels.size(), 2);
    EXPECT_EQ(levels[0].logger, "");
    EXPECT_EQ(levels[0].level, log4cplus::WARN_LOG_LEVEL);
    EXPECT_EQ(levels[1].logger, "Host");
    EXPECT_EQ(levels[1].level, log4cplus::TRACE_LOG_LEVEL);
}

TEST(HostConfigurationTest, ReadsALogFilesNameFromTheFolderOfTheFile)
{
    const auto configuration = good(R"({"modules": ["a"], "log": {"file": "log.properties"}})");
    EXPECT_EQ(configuration.log.file, "/etc/tavo/log.properties");
}

struct SyntaxError
{
    const char *name;
    const char *json;
    const char *message;
};

static void PrintTo(const SyntaxError &error, std::ostream *stream)
{
    *stream << error.json;
}

class HostConfigurationSyntaxTest : public testing::TestWithParam<SyntaxError>
{
};

TEST_P(HostConfigurationSyntaxTest, IsReportedWithLineAndColumn)
{
    EXPECT_EQ(errorOf(GetParam().json), std::string("f:") + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Errors, HostConfigurationSyntaxTest,
    testing::Values(
        SyntaxError{"NoText", "", "1:1: illegal value"},
        SyntaxError{"OnlyBlanks", " \n ", "1:1: illegal value"},
        SyntaxError{"WrongBracket", "{\n \"a\": [1\n}\n", "3:1: unterminated array"},
        SyntaxError{"NoColon", "{\"a\" 1}", "1:6: missing name separator"},
        SyntaxError{"CommaTooMany", "{\"a\":1,\n}", "2:1: object is missing after a comma"},
        SyntaxError{"CommaMissing", "{\"a\":1\n \"b\":2}", "2:2: unterminated object"},
        SyntaxError{"Comment", "{\"a\":1,\n\n  // no\n \"b\":2}", "3:3: unterminated object"},
        SyntaxError{"WordForAValue", "{\"a\": x}", "1:7: illegal number"},
        SyntaxError{"TextBehind", "{} x", "1:4: garbage at the end of the document"},
        SyntaxError{"ColumnsAreCharacters", "{\"\xc3\xa9\xc3\xa9\": x}", "1:8: illegal number"}),
    [](const auto &info) { return info.param.name; });

TEST(HostConfigurationTest, ReportsTheFirstOfSeveralMistakes)
{
    EXPECT_EQ(errorOf(R"({"modules": [1, 2], "modulePath": 3})"),
              "f: modules[0]: must be a module's name or an object, is a number");
}

struct Mistake
{
    const char *name;
    const char *json;
    const char *message;
};

static void PrintTo(const Mistake &mistake, std::ostream *stream)
{
    *stream << mistake.json;
}

class HostConfigurationMistakeTest : public testing::TestWithParam<Mistake>
{
};

TEST_P(HostConfigurationMistakeTest, IsReportedWithItsKey)
{
    EXPECT_EQ(errorOf(GetParam().json), std::string("f: ") + GetParam().message);
}

static const char s_nameRule[] =
    " is no module name: letters, digits, '.', '_' and '-', with a letter or a digit first";
static const std::string s_emptyName = std::string("modules[0]: \"\"") + s_nameRule;
static const std::string s_slashName = std::string("modules[0].name: \"a/b\"") + s_nameRule;
static const std::string s_library = "modules[0]" + std::string(1, '.') + "library: ";
static const std::string s_libraryName = s_library + "\"a b\"" + s_nameRule;
static const std::string s_libraryType = s_library + "must be a string, is a boolean";

INSTANTIATE_TEST_SUITE_P(
    Mistakes, HostConfigurationMistakeTest,
    testing::Values(
        Mistake{"RootIsNoObject", "[]", "must be a JSON object"},
        Mistake{"NoModules", "{}", "modules: must be an array, is missing"},
        Mistake{"ModulesIsNoArray", R"({"modules": "a"})",
                "modules: must be an array, is a string"},
        Mistake{"ModulesIsEmpty", R"({"modules": []})", "modules: names no module"},
        Mistake{"ModuleIsNull", R"({"modules": [null]})",
                "modules[0]: must be a module's name or an object, is null"},
        Mistake{"ModuleNameIsEmpty", R"({"modules": [""]})", s_emptyName.c_str()},
        Mistake{"ModuleNameIsMissing", R"({"modules": [{}]})",
                "modules[0].name: must be a string, is missing"},
        Mistake{"ModuleNameIsAPath", R"({"modules": [{"name": "a/b"}]})", s_slashName.c_str()},
        Mistake{"LibraryIsNoName", R"({"modules": [{"name": "a", "library": "a b"}]})",
                s_libraryName.c_str()},
        Mistake{"LibraryIsNoText", R"({"modules": [{"name": "a", "library": true}]})",
                s_libraryType.c_str()},
        Mistake{"ConfigIsNoObject", R"({"modules": [{"name": "a", "config": []}]})",
                "modules[0].config: must be an object, is an array"},
        Mistake{"UnknownKeyOfAModule", R"({"modules": ["x", {"name": "a", "nam": "b"}]})",
                "modules[1].nam: unknown key"},
        Mistake{"NameTwice", R"({"modules": ["a", "b", {"name": "a", "library": "c"}]})",
                "modules[2]: the name \"a\" is already that of modules[0]"},
        Mistake{"ModulePathIsNoArray", R"({"modules": ["a"], "modulePath": "/x"})",
                "modulePath: must be an array, is a string"},
        Mistake{"FolderIsNoText", R"({"modules": ["a"], "modulePath": ["/x", {}]})",
                "modulePath[1]: must be a string, is an object"},
        Mistake{"FolderIsEmpty", R"({"modules": ["a"], "modulePath": [""]})",
                "modulePath[0]: must not be empty"},
        Mistake{"LogIsNoObject", R"({"modules": ["a"], "log": "INFO"})",
                "log: must be an object, is a string"},
        Mistake{"UnknownKeyOfTheLog", R"({"modules": ["a"], "log": {"color": true}})",
                "log.color: unknown key"},
        Mistake{"LevelIsUnknown", R"({"modules": ["a"], "log": {"level": "LOUD"}})",
                "log.level: \"LOUD\" is no log level; the levels are TRACE, DEBUG, INFO, WARN, "
                "ERROR, FATAL, OFF"},
        Mistake{"LevelIsNoText", R"({"modules": ["a"], "log": {"levels": {"Host": 3}}})",
                "log.levels.Host: must be a string, is a number"},
        Mistake{"UnknownKey", R"({"modules": ["a"], "modulepath": []})",
                "modulepath: unknown key"}),
    [](const auto &info) { return info.param.name; });

TEST(HostConfigurationTest, ReportsAFileThatIsNotThere)
{
    const auto result = HostConfiguration::fromFile("/nonexistent/host.json");
    const auto *error = std::get_if<ConfigurationError>(&result);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->text(), "/nonexistent/host.json: No such file or directory");
}

TEST(HostConfigurationTest, ReportsAFileThatCanBeOpenedButNotRead)
{
    // The kernel shows a process its memory as a file, and has none to show at its beginning.
    const auto result = HostConfiguration::fromFile("/proc/self/mem");
    ASSERT_TRUE(std::holds_alternative<ConfigurationError>(result));
    EXPECT_EQ(std::get<ConfigurationError>(result).text(), "/proc/self/mem: Input/output error");
}

TEST(HostConfigurationTest, FindsBytesThatAreNoUtf8)
{
    EXPECT_THAT(errorOf("{\"modules\": [\"a\xff\"]}"), testing::StartsWith("f:1:"));
}
