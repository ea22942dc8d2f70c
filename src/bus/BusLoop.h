// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>

/// Serves a bus from the Qt event loop of its thread.
class BusLoop : public QObject
{
    Q_OBJECT

public:
    /// The size of the socket's send buffer.
    static constexpr int socketBytes = 1 << 14;

    explicit BusLoop(QObject *parent = nullptr);

    /// Serves the bus until stop(), which must be called before the bus is closed.
    void start(sd_bus *bus);
    void stop();

    /// Whether the bus has yet to read much of what was sent. If so, a turn comes when it has read most
    /// of it.
    bool isCongested();

    /// Whether what is sent now waits in memory, because the system holds no more for the bus.
    bool isFull() const;

    /// Whether messages have arrived that have not been handled yet.
    bool isReadable() const;

Q_SIGNALS:
    /// A turn has handled the messages that had arrived, or as many as a turn may.
    void turned();

    /// The bus can't be served any more. The error is an errno.
    void failed(int error);

    /// The bus has not yet read everything that was sent to it. Emitted every second until it has, with
    /// the number of seconds in which it has read nothing at all; at the end with 0.
    void lagging(int seconds);

private Q_SLOTS:
    void on_dispatcher_aboutToBlock();
    void on_notifier_activated();
    void on_timer_timeout();
    void on_lagTimer_timeout();

private:
    void serve();
    int handleMessages();
    int watch();
    int watchTime();
    int countUnread();
    static std::unique_ptr<QSocketNotifier> notifier(int descriptor, QSocketNotifier::Type type,
                                                     BusLoop *loop);

    sd_bus *m_bus = nullptr; ///< not owned; null while stopped
    bool m_isHandling = false;
    bool m_isHooked = false; ///< connected to the event loop
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    bool m_isCongested = false; ///< a turn comes when the bus has read
    QTimer m_lagTimer;          ///< runs while the bus has not read everything
    int m_unread = 0;           ///< what the bus had not read when last counted
    int m_secondsStuck = 0;     ///< in which the bus has read nothing
    QTimer m_timer;             ///< runs until the next timeout within sd-bus
    std::uint64_t m_deadline;   ///< the timer's, in the monotonic clock's microseconds
};
