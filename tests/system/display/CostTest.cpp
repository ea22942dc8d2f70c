// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"
#include "ScriptedHost.h"
#include "support/Sanitized.h"

#include <QDir>

namespace {
/// What the display costs while nothing happens.
class DisplayCostTest : public DisplayTest
{
protected:
    void SetUp() override
    {
        if (threadSanitized) {
            GTEST_SKIP() << "ThreadSanitizer has a thread that wakes up ten times a second";
        }
    }

    static constexpr std::chrono::seconds s_time{3};

    /// How often the threads of the program have waited or lost the processor.
    int switches() const
    {
        int sum = 0;
        const QDir tasks(QStringLiteral("/proc/%1/task").arg(m_display.processId()));
        for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(tasks.filePath(task + QStringLiteral("/status")));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            for (const QByteArray &line : file.readAll().split('\n')) {
                if (line.startsWith("voluntary_ctxt_switches:")) {
                    sum += line.split(':')[1].trimmed().toInt();
                }
            }
        }
        return sum;
    }

    static void letPass(std::chrono::milliseconds time)
    {
        QElapsedTimer timer;
        timer.start();
        waitFor([&] { return timer.hasExpired(time.count()); }, 2 * time);
    }

    int switchesInTime() const
    {
        // A second after the last request, a client looks once whether the bus has read it.
        letPass(std::chrono::milliseconds(1500));
        const int before = switches();
        letPass(s_time);
        return switches() - before;
    }
};

TEST_F(DisplayCostTest, sleepsWhileItShowsAMessageWithoutACountdown)
{
    start();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    EXPECT_EQ(switchesInTime(), 0);
}

TEST_F(DisplayCostTest, sleepsWhileItIsHidden)
{
    start();
    const uint id = show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    m_messages.close(id);
    ASSERT_TRUE(waitForNoWindow());
    EXPECT_EQ(switchesInTime(), 0);
}

TEST_F(DisplayCostTest, sleepsWhileMessagesOfOthersEnd)
{
    ScriptedHost host(m_bus.address());
    m_display.start({});
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(waitFor([&] { return host.isRead(); }));
        host.letRead();
    }
    ASSERT_TRUE(waitForLook(Priority::Normal));
    letPass(std::chrono::milliseconds(1500));
    const int before = switches();
    for (std::uint32_t id = 1; id <= 20; ++id) {
        host.emitClosed(id);
    }
    letPass(std::chrono::milliseconds(500));
    EXPECT_EQ(switches(), before);
}

TEST_F(DisplayCostTest, sleepsBesideTheMarkWhenTheHistoryIsClosed)
{
    startAttention();
    setDoNotDisturb(true);
    miss(1);
    m_display.start({});
    waitForWindow();
    ASSERT_EQ(openHistory(), 0);
    ASSERT_TRUE(m_server.waitForWindows([](const auto &windows) { return windows.size() == 2; }));
    EXPECT_TRUE(waitFor([&] { // It gets the keyboard a moment later.
        m_server.press({keyEscape});
        return m_server.windows().size() == 1;
    }));
    EXPECT_EQ(switchesInTime(), 0);
}

TEST_F(DisplayCostTest, wakesAtMostFiveTimesASecondForACountdown)
{
    start();
    show("Door", Priority::Normal, 60000);
    ASSERT_TRUE(waitForLook(Priority::Normal));
    EXPECT_LE(switchesInTime(), 5 * s_time.count());
}

/// Follows ten thousand heads, each of which pre-empts the one before.
class DisplayFloodTest : public DisplayCostTest
{
protected:
    static constexpr int s_count = 10000;

    void startWithoutLimits()
    {
        startHost({{"priority", s_count * 2},
                   {"openNotifications", s_count * 2},
                   {"totalOpenNotifications", s_count * 2},
                   {"requestsPerSecond", 1000000},
                   {"storedBytes", 1 << 30},
                   {"totalStoredBytes", 1 << 30}});
        m_display.setEnvironment("QT_LOGGING_RULES", "qt.scenegraph.time.renderloop=true");
        m_display.start({});
    }

    /// Opens that many messages, each more urgent than those before, or none of them.
    void open(int count, bool isRising)
    {
        CMReply<CMPath> last;
        for (int i = 0; i < count; ++i) {
            last = m_client.open(
                TavoNotificationDisplayItem()
                    .setTitle(QStringLiteral("Door"))
                    .setMessage(QStringLiteral("Somebody"))
                    .setPriority(TavoNotificationItemPriority::Enum(isRising ? i + 4 : 0)));
        }
        ASSERT_TRUE(waitFor([&] { return last.isFinished(); }, std::chrono::seconds(60)));
        ASSERT_FALSE(last.error().isError()) << last.error().message().toString().toStdString();
    }

    int pictures() const
    {
        const std::string log = m_display.error();
        int count = 0;
        for (std::size_t at = log.find("renderloop"); at != std::string::npos;
             at = log.find("renderloop", at + 1)) {
            ++count;
        }
        return count;
    }
};

TEST_F(DisplayFloodTest, drawsAtMostSixtyPicturesASecond)
{
    startWithoutLimits();
    show("Door");
    ASSERT_TRUE(waitForLook(Priority::Normal));
    const int before = pictures();
    QElapsedTimer timer;
    timer.start();
    open(s_count, true);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    letPass(std::chrono::milliseconds(300));
    const double seconds = double(timer.elapsed()) / 1000;
    EXPECT_GT(pictures(), before);
    EXPECT_LE(pictures() - before, 60 * seconds);
}

TEST_F(DisplayFloodTest, aLongQueueCostsNothing)
{
    startWithoutLimits();
    show("Door", Priority::Urgent);
    ASSERT_TRUE(waitForLook(Priority::Urgent));
    open(s_count, false);
    EXPECT_EQ(switchesInTime(), 0);
}
} // namespace
