// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "CrowdTest.h"

namespace {

constexpr int many = 100'000;
constexpr int manyInstrumented = 5'000;

// How much more may be in use after a repetition, in KiB: an object lost an item is several thousand.
constexpr int kept = 512;

// How often a table may be enlarged because more has come together than ever before.
constexpr int attempts = 5;

} // namespace

/// With the limits that hold for a device that has all this to bear.
class ManyTest : public CrowdTest
{
protected:
    static constexpr int count = sanitized ? manyInstrumented : many;

    void startWithCrowd()
    {
        startModules(
            {"powermanager", playerModule(), "notifications", crowd(), m_requester.module()});
    }

    /// Repeats it until no more is in use afterwards than before: what is lost each time shows each
    /// time. A sanitizer counts otherwise, and so isn't asked.
    template <typename Task>
    void expectLeavesNoMemory(Task task)
    {
        task();
        std::string complaint = sanitized ? "" : "not weighed";
        for (int i = 0; i < attempts && !complaint.empty(); ++i) {
            run({}, "weigh");
            task();
            m_requester.invoke("/crowd/run", {{"do", "weighAgain"}, {"most", kept}});
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

TEST_F(ManyTest, SoundsAreAllCancelledFromTheLastOneOn)
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

TEST_F(ManyTest, NodesAreAllClosedFromTheLastOneOn)
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

/// Their nodes stay, so nothing is weighed.
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
    // None is left, and the crowd may have the same ids again.
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
