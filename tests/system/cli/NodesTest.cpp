// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"
#include "support/bus/ClientProgram.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

class CliNodesTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }
};

TEST_F(CliNodesTest, GetPrintsAValue)
{
    EXPECT_EQ(run({"get", "/notifications/player/isPlaying"}), s_good);
    EXPECT_EQ(m_tavo.output(), "bool: false\n");
}

TEST_F(CliNodesTest, GetPrintsAValueAsJson)
{
    EXPECT_EQ(run({"get", "--json", "/player/alsaDevice/main"}), s_good);
    EXPECT_EQ(json().toObject(), (QJsonObject{{"audioDevice", QJsonObject{{"device", "null"}}}}));
}

TEST_F(CliNodesTest, ReportsAPathWithoutANode)
{
    EXPECT_EQ(run({"get", "/nothing"}), s_refused);
    EXPECT_THAT(m_tavo.error(), StartsWith("tavo: there is no node at /nothing."));
}

TEST_F(CliNodesTest, ReportsANodeOfAnotherKind)
{
    EXPECT_EQ(run({"get", "/notifications/player/enqueue"}), s_refused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("takes no such request"));
}

TEST_F(CliNodesTest, RefusesAnInvalidPath)
{
    for (const char *command : {"get", "rows", "call", "tree", "watch"}) {
        EXPECT_EQ(run({command, "no-path"}), s_usage) << command;
        EXPECT_THAT(m_tavo.error(), HasSubstr("must begin with a slash")) << command;
    }
}

TEST_F(CliNodesTest, CallSendsAValueAndPrintsTheReply)
{
    EXPECT_EQ(run({"call", "/player/mainAudio/volume", "0.25"}), s_good);
    EXPECT_EQ(m_tavo.output(), "") << "the reply is empty";
    EXPECT_EQ(run({"get", "--json", "/player/mainAudio/state"}), s_good);
    EXPECT_EQ(json().toObject().value("mainAudioState").toObject().value("volume"), 0.25);
}

TEST_F(CliNodesTest, CallPrintsAnEmptyReplyAsNull)
{
    EXPECT_EQ(run({"call", "--json", "/player/mainAudio/volume", "1"}), s_good);
    EXPECT_EQ(m_tavo.output(), "null\n");
}

TEST_F(CliNodesTest, CallReadsTheValueFromItsInput)
{
    EXPECT_EQ(run({"call", "/player/mainAudio/volume", "-"}, "{\"double\": 0.5}\n"), s_good);
    EXPECT_EQ(run({"get", "--json", "/player/mainAudio/state"}), s_good);
    EXPECT_EQ(json().toObject().value("mainAudioState").toObject().value("volume"), 0.5);
}

TEST_F(CliNodesTest, CallRefusesInvalidJson)
{
    EXPECT_EQ(run({"call", "/player/mainAudio/volume", "loud"}), s_usage);
    EXPECT_THAT(m_tavo.error(), HasSubstr("not JSON"));
}

TEST_F(CliNodesTest, CallReportsTheErrorOfTheHostWithItsName)
{
    EXPECT_EQ(run({"call", "/player/mainAudio/volume", "4"}), s_refused);
    EXPECT_EQ(m_tavo.error(), "tavo: the host refused: The volume must be a number from 0.0 to 1.0 "
                              "(Player)\n");
}

TEST_F(CliNodesTest, RowsPrintsALineForEachRow)
{
    for (int i = 0; i < 3; ++i) {
        run({"call", "/notifications/display/open",
             R"({"notificationDisplayItem": {"message": "Hello"}})"});
    }
    EXPECT_EQ(run({"rows", "/notifications/display/queue"}), s_good);
    EXPECT_EQ(m_tavo.lines().size(), 3U);
    EXPECT_THAT(m_tavo.lines()[0], StartsWith("/notifications/display/simpleMessageNode/"));
    const std::string second = m_tavo.lines()[1];
    EXPECT_EQ(run({"rows", "--first", "1", "--count", "1", "/notifications/display/queue"}),
              s_good);
    EXPECT_THAT(m_tavo.lines(), testing::ElementsAre(second));
    EXPECT_EQ(run({"rows", "--json", "/notifications/display/queue"}), s_good);
    EXPECT_EQ(json().toArray().size(), 3);
}

TEST_F(CliNodesTest, RowsSeparatesRecordsByABlankLine)
{
    ClientProgram desktop(m_bus, "gdbus",
                          {"call", "--session", "--dest", "org.freedesktop.Notifications",
                           "--object-path", "/org/freedesktop/Notifications", "--method",
                           "org.freedesktop.Notifications.Notify", "Bell", "0", "", "Door", "Ring",
                           "['open', 'Open']", "{}", "0"});
    ASSERT_TRUE(desktop.succeeds()) << desktop.errors().toStdString();
    EXPECT_EQ(run({"rows", "/dbus/notifications/1"}), s_good);
    EXPECT_EQ(m_tavo.output(), "application: Bell\ntitle: Ring\ntype: 6\n\n"
                               "path: /dbus/notifications/1/actions/open\ntitle: Open\ntype: 2\n");
}

TEST_F(CliNodesTest, TreePrintsALineForEachNodeToAPipe)
{
    EXPECT_EQ(run({"tree"}), s_good);
    EXPECT_THAT(m_tavo.lines(), Contains("/player/mainAudio/state\tvalue\t"));
    EXPECT_THAT(m_tavo.lines(), Contains("/notifications/player/enqueue\trequest\t"));
    EXPECT_THAT(m_tavo.lines(), Contains("/notifications/display/queue\tlist\tList of messages"));
}

TEST_F(CliNodesTest, TreeBeginsAtTheGivenPath)
{
    EXPECT_EQ(run({"tree", "--json", "/player/alsaDevice"}), s_good);
    const QJsonArray nodes = json().toArray();
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes[0].toObject(),
              (QJsonObject{{"path", "/player/alsaDevice/main"}, {"kind", "value"}, {"title", ""}}));
    EXPECT_EQ(run({"tree", "/nothing"}), s_refused);
}

TEST_F(CliNodesTest, CallWaitsLongerForItsInputThanForAReply)
{
    Program shell("sh");
    prepare(shell);
    EXPECT_EQ(shell.run({"-c", "(sleep 3; echo 1) | " + QStringLiteral(TAVO_PROGRAM) +
                                   " --reply-timeout 2 call /notifications/player/cancel -"}),
              s_refused)
        << shell.error();
}

TEST_F(CliNodesTest, CallIsEndedByASignalWhileItReadsItsInput)
{
    QTemporaryDir folder;
    const QByteArray fifo = QFile::encodeName(folder.filePath("input"));
    ASSERT_EQ(mkfifo(fifo.constData(), S_IRUSR | S_IWUSR), 0);
    const int end = open(fifo.constData(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(write(end, "[1", 2), 2);
    Program shell("sh");
    prepare(shell);
    shell.start({"-c", "exec " + QStringLiteral(TAVO_PROGRAM) + " call /x - < " +
                           folder.filePath("input")});
    EXPECT_TRUE(waitFor([&] {
        int unread = 0;
        return ioctl(end, FIONREAD, &unread) == 0 && unread == 0;
    }));
    shell.sendSignal(SIGINT);
    constexpr int byTheSignal = -1;
    EXPECT_EQ(shell.waitForExit(), byTheSignal);
    EXPECT_FALSE(shell.isRunning());
    close(end);
}
