// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

/// What tests of modules need: a module in the test's process, services that do what the test says, and
/// the real model and event loop between them. Used from the test's main thread.
namespace TavoTesting {
/// Handles all pending events and those that they cause, without waiting for others. Whatever this
/// thread has set off so far in its own event loop has happened then.
inline void settle()
{
    do {
        QCoreApplication::sendPostedEvents();
        // Nested loops leave these to the outermost loop, which does not run in a test.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

/// Runs the event loop of the calling thread until the predicate holds. Returns false if it does not
/// within the limit, which is for failures only. The predicate is checked after each event, and
/// regularly in between for what other threads and processes do.
template <typename Predicate>
bool waitFor(Predicate predicate, std::chrono::milliseconds limit = std::chrono::seconds(5))
{
    constexpr std::chrono::milliseconds glance(20);
    QTimer waker;
    waker.start(glance);
    QElapsedTimer elapsed;
    elapsed.start();
    while (!predicate()) {
        if (elapsed.hasExpired(limit.count())) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}
} // namespace TavoTesting
