// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "modules/dbus/clients/DisplayOrder.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <vector>

namespace {
using Opening = DisplayOrder::Opening;

const Opening notOurs;

Opening ours(quint32 id)
{
    return {id, id + 100};
}

/// Inserts one of our rows, as reported by the change of rows and then by the reply.
void open(DisplayOrder &order, int index, quint32 id)
{
    order.insert(index);
    order.nameLast(ours(id));
}

TEST(DisplayOrderTest, ReturnsWhatIsRemoved)
{
    DisplayOrder order;
    open(order, 0, 1);
    open(order, 1, 2);
    open(order, 1, 3);
    EXPECT_EQ(order.remove(1), ours(3));
    EXPECT_EQ(order.remove(1), ours(2));
    EXPECT_EQ(order.remove(0), ours(1));
}

TEST(DisplayOrderTest, KnowsWhatIsOnDisplay)
{
    DisplayOrder order;
    EXPECT_EQ(order.head(), notOurs);
    open(order, 0, 1);
    EXPECT_EQ(order.head(), ours(1));
    open(order, 0, 2);
    EXPECT_EQ(order.head(), ours(2));
    order.insert(0);
    EXPECT_EQ(order.head(), notOurs);
}

TEST(DisplayOrderTest, AllowsForRowsThatWereThereBefore)
{
    DisplayOrder order;
    open(order, 3, 1);
    EXPECT_EQ(order.head(), notOurs);
    EXPECT_EQ(order.remove(0), notOurs);
    EXPECT_EQ(order.remove(7), notOurs);
    EXPECT_EQ(order.remove(2), ours(1));
    EXPECT_EQ(order.remove(0), notOurs);
}

TEST(DisplayOrderTest, NamesOnlyWhatWasInsertedLast)
{
    DisplayOrder order;
    order.insert(0);
    order.insert(0);
    order.nameLast(ours(1));
    EXPECT_EQ(order.remove(1), notOurs);
    EXPECT_EQ(order.remove(0), ours(1));
}

TEST(DisplayOrderTest, NamesNothingAfterARemoval)
{
    DisplayOrder order;
    open(order, 0, 1);
    order.insert(1);
    order.remove(1);
    order.nameLast(ours(2));
    EXPECT_EQ(order.remove(0), ours(1));
}

TEST(DisplayOrderTest, ForgetsEverythingWhenCleared)
{
    DisplayOrder order;
    open(order, 0, 1);
    order.clear();
    EXPECT_EQ(order.head(), notOurs);
    EXPECT_EQ(order.remove(0), notOurs);
}

TEST(DisplayOrderTest, AcceptsIndexesOutOfRange)
{
    DisplayOrder order;
    open(order, 0, 1);
    EXPECT_EQ(order.remove(-1), notOurs);
    order.insert(-1);
    EXPECT_EQ(order.remove(1), ours(1));
}

/// The queue lists all rows. The order must agree with it on our rows.
TEST(DisplayOrderTest, AgreesWithTheQueueAfterAnyChanges)
{
    EXPECT_TRUE(rc::check([] {
        std::vector<Opening> queue(*rc::gen::inRange<std::size_t>(0, 5));
        DisplayOrder order;
        quint32 id = 0;
        const auto steps = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 3));
        for (const int step : steps) {
            const int kind = queue.empty() ? step % 2 : step;
            const auto end = int(queue.size()) + (kind == 2 ? 0 : 1);
            const int index = *rc::gen::inRange(0, end);
            if (kind == 2) {
                RC_ASSERT(order.remove(index) == queue[std::size_t(index)]);
                queue.erase(queue.begin() + index);
                continue;
            }
            const Opening opening = kind == 0 ? notOurs : ours(++id);
            queue.insert(queue.begin() + index, opening);
            order.insert(index);
            if (opening.isOurs()) {
                order.nameLast(opening);
            }
            RC_ASSERT(order.head() == queue.front());
        }
    }));
}
} // namespace
