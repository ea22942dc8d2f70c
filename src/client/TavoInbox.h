// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/export.h"

#include <core/model/cmerror.h>
#include <core/records/cmpath.h>
#include <core/records/value.h>

#include <QObject>
#include <QPointer>
#include <QVariant>

class ClientBus;
class TavoClient;

/// A node in the host's model whose requests come to this client: a path to be named wherever the
/// model wants to be told something, such as a sound's response path. The host answers each request
/// as soon as it is on its way. Every module and every client can send one, and who did isn't told.
///
/// Made anew, with another path, when the host is back after it was gone. Lives in the client's
/// thread; may be its child.
class TAVO_CLIENT_EXPORT TavoInbox : public QObject
{
    Q_OBJECT

public:
    explicit TavoInbox(TavoClient *client, QObject *parent = nullptr);
    ~TavoInbox() override;

    /// Empty while the inbox isn't open.
    CMPath path() const { return m_path; }

Q_SIGNALS:
    void opened(const CMPath &path);

    /// The host has gone, and with it whatever would have told something here.
    void lost();

    /// The host refused it, because of a limit for instance.
    void failed(const CMError &error);

    void received(const QVariant &value);

    /// The same, where it is a sound's start or end.
    void responded(const TavoNotificationPlayerResponse &response);

private Q_SLOTS:
    void on_bus_availableChanged(bool available);
    void on_bus_received(const CMPath &inbox, const QVariant &value);

private:
    void open();

    QPointer<ClientBus> m_bus; ///< the client's; gone before the client's children
    CMPath m_path;
};
