// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "SoundTest.h"

#include <QElapsedTimer>
#include <QFile>

#include <sys/stat.h>

namespace {

constexpr int endlessMs = 20000;

// For a busy machine and a sanitizer's report, since a host that stops does not wait for sounds.
constexpr int promptMs = 5000;

} // namespace

class StopTest : public SoundTest
{
protected:
    void enqueueEndless(const QString &id, int priority = 1)
    {
        m_requester.enqueue(fileItem(id, toneFile(frequency, endlessMs), priority));
    }

    void expectPromptEnd()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        EXPECT_EQ(stopHost(), 0) << m_host.log().toStdString();
        EXPECT_LT(elapsed.elapsed(), promptMs);
    }
};

TEST_F(StopTest, AHostEndsInTheMiddleOfASound)
{
    start(withMusic());
    enqueueEndless("sound");
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    expectPromptEnd();
}

TEST_F(StopTest, AHostEndsWhileTheMusicIsBeingDucked)
{
    start(withMusic());
    waitForMusic();
    enqueueEndless("sound");
    ASSERT_TRUE(m_requester.waitFor("ducked"));
    expectPromptEnd();
}

TEST_F(StopTest, AHostEndsRightAfterARequest)
{
    start(withMusic());
    waitForMusic();
    enqueueEndless("sound");
    expectPromptEnd();
}

TEST_F(StopTest, AHostEndsWithPausedAndWaitingSounds)
{
    start(withMusic());
    enqueueEndless("paused");
    ASSERT_TRUE(m_notificationDevice.waitForSound());
    enqueueEndless("playing", 3);
    ASSERT_TRUE(m_requester.waitFor("started playing"));
    enqueueEndless("waiting", 0);
    EXPECT_EQ(m_requester.answer(), "");
    expectPromptEnd();
}

TEST_F(StopTest, AHostEndsWhileASoundIsBeingFetched)
{
    HttpServer server;
    start(withMusic());
    m_requester.enqueue(fileItem("sound", server.silent()));
    ASSERT_TRUE(m_requester.waitFor("started sound"));
    expectPromptEnd();
}

TEST_F(StopTest, AHostEndsWhileAStreamStalls)
{
    const QString fifo = inFolder("silent.fifo");
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    start(withMusic());
    m_requester.enqueue({{"id", "sound"},
                         {"type", 2},
                         {"content", fifo},
                         {"contentStreamFormat", "audio/L16;rate=48000;channels=1"}});
    ASSERT_TRUE(m_requester.waitFor("started sound"));
    expectPromptEnd();
}
