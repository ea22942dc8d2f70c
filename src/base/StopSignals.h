// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// Turns the first SIGINT or SIGTERM into a signal of the event loop. The second one ends the process
/// at once with the exit status 128 plus its number, even when the event loop is stuck.
///
/// A thread of its own waits for them, until the process ends. All threads that are started later
/// block them, and so do processes that these start.
///
/// Thread: the main thread, before there are others. One in a process.
class StopSignals : public QObject
{
    Q_OBJECT

public:
    /// Null where the system refuses.
    static std::unique_ptr<StopSignals> install();

    /// Whether a signal has come, even if received() is still to be emitted.
    static bool isReceived();

Q_SIGNALS:
    void received(int signal);

private Q_SLOTS:
    void on_notifier_activated();

private:
    explicit StopSignals(int eventDescriptor);

    QSocketNotifier m_notifier;
};
