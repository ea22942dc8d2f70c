// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"

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
    // The header too, but the size stays the same. What is heard is noise, and it ends.
    ASSERT_EQ(file.write(QByteArray(int(file.size()), 'x')), file.size());
    file.close();
    expectFinishedWhole();
    expectAsGoodAsNew();
}
