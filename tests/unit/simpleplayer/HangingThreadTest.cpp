// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "playback/HangingThread.h"

#include <gtest/gtest.h>

#include <list>

namespace {

constexpr uid_t somebody = 1001;
constexpr uid_t somebodyElse = 1002;
constexpr uid_t root = 0;
constexpr dev_t disk = 1;

class HangingThreadTest : public testing::Test
{
protected:
    HangingThread::File newFile(uid_t owner) { return OpenedSound::FileId{owner, disk, ++m_files}; }

    void hang(const HangingThread::File &file) { m_threads.emplace_back(file); }

    void hangInNewFilesOf(uid_t owner, int count)
    {
        for (int i = 0; i < count; ++i) {
            hang(newFile(owner));
        }
    }

    std::list<HangingThread> m_threads;

private:
    ino_t m_files = 0;
};

} // namespace

TEST_F(HangingThreadTest, TwoAreTooManyOfOneFile)
{
    const auto file = newFile(root);
    hang(file);
    EXPECT_FALSE(HangingThread::areTooMany(file));
    hang(file);
    EXPECT_TRUE(HangingThread::areTooMany(file));
    EXPECT_FALSE(HangingThread::areTooMany(newFile(root)));
}

TEST_F(HangingThreadTest, EightAreTooManyOfOneOwner)
{
    hangInNewFilesOf(somebody, 7);
    EXPECT_FALSE(HangingThread::areTooMany(newFile(somebody)));
    hangInNewFilesOf(somebody, 1);
    EXPECT_TRUE(HangingThread::areTooMany(newFile(somebody)));
    EXPECT_FALSE(HangingThread::areTooMany(newFile(somebodyElse)));
}

TEST_F(HangingThreadTest, AreNotTooManyOfAnOwnerOnAnotherDisk)
{
    hangInNewFilesOf(somebody, 8);
    EXPECT_FALSE(HangingThread::areTooMany(OpenedSound::FileId{somebody, disk + 1, 1}));
}

TEST_F(HangingThreadTest, VeryManyLeaveRoomOnlyForFilesOfTheSystem)
{
    for (uid_t owner = 0; owner < 64; ++owner) {
        hangInNewFilesOf(2000 + owner, 4);
    }
    EXPECT_TRUE(HangingThread::areTooMany(newFile(somebody)));
    EXPECT_FALSE(HangingThread::areTooMany(newFile(root)));
    m_threads.pop_back();
    EXPECT_FALSE(HangingThread::areTooMany(newFile(somebody)));
}

TEST_F(HangingThreadTest, ThirtyTwoWithoutAFileAreTooManyForAll)
{
    for (int i = 0; i < 31; ++i) {
        hang(std::nullopt);
    }
    EXPECT_FALSE(HangingThread::areTooMany(std::nullopt));
    hang(std::nullopt);
    EXPECT_TRUE(HangingThread::areTooMany(std::nullopt));
    EXPECT_TRUE(HangingThread::areTooMany(newFile(root)));
}

TEST_F(HangingThreadTest, NoLongerCountWhenTheyHaveEnded)
{
    const auto file = newFile(somebody);
    hang(file);
    hangInNewFilesOf(somebody, 7);
    hang(file);
    EXPECT_EQ(HangingThread::count(), 9);
    m_threads.clear();
    EXPECT_EQ(HangingThread::count(), 0);
    EXPECT_FALSE(HangingThread::areTooMany(file));
}
