// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <QCoreApplication>

#include <gtest/gtest.h>
#include <log4cplus/appender.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

namespace {
/// Logs nothing, unless TAVO_LOG_LEVEL names a level such as DEBUG: then on standard error.
void initialiseLog()
{
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    const std::string level = qgetenv("TAVO_LOG_LEVEL").toStdString();
    if (level.empty()) {
        root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
        root.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    } else {
        root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::ConsoleAppender(true, true)));
        root.setLogLevel(log4cplus::getLogLevelManager().fromString(level));
    }
}
} // namespace

// Tests run in the main thread and run the event loop themselves (EventLoop.h).
int main(int argc, char **argv)
{
    const log4cplus::Initializer logging;
    initialiseLog();
    // A forked process with several threads may hang on a lock; a new process can't. An argument may set
    // another style.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
