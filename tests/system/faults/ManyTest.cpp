// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CrowdTest.h"

namespace {

constexpr int many = 100'000;
constexpr int manyInstrumented = 5'000;

// The allowed growth in KiB of a repetition. One object lost per item would be several thousand.
constexpr int kept = 512;

// How often a table may grow because it has more items than ever before.
constexpr int attempts = 5;

} // namespace

/// With limits for a device that must handle this much.
class ManyTest : public CrowdTest
{
protected:
    static constexpr int count = sanitized ? manyInstrumented : many;

    void startWithCrowd()
    {
        startModules(
            {"powermanager", playerModule(), "notifications", crowd(), m_requester.module()});
    }

    /// Repeats it until the heap has not grown: memory that is lost each time shows each time.
    /// Not in builds with sanitizers, which count differently.
    template <typename Task>
    void expectLeavesNoMemory(Task task)
    {
        task();
        std::string complaint = sanitized ? "" : "not weighed";
        for (int i = 0; i < attempts && !complaint.empty(); ++i) {
            run({}, "weigh");
            task();
            m_requester.invoke("/crowd/run", {{"do", "weighAgain"}, {"max", kept}});
            complaint = m_requester.answer();
        }
        EXPECT_EQ(complaint, "");
    }
};

TEST_F(ManyTest, SoundsAreAllQueuedAndCancelledAndLeaveNoMemoryBehind)
{
    startWithCrowd();
    expectLeavesNoMemory([this] {
        run({{"count", count}}, "queueSounds");
        run({}, "cancelSounds");
    });
    expectAsGoodAsNew();
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(ManyTest, SoundsAreAllCancelledInReverseOrder)
{
    startWithCrowd();
    run({{"count", count}}, "queueSounds");
    run({{"last", true}}, "cancelSounds");
    expectAsGoodAsNew();
}

TEST_F(ManyTest, NodesAreAllShownAndClosedAndLeaveNoMemoryBehind)
{
    startWithCrowd();
    expectLeavesNoMemory([this] {
        run({{"count", count}}, "openNodes");
        run({}, "closeAll");
    });
    expectAsGoodAsNew();
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(ManyTest, NodesAreAllClosedInReverseOrder)
{
    startWithCrowd();
    run({{"count", count}}, "openNodes");
    run({{"last", true}}, "closeAll");
    expectAsGoodAsNew();
}

TEST_F(ManyTest, NotificationsOfOneNodeAreAllClosedAtOnce)
{
    startWithCrowd();
    expectLeavesNoMemory([this] {
        run({{"count", count}}, "openShared");
        run({}, "closeAll");
    });
    expectAsGoodAsNew();
}

/// Their nodes stay, so memory is not measured.
TEST_F(ManyTest, MessagesAreAllOpenedAndClosed)
{
    startWithCrowd();
    run({{"count", count}}, "openMessages");
    run({}, "closeAll");
    expectAsGoodAsNew();
    EXPECT_EQ(stopHost(), 0);
}

TEST_F(ManyTest, SoundsAreAllCancelledByARevoke)
{
    startWithCrowd();
    run({{"count", count}}, "queueSounds");
    m_requester.invoke("/powerManager/standby");
    EXPECT_EQ(m_requester.answer(), "");
    m_requester.invoke("/powerManager/resume");
    EXPECT_EQ(m_requester.answer(), "");
    // Shows that none is left, since the crowd can use the same ids again.
    run({{"count", 0}}, "queueSounds");
    expectAsGoodAsNew();
}

TEST_F(ManyTest, AHostStopsWithAllOfThemWaiting)
{
    startWithCrowd();
    run({{"count", count}}, "queueSounds");
    run({{"count", count}}, "openMessages");
    EXPECT_EQ(stopHost(), 0);
}
