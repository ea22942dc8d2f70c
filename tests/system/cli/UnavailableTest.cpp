// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"
#include "support/bus/SilentBus.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

using testing::HasSubstr;
using testing::StartsWith;

class CliUnavailableTest : public CliTest
{
protected:
    /// All commands that need the host, with their arguments.
    std::vector<QStringList> commands()
    {
        return {{"sound", sounds()},
                {"sound", "--wait", sounds()},
                {"show", "Hello"},
                {"cancel", "bell"},
                {"list"},
                {"notify", "--wait", "Hello"},
                {"history"},
                {"dnd", "on"},
                {"watch"},
                {"get", "/x"},
                {"rows", "/x"},
                {"call", "/x"},
                {"tree"},
                {"status"}};
    }

    QString sounds()
    {
        QFile file(m_folder.filePath("sound.wav"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(sound());
        return file.fileName();
    }

    /// Expects that the program has written one line with a hint.
    void expectOneLine() const
    {
        const std::string error = m_tavo.error();
        EXPECT_THAT(error, StartsWith("tavo: "));
        EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
        EXPECT_EQ(m_tavo.output(), "");
    }

    QTemporaryDir m_folder;
};

TEST_F(CliUnavailableTest, EveryCommandReportsAMissingHostAndHowToStartOne)
{
    for (const QStringList &command : commands()) {
        EXPECT_EQ(run(command), s_unavailable) << command[0].toStdString();
        expectOneLine();
        EXPECT_THAT(m_tavo.error(), HasSubstr("Start one that has \"bus\": \"unix:path="))
            << command[0].toStdString();
    }
}

TEST_F(CliUnavailableTest, TheHintToStartAHostIsForTheBusInUse)
{
    m_tavo.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    m_tavo.setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address());
    EXPECT_EQ(run({"--bus", "session", "list"}), s_unavailable);
    EXPECT_EQ(m_tavo.error(), "tavo: no host is on the bus (session). Start one: tavo-host\n");
    EXPECT_EQ(run({"--bus", "system", "list"}), s_unavailable);
    EXPECT_THAT(m_tavo.error(), HasSubstr("\"bus\": \"system\""));
    EXPECT_THAT(m_tavo.error(), HasSubstr("systemctl start tavo-host"));
}

TEST_F(CliUnavailableTest, EveryCommandReportsAMissingBus)
{
    m_bus.stop();
    for (const QStringList &command : commands()) {
        EXPECT_EQ(run(command), s_unavailable) << command[0].toStdString();
        expectOneLine();
        EXPECT_THAT(m_tavo.error(), HasSubstr("can't be reached")) << command[0].toStdString();
    }
}

TEST_F(CliUnavailableTest, SaysHowToGetASessionBus)
{
    m_tavo.setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + m_folder.filePath("none"));
    EXPECT_EQ(run({"--bus", "session", "status"}), s_unavailable);
    EXPECT_THAT(m_tavo.error(), HasSubstr("dbus-run-session"));
}

TEST_F(CliUnavailableTest, WaitsForAReplyOnlyUntilTheTimeout)
{
    startHost();
    m_host->sendSignal(SIGSTOP);
    EXPECT_EQ(run({"--reply-timeout", "0.2", "tree"}), s_timedOut);
    m_host->sendSignal(SIGCONT);
    expectOneLine();
    EXPECT_THAT(m_tavo.error(), HasSubstr("--reply-timeout"));
}

TEST_F(CliUnavailableTest, WaitsForASilentBusOnlyUntilTheTimeout)
{
    for (const auto after : {SilentBus::After::Connecting, SilentBus::After::Authenticating,
                             SilentBus::After::Greeting}) {
        const SilentBus silent(after);
        EXPECT_EQ(run({"--reply-timeout", "0.2", "--bus", silent.address(), "status"}), s_timedOut);
        expectOneLine();
        EXPECT_THAT(m_tavo.error(), HasSubstr("does not answer"));
    }
}

TEST_F(CliUnavailableTest, EveryCommandReportsASilentBus)
{
    m_bus.pause();
    for (const QStringList &command : commands()) {
        EXPECT_EQ(run(QStringList{"--reply-timeout", "0.2"} + command), s_timedOut)
            << command[0].toStdString();
        expectOneLine();
        EXPECT_THAT(m_tavo.error(), HasSubstr("does not answer")) << command[0].toStdString();
    }
}

TEST_F(CliUnavailableTest, UsesABusThatRespondsAgainInTime)
{
    startHost();
    m_bus.pause();
    m_tavo.start({"tree"});
    // Time for the program to connect.
    waitFor([] { return false; }, std::chrono::milliseconds(500));
    m_bus.resume();
    EXPECT_EQ(m_tavo.waitForExit(), s_good);
}

TEST_F(CliUnavailableTest, TheHostEndsAtOnceWhileItsBusIsSilent)
{
    startHost();
    m_bus.pause();
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(m_host->stop(), 0);
    EXPECT_LT(elapsed.elapsed(), 1000);
}

TEST_F(CliUnavailableTest, WrongArgumentsAreRefusedInOneLine)
{
    for (const QStringList &command : {QStringList{"sing"}, QStringList{}, QStringList{"sound"},
                                       QStringList{"get", "/x", "-y"}}) {
        EXPECT_EQ(run(command), s_usage);
        expectOneLine();
        EXPECT_THAT(m_tavo.error(), HasSubstr("--help"));
    }
}

TEST_F(CliUnavailableTest, AnOutputThatCannotBeWrittenIsAFailure)
{
    startHost();
    Program shell("sh");
    prepare(shell);
    constexpr int systemError = 71;
    EXPECT_EQ(shell.run({"-c", QStringLiteral(TAVO_PROGRAM) + " tree > /dev/full"}), systemError);
    EXPECT_EQ(shell.error(), "tavo: standard output can't be written: No space left on device\n");
    EXPECT_EQ(shell.run({"-c", QStringLiteral(TAVO_PROGRAM) + " watch > /dev/full"}), systemError);
}

/// On a bus whose policy denies the program access to the host.
class CliNotPermittedTest : public CliTest
{
protected:
    CliNotPermittedTest()
        : CliTest("<policy context=\"mandatory\">"
                  "<deny send_destination=\"org.tavo.Model1\"/>"
                  "</policy>")
    {
    }
};

TEST_F(CliNotPermittedTest, ReportsWhichGroupIsPermitted)
{
    startHost();
    for (const QStringList &command :
         {QStringList{"list"}, QStringList{"watch"}, QStringList{"sound", "--wait", soundFile()}}) {
        EXPECT_EQ(run(command), s_refused);
        EXPECT_THAT(m_tavo.error(), HasSubstr("does not let this user send requests to the host"));
        EXPECT_THAT(m_tavo.error(), HasSubstr("group tavo-host"));
    }
    EXPECT_EQ(run({"doctor"}), s_refused);
    EXPECT_THAT(m_tavo.output(), HasSubstr("missing  host: this user may not call it\n"));
    EXPECT_THAT(m_tavo.output(), HasSubstr("group tavo-host"));
}
