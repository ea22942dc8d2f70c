// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/registry/cmpathtable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>

namespace {
struct Entry
{
    const CMPath &path() const { return name; }

    CMPath name;
    Entry *next = nullptr;
};

class CMPathTableTest : public testing::Test
{
protected:
    CMPathTableTest()
    {
        for (int i = 0; i < 1000; ++i) {
            entries.push_back({pathOf(i)});
            table.insert(&entries.back());
        }
    }

    static CMPath pathOf(int number) { return CMPath("/table") + QString::number(number); }

    std::deque<Entry> entries;
    CMPathTable<Entry, &Entry::next> table;
};
} // namespace

TEST_F(CMPathTableTest, FindsEachEntryByItsPath)
{
    EXPECT_EQ(table.size(), 1000);
    for (Entry &entry : entries) {
        EXPECT_EQ(table.find(CMPath(entry.name.toString())), &entry);
    }
}

TEST_F(CMPathTableTest, FindsNothingForAPathWithoutAnEntry)
{
    EXPECT_EQ(table.find(pathOf(1000)), nullptr);
    EXPECT_EQ(table.find(CMPath()), nullptr);
}

TEST_F(CMPathTableTest, RemovesAnEntryAndNoOther)
{
    std::vector<Entry *> order = table.entries();
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    for (std::size_t i = 0; i < order.size(); ++i) {
        table.remove(order[i]);
        EXPECT_EQ(table.find(order[i]->name), nullptr);
        EXPECT_EQ(table.find(order.back()->name) != nullptr, i + 1 < order.size());
    }
    EXPECT_EQ(table.size(), 0);
}

TEST_F(CMPathTableTest, ReplacesAnEntry)
{
    Entry other{pathOf(7)};
    table.replace(&entries[7], &other);
    EXPECT_EQ(table.find(pathOf(7)), &other);
    EXPECT_EQ(table.size(), 1000);
    EXPECT_EQ(table.entries().size(), 1000U);
}

TEST_F(CMPathTableTest, IsEmptyAfterTakingAllItsEntries)
{
    EXPECT_EQ(table.takeAll().size(), 1000U);
    EXPECT_EQ(table.size(), 0);
    EXPECT_EQ(table.find(pathOf(7)), nullptr);
}
