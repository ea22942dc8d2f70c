// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// The display with so many open notifications that their ranks take several runs of 512.

#include "DisplayTest.h"

#include <algorithm>
#include <random>

namespace {
class DisplayCrowdTest : public DisplayTest
{
protected:
    // Thousands of notifications log too much; other tests check that.
    DisplayCrowdTest() { log().setLevel(log4cplus::FATAL_LOG_LEVEL); }

    static CMPath clientPath(int number) { return CMPath("/client"_s) + QString::number(number); }

    /// Opens a notification and records its expected position.
    void openExpected(const CMPath &path, int priority)
    {
        open(reference(path, priority));
        const auto behind =
            std::find_if(m_expected.begin(), m_expected.end(),
                         [&](const Open &each) { return each.priority < priority; });
        m_expected.insert(behind, {path, priority});
    }

    void cancelExpected(int position)
    {
        const CMPath path = m_expected[std::size_t(position)].path;
        EXPECT_FALSE(cancelDisplay(path).error().isError());
        m_expected.erase(m_expected.begin() + position);
    }

    void cancelAnyExpected() { cancelExpected(below(int(m_expected.size()))); }

    int below(int bound) { return int(m_random() % unsigned(bound)); }

    QVector<CMPath> expected() const
    {
        QVector<CMPath> paths;
        for (const Open &each : m_expected) {
            paths.append(each.path);
        }
        return paths;
    }

    int left() const { return int(m_expected.size()); }

private:
    struct Open
    {
        CMPath path;
        int priority;
    };
    std::vector<Open> m_expected;
    std::mt19937 m_random{1};
};
} // namespace

TEST_F(DisplayCrowdTest, KeepsTheOrderOfArrivalAmongEqualPriorities)
{
    for (int i = 0; i < 1100; ++i) {
        openExpected(clientPath(i), 1);
    }
    EXPECT_EQ(rows(), expected());
    while (left() > 0) {
        cancelAnyExpected();
        if (left() % 20 == 0) {
            ASSERT_EQ(rows(), expected());
        }
    }
}

TEST_F(DisplayCrowdTest, KeepsMixedPrioritiesInOrderWhileTheyComeAndGo)
{
    for (int i = 0; i < 3000; ++i) {
        openExpected(clientPath(i), below(5));
        if (i % 3 == 2) {
            cancelAnyExpected();
        }
    }
    EXPECT_EQ(rows(), expected());
    while (left() > 0) {
        cancelAnyExpected();
        if (left() % 20 == 0) {
            ASSERT_EQ(rows(), expected());
        }
    }
    openExpected(clientPath(0), 1);
    EXPECT_EQ(rows(), expected());
}

TEST_F(DisplayCrowdTest, ShowsOneAfterAnotherForItsTimeout)
{
    const int count = 1100;
    for (int i = 0; i < count; ++i) {
        open(reference(clientPath(i), 1, 60000 + i));
    }
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(closeTimer()->isActive());
        ASSERT_EQ(closeTimer()->interval(), 60000 + i);
        fireCloseTimer();
    }
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_FALSE(closeTimer()->isActive());
}

TEST_F(DisplayCrowdTest, ShowsEachMoreUrgentOneAndThenThePreemptedOnes)
{
    const int count = 1100;
    for (int i = 0; i < count; ++i) {
        openExpected(clientPath(i), i);
    }
    ASSERT_EQ(rows(), expected());
    while (left() > 0) {
        cancelExpected(0);
        ASSERT_EQ(rows().value(0), expected().value(0));
    }
    EXPECT_TRUE(rows().isEmpty());
}

TEST_F(DisplayCrowdTest, ClosesAllWithOnePathAndNoOther)
{
    const CMPath shared("/client/shared"_s);
    for (int i = 0; i < 1500; ++i) {
        openExpected(clientPath(i), i % 3);
        if (i % 30 == 0) {
            open(reference(shared, i % 3));
        }
    }
    close(shared);
    EXPECT_EQ(rows(), expected());
}
