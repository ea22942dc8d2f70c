// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Random sequences of requests, closes, expiries and passing time, compared with a plain model.

#include "DisplayTest.h"
#include "support/clock/VirtualClock.h"

#include <rapidcheck/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {
struct Open
{
    CMPath path;
    int priority;
    int timeout; ///< the time that is left
};

class DisplaySequencesTest : public DisplayTest
{
public:
    void run(const std::vector<std::pair<int, int>> &steps)
    {
        for (const auto &[action, number] : steps) {
            act(action, number);
            check();
        }
        while (!m_open.empty()) {
            cancelDisplay(m_open.back().path);
            const CMPath path = m_open.back().path;
            removeAll(path);
            check();
        }
    }

private:
    static int pick(int number, std::size_t size) { return int(std::size_t(number) % size); }

    void act(int action, int number)
    {
        if (action < 5) {
            openNew(number);
        } else if (m_open.empty()) {
            RC_ASSERT(cancelDisplay(CMPath("/nowhere"_s)).error().isError());
        } else if (action == 5) {
            const CMPath path = m_open[std::size_t(pick(number, m_open.size()))].path;
            RC_ASSERT(!cancelDisplay(path).error().isError());
            removeAll(path);
        } else if (action == 6) {
            const CMPath path = m_open[std::size_t(pick(number, m_open.size()))].path;
            close(path);
            removeAll(path);
        } else if (action == 7) {
            m_clock.advance(std::chrono::milliseconds(number));
            m_shown += number;
        } else if (closeTimer()->isActive()) {
            fireCloseTimer();
            removeAt(m_open.begin());
        }
    }

    void openNew(int number)
    {
        const int priority = number % 4;
        const int timeout = number % 3 == 0 ? 0 : 1000 + number;
        const bool shared = number % 5 == 0;
        const CMPath path = shared ? open(reference(CMPath("/client/shared"_s), priority, timeout))
                                   : open("text"_s, priority, timeout);
        const auto position =
            std::find_if(m_open.begin(), m_open.end(),
                         [priority](const Open &other) { return other.priority < priority; });
        if (position != m_open.begin()) {
            m_open.insert(position, {path, priority, timeout});
            return;
        }
        if (!m_open.empty() && m_open.front().timeout > 0) {
            m_open.front().timeout -= m_shown;
            if (m_open.front().timeout <= 0) {
                m_open.erase(m_open.begin());
            }
        }
        m_open.insert(m_open.begin(), {path, priority, timeout});
        m_shown = 0;
    }

    std::vector<Open>::iterator removeAt(std::vector<Open>::iterator position)
    {
        if (position == m_open.begin()) {
            m_shown = 0;
        }
        return m_open.erase(position);
    }

    void removeAll(const CMPath &path)
    {
        for (auto entry = m_open.end(); entry != m_open.begin();) {
            if ((--entry)->path == path) {
                entry = removeAt(entry);
            }
        }
    }

    void check()
    {
        QVector<CMPath> expected;
        for (const Open &entry : m_open) {
            expected.append(entry.path);
        }
        RC_ASSERT(rows() == expected);
        const bool timed = !m_open.empty() && m_open.front().timeout > 0;
        RC_ASSERT(closeTimer()->isActive() == timed);
        if (timed) {
            RC_ASSERT(closeTimer()->interval() == m_open.front().timeout);
        }
    }

    std::vector<Open> m_open;
    int m_shown = 0; ///< how long the head has been on display, in milliseconds
    VirtualClock m_clock;
};
} // namespace

RC_GTEST_FIXTURE_PROP(DisplaySequencesTest, KeepOrderRowsAndTimerInStep, ())
{
    log().setLevel(log4cplus::FATAL_LOG_LEVEL);
    run(*rc::gen::container<std::vector<std::pair<int, int>>>(
        rc::gen::pair(rc::gen::inRange(0, 9), rc::gen::inRange(0, 1000))));
}
