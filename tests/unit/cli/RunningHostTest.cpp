// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/doctor/RunningHost.h"

#include "support/EventLoop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>

namespace {
/// A device's configuration, and a service that has read it at a time.
class RunningServiceTest : public testing::Test
{
protected:
    RunningServiceTest()
    {
        write(m_file);
        QDir(m_folder.path()).mkdir("host.json.d");
    }

    static void write(const QString &name)
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("{}");
    }

    /// The finding about a service that has read the configuration this long ago; empty if there is none.
    QString finding(std::chrono::microseconds ago, const QByteArray &status = {},
                    const QByteArray &state = "active")
    {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        const auto since = std::chrono::duration_cast<std::chrono::microseconds>(now - ago).count();
        const auto found =
            lookAtService("ActiveState=" + state + "\nStateChangeTimestampMonotonic=" +
                              QByteArray::number(qint64(since)) + "\nStatusText=" + status + '\n',
                          m_file);
        return found ? found->text : QString();
    }

    static constexpr std::chrono::hours s_before{1};
    static constexpr std::chrono::hours s_after{-1};

    const QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath("host.json");
    const QString m_changed = "has changed since the host has read it";
};
} // namespace

TEST_F(RunningServiceTest, HasAnotherConfigurationIfTheFileHasChanged)
{
    EXPECT_EQ(finding(s_before), m_changed);
}

TEST_F(RunningServiceTest, HasTheSameConfigurationIfItWasReadLater)
{
    EXPECT_EQ(finding(s_after), QString());
    EXPECT_EQ(finding(s_after, "Reloaded the configuration"), QString());
}

TEST_F(RunningServiceTest, ReportsWhatItsLastReloadHasLeft)
{
    const QByteArray status = "Reloaded the configuration, needs a restart: modules";
    EXPECT_EQ(finding(s_after, status), QString::fromLatin1(status));
    EXPECT_EQ(finding(s_before, status), m_changed);
}

TEST_F(RunningServiceTest, IsNotComparedWhenItDoesNotRun)
{
    EXPECT_EQ(finding(s_before, {}, "inactive"), QString());
}

TEST_F(RunningServiceTest, HasFailedForAReason)
{
    EXPECT_EQ(finding(s_before, {}, "failed\nSubState=failed\nResult=exit-code\nExecMainStatus=70"),
              "tavo-host has failed: exit status 70");
    EXPECT_EQ(finding(s_before, {},
                      "activating\nSubState=auto-restart\nResult=core-dump\nExecMainStatus=11"),
              "tavo-host has failed: it crashed, or was killed, by signal 11");
    EXPECT_EQ(finding(s_before, {}, "failed\nSubState=failed\nResult=watchdog\nExecMainStatus=6"),
              "tavo-host has failed: watchdog");
    EXPECT_EQ(finding(s_before, {}, "activating\nSubState=start\nResult=success\nNRestarts=3"),
              "tavo-host has failed: it is restarted again and again");
    EXPECT_EQ(finding(s_before, {}, "activating\nSubState=start\nResult=success\nNRestarts=0"), "");
}

TEST_F(RunningServiceTest, HasAnotherConfigurationIfAFragmentOrTheFolderHasChanged)
{
    // More than once, because the file system's clock may tick slowly.
    QDateTime before = changeOfConfiguration(m_file);
    const QString fragment = m_file + ".d/10-a.json";
    EXPECT_TRUE(waitFor([&] {
        write(fragment);
        return changeOfConfiguration(m_file) > before;
    }));
    before = changeOfConfiguration(m_file);
    EXPECT_TRUE(waitFor([&] {
        write(fragment);
        QFile::remove(fragment);
        return changeOfConfiguration(m_file) > before;
    }));
}

TEST(OtherServiceTest, RunsHasFailedOrWasStopped)
{
    const auto running = lookAtOtherService(
        displayService, "ActiveState=active\nSubState=running\nResult=success\n");
    ASSERT_TRUE(running);
    EXPECT_EQ(running->state, Finding::State::Good);
    EXPECT_EQ(running->text, "the service tavo-display shows the messages");
    const auto failed = lookAtOtherService(
        fleetService,
        "ActiveState=activating\nSubState=auto-restart\nResult=exit-code\nExecMainStatus=69\n");
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->text, "the service tavo-fleet has failed: exit status 69");
    EXPECT_FALSE(lookAtOtherService(displayService,
                                    "ActiveState=inactive\nSubState=dead\nResult=success\n"));
}

TEST(RunningHostTest, IsOutdatedIfItsVersionIsLowerThanThatOfTheInstalledProgram)
{
    EXPECT_TRUE(isOutdated("0.0.9"));
    EXPECT_FALSE(isOutdated(TAVO_VERSION));
    EXPECT_FALSE(isOutdated("1000.0.0"));
}
