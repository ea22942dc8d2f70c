// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QThread>

#include <future>
#include <memory>
#include <utility>

/// A thread with an event loop, for workers and receivers that do not live in the test's thread.
/// What was constructed in it must be deleted in it, with run().
class EventThread
{
public:
    EventThread()
    {
        m_context.moveToThread(&m_thread);
        m_thread.start();
    }
    ~EventThread()
    {
        m_thread.quit();
        m_thread.wait();
    }

    Q_DISABLE_COPY_MOVE(EventThread)

    QThread *thread() { return &m_thread; }

    /// Lets the thread call the function, and does not wait. The future gives the result.
    template <typename Function>
    auto start(Function function) -> std::future<decltype(function())>
    {
        auto task =
            std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
        QMetaObject::invokeMethod(
            &m_context, [task] { (*task)(); }, Qt::QueuedConnection);
        return task->get_future();
    }

    /// Calls the function in the thread and returns what it returns.
    template <typename Function>
    auto run(Function function)
    {
        return start(std::move(function)).get();
    }

    /// Returns once the thread has handled everything posted to it so far.
    void flush()
    {
        run([] {});
    }

private:
    QThread m_thread;
    QObject m_context;
};
