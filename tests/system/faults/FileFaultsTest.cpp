// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"

#include <QElapsedTimer>
#include <QFile>

using testing::ElementsAre;

namespace {

constexpr int lengthMs = 1500;

// By then the file is open and being read.
constexpr int begunMs = 100;

constexpr int headerBytes = 44;

} // namespace

/// Something happens to a file while it plays.
class FileFaultsTest : public FaultTest
{
protected:
    void SetUp() override { start(); }

    void startSound(bool loop = false)
    {
        m_file = soundFile("sound.wav", lengthMs);
        QJsonObject item = fileItem("sound", m_file);
        item.insert("loop", loop);
        m_requester.enqueue(item);
        ASSERT_TRUE(m_requester.waitFor("started sound"));
        ASSERT_TRUE(waitForFrames(framesOf(begunMs)));
    }

    void expectFailed()
    {
        EXPECT_TRUE(m_requester.waitForEnd("sound"));
        EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "failed sound"));
        EXPECT_LT(framesHeard(), framesOf(lengthMs));
    }

    void expectFinishedWhole()
    {
        EXPECT_TRUE(m_requester.waitForEnd("sound"));
        EXPECT_THAT(m_requester.responses(), ElementsAre("started sound", "finished sound"));
        EXPECT_GE(framesHeard(), framesOf(lengthMs));
    }

    /// Plays a file that takes no space, but would take minutes to read.
    void startHugeFile()
    {
        m_file = soundFile("huge.wav", lengthMs);
        QByteArray head = readFile(m_file).left(headerBytes);
        head.replace("data", "junk");
        head.replace(4, 4, QByteArray("\x00\xff\xff\x7e", 4));
        head.replace(headerBytes - 4, 4, QByteArray(4, 0));
        m_host.writeFile("huge.wav", head);
        constexpr qint64 hugeBytes = qint64(4) << 30;
        ASSERT_TRUE(QFile::resize(m_file, hugeBytes));
        m_requester.enqueue(fileItem("huge", m_file));
    }

    QString m_file;
};

TEST_F(FileFaultsTest, AFileThatIsTruncatedFailsWhereItEnds)
{
    startSound();
    ASSERT_TRUE(QFile::resize(m_file, headerBytes + 2 * framesOf(lengthMs / 2)));
    expectFailed();
    EXPECT_TRUE(m_host.waitForLog("is cut off after"));
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AFileThatIsEmptiedFails)
{
    startSound();
    ASSERT_TRUE(QFile::resize(m_file, 0));
    expectFailed();
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AFileThatIsEmptiedEndsItsLoop)
{
    constexpr bool loop = true;
    startSound(loop);
    ASSERT_TRUE(QFile::resize(m_file, 0));
    expectFailed();
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AFileThatIsDeletedIsHeardToItsEnd)
{
    startSound();
    ASSERT_TRUE(QFile::remove(m_file));
    expectFinishedWhole();
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AFileThatIsReplacedIsHeardToItsEnd)
{
    startSound();
    ASSERT_TRUE(QFile::remove(m_file));
    m_host.writeFile("sound.wav", "These are words.\n");
    expectFinishedWhole();
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AFileThatIsOverwrittenEndsOnce)
{
    startSound();
    QFile file(m_file);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    // Overwrites the header, too, but keeps the size. The rest plays as noise, and the sound ends.
    ASSERT_EQ(file.write(QByteArray(int(file.size()), 'x')), file.size());
    file.close();
    expectFinishedWhole();
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AHugeFileDoesNotDelayAnUrgentSound)
{
    startHugeFile();
    QElapsedTimer elapsed;
    elapsed.start();
    m_requester.enqueue(fileItem("urgent", soundFile("urgent.wav", begunMs), 3));
    EXPECT_TRUE(m_requester.waitFor("finished urgent"));
    EXPECT_LT(elapsed.elapsed(), promptMs);
    EXPECT_TRUE(m_requester.waitFor("failed huge"));
    expectAsGoodAsNew();
}

TEST_F(FileFaultsTest, AHugeFileDoesNotDelayTheEndOfTheHost)
{
    startHugeFile();
    EXPECT_EQ(m_requester.answer(), "");
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(stopHost(), 0);
    EXPECT_LT(elapsed.elapsed(), promptMs);
}
