// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loggingmacros.h>

using testing::ElementsAre;

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Captured");
}

TEST(LogCaptureTest, TakesDownRecordsInTheirOrder)
{
    const LogCapture log("Captured");
    LOG4CPLUS_INFO(logger, "one");
    LOG4CPLUS_WARN(logger, "two");
    EXPECT_THAT(log.messages(), ElementsAre("one", "two"));
    EXPECT_THAT(log.messages(log4cplus::WARN_LOG_LEVEL), ElementsAre("two"));
}

TEST(LogCaptureTest, KeepsWhereARecordComesFrom)
{
    const LogCapture log("Captured");
    LOG4CPLUS_ERROR(logger, "here");
    const int line = __LINE__ - 1;
    ASSERT_EQ(log.records().size(), 1U);
    const LogCapture::Record record = log.records().front();
    EXPECT_EQ(record.level, log4cplus::ERROR_LOG_LEVEL);
    EXPECT_EQ(record.fileName(), "LogCaptureTest.cpp");
    EXPECT_THAT(record.function, testing::HasSubstr("KeepsWhereARecordComesFrom"));
    EXPECT_EQ(record.line, line);
}

TEST(LogCaptureTest, SetsTheLevelOfTheLoggerItself)
{
    LogCapture log("Captured", log4cplus::INFO_LOG_LEVEL);
    LOG4CPLUS_DEBUG(logger, "below");
    log.setLevel(log4cplus::DEBUG_LOG_LEVEL);
    LOG4CPLUS_DEBUG(logger, "at");
    EXPECT_THAT(log.messages(), ElementsAre("at"));
}

TEST(LogCaptureTest, CountsAndFindsRecords)
{
    LogCapture log("Captured");
    LOG4CPLUS_INFO(logger, "a sound");
    LOG4CPLUS_WARN(logger, "a sound");
    EXPECT_EQ(log.count("a sound"), 2);
    EXPECT_EQ(log.count("sound"), 0);
    EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL, "a sound"), 1);
    EXPECT_EQ(log.countAt(log4cplus::INFO_LOG_LEVEL), 1);
    EXPECT_EQ(log.find("sound").size(), 2U);
    log.clear();
    EXPECT_FALSE(log.contains("a sound"));
}

TEST(LogCaptureTest, GivesBackTheLoggersLevelAndAppenders)
{
    const LogCapture outer("Captured", log4cplus::WARN_LOG_LEVEL);
    {
        const LogCapture inner("Captured", log4cplus::TRACE_LOG_LEVEL);
        LOG4CPLUS_WARN(logger, "inner");
    }
    LOG4CPLUS_INFO(logger, "below");
    LOG4CPLUS_WARN(logger, "outer");
    EXPECT_THAT(outer.messages(), ElementsAre("outer"));
}

TEST(LogCaptureTest, LeavesALoggerWithoutALevelOfItsOwnWithout)
{
    const log4cplus::Logger fresh = log4cplus::Logger::getInstance("Captured.Fresh");
    {
        const LogCapture log("Captured.Fresh");
    }
    EXPECT_EQ(fresh.getLogLevel(), log4cplus::NOT_SET_LOG_LEVEL);
    EXPECT_TRUE(fresh.getAdditivity());
}
