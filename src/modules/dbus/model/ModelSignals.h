// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Subscriptions.h"
#include <core/tavo.h>

#include <QObject>

#include <functional>
#include <string>

class BusObject;
class BusWriter;
class Clients;
class Inboxes;

/// Sends the signals of org.tavo.Model1, each to the clients that want it. The subscriptions of a client
/// that does not read its signals end.
///
/// Owned by ModelInterface, used in its thread.
class ModelSignals : public QObject
{
    Q_OBJECT

public:
    ModelSignals(Clients &clients, Subscriptions &subscriptions, const Inboxes &inboxes);

    /// The object that sends the signals; null while there is no bus.
    void setObject(const BusObject *object) { m_object = object; }

private Q_SLOTS:
    void on_subscriptions_valueChanged(const Subscriptions::Names &clients, const CMPath &path,
                                       const QVariant &value);
    void on_subscriptions_rowsChanged(const Subscriptions::Names &clients, const CMPath &path,
                                      const QStringList &changes, int first, int count);
    void on_subscriptions_nodeChanged(const Subscriptions::Names &clients, const CMPath &path,
                                      bool published);
    void on_inboxes_received(const std::string &client, const CMPath &inbox, const QVariant &value);

private:
    void emitTo(const char *signal, const Subscriptions::Names &clients,
                const std::function<void(BusWriter &)> &write);

    Clients &m_clients;
    Subscriptions &m_subscriptions;
    const BusObject *m_object = nullptr;
};
