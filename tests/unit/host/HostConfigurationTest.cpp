// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/HostConfiguration.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {
HostConfiguration configurationOf(const QByteArray &json)
{
    return HostConfiguration::fromJson(json, "/etc/tavo/host.json");
}

std::string errorOf(const QByteArray &json)
{
    try {
        HostConfiguration::fromJson(json, "f");
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "no error";
}
} // namespace

TEST(HostConfigurationTest, LimitsTheSounds)
{
    const auto limits = configurationOf(R"({"modules": ["a"], "sounds": {
        "soundLimit": 3, "httpLimit": 2, "httpTimeout": 1500, "fifoTimeout": 700}})")
                            .sounds;
    EXPECT_EQ(limits.maxSoundBytes, 3 * 1024 * 1024);
    EXPECT_EQ(limits.httpMaxBytes, 2 * 1024 * 1024);
    EXPECT_EQ(limits.httpTimeoutMs, 1500);
    EXPECT_EQ(limits.fifoTimeoutMs, 700);
}

TEST(HostConfigurationTest, LimitsTheSoundsByDefault)
{
    const auto limits = configurationOf(R"({"modules": ["a"], "sounds": {}})").sounds;
    EXPECT_EQ(limits.maxSoundBytes, qint64(1) << 30);
    EXPECT_EQ(limits.httpMaxBytes, 16 << 20);
    EXPECT_EQ(limits.httpTimeoutMs, 20000);
    EXPECT_EQ(limits.fifoTimeoutMs, 5000);
}

TEST(HostConfigurationTest, RefusesLimitsOfSoundsOutOfRange)
{
    for (const QByteArray key : {"soundLimit", "httpLimit", "httpTimeout", "fifoTimeout"}) {
        for (const QByteArray value : {"0", "1000000", "\"much\""}) {
            EXPECT_EQ(
                errorOf("{\"modules\": [\"a\"], \"sounds\": {\"" + key + "\": " + value + "}}")
                    .find("f: sounds." + key.toStdString() + ": must be a"),
                0U);
        }
    }
}

TEST(HostConfigurationTest, RunsFiveModulesInOrderWithoutAFile)
{
    const auto configuration = HostConfiguration::builtIn();
    ASSERT_EQ(configuration.modules.size(), 5);
    EXPECT_EQ(configuration.modules[0].name, "powermanager");
    EXPECT_EQ(configuration.modules[1].name, "player");
    EXPECT_EQ(configuration.modules[2].name, "notifications");
    EXPECT_EQ(configuration.modules[3].name, "attention");
    EXPECT_EQ(configuration.modules[4].name, "dbus");
    EXPECT_EQ(configuration.modules[4].libraryName, "dbus");
}

TEST(HostConfigurationTest, UsesAModulesNameAsItsLibraryByDefault)
{
    const auto configuration = configurationOf(R"({"modules": ["a", {"name": "b"}]})");
    ASSERT_EQ(configuration.modules.size(), 2);
    EXPECT_EQ(configuration.modules[0].name, "a");
    EXPECT_EQ(configuration.modules[0].libraryName, "a");
    EXPECT_EQ(configuration.modules[1].libraryName, "b");
}

TEST(HostConfigurationTest, KeepsTheOrderOfTheModules)
{
    const auto configuration = configurationOf(R"({"modules": ["z", "a", "m"]})");
    ASSERT_EQ(configuration.modules.size(), 3);
    EXPECT_EQ(configuration.modules[0].name, "z");
    EXPECT_EQ(configuration.modules[2].name, "m");
}

TEST(HostConfigurationTest, AllowsTwoModulesOfOneLibrary)
{
    const auto configuration = configurationOf(
        R"({"modules": [{"name": "a", "library": "x"}, {"name": "b", "library": "x"}]})");
    ASSERT_EQ(configuration.modules.size(), 2);
    EXPECT_EQ(configuration.modules[1].libraryName, "x");
}

TEST(HostConfigurationTest, ResolvesALibraryWithASlashAgainstTheFolderOfTheFile)
{
    const auto configuration =
        configurationOf(R"({"modules": [{"name": "a", "library": "../lib/x.so"}]})");
    ASSERT_EQ(configuration.modules.size(), 1);
    EXPECT_EQ(configuration.modules[0].libraryName, "/etc/lib/x.so");
}

TEST(HostConfigurationTest, PassesOnAModulesConfigurationUnchanged)
{
    const auto configuration = configurationOf(R"({"modules": [
        {"name": "a", "config": {"text": "x", "number": 1.5, "list": [1], "deep": {"k": true}}}]})");
    ASSERT_EQ(configuration.modules.size(), 1);
    const QVariantHash &config = configuration.modules[0].config;
    EXPECT_EQ(config.value("text"), QVariant("x"));
    EXPECT_EQ(config.value("number"), QVariant(1.5));
    EXPECT_EQ(config.value("list").toList().size(), 1);
    EXPECT_TRUE(config.value("deep").toMap().value("k").toBool());
}

TEST(HostConfigurationTest, ResolvesFoldersAgainstTheFolderOfTheFile)
{
    const auto configuration =
        configurationOf(R"({"modules": ["a"], "modulePath": ["m", "/abs"]})");
    EXPECT_EQ(configuration.modulePath, QStringList({"/etc/tavo/m", "/abs"}));
}

TEST(HostConfigurationTest, AcceptsANameThatBeginsWithAColon)
{
    const auto configuration =
        configurationOf(R"({"modules": ["a"], "modulePath": [":/m", "../:m"]})");
    EXPECT_EQ(configuration.modulePath, QStringList({"/etc/tavo/:/m", "/etc/:m"}));
}

TEST(HostConfigurationTest, ReadsLogLevelsAndAppliesTheRootLoggersFirst)
{
    const auto configuration = configurationOf(
        R"({"modules": ["a"], "log": {"levels": {"Host": "trace"}, "level": "WARN"}})");
    const auto &levels = configuration.log.levels;
    ASSERT_EQ(levels.size(), 2);
    EXPECT_EQ(levels[0].logger, "");
    EXPECT_EQ(levels[0].level, log4cplus::WARN_LOG_LEVEL);
    EXPECT_EQ(levels[1].logger, "Host");
    EXPECT_EQ(levels[1].level, log4cplus::TRACE_LOG_LEVEL);
}

TEST(HostConfigurationTest, ResolvesTheLogFileAgainstTheFolderOfTheFile)
{
    const auto configuration =
        configurationOf(R"({"modules": ["a"], "log": {"file": "log.properties"}})");
    EXPECT_EQ(configuration.log.file, "/etc/tavo/log.properties");
}

TEST(HostConfigurationTest, ReportsTheFirstOfSeveralMistakes)
{
    EXPECT_EQ(errorOf(R"({"modules": [1, 2], "modulePath": 3})"),
              "f: modules[0]: must be a string or an object");
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

#define NAME_RULE                                                                                  \
    "must be a name of letters, digits, '.', '_' and '-' that begins with a letter or a digit"

INSTANTIATE_TEST_SUITE_P(
    Mistakes, HostConfigurationMistakeTest,
    testing::Values(
        Mistake{"RootIsNoObject", "[]", "must be a JSON object"},
        Mistake{"NoModules", "{}", "modules: must name at least one module"},
        Mistake{"ModulesIsNoList", R"({"modules": "a"})", "modules: must be a list"},
        Mistake{"ModulesIsEmpty", R"({"modules": []})", "modules: must name at least one module"},
        Mistake{"ModuleIsNull", R"({"modules": [null]})",
                "modules[0]: must be a string or an object"},
        Mistake{"ModuleNameIsEmpty", R"({"modules": [""]})", "modules[0].name: " NAME_RULE},
        Mistake{"ModuleNameIsMissing", R"({"modules": [{}]})", "modules[0].name: " NAME_RULE},
        Mistake{"ModuleNameIsAPath", R"({"modules": [{"name": "a/b"}]})",
                "modules[0].name: " NAME_RULE},
        Mistake{"ModuleNameBeginsWithADot", R"({"modules": [{"name": ".a"}]})",
                "modules[0].name: " NAME_RULE},
        Mistake{"ModuleNameHasALetterOfAnotherAlphabet", "{\"modules\": [\"caf\xc3\xa9\"]}",
                "modules[0].name: " NAME_RULE},
        Mistake{"LibraryIsNoName", R"({"modules": [{"name": "a", "library": "a b"}]})",
                "modules[0].library: " NAME_RULE},
        Mistake{"LibraryIsNoString", R"({"modules": [{"name": "a", "library": true}]})",
                "modules[0].library: must be a string"},
        Mistake{"ConfigIsNoObject", R"({"modules": [{"name": "a", "config": []}]})",
                "modules[0].config: must be an object"},
        Mistake{"UnknownKeyOfAModule", R"({"modules": ["x", {"name": "a", "nam": "b"}]})",
                "modules[1].nam: unknown key"},
        Mistake{"NameTwice", R"({"modules": ["a", "b", {"name": "a", "library": "c"}]})",
                "modules[2].name: \"a\" is the name of modules[0] already"},
        Mistake{"ModulePathIsNoList", R"({"modules": ["a"], "modulePath": "/x"})",
                "modulePath: must be a list of strings"},
        Mistake{"FolderIsNoString", R"({"modules": ["a"], "modulePath": ["/x", {}]})",
                "modulePath: must be a list of strings"},
        Mistake{"FolderIsEmpty", R"({"modules": ["a"], "modulePath": ["/x", ""]})",
                "modulePath[1]: must not be empty"},
        Mistake{"LogIsNoObject", R"({"modules": ["a"], "log": "INFO"})", "log: must be an object"},
        Mistake{"LogFileIsEmpty", R"({"modules": ["a"], "log": {"file": ""}})",
                "log.file: must not be empty"},
        Mistake{"UnknownKeyOfTheLog", R"({"modules": ["a"], "log": {"color": true}})",
                "log.color: unknown key"},
        Mistake{"LevelIsUnknown", R"({"modules": ["a"], "log": {"level": "LOUD"}})",
                "log.level: must be one of TRACE, DEBUG, INFO, WARN, ERROR, FATAL, OFF"},
        Mistake{"LevelIsNoString", R"({"modules": ["a"], "log": {"levels": {"Host": 3}}})",
                "log.levels.Host: must be a string"},
        Mistake{"UnknownKey", R"({"modules": ["a"], "modulepath": []})",
                "modulepath: unknown key"}),
    [](const auto &info) { return info.param.name; });

namespace {
class FragmentsTest : public testing::Test
{
protected:
    void write(const QString &name, const QByteArray &json) const
    {
        const QString path = m_folder.filePath(name);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(json), json.size());
    }

    QString path(const QString &name) const { return m_folder.filePath(name); }
    HostConfiguration read() const { return HostConfiguration::fromFile(path("host.json")); }

    std::string error() const
    {
        try {
            read();
        } catch (const std::runtime_error &error) {
            return error.what();
        }
        return "no error";
    }

private:
    QTemporaryDir m_folder;
};
} // namespace

TEST_F(FragmentsTest, AddModulesAfterThoseOfTheFile)
{
    write("host.json", R"({"modules": ["a", "b"]})");
    write("host.json.d/50-doorbell.json", R"({"modules": ["doorbell"]})");
    const auto configuration = read();
    ASSERT_EQ(configuration.modules.size(), 3);
    EXPECT_EQ(configuration.modules[2].name, "doorbell");
    EXPECT_EQ(configuration.modules[2].libraryName, "doorbell");
    EXPECT_EQ(configuration.source, path("host.json"));
}

TEST_F(FragmentsTest, AreReadInTheOrderOfTheirNames)
{
    write("host.json", R"({"modules": ["a"]})");
    write("host.json.d/20-second.json", R"({"modules": ["c"], "sounds": {"fifoTimeout": 2}})");
    write("host.json.d/10-first.json", R"({"modules": ["b"], "sounds": {"fifoTimeout": 1}})");
    const auto configuration = read();
    ASSERT_EQ(configuration.modules.size(), 3);
    EXPECT_EQ(configuration.modules[1].name, "b");
    EXPECT_EQ(configuration.modules[2].name, "c");
    EXPECT_EQ(configuration.sounds.fifoTimeoutMs, 2);
}

TEST_F(FragmentsTest, AddToTheConfigurationOfAModuleKeyByKey)
{
    write("host.json", R"({"modules": [{"name": "a", "library": "liba", "config":
        {"kept": 1, "replaced": 1, "limits": {"kept": 1, "replaced": 1}}}]})");
    write("host.json.d/a.json", R"({"modules": [{"name": "a", "config":
        {"replaced": 2, "limits": {"replaced": 2, "added": 2}}}]})");
    const auto configuration = read();
    ASSERT_EQ(configuration.modules.size(), 1);
    const ModuleEntry &module = configuration.modules[0];
    EXPECT_EQ(module.libraryName, "liba");
    const QVariantHash limits{{"kept", 1.0}, {"replaced", 2.0}, {"added", 2.0}};
    EXPECT_EQ(module.config["kept"], 1.0);
    EXPECT_EQ(module.config["replaced"], 2.0);
    EXPECT_EQ(module.config["limits"].toHash(), limits);
    EXPECT_EQ(module.origin, path("host.json.d/a.json") + ": modules[0]");
}

TEST_F(FragmentsTest, ReplaceTheLibraryOfAModule)
{
    write("host.json", R"({"modules": [{"name": "player", "library": "player"}]})");
    write("host.json.d/a.json", R"({"modules": [{"name": "player", "library": "./mine.so"}]})");
    EXPECT_EQ(read().modules[0].libraryName, path("host.json.d/mine.so"));
}

TEST_F(FragmentsTest, ChangeOnlyWhatTheyName)
{
    write("host.json", R"({"modules": ["a"], "modulePath": ["one"], "sounds": {"soundLimit": 7},
        "log": {"file": "log.properties", "level": "WARN"}})");
    write("host.json.d/a.json", R"({"modulePath": ["two"], "sounds": {"httpLimit": 8},
        "log": {"levels": {"Player": "DEBUG"}}})");
    const auto configuration = read();
    EXPECT_EQ(configuration.modulePath, QStringList({path("one"), path("host.json.d/two")}));
    EXPECT_EQ(configuration.sounds.maxSoundBytes, 7 << 20);
    EXPECT_EQ(configuration.sounds.httpMaxBytes, 8 << 20);
    EXPECT_EQ(configuration.log.file, path("log.properties"));
    EXPECT_EQ(configuration.log.origin, path("host.json"));
    EXPECT_EQ(configuration.log.levels.size(), 2);
}

TEST_F(FragmentsTest, AreNamedInTheirErrors)
{
    write("host.json", R"({"modules": ["a"]})");
    write("host.json.d/a.json", R"({"modulse": []})");
    EXPECT_EQ(error(), path("host.json.d/a.json").toStdString() + ": modulse: unknown key");
    write("host.json.d/a.json", R"({"modules": ["b", "b"]})");
    EXPECT_EQ(error(), path("host.json.d/a.json").toStdString() +
                           ": modules[1].name: \"b\" is the name of modules[0] already");
}

TEST_F(FragmentsTest, DoNotReplaceTheModulesOfTheFile)
{
    write("host.json", "{}");
    write("host.json.d/a.json", R"({"modules": ["a"]})");
    EXPECT_EQ(error(),
              path("host.json").toStdString() + ": modules: must name at least one module");
}

TEST_F(FragmentsTest, AreOnlyTheFilesWhoseNamesEndInJson)
{
    write("host.json", R"({"modules": ["a"]})");
    write("host.json.d/a.json.dpkg-old", "no JSON");
    write("host.json.d/.a.json", "no JSON");
    write("host.json.d/folder.json/a", "no JSON");
    EXPECT_EQ(read().modules.size(), 1);
}
