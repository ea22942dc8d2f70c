// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"
#include "support/EventLoop.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int limitBlocks = 128; // of 512 bytes

/// Each logs the same line, of which a hundred are written a second.
constexpr int someRequests = 2000;

} // namespace

/// The log can no longer be written; the host continues without it.
class LogFaultsTest : public FaultTest
{
protected:
    /// Replaces the host's program by a script that ends by executing the host.
    void startBehind(const QByteArray &script, const QJsonObject &log = {})
    {
        const QString wrapper =
            m_host.writeFile("wrapper", "#!/bin/sh\nset -e\n" + script + " \"" +
                                            QFile::encodeName(m_host.program()) + "\" \"$@\"" +
                                            m_redirection + "\n");
        QFile::setPermissions(wrapper, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_host.setProgram(wrapper);
        startLogging(log);
    }

    void startLogging(const QJsonObject &log)
    {
        startModules({"powermanager", playerModule(), "notifications", m_requester.module()},
                     {{"log", log}});
    }

    /// The configuration of a log to the file. Its lines are long, so that few of them are much.
    QJsonObject logTo(const QString &file, const QByteArray &appender = "FileAppender",
                      const QByteArray &more = {})
    {
        const QString properties = m_host.writeFile(
            "log.properties", "log4cplus.rootLogger=INFO, F\n"
                              "log4cplus.appender.F=log4cplus::" +
                                  appender +
                                  "\nlog4cplus.appender.F.File=" + QFile::encodeName(file) +
                                  "\nlog4cplus.appender.F.layout=log4cplus::PatternLayout\n"
                                  "log4cplus.appender.F.layout.ConversionPattern=%1000m%n\n" +
                                  more);
        return {{"file", properties}};
    }

    void sayMuch()
    {
        for (int i = 0; i < someRequests; ++i) {
            m_requester.cancel("nobody");
        }
        EXPECT_EQ(m_requester.answer(), "Invalid notification sound id to stop");
    }

    void expectGoesOn()
    {
        sayMuch();
        expectAsGoodAsNew();
        EXPECT_EQ(stopHost(), 0);
    }

    QByteArray m_redirection;
};

TEST_F(LogFaultsTest, TheHostPlaysOnWhenNothingCanBeWrittenToItsLogFile)
{
    startLogging(logTo("/dev/full"));
    expectGoesOn();
}

TEST_F(LogFaultsTest, TheHostPlaysOnWhenNothingCanBeWrittenToARollingLog)
{
    startLogging(logTo("/dev/full", "RollingFileAppender",
                       "log4cplus.appender.F.MaxFileSize=200KB\n"
                       "log4cplus.appender.F.MaxBackupIndex=1\n"));
    expectGoesOn();
}

TEST_F(LogFaultsTest, TheHostPlaysOnWhenItsStandardErrorIsFull)
{
    m_redirection = " 2>/dev/full";
    startBehind("exec");
    expectGoesOn();
}

TEST_F(LogFaultsTest, TheHostPlaysOnAndStopsWhenNobodyReadsItsStandardError)
{
    const QString pipe = inFolder("pipe");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const int descriptor =
        ::open(QFile::encodeName(pipe).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (::write(descriptor, "x", 1) == 1) {
    }
    m_redirection = " 2>" + QFile::encodeName(pipe);
    startBehind("exec");
    expectGoesOn();
    ::close(descriptor);
}

TEST_F(LogFaultsTest, TheHostPlaysOnWhenItsLogFileMayNotGrow)
{
    const QString file = inFolder("host.log");
    startBehind("trap '' XFSZ; ulimit -f " + QByteArray::number(limitBlocks) + "; exec",
                logTo(file));
    expectGoesOn();
    constexpr int blockBytes = 512;
    EXPECT_EQ(QFileInfo(file).size(), limitBlocks * blockBytes);
}

TEST_F(LogFaultsTest, TheHostPlaysOnOnAFullDiskAndWritesAgainWhenThereIsRoom)
{
    const QString disk = inFolder("disk");
    const QByteArray mount = "mkdir -p " + QFile::encodeName(disk) +
                             "; mount -t tmpfs -o size=64k,mode=700 none " +
                             QFile::encodeName(disk) + "; ";
    if (QProcess::execute("/usr/bin/unshare", {"-m", "/bin/sh", "-ec", mount}) != 0) {
        GTEST_SKIP() << "This test needs permission to mount a file system.";
    }
    startBehind("exec /usr/bin/unshare -m /bin/sh -ec '" + mount + "exec \"$0\" \"$@\"'",
                logTo(disk + "/host.log"));
    const QString seen =
        QStringLiteral("/proc/%1/root%2/host.log").arg(m_host.processId()).arg(disk);
    sayMuch();
    constexpr int diskBytes = 64 * 1024;
    EXPECT_EQ(QFileInfo(seen).size(), diskBytes);
    expectAsGoodAsNew();
    ASSERT_EQ(truncate(QFile::encodeName(seen).constData(), 0), 0);
    // The log tries to open its file again at most once a second.
    EXPECT_TRUE(waitFor(
        [&] {
            m_requester.cancel("nobody");
            m_requester.answer();
            return readFile(seen).endsWith("nobody\n");
        },
        std::chrono::seconds(10)));
    EXPECT_EQ(stopHost(), 0);
}
