// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CliTest.h"

#include <QDir>
#include <QtEndian>

#include <sys/stat.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class CliSoundTest : public CliTest
{
protected:
    void SetUp() override { startHost(); }

    /// Starts a sound that repeats until it is cancelled.
    void startLoop(const QStringList &more = {})
    {
        m_tavo.start(QStringList{"sound", "--loop", "--id", "bell", soundFile()} + more);
        ASSERT_TRUE(m_tavo.waitForOutput("bell"));
        ASSERT_TRUE(m_host->waitForLog("Starting playback: bell"));
    }
};

TEST_F(CliSoundTest, PrintsTheIdOnceTheSoundIsQueued)
{
    EXPECT_EQ(run({"sound", soundFile(), "--id", "bell"}), s_good);
    EXPECT_EQ(m_tavo.output(), "bell\n");
    EXPECT_TRUE(m_host->waitForLog("Starting playback: bell"));
}

TEST_F(CliSoundTest, MakesANewIdByDefault)
{
    EXPECT_EQ(run({"sound", soundFile()}), s_good);
    EXPECT_THAT(m_tavo.output(), StartsWith("tavo-"));
    const std::string first = m_tavo.output();
    EXPECT_EQ(run({"sound", soundFile()}), s_good);
    EXPECT_NE(m_tavo.output(), first);
}

TEST_F(CliSoundTest, WithWaitSucceedsWhenTheSoundFinishes)
{
    EXPECT_EQ(run({"sound", "--wait", "--id", "bell", soundFile()}), s_good);
    EXPECT_EQ(m_tavo.output(), "bell\nfinished\n");
}

TEST_F(CliSoundTest, WithWaitReportsThatTheSoundCannotBePlayed)
{
    const QString file = m_host->writeFile("text.wav", "no sound");
    EXPECT_EQ(run({"sound", "--wait", file}), s_failed);
    EXPECT_THAT(m_tavo.output(), HasSubstr("\nfailed\n"));
    EXPECT_THAT(m_tavo.error(), HasSubstr("host's log"));
}

TEST_F(CliSoundTest, WithWaitReportsThatTheSoundWasCancelled)
{
    startLoop();
    EXPECT_EQ(m_other.run({"cancel", "bell"}), s_good) << m_other.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_cancelled);
    EXPECT_EQ(m_tavo.output(), "bell\ncancelled\n");
}

TEST_F(CliSoundTest, WithWaitReportsThatTheHostHasGone)
{
    startLoop();
    m_host->stop();
    EXPECT_EQ(m_tavo.waitForExit(), s_endUnknown);
    EXPECT_THAT(m_tavo.error(), HasSubstr("the host went away"));
}

TEST_F(CliSoundTest, WithWaitAnInterruptCancelsTheSound)
{
    startLoop();
    m_tavo.sendSignal(SIGINT);
    EXPECT_EQ(m_tavo.waitForExit(), s_interrupted);
    EXPECT_EQ(m_tavo.output(), "bell\ncancelled\n");
}

TEST_F(CliSoundTest, WithWaitSigtermCancelsTheSound)
{
    startLoop();
    m_tavo.sendSignal(SIGTERM);
    EXPECT_EQ(m_tavo.waitForExit(), s_terminated);
    EXPECT_EQ(m_tavo.output(), "bell\ncancelled\n");
}

TEST_F(CliSoundTest, ALoopEndsWithTheProgramHoweverThatEnds)
{
    startLoop();
    m_tavo.sendSignal(SIGKILL);
    m_tavo.waitForExit();
    EXPECT_TRUE(m_host->waitForLog("Released Audio of notifications"));
}

TEST_F(CliSoundTest, WithWaitIgnoresTheEndsOfOtherSounds)
{
    startLoop();
    const QString finished = R"({"notificationPlayerResponse": {"id": "other", "type": 2}})";
    ASSERT_EQ(m_other.run({"call", "/dbus/inbox/1", finished}), s_good) << m_other.error();
    EXPECT_EQ(m_other.run({"cancel", "bell"}), s_good) << m_other.error();
    EXPECT_EQ(m_tavo.waitForExit(), s_cancelled);
    EXPECT_EQ(m_tavo.output(), "bell\ncancelled\n");
}

/// Another client sends more to the inbox of a sound than the host keeps for a program that does not
/// read.
class CliSoundFloodTest : public CliSoundTest
{
protected:
    void SetUp() override { startHost({}, {{"unreadBytes", 1 << 20}, {"messageBytes", 1 << 21}}); }

    void flood(const QString &inbox)
    {
        const QByteArray large = '"' + QByteArray(900'000, 'x') + '"';
        m_tavo.sendSignal(SIGSTOP);
        for (int i = 0; i < 4; ++i) {
            ASSERT_EQ(m_other.run({"call", inbox, "-"}, large), s_good) << m_other.error();
        }
        m_tavo.sendSignal(SIGCONT);
    }
};

TEST_F(CliSoundFloodTest, WithWaitReportsThatTheEndIsUnknown)
{
    Program loop(TAVO_PROGRAM);
    prepare(loop);
    loop.start({"sound", "--loop", soundFile()});
    ASSERT_TRUE(m_host->waitForLog("Starting playback"));
    m_tavo.start({"sound", "--wait", "--id", "bell", soundFile()});
    ASSERT_TRUE(m_tavo.waitForOutput("bell"));
    flood("/dbus/inbox/2");
    EXPECT_EQ(m_tavo.waitForExit(), s_endUnknown);
    EXPECT_EQ(m_tavo.error(),
              "tavo: the host left out reports, and the end of the sound bell may be "
              "among them\n");
}

TEST_F(CliSoundFloodTest, ALoopGoesOn)
{
    startLoop();
    flood("/dbus/inbox/1");
    ASSERT_TRUE(
        waitFor([this] { return m_tavo.error().find("may be among") != std::string::npos; }));
    EXPECT_TRUE(m_tavo.isRunning());
    EXPECT_FALSE(m_host->log().contains("Released Audio of notifications"));
    // The report of this may be left out, too.
    EXPECT_EQ(m_other.run({"cancel", "bell"}), s_good) << m_other.error();
    EXPECT_TRUE(m_host->waitForLog("Released Audio of notifications"));
}

TEST_F(CliSoundTest, ReportsARefusedSchemeAndHowToAllowIt)
{
    EXPECT_EQ(run({"sound", "https://host/sound.wav"}), s_refused);
    EXPECT_EQ(m_tavo.error(),
              "tavo: the host refused: \"https://host/sound.wav\" has a scheme that is "
              "not allowed. \"sounds\" in its configuration of the module dbus says "
              "which sounds clients may play\n");
}

TEST_F(CliSoundTest, PrintsEventsAsJsonInTheirOrder)
{
    EXPECT_EQ(run({"sound", "--wait", "--json", "--id", "bell", soundFile()}), s_good);
    EXPECT_THAT(m_tavo.lines(), ElementsAre(R"({"event":"queued","id":"bell"})",
                                            R"({"event":"started","id":"bell"})",
                                            R"({"event":"finished","id":"bell"})"));
}

TEST_F(CliSoundTest, PlaysASoundFromItsInput)
{
    EXPECT_EQ(run({"sound", "--wait", "-"}, sound()), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("finished"));
}

/// As espeak writes it to a pipe.
TEST_F(CliSoundTest, PlaysASoundOfUnknownLengthFromItsInput)
{
    QByteArray wav = sound();
    qToLittleEndian(quint32(0x7ffff024), wav.data() + 4);
    qToLittleEndian(quint32(0x7ffff000), wav.data() + wav.indexOf("data") + 4);
    EXPECT_EQ(run({"sound", "--wait", "-"}, wav), s_good);
    EXPECT_THAT(m_tavo.output(), HasSubstr("finished"));
}

TEST_F(CliSoundTest, RefusesAnEmptyInput)
{
    EXPECT_EQ(run({"sound", "-"}), s_noInput);
    EXPECT_EQ(m_tavo.error(), "tavo: standard input is empty\n");
}

TEST_F(CliSoundTest, RefusesAStreamOnItsInput)
{
    EXPECT_EQ(run({"sound", "-", "--stream", "audio/L16;rate=8000;channels=1"}, sound()), s_usage);
    EXPECT_THAT(m_tavo.error(), HasSubstr("mkfifo"));
}

TEST_F(CliSoundTest, ReportsASoundThatIsTooLargeForTheHost)
{
    EXPECT_EQ(run({"sound", "-"}, sound() + QByteArray(4 << 20, '\0')), s_refused);
    EXPECT_THAT(m_tavo.error(), HasSubstr("limits"));
}

TEST_F(CliSoundTest, RefusesAMissingFile)
{
    EXPECT_EQ(run({"sound", "/nowhere/sound.wav"}), s_noInput);
    EXPECT_EQ(m_tavo.error(),
              "tavo: /nowhere/sound.wav can't be read: No such file or directory\n");
}

TEST_F(CliSoundTest, RefusesAFolder)
{
    EXPECT_EQ(run({"sound", m_host->folder()}), s_noInput);
    EXPECT_THAT(m_tavo.error(), HasSubstr("Is a directory"));
}

TEST_F(CliSoundTest, FindsAFileByItsRelativeName)
{
    soundFile("my sound #1 100%.wav");
    m_tavo.setFolder(m_host->folder());
    EXPECT_EQ(run({"sound", "--wait", "my sound #1 100%.wav"}), s_good) << m_tavo.error();
}

TEST_F(CliSoundTest, PlaysAFileUri)
{
    EXPECT_EQ(run({"sound", "--wait", "file://" + soundFile()}), s_good) << m_tavo.error();
}

TEST_F(CliSoundTest, PlaysAStreamFromAFifo)
{
    const QString fifo = m_host->folder() + "/fifo";
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    m_tavo.start({"sound", "--stream", "audio/L16;rate=8000;channels=1", fifo});
    Program writer("sh");
    EXPECT_EQ(writer.run({"-c", "head -c 1600 /dev/zero > " + fifo}), 0);
    EXPECT_EQ(m_tavo.waitForExit(), s_good) << m_tavo.error();
}

TEST_F(CliSoundTest, ReportsThatAnIdIsInUse)
{
    startLoop();
    EXPECT_EQ(m_other.run({"sound", "--id", "bell", soundFile()}), s_refused);
    EXPECT_EQ(m_other.error(), "tavo: the host did not queue the sound bell: there may be one with "
                               "that id already. Its log says why\n");
}

TEST_F(CliSoundTest, AcceptsANumberAsPriority)
{
    startLoop();
    EXPECT_EQ(m_other.run({"sound", "--priority", "17", "--wait", soundFile()}), s_good)
        << "it goes before the loop, which never ends";
}
