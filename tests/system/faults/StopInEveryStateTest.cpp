// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"
#include "support/EventLoop.h"

#include <QElapsedTimer>
#include <QFile>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class StopInEveryStateTest;

/// A state of the audio sequence or of the display, and how to bring a host into it and hold it
/// there.
struct StateToStopIn
{
    const char *name;
    void (StopInEveryStateTest::*reach)();
};

/// The services are stand-ins that hold the sequence in the state.
class StopInEveryStateTest : public FaultTest, public testing::WithParamInterface<StateToStopIn>
{
public:
    void idle() { startHost({}); }

    void ducking()
    {
        startHost({{"keep", QJsonArray{"duck"}}});
        enqueueLong("sound");
        ASSERT_TRUE(m_host.waitForLog("keeping duck"));
    }

    void acquiring()
    {
        startHost({{"keep", QJsonArray{"acquire"}}});
        enqueueLong("sound");
        ASSERT_TRUE(m_host.waitForLog("keeping acquire"));
    }

    void acquiringForNobody()
    {
        acquiring();
        m_requester.cancel("sound");
        ASSERT_TRUE(m_requester.waitFor("cancelled sound"));
    }

    void playing()
    {
        startHost({});
        playLong("sound");
    }

    void playingAPlaceholder()
    {
        startHost({});
        m_requester.enqueue(endlessItem("sound"));
        ASSERT_TRUE(m_requester.waitFor("started sound"));
    }

    /// Between an end and what follows: inside the response that reports the end.
    void ready()
    {
        ASSERT_EQ(mkfifo(fifoName().constData(), 0600), 0);
        startHost({{"responseWaits", inFolder("response.fifo")}});
        // Fails, so its only response is that of its end.
        m_requester.invoke("/notifications/player/enqueue",
                           {{"notificationPlayerItem",
                             QJsonObject{{"id", "sound"},
                                         {"type", 7},
                                         {"playbackResponsePath", "/standIn/services/response"}}}});
        ASSERT_TRUE(m_host.waitForLog("holding a response"));
        enqueueLongUnanswered("next");
        m_release = true;
    }

    void lingering()
    {
        startHost({});
        m_requester.enqueue(fileItem("sound", soundFile("short.wav", shortMs)));
        // It is over in 0.1 s; the signal is sent at once.
        ASSERT_TRUE(m_requester.waitFor("finished sound"));
    }

    void stalled()
    {
        startHost({{"refuse", QJsonArray{"acquire"}}});
        enqueueLong("sound");
        ASSERT_TRUE(m_requester.waitFor("cancelled sound"));
    }

    void unducking()
    {
        startHost({{"keep", QJsonArray{"unduck"}}});
        m_requester.enqueue(fileItem("sound", soundFile("short.wav", shortMs)));
        ASSERT_TRUE(m_host.waitForLog("keeping unduck"));
    }

    void unduckingWithOneWaiting()
    {
        unducking();
        enqueueLong("next");
    }

    void preempted()
    {
        startHost({});
        playLong("paused");
        enqueueLong("urgent", 3);
        ASSERT_TRUE(m_requester.waitFor("started urgent"));
    }

    /// The device takes some time to close; meanwhile the player's end is still to come.
    void stopping()
    {
        startHost({{"device", "clings"}});
        playLong("sound");
        enqueueLong("next");
        m_requester.cancel("sound");
        ASSERT_EQ(m_requester.answer(), "");
    }

    void displaying()
    {
        startHost({});
        show("message", 0, 1);
    }

    void displayingForATime()
    {
        startHost({});
        show("message", longMs, 1);
    }

    void displayPaused()
    {
        startHost({});
        show("paused", longMs, 1);
        show("urgent", longMs, 3);
        show("waiting", longMs, 0);
    }

    void playingAndDisplaying()
    {
        startHost({});
        playLong("sound");
        show("message", longMs, 1);
    }

protected:
    void startHost(QJsonObject services)
    {
        services.insert("powerManager", true);
        services.insert("player", true);
        if (!services.contains("device")) {
            services.insert("device", "plain");
        }
        startModules({standIn(services), "notifications", m_requester.module()});
    }

    QByteArray fifoName() const { return QFile::encodeName(inFolder("response.fifo")); }

    void enqueueLongUnanswered(const QString &id, int priority = 1)
    {
        m_requester.enqueue(fileItem(id, soundFile("long.wav", longMs), priority));
    }
    void enqueueLong(const QString &id, int priority = 1)
    {
        enqueueLongUnanswered(id, priority);
        ASSERT_EQ(m_requester.answer(), "");
    }

    void playLong(const QString &id)
    {
        enqueueLong(id);
        ASSERT_TRUE(m_requester.waitFor("started " + id.toStdString()));
        ASSERT_TRUE(waitForFrames(1));
    }

    void show(const QString &message, int timeout, int priority)
    {
        m_requester.invoke(
            "/notifications/display/open",
            {{"notificationDisplayItem",
              QJsonObject{{"message", message}, {"timeout", timeout}, {"priority", priority}}}});
        ASSERT_EQ(m_requester.answer(), "");
    }

    /// Releases what a response holds, after the host has received the signal.
    void releaseResponse()
    {
        ASSERT_TRUE(m_host.waitForLog("Stopping: Terminated"));
        ::close(::open(fifoName().constData(), O_WRONLY | O_CLOEXEC));
    }

    bool m_release = false;
};

TEST_P(StopInEveryStateTest, EndsPromptlyWithNothingLeftBehind)
{
    (this->*GetParam().reach)();
    ASSERT_FALSE(HasFatalFailure());
    QElapsedTimer elapsed;
    elapsed.start();
    m_host.sendSignal(SIGTERM);
    if (m_release) {
        releaseResponse();
    }
    EXPECT_EQ(m_host.waitForExit(), 0);
    EXPECT_LT(elapsed.elapsed(), promptMs);
    EXPECT_TRUE(m_host.log().contains("Host stopped"));
    EXPECT_FALSE(m_host.log().contains("ASSERT"));
}

INSTANTIATE_TEST_SUITE_P(
    States, StopInEveryStateTest,
    testing::Values(
        StateToStopIn{"Idle", &StopInEveryStateTest::idle},
        StateToStopIn{"Ducking", &StopInEveryStateTest::ducking},
        StateToStopIn{"Acquiring", &StopInEveryStateTest::acquiring},
        StateToStopIn{"AcquiringForNobody", &StopInEveryStateTest::acquiringForNobody},
        StateToStopIn{"Playing", &StopInEveryStateTest::playing},
        StateToStopIn{"PlayingAPlaceholder", &StopInEveryStateTest::playingAPlaceholder},
        StateToStopIn{"Ready", &StopInEveryStateTest::ready},
        StateToStopIn{"Lingering", &StopInEveryStateTest::lingering},
        StateToStopIn{"Stalled", &StopInEveryStateTest::stalled},
        StateToStopIn{"Unducking", &StopInEveryStateTest::unducking},
        StateToStopIn{"UnduckingWithOneWaiting", &StopInEveryStateTest::unduckingWithOneWaiting},
        StateToStopIn{"Preempted", &StopInEveryStateTest::preempted},
        StateToStopIn{"Stopping", &StopInEveryStateTest::stopping},
        StateToStopIn{"Displaying", &StopInEveryStateTest::displaying},
        StateToStopIn{"DisplayingForATime", &StopInEveryStateTest::displayingForATime},
        StateToStopIn{"DisplayPaused", &StopInEveryStateTest::displayPaused},
        StateToStopIn{"PlayingAndDisplaying", &StopInEveryStateTest::playingAndDisplaying}),
    [](const auto &info) { return std::string(info.param.name); });
