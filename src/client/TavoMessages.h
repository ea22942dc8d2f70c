// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/export.h"
#include <core/model/cmreply.h>
#include <core/records/enumerations.h>

#include <QObject>
#include <QString>

class ClientBus;
class TavoClient;

/// A message to show.
struct TavoMessage
{
    /// Use the timeout in the host's configuration.
    static constexpr int defaultTimeout = -1;

    QString title;                ///< a heading
    QString text;                 ///< plain text, not markup
    int timeout = defaultTimeout; ///< in milliseconds; 0 means until it is closed
    /// How urgent it is.
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
    QString application; ///< the program's name
};

/// Shows messages through the host's interface for desktop notifications
/// (org.freedesktop.Notifications). Unlike TavoClient::open(), it reports how a message ended.
///
/// Lives in the client's thread, must not outlive the client and may be its child.
class TAVO_CLIENT_EXPORT TavoMessages : public QObject
{
    Q_OBJECT

public:
    /// How a message ended, by the numbers of the bus interface.
    enum class End {
        Expired = 1,   ///< its timeout is over
        Dismissed = 2, ///< closed by a person
        Closed = 3,    ///< closed by a request
        Unknown = 4
    };
    Q_ENUM(End)

    /// Uses the client's connection.
    explicit TavoMessages(TavoClient *client, QObject *parent = nullptr);

    /// Queues a message. The reply is its id.
    CMReply<uint> show(const TavoMessage &message);

    /// Closes a message. The reply is true; it is an error if the message is not open.
    CMReply<bool> close(uint id);

    /// Whether the host is the notification server of the desktop, so that it also shows what other
    /// programs send. An error when there is no such server.
    CMReply<bool> isDesktopServer();

Q_SIGNALS:
    // Emitted for the messages of all programs: compare with the id of show().

    /// Emitted once for each message, unless the host goes away first.
    void closed(uint id, TavoMessages::End end);
    /// A person has chosen the action with this key.
    void actionInvoked(uint id, const QString &key);

private Q_SLOTS:
    void on_bus_messageClosed(uint id, uint reason);

private:
    ClientBus &m_bus;
};
