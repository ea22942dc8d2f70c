// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

/// Calls a function in the event loop when SIGHUP has come. If the program's terminal has been closed, raises
/// SIGTERM instead.
///
/// Used in the main thread, before it starts other threads. One in each process.
class HangupSignal
{
public:
    /// Returns null if the system refuses.
    static std::unique_ptr<HangupSignal> install(std::function<void()> onReceived);

private:
    HangupSignal(int descriptor, std::function<void()> onReceived);

    void read();

    QSocketNotifier m_notifier;
    const std::function<void()> m_onReceived;
    const bool m_hadTerminal;
};
