// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The ranks of the display's queue, so many that they take several runs of 512.

#include "modules/notifications/DisplayRanks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

/// Ranks whose runs are open to the tests.
struct DisplayRanksAccess : DisplayRanks
{
    using DisplayRanks::m_runs;
};

namespace {
using Rank = DisplayRanks::Rank;

/// Ranks and a plain sorted list of the same, to be compared.
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

    /// Inserts the next arrival, with a random one of so many priorities.
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

TEST(DisplayRanksTest, CountsWhatStandsBeforeARankThatIsNotThere)
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

TEST(DisplayRanksTest, FindsAllAsARunBecomesTwoAndThree)
{
    RanksBesideAList both;
    for (const int size : {511, 512, 513, 514, 768, 769, 770, 1024, 1025, 1026}) {
        while (int(both.list.size()) < size) {
            both.arrive(1);
        }
        both.expectSame();
    }
}

TEST(DisplayRanksTest, FindsAllWhenEveryOneIsMoreUrgentThanThoseBefore)
{
    RanksBesideAList both;
    for (int i = 0; i < 1100; ++i) {
        both.insert({i, quint64(i)});
    }
    both.expectSame();
}

TEST(DisplayRanksTest, PutsEachBetweenTheNeighboursThatItBelongsTo)
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

TEST(DisplayRanksTest, LosesTheFirstUntilNoneIsLeft)
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

TEST(DisplayRanksTest, LosesTheLastUntilNoneIsLeft)
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

TEST(DisplayRanksTest, LosesAllBetweenItsEnds)
{
    RanksBesideAList both;
    for (int i = 0; i < 1300; ++i) {
        both.arrive(1);
    }
    // The place that is taken from moves through each run and from run to run.
    while (both.list.size() > 600) {
        both.takeAt(300);
        both.expectSame();
    }
}

TEST(DisplayRanksTest, AgreesWithAListThroughAnyComingAndGoing)
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

TEST(DisplayRanksTest, StandsInRunsThatAreNeitherLongNorShort)
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
