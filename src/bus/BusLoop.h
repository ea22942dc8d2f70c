// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <cstdint>
#include <memory>

#include <systemd/sd-bus.h>

/// Serves a bus from the Qt event loop of its thread, without a thread of its own.
class BusLoop : public QObject
{
    Q_OBJECT

public:
    explicit BusLoop(QObject *parent = nullptr);

    /// Serves the bus from the event loop until stop(), which comes before the bus is closed.
    void start(sd_bus *bus);
    void stop();

Q_SIGNALS:
    /// What came has been handled, or a part of it.
    void turned();

    /// The bus can't be served any more; the error is the system's.
    void failed(int error);

private Q_SLOTS:
    void on_dispatcher_aboutToBlock();
    void on_notifier_activated();
    void on_timer_timeout();

private:
    void serve();
    int handleMessages();
    int watch();
    int watchTime();
    static std::unique_ptr<QSocketNotifier> notifier(int descriptor, QSocketNotifier::Type type,
                                                     BusLoop *loop);

    sd_bus *m_bus = nullptr; ///< its owner's; null while stopped
    bool m_isHandling = false;
    bool m_isHooked = false; ///< to the event loop
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QTimer m_timer;           ///< for what the bus has to do at a certain time
    std::uint64_t m_deadline; ///< the timer's, as the bus gives it
};
