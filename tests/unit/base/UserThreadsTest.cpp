// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "base/UserThreads.h"

#include "support/EventLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <vector>

namespace {
constexpr uid_t user = 1000;
constexpr uid_t otherUser = 1001;
constexpr std::size_t maxTasks = 200;

class UserThreadsTest : public testing::Test
{
protected:
    /// Has the user's thread wait until it is released.
    void hang()
    {
        ASSERT_TRUE(
            m_threads.run(user, [released = m_released.get_future().share()] { released.wait(); }));
    }
    void release() { m_released.set_value(); }

    bool end(uid_t whose)
    {
        return waitFor([&] { return m_threads.count(whose) == 0; });
    }

    const UserThreads m_threads{maxTasks, 8};

private:
    std::promise<void> m_released;
};

TEST_F(UserThreadsTest, RunTheTasksOfAUserInTheirOrder)
{
    std::vector<int> done;
    constexpr int tasks = 100;
    hang();
    for (int i = 0; i < tasks; ++i) {
        ASSERT_TRUE(m_threads.run(user, [&done, i] { done.push_back(i); }));
    }
    EXPECT_EQ(m_threads.count(user), std::size_t(tasks) + 1);
    release();
    ASSERT_TRUE(end(user));
    ASSERT_EQ(done.size(), std::size_t(tasks));
    EXPECT_TRUE(std::is_sorted(done.begin(), done.end()));
}

TEST_F(UserThreadsTest, KeepNobodyWaitingForAnotherUsersTask)
{
    hang();
    std::promise<void> done;
    ASSERT_TRUE(m_threads.run(otherUser, [&done] { done.set_value(); }));
    done.get_future().wait();
    EXPECT_EQ(m_threads.count(user), 1U);
    release();
    EXPECT_TRUE(end(user));
    EXPECT_TRUE(end(otherUser));
}

TEST_F(UserThreadsTest, ServeMoreUsersThanThereMayBeThreads)
{
    constexpr int most = 2;
    constexpr uid_t users = 10;
    const UserThreads threads(maxTasks, most);
    std::promise<void> released;
    const auto hold = released.get_future().share();
    std::atomic<int> running{0};
    std::atomic<int> done{0};
    for (uid_t each = 0; each < users; ++each) {
        ASSERT_TRUE(threads.run(each, [&running, &done, &hold] {
            EXPECT_LE(++running, int(most));
            hold.wait();
            --running;
            ++done;
        }));
    }
    EXPECT_TRUE(waitFor([&] { return running == most; }));
    released.set_value();
    EXPECT_TRUE(waitFor([&] { return done == int(users) && threads.count(users - 1) == 0; }));
}

TEST_F(UserThreadsTest, TakeNoMoreTasksWhileManyWait)
{
    hang();
    while (m_threads.run(user, [] {})) {
    }
    EXPECT_EQ(m_threads.count(user), maxTasks);
    release();
    EXPECT_TRUE(end(user));
    EXPECT_TRUE(m_threads.run(user, [] {}));
    EXPECT_TRUE(end(user));
}
} // namespace
