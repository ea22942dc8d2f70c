// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/clock/VirtualClock.h"

#include <QElapsedTimer>
#include <QTimer>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(VirtualClockTest, StandsStillUntilAdvanced)
{
    VirtualClock clock;
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(elapsed.nsecsElapsed(), 0);
    clock.advance(70ms);
    EXPECT_EQ(elapsed.nsecsElapsed(), 70'000'000);
}

TEST(VirtualClockTest, FiresATimerExactlyWhenItsTimeHasCome)
{
    VirtualClock clock;
    QTimer timer;
    int fired = 0;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++fired; });
    timer.setTimerType(Qt::PreciseTimer);
    timer.setSingleShot(true);
    timer.start(100);
    clock.pass(99ms);
    EXPECT_EQ(fired, 0);
    clock.pass(1ms);
    EXPECT_EQ(fired, 1);
}

TEST(VirtualClockTest, GoesOnFromTheRealTimeAndGivesItBack)
{
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    {
        VirtualClock clock;
        EXPECT_GE(clock.now(), before);
        clock.advance(1h);
        EXPECT_GE(std::chrono::steady_clock::now().time_since_epoch(), before + 1h);
    }
    EXPECT_LT(std::chrono::steady_clock::now().time_since_epoch(), before + 1h);
}
