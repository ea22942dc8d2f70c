// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// Turns SIGINT and SIGTERM into a call from the event loop. The first one asks; a second one ends
/// the process at once with 128 plus its number, wherever the process is: a worker that can't be
/// deleted must not keep it from ending.
///
/// Thread: the main thread, with an event loop. One at a time in a process. Signals keep their
/// handlers and the pipe until the process ends: a late one must find them.
class StopSignals
{
public:
    using Callback = std::function<void(int signal)>;

    /// Null where the system refuses.
    static std::unique_ptr<StopSignals> install(Callback onFirst);

    /// Whether a signal has come, whether or not the callback has been called. Any thread.
    static bool received();

private:
    StopSignals(int readEnd, Callback onFirst);
    void on_notifier_activated();

    Callback m_onFirst;
    QSocketNotifier m_notifier;
};
