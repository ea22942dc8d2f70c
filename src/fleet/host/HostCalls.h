// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fleet/Permissions.h"
#include "fleet/protocol/FleetAnswer.h"
#include "fleet/protocol/FleetCall.h"
#include "fleet/protocol/FleetEvent.h"
#include <client/TavoClient.h>
#include <client/TavoInbox.h>

#include <QDeadlineTimer>
#include <QHash>
#include <QSet>
#include <QTimer>

#include <functional>
#include <optional>
#include <vector>

/// Carries out calls on the host, and reports how messages and sounds end. Notifications and sounds have the id
/// of their call behind "fleet-", by which they are found again after a restart of this program.
class HostCalls : public QObject
{
    Q_OBJECT

public:
    /// What has become of a call.
    struct Outcome
    {
        FleetAnswer::Kind kind = FleetAnswer::Kind::Error;
        QJsonValue value;
        QString error;
        QString path;               ///< of the message that was opened; empty: there is none
        bool isOpen = false;        ///< ended() follows
        bool isUndelivered = false; ///< try again when there is a host, or on soundsPossible()
    };
    using Finish = std::function<void(const Outcome &outcome)>;

    HostCalls(TavoClient &client, const Permissions &permissions, int timeoutMs);

    /// isAgain: it may have been carried out before this program started.
    void carryOut(const FleetCall &call, bool isAgain, const Finish &finish);

    /// Ends the message or the sound of a call, if it is open.
    void cancel(const FleetCall &target, const QString &path, const Finish &finish);

    /// Reports the end of a call that was carried out before this program started.
    void follow(const QString &id, const QString &path);

Q_SIGNALS:
    void ended(const QString &id, FleetEvent::End end, const QString &action);

    /// The host can report how sounds end.
    void soundsPossible();

private Q_SLOTS:
    void on_client_availableChanged(bool available);
    void on_client_valueChanged(const CMPath &path, const QVariant &value);
    void on_client_subscriptionFailed(const CMPath &path, const CMError &error);
    void on_inbox_responded(const TavoNotificationPlayerResponse &response);
    void on_inboxTimer_timeout();
    void on_askTimer_timeout();

private:
    void openInbox();
    template <typename IsNoAnswer, typename Request, typename Take>
    void ask(IsNoAnswer isNoAnswer, const Request &request, const Take &take);
    void askLater(const std::function<void()> &request);
    void show(const FleetCall &call, const Finish &finish);
    void ring(const FleetCall &call, const QString &path);
    void findShown(const FleetCall &call, const Finish &finish);
    void notify(const FleetCall &call, bool isAgain, const Finish &finish);
    void say(const FleetCall &call, bool isAgain, const Finish &finish);
    void finishNotify(const FleetCall &call, bool isAgain, const CMReply<QVariant> &reply,
                      const Finish &finish);
    void sound(const FleetCall &call, bool isAgain, const Finish &finish);
    void callNode(const FleetCall &call, bool isAgain, const Finish &finish);
    TavoNotificationPlayerItem soundItem(const FleetCall &call) const;
    TavoNotificationItemPriority::Enum priorityOf(const FleetCall &call) const;
    int timeoutOf(const FleetCall &call) const;
    void openMessage(const FleetCall &call, const QString &path, const Finish &finish);
    void endMessage(const TavoNotificationDisplayEnded &ended);
    void endNotification(const TavoAttentionEnded &ended);
    void tellDropped();
    void checkLater();
    void checkOpen();
    void checkNext();
    void checkMessage(const QString &path);
    void checkHistory(const QSet<QString> &ids, qint64 before, int maxPages);

    TavoClient &m_client;
    const Permissions &m_permissions;
    const int m_timeoutMs;
    std::optional<TavoInbox> m_inbox; ///< for the reports on sounds
    QTimer m_inboxTimer;              ///< until it is opened again, after the host has refused
    QTimer m_askTimer;                ///< until the host is asked for what it has refused
    std::vector<std::function<void()>> m_refused; ///< requests, each to be sent again
    QHash<QString, QString> m_messages;           ///< ids of calls by the paths of their messages
    QSet<QString> m_others;                       ///< ids of calls with a notification or a sound
    QSet<QString> m_unanswered; ///< ids of calls that the host may have got before it went away
    /// By paths: the ends that came last of messages not known here. A reply may come after the end.
    QHash<QString, FleetEvent::End> m_early;
    QTimer m_checkTimer;           ///< until the host is asked for ends that it left out
    QStringList m_unchecked;       ///< paths of messages that it is still to be asked about
    bool m_isHistoryDue = false;   ///< it is to be asked about the others then
    bool m_isChecking = false;     ///< it is being asked
    QDeadlineTimer m_untilWarning; ///< of what was left out
};
