// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/desktop/NotificationIds.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace {
const auto unused = [](quint32) { return false; };
constexpr quint32 maxId = std::numeric_limits<quint32>::max();

TEST(NotificationIdsTest, CountFromOne)
{
    NotificationIds ids;
    EXPECT_EQ(ids.take(unused), 1U);
    EXPECT_EQ(ids.take(unused), 2U);
}

TEST(NotificationIdsTest, AreNeverZero)
{
    NotificationIds ids(maxId);
    EXPECT_EQ(ids.take(unused), maxId);
    EXPECT_EQ(ids.take(unused), 1U);
    EXPECT_EQ(NotificationIds(0).take(unused), 1U);
}

TEST(NotificationIdsTest, AreNeverInUse)
{
    const std::set<quint32> open{maxId, 1, 2, 4};
    NotificationIds ids(maxId);
    const auto isOpen = [&](quint32 id) { return open.count(id) > 0; };
    EXPECT_EQ(ids.take(isOpen), 3U);
    EXPECT_EQ(ids.take(isOpen), 5U);
}
} // namespace
