// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/spi/loggingevent.h>

#include <memory>
#include <thread>
#include <vector>

/// Writes records in a thread of its own: a journal, a pipe or a disk may take as long as it likes, and
/// everybody's alarms would wait for that. When a thousand wait, further ones are left out, and their number is
/// written later; those below INFO, which somebody wants to see all, wait for room, but not if the log hangs.
///
/// Thread: any; one at a time adds.
class LogQueue
{
public:
    explicit LogQueue(std::vector<log4cplus::SharedAppenderPtr> appenders);

    /// Closes the appenders once everything is written, or after a second leaves the thread behind.
    ~LogQueue();
    LogQueue(const LogQueue &) = delete;
    LogQueue &operator=(const LogQueue &) = delete;

    /// Waits also for a fatal record to be written, as the process ends after it, but no longer than a second.
    void add(const log4cplus::spi::InternalLoggingEvent &event);

    /// For a process that has crashed: waits until all records are written, up to a fifth of a second. May be
    /// called from a signal handler.
    static void waitAfterCrash();

private:
    struct State;

    static void run(const std::shared_ptr<State> &state);

    std::shared_ptr<State> m_state;
    std::thread m_thread;
};
