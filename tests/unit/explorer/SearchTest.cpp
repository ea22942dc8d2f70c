// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/engine/Search.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <unistd.h>

namespace {
using namespace exploration;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

/// A piece on a board of four by four squares, with one step to the right, one up and one back to the
/// start; what happens on a square is up to the test.
class Board : public System
{
public:
    enum : Action { Right, Up, Back };
    using Hook = std::function<void(Board *)>;

    explicit Board(Hook onArrival = {}, Hook onInspection = {})
        : m_onArrival(std::move(onArrival))
        , m_onInspection(std::move(onInspection))
    {
    }

    void start() override { x = y = 0; }
    std::vector<Action> actions() override { return {Right, Up, Back}; }

    void act(Action action) override
    {
        say(action == Right ? "right" : action == Up ? "up" : "back");
        if (action == Right && x < 3) {
            ++x;
        } else if (action == Up && y < 3) {
            ++y;
        } else if (action == Back) {
            start();
        }
        if (m_onArrival) {
            m_onArrival(this);
        }
    }

    void inspect() override
    {
        if (m_onInspection) {
            m_onInspection(this);
        }
    }

    std::string state() override { return {char(x), char(y)}; }

    bool isAt(int column, int row) const { return x == column && y == row; }

    using System::choose;
    using System::finding;
    using System::tried;

    int x = 0;
    int y = 0;

private:
    Hook m_onArrival;
    Hook m_onInspection;
};

SystemFactory board(const Board::Hook &onArrival = {}, const Board::Hook &onInspection = {})
{
    return [=] { return std::make_unique<Board>(onArrival, onInspection); };
}

Bounds jobs(int number)
{
    Bounds bounds;
    bounds.jobs = number;
    return bounds;
}

Board::Hook at(int column, int row, const Board::Hook &hook)
{
    return [=](Board *piece) {
        if (piece->isAt(column, row)) {
            hook(piece);
        }
    };
}
} // namespace

TEST(SearchTest, FindsEveryStateAndTakesEveryStepOnce)
{
    const Outcome outcome = explore(board(), jobs(2));
    EXPECT_TRUE(outcome.closed);
    EXPECT_EQ(outcome.states, 16U);
    EXPECT_EQ(outcome.transitions, 16U * 3U);
    EXPECT_THAT(outcome.levels, ElementsAre(1, 2, 3, 4, 3, 2, 1));
    EXPECT_THAT(outcome.findings, IsEmpty());
}

TEST(SearchTest, FindsTheShortestSequence)
{
    const Outcome outcome = explore(
        board(at(2, 1, [](Board *piece) { piece->finding("the trap is shut", "here"); })), jobs(2));
    ASSERT_THAT(outcome.findings, ElementsAre(Key("the trap is shut")));
    const Sighting &sighting = outcome.findings.begin()->second;
    EXPECT_THAT(sighting.sequence, SizeIs(3));
    EXPECT_EQ(sighting.observation.detail, "here");
    EXPECT_EQ(sighting.count, 2U); // from the left and from below
}

TEST(SearchTest, MakesEveryChoice)
{
    const auto onArrival = at(3, 3, [](Board *piece) {
        if (piece->choose(2) == 1 && piece->choose(3) == 2) {
            piece->finding("both");
        }
    });
    const Outcome outcome = explore(board(onArrival), jobs(2));
    // Three steps end in the corner: (0), (1, 0), (1, 1), (1, 2) instead of one way each; the two
    // that stay there included.
    EXPECT_EQ(outcome.transitions, 16U * 3U + 4U * 3U);
    ASSERT_THAT(outcome.findings, ElementsAre(Key("both")));
    EXPECT_EQ(outcome.findings.begin()->second.sequence.back().picks, std::string("\1\2", 2));
}

TEST(SearchTest, TakesADeathForAFindingAndGoesOn)
{
    const Outcome outcome = explore(board(at(1, 2, [](Board *) { ::_exit(7); })), jobs(2));
    ASSERT_THAT(outcome.findings, ElementsAre(Key("no step ends the process: exit status 7")));
    EXPECT_THAT(outcome.findings.begin()->second.sequence, SizeIs(3));
    EXPECT_EQ(outcome.states, 15U);
    EXPECT_EQ(outcome.transitions, 15U * 3U);
}

TEST(SearchTest, TakesAHangForAFinding)
{
    Bounds bounds = jobs(1);
    bounds.hang = std::chrono::milliseconds(200);
    const Outcome outcome = explore(board(at(0, 1, [](Board *) { ::pause(); })), bounds);
    ASSERT_THAT(outcome.findings, ElementsAre(Key("no step hangs")));
    EXPECT_THAT(outcome.findings.begin()->second.sequence, SizeIs(1));
    EXPECT_EQ(outcome.states, 13U); // without the first column above: it lies behind what hangs
}

TEST(SearchTest, InspectsEveryStateOnce)
{
    const auto onInspection = [](Board *piece) {
        piece->tried();
        if (piece->isAt(2, 2)) {
            piece->finding("the middle is clean");
        }
    };
    const Outcome outcome = explore(board({}, onInspection), jobs(2));
    EXPECT_EQ(outcome.tried, 16U);
    ASSERT_THAT(outcome.findings, ElementsAre(Key("the middle is clean")));
    EXPECT_TRUE(outcome.findings.begin()->second.inspecting);
    EXPECT_THAT(outcome.findings.begin()->second.sequence, SizeIs(4));
}

TEST(SearchTest, NoticesWhatCannotBeReproduced)
{
    int starts = 0;
    const Outcome outcome = explore(
        board(at(1, 0, [starts](Board *piece) mutable { piece->y = ++starts == 1 ? 3 : 0; })),
        jobs(1));
    EXPECT_THAT(outcome.findings, ElementsAre(Key("the same sequence leads to the same state")));
}

TEST(SearchTest, NoticesStatesThatLookTheSameAndAreNot)
{
    // Remembers whether it has ever been sent back, and doesn't show it.
    class Forgetful : public Board
    {
    public:
        void start() override
        {
            Board::start();
            m_wasBack = false;
        }
        void act(Action action) override
        {
            m_wasBack = m_wasBack || action == Back;
            if (action == Back) {
                Board::start();
            } else if (!m_wasBack) {
                Board::act(action);
            }
        }

    private:
        bool m_wasBack = false;
    };
    Bounds bounds = jobs(2);
    const SystemFactory factory = [] { return std::make_unique<Forgetful>(); };
    EXPECT_THAT(explore(factory, bounds).findings, IsEmpty());
    bounds.twice = true;
    const Outcome outcome = explore(factory, bounds);
    EXPECT_THAT(outcome.findings,
                ElementsAre(Key("states that look the same have the same future")));
}

TEST(SequenceTest, IsReadAsItIsPrinted)
{
    const Sequence sequence{{3, {}}, {12, std::string("\0\1", 2)}, {300, "\2"}};
    EXPECT_EQ(toString(sequence), "3 12.0.1 300.2");
    EXPECT_EQ(sequenceFrom(toString(sequence)), sequence);
}
