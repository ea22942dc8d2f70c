// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// SIGINT and SIGTERM as a signal of the event loop's. Only the first: the next one ends the process
/// at once, as if there were no such object.
///
/// Made before any other thread, in the main thread, which needs an event loop.
class InterruptSignal : public QObject
{
    Q_OBJECT

public:
    InterruptSignal();
    ~InterruptSignal() override;

Q_SIGNALS:
    void received(int signal);

private Q_SLOTS:
    void on_notifier_activated();

private:
    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
