// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "host/LogQueue.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <mutex>
#include <string>
#include <utility>

using log4cplus::spi::InternalLoggingEvent;

namespace {
constexpr std::size_t maxRecords = 1000;
constexpr std::chrono::seconds maxWait(1);

/// In all queues, with those that are being written.
std::atomic<int> recordsLeft = 0;

std::unique_ptr<InternalLoggingEvent> leftOutRecord(int count)
{
    return std::make_unique<InternalLoggingEvent>(
        "Host", log4cplus::WARN_LOG_LEVEL,
        std::to_string(count) + " records left out: the log did not take them in time", nullptr, 0);
}
} // namespace

struct LogQueue::State
{
    bool isIdle() const { return records.empty() && !isWriting; }

    const std::vector<log4cplus::SharedAppenderPtr> appenders;
    std::mutex mutex;
    std::condition_variable added;
    std::condition_variable taken;
    std::condition_variable idle;
    std::deque<std::unique_ptr<InternalLoggingEvent>> records{};
    bool isWriting = false;
    bool isOver = false;
    int leftOut = 0;
};

LogQueue::LogQueue(std::vector<log4cplus::SharedAppenderPtr> appenders)
    : m_state(new State{std::move(appenders), {}, {}, {}, {}})
    , m_thread([state = m_state] { run(state); })
{
}

LogQueue::~LogQueue()
{
    std::unique_lock lock(m_state->mutex);
    m_state->isOver = true;
    m_state->added.notify_one();
    const bool isWritten =
        m_state->idle.wait_for(lock, maxWait, [this] { return m_state->isIdle(); });
    lock.unlock();
    if (isWritten) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
}

void LogQueue::add(const InternalLoggingEvent &event)
{
    event.gatherThreadSpecificData();
    const bool isFatal = event.getLogLevel() >= log4cplus::FATAL_LOG_LEVEL;
    std::unique_lock lock(m_state->mutex);
    auto &records = m_state->records;
    const auto hasRoom = [&] { return records.size() < maxRecords; };
    if (event.getLogLevel() < log4cplus::INFO_LOG_LEVEL && m_state->leftOut == 0) {
        m_state->taken.wait_for(lock, maxWait, hasRoom);
    }
    if (hasRoom() || isFatal) {
        records.push_back(event.clone());
        ++recordsLeft;
        m_state->added.notify_one();
    } else {
        ++m_state->leftOut;
    }
    if (isFatal) {
        m_state->idle.wait_for(lock, maxWait, [this] { return m_state->isIdle(); });
    }
}

void LogQueue::waitAfterCrash()
{
    constexpr int tries = 100;
    constexpr timespec pause{0, 2'000'000};
    for (int i = 0; i < tries && recordsLeft > 0; ++i) {
        nanosleep(&pause, nullptr);
    }
}

void LogQueue::run(const std::shared_ptr<State> &state)
{
    std::unique_lock lock(state->mutex);
    for (;;) {
        state->added.wait(lock, [&] { return !state->records.empty() || state->isOver; });
        if (state->records.empty()) {
            break;
        }
        const auto record = std::move(state->records.front());
        state->records.pop_front();
        state->taken.notify_all();
        state->isWriting = true;
        lock.unlock();
        for (const log4cplus::SharedAppenderPtr &appender : state->appenders) {
            appender->doAppend(*record);
        }
        lock.lock();
        state->isWriting = false;
        --recordsLeft;
        if (state->records.empty() && state->leftOut > 0) {
            state->records.push_back(leftOutRecord(std::exchange(state->leftOut, 0)));
            ++recordsLeft;
        }
        if (state->records.empty()) {
            state->idle.notify_all();
        }
    }
    for (const log4cplus::SharedAppenderPtr &appender : state->appenders) {
        appender->close();
    }
}
