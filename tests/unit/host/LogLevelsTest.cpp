// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/LogLevels.h"

#include <gtest/gtest.h>

TEST(LogLevelsTest, ReadsALevelForTheRootLogger)
{
    const auto level = logLevelFromText("WARN");
    ASSERT_TRUE(level);
    EXPECT_TRUE(level->logger.isEmpty());
    EXPECT_EQ(level->level, log4cplus::WARN_LOG_LEVEL);
}

TEST(LogLevelsTest, ReadsALevelForOneLogger)
{
    const auto level = logLevelFromText("Qt.a=b=TRACE");
    ASSERT_TRUE(level);
    EXPECT_EQ(level->logger, "Qt.a=b");
    EXPECT_EQ(level->level, log4cplus::TRACE_LOG_LEVEL);
}

TEST(LogLevelsTest, ReadsALevelInAnyCase)
{
    EXPECT_EQ(logLevelFromName("debug"), log4cplus::DEBUG_LOG_LEVEL);
}

TEST(LogLevelsTest, RefusesAnUnknownLevel)
{
    for (const char *text : {"", "LOUD", "Host=", "Host=LOUD", "=INFO", "INFO "}) {
        EXPECT_FALSE(logLevelFromText(text)) << text;
    }
}
