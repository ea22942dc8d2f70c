// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

using testing::HasSubstr;

class HostCommandLineTest : public HostTest
{
protected:
    std::string output() const { return m_host.output().toStdString(); }
    std::string log() const { return m_host.log().toStdString(); }
};

TEST_F(HostCommandLineTest, ShowsItsVersion)
{
    m_host.addArguments({"--version"});
    EXPECT_EQ(m_host.run(), 0);
    EXPECT_EQ(output(), "tavo-host " TAVO_VERSION "\n");
}

TEST_F(HostCommandLineTest, ListsItsExitCodesInItsHelp)
{
    m_host.addArguments({"--help"});
    EXPECT_EQ(m_host.run(), 0);
    for (const char *code :
         {"  0  ", "  64 ", "  69 ", "  70 ", "  71 ", "  78 ", "  130 ", "  143 "}) {
        EXPECT_THAT(output(), HasSubstr(code));
    }
}

TEST_F(HostCommandLineTest, RefusesAnUnknownOption)
{
    m_host.addArguments({"--bogus"});
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_EQ(log(), "tavo-host: Unknown option 'bogus'.\n");
}

TEST_F(HostCommandLineTest, EscapesAnArgumentThatItReports)
{
    m_host.addArguments({QString::fromUtf8("\x1b[2J\u202e")});
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_EQ(log(), "tavo-host: unexpected argument \\x1b[2J\\x202e\n");
}

TEST_F(HostCommandLineTest, RefusesAFileNameWithoutAnOption)
{
    m_host.addArguments({"host.json"});
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_EQ(log(), "tavo-host: unexpected argument host.json\n");
}

TEST_F(HostCommandLineTest, RefusesALevelThatDoesNotExist)
{
    m_host.addArguments({"--log-level", "Host=LOUD"});
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_THAT(log(), HasSubstr("--log-level Host=LOUD: "));
}

TEST_F(HostCommandLineTest, RefusesALevelInTheEnvironmentThatDoesNotExist)
{
    m_host.setEnvironment("TAVO_LOG_LEVEL", "LOUD");
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_THAT(log(), HasSubstr("TAVO_LOG_LEVEL: LOUD"));
}

TEST_F(HostCommandLineTest, RefusesADescriptorThatIsNotOpen)
{
    m_host.addArguments({"--ready-fd", "900"});
    EXPECT_EQ(m_host.run(), 64);
}

TEST_F(HostCommandLineTest, RefusesADescriptorThatIsNotANumber)
{
    m_host.addArguments({"--ready-fd", "out"});
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_EQ(log(), "tavo-host: --ready-fd out: must be an open descriptor\n");
}

TEST_F(HostCommandLineTest, RefusesADescriptorBelowZero)
{
    m_host.addArguments({"--ready-fd", "-1"});
    EXPECT_EQ(m_host.run(), 64);
}

TEST_F(HostCommandLineTest, RefusesAnEmptyNameOfAConfigurationFile)
{
    m_host.addArguments({"--config", ""});
    EXPECT_EQ(m_host.run(), 64);
    EXPECT_EQ(log(), "tavo-host: --config needs the name of a file\n");
}

TEST_F(HostCommandLineTest, RunsOnWhenItCannotReportThatItIsReady)
{
    m_host.setConfiguration(configurationOf({scripted("one")}));
    // Open, but only for reading.
    m_host.addArguments({"--ready-fd", "0"});
    ASSERT_TRUE(m_host.start());
    ASSERT_TRUE(m_host.waitForLog("Nobody reads the descriptor given by --ready-fd"));
    EXPECT_EQ(m_host.stop(), 0);
}

TEST_F(HostCommandLineTest, ChecksAConfigurationWithoutStartingAnything)
{
    const QString file =
        m_host.setConfiguration(configurationOf({scripted("one"), scripted("two")}));
    m_host.addArguments({"--check"});
    EXPECT_EQ(m_host.run(), 0);
    EXPECT_EQ(m_host.output(), file + ": good, 2 modules\n");
    EXPECT_EQ(log(), "");
}

TEST_F(HostCommandLineTest, FindsTheModulesOfItsBuiltInConfigurationByItself)
{
    m_host.addArguments({"--check"});
    EXPECT_EQ(m_host.run(), 0) << log();
    EXPECT_EQ(output(), "built-in configuration: good, 5 modules\n");
}

TEST_F(HostCommandLineTest, ChecksThatEachModuleIsThere)
{
    m_host.setConfiguration(configurationOf({"scripted", "absent"}));
    m_host.addArguments({"--check"});
    EXPECT_EQ(m_host.run(), 69);
    EXPECT_THAT(log(), HasSubstr("modules[1]: there is no libtavo_absent.so in "));
}

TEST_F(HostCommandLineTest, ListsModulesWithTheirFilesAndWhatIsWrongWithThem)
{
    m_host.addArguments({"--list-modules"});
    EXPECT_EQ(m_host.run(), 0);
    const QStringList lines = m_host.output().split('\n');
    EXPECT_TRUE(lines.contains("scripted\t" + moduleFile("scripted"))) << output();
    EXPECT_TRUE(lines.contains("without_entry\t" + moduleFile("without_entry") + "\terror: " +
                               moduleFile("without_entry") + " exports no worker_create"))
        << output();
    EXPECT_THAT(output(),
                HasSubstr("unresolved\t" + moduleFile("unresolved").toStdString() + "\terror: "));
}

TEST_F(HostCommandLineTest, FindsAModuleInTheFolderOfTheCommandLineBeforeAnyOther)
{
    const QString other = m_host.folder();
    ASSERT_TRUE(QFile::copy(moduleFile("scripted"), other + "/libtavo_scripted.so"));
    m_host.setEnvironment("TAVO_MODULE_PATH", other);
    m_host.addArguments({"--list-modules"});
    EXPECT_EQ(m_host.run(), 0);
    EXPECT_THAT(output(), HasSubstr("scripted\t" + moduleFile("scripted").toStdString()));
    EXPECT_THAT(output(), testing::Not(HasSubstr(other.toStdString() + "/libtavo_scripted.so")));
}

TEST_F(HostCommandLineTest, FindsAModuleInAFolderOfTheConfiguration)
{
    ASSERT_TRUE(QFile::copy(moduleFile("scripted"), m_host.folder() + "/libtavo_renamed.so"));
    auto configuration = configurationOf({"renamed"});
    configuration.insert("modulePath", QJsonArray{"."});
    m_host.setConfiguration(configuration);
    EXPECT_TRUE(m_host.startReady()) << log();
    EXPECT_EQ(m_host.stop(), 0);
}

TEST_F(HostCommandLineTest, FindsAModuleInAFolderOfTheEnvironment)
{
    ASSERT_TRUE(QFile::copy(moduleFile("scripted"), m_host.folder() + "/libtavo_renamed.so"));
    m_host.setEnvironment("TAVO_MODULE_PATH", "/nonexistent:" + m_host.folder());
    m_host.setConfiguration(configurationOf({"renamed"}));
    EXPECT_TRUE(m_host.startReady()) << log();
    EXPECT_EQ(m_host.stop(), 0);
}
