// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Files whose reading takes the system seconds: on a network, or because their owner has them truncated meanwhile.

#include "PlayerTest.h"
#include "support/LogCapture.h"
#include "support/Sanitized.h"
#include "support/TimeOf.h"
#include <simpleplayer/OpenedSound.h>
#include <simpleplayer/UriSimplePlayer.h>

#include <gmock/gmock.h>

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// Holds up every reading at or behind an offset.
class ReadingGate
{
public:
    void close(qint64 offset)
    {
        const std::lock_guard lock(m_mutex);
        m_offset = offset;
        m_isOpen = false;
    }

    void open()
    {
        const std::lock_guard lock(m_mutex);
        m_isOpen = true;
        m_changed.notify_all();
    }

    void pass(qint64 offset)
    {
        std::unique_lock lock(m_mutex);
        if (m_isOpen || offset < m_offset) {
            return;
        }
        ++m_waiting;
        m_changed.wait(lock, [this] { return m_isOpen; });
        --m_waiting;
    }

    int waiting()
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOpen = true;
    qint64 m_offset = 0;
    int m_waiting = 0;
};

ReadingGate gate;

/// Lets no thread be started, because its stack would be too large.
class NoThreads
{
public:
    NoThreads()
    {
        pthread_getattr_default_np(&m_normal);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, std::size_t(1) << 46U);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoThreads()
    {
        pthread_setattr_default_np(&m_normal);
        pthread_attr_destroy(&m_normal);
    }
    NoThreads(const NoThreads &) = delete;
    NoThreads &operator=(const NoThreads &) = delete;

private:
    pthread_attr_t m_normal{};
};

} // namespace

// The definition in a program takes precedence over that of the C library, also for libraries.
extern "C" __attribute__((visibility("default"))) ssize_t pread(int file, void *target,
                                                                std::size_t count, off_t offset)
{
    gate.pass(offset);
    return ::syscall(SYS_pread64, file, target, count, offset);
}

class HangingFileTest : public PlayerTest
{
protected:
    static constexpr int frames = 30000;
    static constexpr int framesBefore = 10000; // that are read before the file hangs
    static constexpr int promptMs = 400;       // less than is waited for a device

    HangingFileTest()
    {
        writeSound(file(), wav, rate, countingSamples(frames));
        gate.close(framesBefore * qint64(sizeof(short)));
    }

    ~HangingFileTest() override
    {
        m_players.clear();
        EXPECT_TRUE(respond());
    }

    QString file() const { return path("hanging.wav"); }

    /// Lets the file respond, and waits until the threads that it has held up have ended.
    bool respond() const
    {
        gate.open();
        return waitFor([this] { return threads() <= m_idleThreads; });
    }

    UriSimplePlayer &make(const QString &uri, const char *device = "plain")
    {
        m_players.push_back(std::make_unique<UriSimplePlayer>(
            uri, QStringLiteral("id"), QString::fromLatin1(device), nullptr));
        return *m_players.back();
    }

    /// Plays the file until it hangs.
    UriSimplePlayer &makeHanging(const char *device = "plain")
    {
        UriSimplePlayer &player = make(file(), device);
        const int before = gate.waiting();
        EXPECT_TRUE(player.play());
        EXPECT_TRUE(waitFor([before] { return gate.waiting() == before + 1; }));
        return player;
    }

    /// Plays a sound whose file responds, and expects every frame.
    void expectPlays(const char *device = "plain")
    {
        m_devices.forget();
        UriSimplePlayer &player = make(counting(framesBefore / 2), device);
        EndSpy end(player);
        ASSERT_TRUE(player.play());
        ASSERT_TRUE(end.hasEndedOnce());
        EXPECT_EQ(heard(), countingFloats(framesBefore / 2));
    }

    const int m_idleThreads = threads();
    std::vector<std::unique_ptr<UriSimplePlayer>> m_players;
};

TEST_F(HangingFileTest, IsStoppedAtOnceAndFreesItsDevice)
{
    UriSimplePlayer &player = makeHanging("exclusive");
    EXPECT_LT(timeOf([&] { player.stop(); }), promptMs);
    expectPlays("exclusive");
}

TEST_F(HangingFileTest, FreesItsDeviceEvenIfThereAreNoMoreThreads)
{
    UriSimplePlayer &player = makeHanging("exclusive");
    {
        const NoThreads none;
        player.stop();
    }
    expectPlays("exclusive");
}

TEST_F(HangingFileTest, IsStoppedEvenIfItsDeviceHangsToo)
{
    UriSimplePlayer &player = makeHanging("sticks");
    EXPECT_LT(timeOf([&] { player.stop(); }), 1500);
}

TEST_F(HangingFileTest, IsPausedAtOnceAndFreesItsDevice)
{
    UriSimplePlayer &player = makeHanging("exclusive");
    EXPECT_LT(timeOf([&] { player.pause(); }), promptMs);
    expectPlays("exclusive");
}

TEST_F(HangingFileTest, GoesOnAtItsPlaceIfItHasRespondedDuringAPause)
{
    UriSimplePlayer &player = makeHanging();
    EndSpy end(player);
    player.pause();
    ASSERT_TRUE(respond());
    ASSERT_TRUE(player.play());
    ASSERT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(heard(), countingFloats(frames));
}

TEST_F(HangingFileTest, CanNotGoOnWhileItHangsAndKeepsNobodyWaiting)
{
    constexpr int count = 3;
    for (int i = 0; i < count; ++i) {
        makeHanging().pause();
    }
    const LogCapture log("SimplePlayer");
    const qint64 time = timeOf([this] {
        for (const auto &player : m_players) {
            EXPECT_FALSE(player->play());
        }
    });
    EXPECT_LT(time, promptMs);
    const auto reason = HasSubstr("doesn't respond");
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAre(reason, reason, reason));
}

TEST_F(HangingFileTest, ShortensTheWaitForOthersWhileItIsPaused)
{
    makeHanging().pause();
    UriSimplePlayer &player = make(counting(), "slow");
    EXPECT_LT(timeOf([&] { EXPECT_TRUE(player.play()); }), 200);
}

TEST_F(HangingFileTest, KeepsItsStartWaitingForLessIfItIsOpenedForAClient)
{
    gate.close(0);
    const auto opened = OpenedSound::open(file());
    ASSERT_TRUE(opened);
    UriSimplePlayer &player = make(file());
    EXPECT_LT(timeOf([&] { EXPECT_TRUE(player.play()); }), 200);
}

TEST_F(HangingFileTest, IsRefusedIfTwoThreadsHangInIt)
{
    const auto opened = OpenedSound::open(file());
    ASSERT_TRUE(opened);
    makeHanging().pause();
    makeHanging().stop();
    const int hanging = m_idleThreads + 2;
    ASSERT_TRUE(waitFor([hanging] { return threads() == hanging; })); // the devices are closed
    const LogCapture log("SimplePlayer");
    EXPECT_FALSE(make(file()).play());
    EXPECT_EQ(threads(), hanging);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre(HasSubstr("Too many sounds or devices don't respond")));
    expectPlays();

    ASSERT_TRUE(respond());
    UriSimplePlayer &player = make(file());
    EndSpy end(player);
    EXPECT_TRUE(player.play());
    EXPECT_TRUE(end.hasEndedOnce());
    EXPECT_EQ(end.ended.count(), 1);
}

TEST_F(HangingFileTest, DoesNotCountIfItHasGotNoThread)
{
    {
        const NoThreads none;
        EXPECT_FALSE(make(file()).play());
    }
    // Nobody has to hurry.
    UriSimplePlayer &player = make(counting(), "slow");
    EXPECT_GE(timeOf([&] { EXPECT_TRUE(player.play()); }), 200);
}
