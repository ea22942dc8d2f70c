// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusCalls.h"
#include "bus/BusHandles.h"
#include "bus/BusLoop.h"
#include "bus/BusObject.h"
#include "bus/CallFilter.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <memory>
#include <string>

/// A connection to a message bus that the Qt event loop of its thread serves, without a thread of
/// its own: everything that is registered on it is called from that loop. Nothing waits for the bus,
/// not even the end.
///
/// Thread: the one that made it, which must run an event loop. A bus that is away, or leaves the
/// greeting unanswered for 5 s, is tried again, first after 100 ms, then with ever longer pauses up to
/// 5 s; names are taken again each time.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    /// "session", "system", or the address of a bus. Nothing happens before open().
    explicit BusConnection(QString bus, QObject *parent = nullptr);

    /// What is registered on the connection must have gone before. Emits nothing.
    ~BusConnection() override;

    /// Connects as soon as the bus is there. To be called once.
    void open();

    /// Owns the well-known name whenever the bus is there, from the next connected() on; stands in
    /// line for it while another has it.
    void ownName(const QString &name);

    /// Whether a message is the bus's own. A match by its name lets pass what any program sends to this
    /// connection alone.
    static bool isFromBus(const sdbus::Message &message);

    bool isConnected() const { return m_isConnected; }

    // While connected alone.

    std::unique_ptr<BusObject> createObject(const char *path, const char *interface);
    std::unique_ptr<CallFilter> createCallFilter(const CallFilter::Pass &pass);

    // See BusCalls.
    BusSlot addMatch(const std::string &rule, const BusCalls::SignalHandler &handler);
    sdbus::MethodCall createCall(const char *service, const char *path, const char *interface,
                                 const char *method) const;
    void send(const sdbus::MethodCall &call, std::chrono::microseconds patience,
              const BusCalls::AnswerHandler &handler);

Q_SIGNALS:
    /// The bus is there, and answers. Objects belong on the connection now, before its names are
    /// taken.
    void connected();

    /// The bus has gone, or isn't there at the first try: once until it is there again, and a second
    /// time when it turns out to be silent. From open() or from the event loop. A silent one has taken
    /// the connection, or a call, and doesn't answer.
    /// Whatever belongs to the connection must be given up before the slot returns.
    void lost(const QString &reason, bool isSilent);

    /// The name is ours.
    void nameAcquired(const QString &name);

    /// Another has the name; it becomes ours when that one gives it up.
    void nameTaken(const QString &name);

    /// The bus doesn't let us have the name.
    void nameRefused(const QString &name, const QString &reason);

private Q_SLOTS:
    void on_loop_turned();
    void on_loop_failed(int error);
    void on_silenceTimer_timeout();
    void on_retryTimer_timeout();

private:
    void tryToConnect();
    void greet();
    void becomeConnected();
    void lose(const QString &reason, bool isSilent = false);
    void takeName(const QString &name);
    void takeOutcome(const QString &name, sdbus::MethodReply &answer, const sdbus::Error *error);
    void on_name_acquired(sdbus::Message &message);

    const QString m_bus;
    QStringList m_names;
    BusHandle m_handle; ///< null while the bus is away
    BusLoop m_loop;
    BusSlot m_nameAcquired;
    bool m_isAnswering = false; ///< the bus has answered all of the greeting
    bool m_isConnected = false; ///< and everybody knows
    bool m_isSilent = false;    ///< it has left a call unanswered that it should have answered
    QTimer m_silenceTimer;
    QTimer m_retryTimer;
    int m_pauseMs;               ///< before the next try
    bool m_reportedLoss = false; ///< since it was last connected
    bool m_reportedSilence = false;
};
