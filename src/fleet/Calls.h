// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/FleetConfiguration.h"
#include "fleet/host/HostCalls.h"
#include "fleet/publishing/Outbox.h"
#include "fleet/store/FleetStore.h"

#include <QDeadlineTimer>
#include <QMap>
#include <QTimer>

/// The calls to this device: each is carried out once, gets its answer, and reports its end. While there is no
/// host, calls wait for it until they expire.
class Calls : public QObject
{
    Q_OBJECT

public:
    Calls(const FleetConfiguration &configuration, FleetStore &store, Outbox &outbox,
          TavoClient &client);

    /// A call that has arrived, by a group or without one. It is stored and carried out by the next commit().
    void take(const FleetCall &call, const QByteArray &json, const QString &group, qint64 deadline);

    /// Answers what is not a call, if it says whom.
    void refuse(const FleetCall::Bad &bad);

    /// A call to the group has ended on another device.
    void endWithGroup(const FleetEvent &event, const QString &group);

    /// Writes what has changed, and then does what must not happen before: carries out calls, sends answers and
    /// events.
    void commit();

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_host_ended(const QString &id, FleetEvent::End end, const QString &action);
    void on_timer_timeout();
    void on_tidyTimer_timeout();

private:
    /// A call without an answer.
    struct Pending
    {
        FleetCall call;
        QString group;
        QDeadlineTimer deadline; ///< for its start; the time of day may be set meanwhile
        bool isAgain = false;    ///< it may have been carried out before
        bool isRunning = false;  ///< the host has got it
        bool isCancelled = false;
        std::optional<FleetEvent> early; ///< its end, which was reported before the reply
    };

    void resume();
    QString refusalOf(const FleetCall &call, const QByteArray &json, qint64 deadline) const;
    bool answerAgain(const FleetCall &call);
    std::optional<StoredCall> find(const QString &id);
    void giveUp(const StoreChanges &changes, const QString &reason);
    void tellDropped();
    void start(const QString &id);
    void startWaiting();
    void startTimer(const Pending &pending);
    void startTimer();
    void cancelCall(const QString &id);
    void finish(const QString &id, const HostCalls::Outcome &outcome);
    void answer(const FleetCall &call, const QString &error);
    OutgoingMessage message(const QString &topic, const QByteArray &payload) const;
    std::vector<OutgoingMessage> answerMessages(const FleetCall &call,
                                                const QByteArray &answer) const;
    void send(const std::vector<OutgoingMessage> &messages);

    const FleetConfiguration &m_configuration;
    FleetStore &m_store;
    Outbox &m_outbox;
    TavoClient &m_client;
    HostCalls m_host;
    QMap<QString, Pending> m_pending; ///< by id
    int m_running = 0;
    bool m_isStarting = false; ///< calls one after the other
    QTimer m_timer;            ///< until the next call starts or expires
    QTimer m_tidyTimer;        ///< each day
    StoreChanges m_changes;    ///< to be written by the next commit()
    qint64 m_dropped = 0;
};
