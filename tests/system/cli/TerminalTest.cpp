// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/Printable.h"
#include "CliTest.h"

using testing::HasSubstr;
using testing::Not;

/// The program on a pseudo-terminal.
class CliTerminalTest : public CliTest
{
protected:
    void SetUp() override
    {
        startHost();
        prepare(m_script);
        m_script.setEnvironment("TERM", "xterm");
        m_script.setEnvironment("NO_COLOR", "");
    }

    static QStringList arguments(const QString &command)
    {
        return {"-q", "-e", "-c", QStringLiteral(TAVO_PROGRAM) + ' ' + command, "/dev/null"};
    }

    std::string outputOf(const QString &command)
    {
        EXPECT_EQ(m_script.run(arguments(command)), s_good);
        return m_script.output();
    }

    /// Expects printable text, but for the ends of lines.
    static void expectSafe(const std::string &output, const char *command)
    {
        EXPECT_FALSE(output.empty()) << command;
        EXPECT_TRUE(isPrintable(QString::fromStdString(output).remove('\r').remove('\n')))
            << command << ": " << printable(QString::fromStdString(output)).toStdString();
    }

    Program m_script{"script"};
};

TEST_F(CliTerminalTest, ThereAreColours)
{
    EXPECT_THAT(outputOf("status"), HasSubstr("\x1b[1m"));
}

TEST_F(CliTerminalTest, TheEnvironmentCanTurnColoursOff)
{
    m_script.setEnvironment("NO_COLOR", "1");
    EXPECT_THAT(outputOf("status"), Not(HasSubstr("\x1b")));
}

TEST_F(CliTerminalTest, ThereAreNoColoursOnAPipe)
{
    EXPECT_EQ(run({"status"}), s_good);
    EXPECT_THAT(m_tavo.output(), Not(HasSubstr("\x1b")));
}

TEST_F(CliTerminalTest, JsonHasNoColours)
{
    EXPECT_THAT(outputOf("--json status"), Not(HasSubstr("\x1b")));
}

TEST_F(CliTerminalTest, TheTreeIsIndented)
{
    EXPECT_THAT(outputOf("tree /player"),
                HasSubstr("player\r\n  alsaDevice\r\n    \x1b[1mmain\x1b[0m "));
}

TEST_F(CliTerminalTest, TheListHasColumns)
{
    EXPECT_EQ(outputOf("list"), "No messages.\r\n");
    run({"show", "--timeout", "0", "Door", "Ring"});
    run({"show", "--timeout", "0", "Oven"});
    m_script.setEnvironment("NO_COLOR", "1");
    EXPECT_EQ(outputOf("list"), "shown  /dbus/notifications/1  Door  Ring\r\n"
                                "    1  /dbus/notifications/2  Oven  \r\n");
}

TEST_F(CliTerminalTest, TheListSaysHowLongTheMessageStays)
{
    run({"show", "--timeout", "600000", "Door", "Ring"});
    m_script.setEnvironment("NO_COLOR", "1");
    EXPECT_THAT(outputOf("list"),
                testing::MatchesRegex(
                    "shown  /dbus/notifications/1  Door  Ring  [56][0-9][0-9]\\.[0-9] s left\r\n"));
}

TEST_F(CliTerminalTest, ALiveLineSaysWhatTheProgramWaitsFor)
{
    m_script.start(arguments("sound --loop --id bell " + soundFile()));
    EXPECT_TRUE(m_script.waitForOutput("bell sounds, 0 s"));
    EXPECT_EQ(run({"cancel", "bell"}), s_good);
    EXPECT_EQ(m_script.waitForExit(), s_cancelled);
    EXPECT_THAT(m_script.output(), testing::EndsWith("\r\x1b[Kcancelled\r\n"));
}

TEST_F(CliTerminalTest, ThereIsNoLiveLineOnAPipe)
{
    EXPECT_EQ(run({"sound", "--wait", soundFile()}), s_good);
    EXPECT_EQ(m_tavo.error(), "");
}

TEST_F(CliTerminalTest, ControlCharactersOfTextsDoNotReachTheTerminal)
{
    run({"call", "/notifications/display/open",
         R"({"notificationDisplayItem": {"title": "a\u001b]0;evil\u0007", "message": "\u001b[2Jb"}})"});
    const std::string listed = outputOf("list");
    EXPECT_THAT(listed, HasSubstr("a\\x1b]0;evil\\x07"));
    EXPECT_THAT(listed, HasSubstr("\\x1b[2Jb"));
}

TEST_F(CliTerminalTest, NothingThatIsUnsafeToPrintReachesTheTerminal)
{
    const QString unsafe = QString::fromUtf8("\x1b]0;t\x07 \x7f \u009b2J \u202e \u2068");
    for (const QJsonObject &item :
         {QJsonObject{{"title", "title" + unsafe}, {"message", "text" + unsafe}, {"timeout", 0}},
          QJsonObject{{"path", "/path" + unsafe}, {"timeout", 0}}}) {
        const QJsonObject value{{"notificationDisplayItem", item}};
        ASSERT_EQ(run({"call", "/notifications/display/open", "-"}, QJsonDocument(value).toJson()),
                  s_good);
    }
    run({"call", "/powerManager/moduleRegister", "-"},
        QJsonDocument(
            QJsonObject{{"moduleName", "module" + unsafe}, {"revokeResourcesPath", "/revoke"}})
            .toJson());
    m_script.setEnvironment("NO_COLOR", "1");
    for (const char *command :
         {"list", "--json list", "rows /notifications/display/queue", "tree", "--json tree",
          "status", "--json status", "get /powerManager/state", "--json get /powerManager/state",
          "cancel \"/x\xc2\x9b\xe2\x80\xae\""}) {
        m_script.run(arguments(QString::fromUtf8(command)));
        expectSafe(m_script.output(), command);
    }
    for (const char *command : {"watch", "--json watch"}) {
        m_script.start(arguments(QString::fromUtf8(command)));
        ASSERT_TRUE(m_script.waitForOutput("\"/path"));
        ASSERT_TRUE(m_script.waitForOutput("\"module"));
        m_script.sendSignal(SIGINT);
        m_script.waitForExit();
        expectSafe(m_script.output(), command);
    }
}

TEST_F(CliTerminalTest, AHugeTextDoesNotFillTheTerminal)
{
    run({"show", "--timeout", "0", QString(900, 't'), QString(60000, 'x')});
    m_script.setEnvironment("NO_COLOR", "1");
    EXPECT_LT(outputOf("list").size(), 600U);
    EXPECT_LT(outputOf("status").size(), 1000U);
    EXPECT_EQ(run({"list"}), s_good);
    EXPECT_GT(m_tavo.output().size(), 60000U) << "a pipe gets all of it";
}
