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

/// A node in the host's model that passes its requests to this client. Use its path wherever the model
/// wants a path to report to, such as a sound's response path. The host itself replies to the requests,
/// at once. Any module and any client can send them; the inbox does not know the sender.
///
/// Opened again, with another path, when the host comes back. Lives in the client's thread and may
/// be the client's child.
class TAVO_CLIENT_EXPORT TavoInbox : public QObject
{
    Q_OBJECT

public:
    /// Opens the inbox, from the event loop. It must not outlive the client.
    explicit TavoInbox(TavoClient *client, QObject *parent = nullptr);
    ~TavoInbox() override;

    /// Empty while the inbox is not open.
    CMPath path() const { return m_path; }

Q_SIGNALS:
    /// The inbox can be used under this path.
    void opened(const CMPath &path);

    /// The host has gone: no report that this inbox still waits for will arrive.
    void lost();

    /// The host refused to open the inbox, for instance because of a limit.
    void failed(const CMError &error);

    /// A request has reached the inbox.
    void received(const QVariant &value);

    /// Emitted after received() when the value reports a sound's start or end.
    void responded(const TavoNotificationPlayerResponse &response);

    /// The host left out this many requests, because this client did not read fast enough. Reports that
    /// the inbox still waits for may be among them.
    void requestsDropped(uint count);

private Q_SLOTS:
    void on_bus_availableChanged(bool available);
    void on_bus_received(const CMPath &inbox, const QVariant &value);
    void on_bus_dropped(const CMPath &inbox, uint count);

private:
    void open();

    QPointer<ClientBus> m_bus; ///< owned by the client; destroyed before its children
    CMPath m_path;
};
