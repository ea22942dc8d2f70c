// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The ranks of the display's queue, with several runs of 512.

#include "modules/notifications/DisplayRanks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

/// Gives the tests access to the runs.
struct DisplayRanksAccess : DisplayRanks
{
    using DisplayRanks::m_runs;
};

namespace {
using Rank = DisplayRanks::Rank;

/// Ranks and a plain sorted list with the same contents, to be compared.
class RanksBesideAList
{
public:
    explicit RanksBesideAList(unsigned seed = 1)
        : m_random(seed)
    {
    }

    DisplayRanksAccess ranks;
    std::vector<Rank> list;

    void insert(const Rank &rank)
    {
        const auto place = std::lower_bound(list.begin(), list.end(), rank);
        ASSERT_EQ(ranks.position(rank), int(place - list.begin()));
        list.insert(place, rank);
        ranks.insert(rank);
    }

    /// Inserts the next arrival, with a random priority.
    void arrive(int priorities) { insert({below(priorities), m_arrivals++}); }

    void takeAt(int position)
    {
        ASSERT_EQ(ranks.takeAt(position), list[std::size_t(position)]);
        list.erase(list.begin() + position);
    }

    void takeAnywhere() { takeAt(below(int(list.size()))); }

    int below(int bound) { return int(m_random() % unsigned(bound)); }

    void expectSame() const
    {
        ASSERT_EQ(ranks.size(), int(list.size()));
        for (int i = 0; i < int(list.size()); ++i) {
            ASSERT_EQ(ranks.at(i), list[std::size_t(i)]) << i;
            ASSERT_EQ(ranks.position(list[std::size_t(i)]), i);
        }
    }

private:
    std::mt19937 m_random;
    quint64 m_arrivals = 0;
};
} // namespace

TEST(DisplayRanksTest, PutsTheMoreUrgentFirstAndTheOlderBeforeTheNewer)
{
    DisplayRanks ranks;
    const Rank normal{1, 0};
    const Rank urgent{3, 1};
    const Rank later{1, 2};
    for (const Rank &rank : {normal, urgent, later}) {
        ranks.insert(rank);
    }
    EXPECT_EQ(ranks.at(0), urgent);
    EXPECT_EQ(ranks.at(1), normal);
    EXPECT_EQ(ranks.at(2), later);
}

TEST(DisplayRanksTest, CountsTheRanksBeforeOneThatIsNotThere)
{
    DisplayRanks ranks;
    EXPECT_EQ(ranks.position({1, 0}), 0);
    for (quint64 arrival = 0; arrival < 2000; ++arrival) {
        ranks.insert({1, arrival});
    }
    EXPECT_EQ(ranks.position({2, 2000}), 0);
    EXPECT_EQ(ranks.position({1, 2000}), 2000);
    EXPECT_EQ(ranks.position({0, 2000}), 2000);
}

TEST(DisplayRanksTest, FindsEveryRankAfterARunHasBeenSplitTwice)
{
    RanksBesideAList both;
    for (const int size : {511, 512, 513, 514, 768, 769, 770, 1024, 1025, 1026}) {
        while (int(both.list.size()) < size) {
            both.arrive(1);
        }
        both.expectSame();
    }
}

TEST(DisplayRanksTest, FindsEveryRankWhenEachIsMoreUrgentThanTheLast)
{
    RanksBesideAList both;
    for (int i = 0; i < 1100; ++i) {
        both.insert({i, quint64(i)});
    }
    both.expectSame();
}

TEST(DisplayRanksTest, PutsEachRankBetweenItsNeighbours)
{
    RanksBesideAList both;
    for (quint64 arrival = 0; arrival < 3000; arrival += 2) {
        both.insert({1, arrival});
    }
    for (quint64 arrival = 1; arrival < 3000; arrival += 2) {
        both.insert({1, arrival});
    }
    both.expectSame();
}

TEST(DisplayRanksTest, RemovesTheFirstUntilItIsEmpty)
{
    RanksBesideAList both;
    for (int i = 0; i < 1300; ++i) {
        both.arrive(2);
    }
    while (!both.list.empty()) {
        both.takeAt(0);
        both.expectSame();
    }
    both.arrive(2);
    both.expectSame();
}

TEST(DisplayRanksTest, RemovesTheLastUntilItIsEmpty)
{
    RanksBesideAList both;
    for (int i = 0; i < 1300; ++i) {
        both.arrive(2);
    }
    while (!both.list.empty()) {
        both.takeAt(int(both.list.size()) - 1);
        both.expectSame();
    }
}

TEST(DisplayRanksTest, RemovesEveryRankBetweenItsEnds)
{
    RanksBesideAList both;
    for (int i = 0; i < 1300; ++i) {
        both.arrive(1);
    }
    // The position moves through each run, and from run to run.
    while (both.list.size() > 600) {
        both.takeAt(300);
        both.expectSame();
    }
}

TEST(DisplayRanksTest, AgreesWithAListThroughRandomInsertionsAndRemovals)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        RanksBesideAList both(seed);
        const int priorities = 1 + both.below(6);
        for (const int size : {3000, 40, 1500, 600, 700, 0, 1100, 0}) {
            while (int(both.list.size()) != size) {
                const bool grows = int(both.list.size()) < size;
                if (both.list.empty() || grows == (both.below(4) != 0)) {
                    both.arrive(priorities);
                } else {
                    both.takeAnywhere();
                }
                ASSERT_FALSE(HasFatalFailure());
            }
            both.expectSame();
        }
    }
}

TEST(DisplayRanksTest, HasRunsThatAreNeitherTooLongNorTooShort)
{
    RanksBesideAList both;
    const auto expectBounded = [&both] {
        const auto &runs = both.ranks.m_runs;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            ASSERT_LE(runs[i].size(), 512U);
            ASSERT_FALSE(runs[i].empty());
            ASSERT_TRUE(i == 0 || runs[i - 1].size() + runs[i].size() > 256);
        }
    };
    for (int i = 0; i < 10000; ++i) {
        both.arrive(4);
        expectBounded();
    }
    while (!both.list.empty()) {
        both.takeAnywhere();
        expectBounded();
    }
}
