// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/definition/Commands.h"
#include "cli/reference/Completions.h"
#include "cli/reference/Writers.h"
#include "support/Text.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;

/// Runs the completions in a shell, with a fake tavo that lists nodes and messages.
class CompletionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        write("tavo.bash", bashCompletion(m_definition));
        write("_tavo", zshCompletion(m_definition));
        write("tavo.fish", fishCompletion(m_definition));
        write("tavo", R"(#!/bin/sh
case " $* " in
*" rows "*" /notifications/display/queue "*) printf '/ring\n/dbus/notifications/7\n' ;;
*) printf '/player/state\tvalue\tState\n/door\tlist\t\n%s\tlist\t\n' '/evil/$(touch hit) x' ;;
esac
)");
        QFile::setPermissions(file("tavo"), QFile::ReadOwner | QFile::ExeOwner);
    }

    QString file(const char *name) const { return m_folder.filePath(name); }

    void write(const char *name, const std::string &content)
    {
        QFile target(file(name));
        ASSERT_TRUE(target.open(QIODevice::WriteOnly));
        target.write(content.data(), qint64(content.size()));
    }

    /// The lines that the program prints.
    std::vector<std::string> run(const QString &program, const QStringList &arguments) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PATH", m_folder.path() + ':' + environment.value("PATH"));
        environment.insert("HOME", m_folder.path());
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.path());
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.readAllStandardError().toStdString(), "");
        std::vector<std::string> lines;
        for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
            if (!line.isEmpty()) {
                lines.push_back(line.toStdString());
            }
        }
        return lines;
    }

    /// The completions that bash offers for the last word.
    std::vector<std::string> bashOffers(const QString &words) const
    {
        return run("bash", {"--norc", "-c",
                            "source tavo.bash\ncompopt() { :; }\nCOMP_WORDS=(" + words +
                                ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_tavo\n"
                                "printf '%s\\n' \"${COMPREPLY[@]}\""});
    }

    static bool isThere(const char *shell)
    {
        return !QStandardPaths::findExecutable(shell).isEmpty();
    }

    Definition m_definition = commandLineDefinition();
    QTemporaryDir m_folder;
};

TEST_F(CompletionTest, EachHasEveryCommandAndOption)
{
    const std::string bash = bashCompletion(m_definition);
    const std::string zsh = zshCompletion(m_definition);
    const std::string fish = fishCompletion(m_definition);
    for (const CommandDefinition &command : m_definition.commands) {
        EXPECT_THAT(bash, HasSubstr("            " + command.name + ") options+="));
        EXPECT_THAT(zsh, HasSubstr('\'' + command.name + ':'));
        EXPECT_THAT(fish, HasSubstr(" -a " + command.name + " -d"));
        for (const OptionDefinition &option : command.options) {
            for (const std::string &name : option.names) {
                const std::string bare = name.substr(name.find_first_not_of('-'));
                EXPECT_THAT(bash, HasSubstr(name));
                EXPECT_THAT(zsh, HasSubstr(')' + name));
                EXPECT_THAT(fish, HasSubstr((bare.size() == 1 ? " -s " : " -l ") + bare));
            }
        }
    }
    for (const OptionDefinition &option : m_definition.program.options) {
        for (const std::string &name : option.names) {
            EXPECT_THAT(bash, HasSubstr(name));
            EXPECT_THAT(zsh, HasSubstr(')' + name));
        }
    }
}

TEST_F(CompletionTest, BashOffersCommands)
{
    EXPECT_THAT(bashOffers("tavo s"), ElementsAre("sound", "show", "say", "status"));
    EXPECT_THAT(bashOffers("tavo --bus system --json do"), ElementsAre("doctor"));
}

TEST_F(CompletionTest, BashOffersTheCommandsOwnOptionsAndTheGlobalOnes)
{
    EXPECT_THAT(bashOffers("tavo sound --"),
                IsSupersetOf({"--loop", "--stream", "--wait", "--json", "--bus"}));
    EXPECT_THAT(bashOffers("tavo get --lo"), IsEmpty());
}

TEST_F(CompletionTest, BashOffersTheValuesOfAnOption)
{
    EXPECT_THAT(bashOffers("tavo sound --priority u"), ElementsAre("urgent"));
    EXPECT_THAT(bashOffers("tavo sound --priority = hi"), ElementsAre("high"));
    EXPECT_THAT(bashOffers("tavo --bus ''"), ElementsAre("session", "system"));
}

TEST_F(CompletionTest, BashOffersFilesForAFileArgument)
{
    EXPECT_THAT(bashOffers("tavo sound --loop tavo.b"), ElementsAre("tavo.bash"));
    EXPECT_THAT(bashOffers("tavo sound one tavo.b"), IsEmpty());
}

TEST_F(CompletionTest, BashOffersTheNodesOfTheModel)
{
    EXPECT_THAT(bashOffers("tavo get /"),
                ElementsAre("/player/state", "/door", "/evil/\\$\\(touch\\ hit\\)\\ x"));
    EXPECT_THAT(bashOffers("tavo call /p"), ElementsAre("/player/state"));
}

TEST_F(CompletionTest, BashNeverRunsAPathAsCode)
{
    bashOffers("tavo get /");
    EXPECT_FALSE(QFile::exists(file("hit")));
}

TEST_F(CompletionTest, BashOffersTheOpenMessages)
{
    EXPECT_THAT(bashOffers("tavo cancel /"), ElementsAre("/ring", "/dbus/notifications/7"));
}

TEST_F(CompletionTest, FishOffersCommandsOptionsAndValues)
{
    if (!isThere("fish")) {
        GTEST_SKIP() << "there is no fish";
    }
    const auto offers = [this](const char *line) {
        return run("fish",
                   {"--no-config", "-c",
                    QStringLiteral("source tavo.fish; complete -C '%1' | cut -f 1").arg(line)});
    };
    EXPECT_THAT(offers("tavo so"), ElementsAre("sound"));
    EXPECT_THAT(offers("tavo sound --str"), ElementsAre("--stream"));
    EXPECT_THAT(offers("tavo sound --priority u"), ElementsAre("urgent"));
    EXPECT_THAT(offers("tavo get /p"), ElementsAre("/player/state"));
    EXPECT_THAT(offers("tavo cancel /r"), ElementsAre("/ring"));
    EXPECT_THAT(offers("tavo --bus system li"), ElementsAre("list"));
    EXPECT_THAT(offers("tavo call --reply-timeout 2 /p"), ElementsAre("/player/state"));
    EXPECT_THAT(offers("tavo call /player/state /p"), IsEmpty());
    EXPECT_THAT(offers("tavo show list --co"), IsEmpty());
}

TEST_F(CompletionTest, ZshAcceptsItsCompletion)
{
    if (!isThere("zsh")) {
        GTEST_SKIP() << "there is no zsh";
    }
    EXPECT_THAT(run("zsh", {"-n", "_tavo"}), IsEmpty());
}

TEST(ShellQuotedTest, EscapesQuotes)
{
    EXPECT_EQ(shellQuoted("it's"), "'it'\\''s'");
}
