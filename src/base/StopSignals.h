// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// Turns the first SIGINT or SIGTERM into a signal of the event loop. The second one ends the
/// process at once, even if the event loop is stuck, with 128 plus the signal's number as the exit
/// status.
///
/// A separate thread waits for the signals until the process ends. All threads that are started
/// later block them, and so do child processes.
///
/// Used in the main thread, before it starts other threads. One in each process.
class StopSignals : public QObject
{
    Q_OBJECT

public:
    /// Returns null if the system refuses.
    static std::unique_ptr<StopSignals> install();

    /// Returns whether a signal has come, even if received() has not been emitted yet.
    static bool isReceived();

Q_SIGNALS:
    void received(int signal);

private Q_SLOTS:
    void on_notifier_activated();

private:
    explicit StopSignals(int eventDescriptor);

    QSocketNotifier m_notifier;
};
