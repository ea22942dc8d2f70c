// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

/// Handles all events that are there already, and those that they cause, without waiting: what has
/// not come after it doesn't come from what this thread has done so far.
inline void settle()
{
    do {
        QCoreApplication::sendPostedEvents();
        // Nested loops leave these to the outermost one, and a test doesn't run that.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
}

/// Turns the event loop of the calling thread until the predicate holds; says whether it came to.
/// The predicate is looked at after each event, and now and then for what other threads and
/// processes do without an event here. The limit is for failures only.
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
