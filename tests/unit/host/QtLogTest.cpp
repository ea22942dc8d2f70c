// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/QtLog.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

TEST(QtLogTest, LogsAMessageWithoutASourceLocation)
{
    const LogCapture log("Qt");
    logQtMessage(QtWarningMsg, QMessageLogContext(), "from nowhere");
    EXPECT_THAT(log.messages(log4cplus::WARN_LOG_LEVEL), ElementsAre("from nowhere"));
}

TEST(QtLogTest, LogsTheSourceLocationOfAMessage)
{
    const LogCapture log("Qt.some.category");
    logQtMessage(QtInfoMsg, QMessageLogContext("File.cpp", 7, "int here()", "some.category"),
                 "text");
    ASSERT_EQ(log.records().size(), 1U);
    EXPECT_EQ(log.records()[0].file, "File.cpp");
    EXPECT_EQ(log.records()[0].line, 7);
    EXPECT_EQ(log.records()[0].function, "int here()");
}
