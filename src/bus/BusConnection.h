// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusCalls.h"
#include "bus/BusHandles.h"
#include "bus/BusLoop.h"
#include "bus/BusObject.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <memory>
#include <string>

/// A connection to a message bus, served by the Qt event loop of its thread: all handlers are called
/// from that loop. Nothing but flush() waits for the bus, not even the
/// destructor.
///
/// Lives in the thread that made it, which must run an event loop. If the bus is away, or does not reply
/// to the greeting within 5 s, it tries again: first after 100 ms, then with growing pauses of up to
/// 5 s. It requests its names again each time it connects.
///
/// A bus stops reading from a connection whose receivers have left too much unread. A connection from
/// which the bus does not read for 3 s, while it does reply on another one, is lost and made again.
/// Messages to a bus that hangs altogether are kept until it resumes.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    /// "session", "system", or the address of a bus. Nothing happens before open().
    explicit BusConnection(QString bus, QObject *parent = nullptr);

    /// Emits nothing. Objects, filters and slots must have been destroyed before.
    ~BusConnection() override;

    /// Connects as soon as the bus is there. Called once.
    void open();

    /// Owns the well-known name whenever the bus is there, from the next connected() on. Waits in line
    /// while another program owns it.
    void ownName(const QString &name);

    bool isConnected() const { return m_isConnected; }

    /// Whether everyone on the bus is the same user. Assumed of no other bus than the session's.
    bool isOfOneUser() const { return m_bus == QLatin1String("session"); }

    /// Waits until the bus has taken all messages that were sent, but no longer than the timeout. Calls
    /// that arrive meanwhile may be handled. Does nothing while the bus is away.
    void flush(std::chrono::milliseconds timeout);

    // Only while connected:

    std::string uniqueName() const;

    /// Whether the bus has yet to read much of what was sent. It reads little at a time, so that a message
    /// that is held back until then does not wait long. After true, turned() follows when it has read.
    bool isCongested() { return m_loop.isCongested(); }

    /// Whether a message that is sent now waits in memory. There is room for some more messages after the
    /// connection has become congested.
    bool isFull() const { return m_loop.isFull(); }

    /// Whether messages have arrived that have not been handled yet.
    bool isReadable() const { return m_loop.isReadable(); }

    /// The interface must outlive the object.
    std::unique_ptr<BusObject> createObject(const BusInterface &interface);

    // See BusCalls.
    BusSlot handleCalls(const BusCalls::Handler &handler);
    BusSlot addMatch(const std::string &rule, const BusCalls::Handler &handler);
    BusMessage createCall(const char *service, const char *path, const char *interface,
                          const char *method) const;
    void send(const BusMessage &call, std::chrono::microseconds timeout,
              const BusCalls::Handler &handler);

Q_SIGNALS:
    /// The bus is there and replies. Objects must be published now, before the names are requested.
    void connected();

    /// The bus has gone, or wasn't there at the first try. Emitted once until the bus is back, and once
    /// more if it turns out to be silent: it accepts a connection or a call but does not reply. Emitted
    /// from open() or from the event loop.
    ///
    /// Slots must release everything that belongs to the connection before they return.
    void lost(const QString &reason, bool isSilent);

    /// The messages that had arrived have been handled, or as many as a turn of the event loop may.
    void turned();

    /// This connection owns the name.
    void nameAcquired(const QString &name);

    /// Another program owns the name; it becomes ours when that program gives it up.
    void nameTaken(const QString &name);

    /// The bus does not let this connection own the name.
    void nameRefused(const QString &name, const QString &reason);

private Q_SLOTS:
    void on_loop_turned();
    void on_loop_failed(int error);
    void on_loop_lagging(int seconds);
    void on_silenceTimer_timeout();
    void on_retryTimer_timeout();

private:
    void tryToConnect();
    void greet();
    void becomeConnected();
    void ping(const std::string &name);
    void lose(const QString &reason, bool isSilent = false);
    void takeName(const QString &name);
    void takeOutcome(const QString &name, const BusMessage &reply);
    void on_name_acquired(const BusMessage &signal);

    const QString m_bus;
    QStringList m_names;
    BusHandle m_handle; ///< null while the bus is away
    BusLoop m_loop;
    BusSlot m_nameAcquired;
    std::unique_ptr<BusConnection> m_probe; ///< shows that it replies to others
    bool m_isAnswering = false;             ///< the bus has replied to the whole greeting
    bool m_isConnected = false;             ///< connected() has been emitted
    bool m_isSilent = false; ///< the bus has not replied to a call of its own interface
    QTimer m_silenceTimer;
    QTimer m_retryTimer;
    int m_pauseMs;               ///< before the next try
    bool m_reportedLoss = false; ///< since the bus was last connected
    bool m_reportedSilence = false;
};
