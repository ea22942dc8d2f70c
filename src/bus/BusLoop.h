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
    explicit BusLoop(QObject *parent = nullptr);

    /// Serves the bus until stop(), which must be called before the bus is closed.
    void start(sd_bus *bus);
    void stop();

Q_SIGNALS:
    /// A turn has handled the messages that had arrived, or as many as a turn may.
    void turned(bool isComplete);

    /// The bus can't be served any more. The error is an errno.
    void failed(int error);

    /// The bus has not yet read everything that was sent to it. Emitted every 700 ms until it has.
    void lagging();

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
    bool isLagging() const;
    static std::unique_ptr<QSocketNotifier> notifier(int descriptor, QSocketNotifier::Type type,
                                                     BusLoop *loop);

    sd_bus *m_bus = nullptr; ///< not owned; null while stopped
    bool m_isHandling = false;
    bool m_isHooked = false; ///< connected to the event loop
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QTimer m_lagTimer;        ///< runs while the bus has not read everything
    QTimer m_timer;           ///< runs until the next timeout within sd-bus
    std::uint64_t m_deadline; ///< the timer's, in the monotonic clock's microseconds
};
