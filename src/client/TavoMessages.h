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

/// A message to show, as desktop programs send it.
struct TavoMessage
{
    /// For a timeout: what the host is configured with.
    static constexpr int defaultTimeout = -1;

    QString title;
    QString text;                 ///< plain: no character of it has a meaning
    int timeout = defaultTimeout; ///< in milliseconds; 0: until it is closed
    TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
    QString application; ///< who shows it
};

/// Messages by the interface of the desktop's notifications, as the host offers it on the bus
/// (org.freedesktop.Notifications). Beside TavoClient::open() it tells how a message ended.
///
/// Lives in the client's thread, and is of no use without it; may be its child.
class TAVO_CLIENT_EXPORT TavoMessages : public QObject
{
    Q_OBJECT

public:
    enum class End {
        Expired = 1,   ///< shown for its time
        Dismissed = 2, ///< by a person
        Closed = 3,    ///< by a request
        Unknown = 4
    };
    Q_ENUM(End)

    explicit TavoMessages(TavoClient *client, QObject *parent = nullptr);

    /// Queues the message; the answer is its number.
    CMReply<uint> show(const TavoMessage &message);

    CMReply<bool> close(uint id);

    /// Whether what other programs show goes to the host as well, which has to have the name for it
    /// on the bus; an error where nobody has.
    CMReply<bool> isDesktopServer();

Q_SIGNALS:
    /// Of each message that the host shows, whoever sent it: compare with the number that show()
    /// gave. Once each; not for those that were there when the host went away.
    void closed(uint id, TavoMessages::End end);
    void actionInvoked(uint id, const QString &key);

private Q_SLOTS:
    void on_bus_messageClosed(uint id, uint reason);

private:
    ClientBus &m_bus;
};
