// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "History.h"
#include "HistorySteps.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

/// What waits for the thread of the history. Called from any thread.
class HistoryQueue
{
public:
    using Clock = std::chrono::steady_clock;

    struct Request
    {
        HistoryQuery query;
        History::PageReceiver receiver;
    };

    struct Work
    {
        std::deque<HistoryStep> steps;
        std::vector<Request> requests;
        int lost = 0; ///< entries that were dropped because too many waited
        bool isStopping = false;
    };

    /// Gives the entry its number, which it returns.
    qint64 add(HistoryEntry entry);

    void append(HistoryStep step);
    void append(Request request);
    void stop();

    /// Returns the first number of this session. If none has been given yet, it is the one after the last
    /// in the file. Otherwise entries came before the file was opened.
    qint64 firstNumber(qint64 lastInFile);

    /// Waits until steps are due, a page is requested, the time has come, or the history ends. Returns
    /// everything that waits.
    Work wait(std::optional<Clock::time_point> time);

private:
    void push(HistoryStep &&step, std::unique_lock<std::mutex> lock);

    /// Whether enough waits for a write, however short the time.
    bool isEnough() const;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Protected by the mutex.
    Work m_work;
    std::size_t m_bytes = 0; ///< of the steps
    Clock::time_point m_due; ///< when the first step is to be written
    qint64 m_first = 0;      ///< 0 until it is known
    qint64 m_next = 0;
};

/// Appends a step. One that makes a waiting one needless drops it: a replacement that of the same entry,
/// and a request to mark as seen the last step if that is one, too. So they push nothing else out, however
/// many come. Returns where that one was.
std::optional<std::size_t> appendStep(std::deque<HistoryStep> &steps, std::size_t &bytes,
                                      HistoryStep &&step);

/// If the steps take more than maxWaitingBytes, drops some, so that the others take at most half of that.
/// It takes from the users whose steps take most, until all of these have as much left, and of each the
/// oldest first. Returns how many entries were among them.
int dropExcess(std::deque<HistoryStep> &steps, std::size_t &bytes);

/// The memory that a step takes, more or less.
std::size_t memoryOf(const HistoryStep &step);
