// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DisplayTest.h"

#include <QDir>

namespace {
/// What the display costs while nothing happens.
class DisplayCostTest : public DisplayTest
{
protected:
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

TEST_F(DisplayCostTest, wakesAtMostFiveTimesASecondForACountdown)
{
    start();
    show("Door", Priority::Normal, 60000);
    ASSERT_TRUE(waitForLook(Priority::Normal));
    EXPECT_LE(switchesInTime(), 5 * s_time.count());
}
} // namespace
