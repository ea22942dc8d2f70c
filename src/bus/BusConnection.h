// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QStringList>
#include <QTimer>

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <memory>

/// A connection to a message bus that the Qt event loop of its thread serves, without a thread of
/// its own: everything that is registered on it is called from that loop.
///
/// Thread: the one that made it, which must run an event loop. A bus that is away is tried again,
/// first after 100 ms, then with ever longer pauses up to 5 s; names are taken again each time.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    /// "session", "system", or the address of a bus. Nothing happens before open().
    explicit BusConnection(QString bus, QObject *parent = nullptr);

    /// Objects and matches on the connection must have gone before. Emits nothing.
    ~BusConnection() override;

    /// Connects, now or as soon as the bus is there. To be called once.
    void open();

    /// Owns the well-known name whenever the bus is there, from the next connected() on; stands in
    /// line for it while another has it.
    void ownName(const QString &name);

    /// Whether a signal is the bus's own. A match by its name lets pass what any program sends to this
    /// connection alone.
    static bool isFromBus(const sdbus::Message &signal);

    bool isConnected() const { return m_connection != nullptr; }

    /// While connected alone; another one after each connected().
    sdbus::IConnection &connection() { return *m_connection; }

Q_SIGNALS:
    /// The bus is there; from open() or from the event loop. Objects belong on the connection now,
    /// before its names are taken.
    void connected();

    /// The bus has gone, or isn't there at the first try: once until it is there again. Whatever
    /// belongs to the connection must be given up before the slot returns.
    void lost(const QString &reason);

    /// The name is ours.
    void nameAcquired(const QString &name);

    /// Another has the name; it becomes ours when that one gives it up.
    void nameTaken(const QString &name);

    /// The bus doesn't let us have the name.
    void nameRefused(const QString &name, const QString &reason);

private Q_SLOTS:
    void on_dispatcher_aboutToBlock();
    void on_notifier_activated();
    void on_timer_timeout();
    void on_retryTimer_timeout();

private:
    void tryToConnect();
    void lose(const QString &reason);
    void takeNames();
    void takeName(const QString &name);
    std::uint32_t requestName(const QString &name);
    void on_name_acquired(sdbus::Message &message);
    void process();
    void watch();
    void unwatch();

    const QString m_bus;
    QStringList m_names;
    std::unique_ptr<sdbus::IConnection> m_connection; ///< null while the bus is away
    sdbus::Slot m_nameAcquired;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QTimer m_timer;           ///< for what the connection has to do at a certain time
    std::uint64_t m_deadline; ///< the timer's, as the connection gives it
    QTimer m_retryTimer;
    int m_pauseMs;               ///< before the next try
    bool m_reportedLoss = false; ///< since it was last connected
};
