// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DbusTest.h"

namespace {
class DbusReconnectTest : public DbusTest
{
};

TEST_F(DbusReconnectTest, TakesItsNameWhenItIsLoaded)
{
    load();
    EXPECT_TRUE(isServing(1));
}

TEST_F(DbusReconnectTest, TakesItsNameAgainAfterTheBusIsRestarted)
{
    load();
    ASSERT_TRUE(isServing(1));
    bus().restart();
    EXPECT_TRUE(isServing(2));
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
}

TEST_F(DbusReconnectTest, WaitsForTheBusAndLogsThatOnce)
{
    bus().stop();
    load();
    ASSERT_TRUE(waitFor([&] { return !log().find("There is no bus").empty(); }));
    // Long enough for several attempts.
    waitFor([] { return false; }, std::chrono::milliseconds(500));
    bus().start();
    EXPECT_TRUE(isServing(1));
    EXPECT_EQ(log().countAt(log4cplus::WARN_LOG_LEVEL), 1);
}
} // namespace
