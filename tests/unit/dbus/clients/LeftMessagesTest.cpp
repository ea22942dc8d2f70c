// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/clients/LeftMessages.h"

#include "support/EventLoop.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {
using Priority = TavoNotificationItemPriority;
using testing::ElementsAre;
using testing::IsEmpty;

class LeftMessagesTest : public testing::Test
{
protected:
    LeftMessages::Place add(int number, Priority::Enum priority = Priority::Urgent)
    {
        return messages.add(priority, [this, number] { given.push_back(number); });
    }

    void waitUntilGiven(std::size_t count)
    {
        EXPECT_TRUE(waitFor([&] { return given.size() >= count; }));
    }

    /// For what must not happen: long enough for several turns.
    static void waitForTurns()
    {
        waitFor([] { return false; }, std::chrono::milliseconds(50));
    }

    LeftMessages messages;
    std::vector<int> given;
};

TEST_F(LeftMessagesTest, GiveWayOnceInTheirOrder)
{
    const LeftMessages::Place first = add(1);
    const LeftMessages::Place second = add(2);
    messages.makeWay(Priority::Urgent);
    messages.makeWay(Priority::Urgent);
    waitUntilGiven(2);
    messages.makeWay(Priority::Urgent);
    waitForTurns();
    EXPECT_THAT(given, ElementsAre(1, 2));
}

TEST_F(LeftMessagesTest, GiveWayOnlyToTheirPriority)
{
    const LeftMessages::Place place = add(1, Priority::Enum(4));
    messages.makeWay(Priority::Urgent);
    messages.makeWay(Priority::Enum(5));
    waitForTurns();
    EXPECT_THAT(given, IsEmpty());
}

TEST_F(LeftMessagesTest, DoNotGiveWayToOneThatCameBefore)
{
    const LeftMessages::Place first = add(1);
    messages.makeWay(Priority::Urgent);
    const LeftMessages::Place second = add(2);
    waitUntilGiven(1);
    waitForTurns();
    EXPECT_THAT(given, ElementsAre(1));
}

TEST_F(LeftMessagesTest, DoNotGiveWayAnyMoreOnceTheyAreClosed)
{
    LeftMessages::Place first = add(1);
    const LeftMessages::Place second = add(2);
    messages.makeWay(Priority::Urgent);
    first = LeftMessages::Place();
    waitUntilGiven(1);
    EXPECT_THAT(given, ElementsAre(2));
}

/// Each costs requests to the display, and everybody waits until a turn is over.
TEST_F(LeftMessagesTest, GiveWayAHundredInATurn)
{
    constexpr int many = 1000;
    std::vector<LeftMessages::Place> places;
    for (int i = 0; i < many; ++i) {
        places.push_back(add(i));
    }
    messages.makeWay(Priority::Urgent);
    EXPECT_THAT(given, IsEmpty());
    std::size_t most = 0;
    while (given.size() < many) {
        const std::size_t before = given.size();
        QCoreApplication::processEvents();
        most = std::max(most, given.size() - before);
    }
    EXPECT_EQ(most, 100U);
}
} // namespace
