// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelSignals.h"

#include "Inboxes.h"
#include "modules/dbus/clients/Clients.h"
#include <bus/BusError.h>
#include <bus/BusObject.h>
#include <bus/BusWriter.h>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");
} // namespace

ModelSignals::ModelSignals(Clients &clients, Subscriptions &subscriptions, const Inboxes &inboxes)
    : m_clients(clients)
    , m_subscriptions(subscriptions)
{
    tavoConnect(&subscriptions, &Subscriptions::valueChanged, this,
                &ModelSignals::on_subscriptions_valueChanged);
    tavoConnect(&subscriptions, &Subscriptions::rowsChanged, this,
                &ModelSignals::on_subscriptions_rowsChanged);
    tavoConnect(&subscriptions, &Subscriptions::nodeChanged, this,
                &ModelSignals::on_subscriptions_nodeChanged);
    tavoConnect(&inboxes, &Inboxes::received, this, &ModelSignals::on_inboxes_received);
}

void ModelSignals::emitTo(const char *signal, const Subscriptions::Names &clients,
                          const std::function<void(BusWriter &)> &write)
{
    if (!m_object) {
        return;
    }
    try {
        for (const std::string &client : clients) {
            BusWriter writer(m_object->createSignal(signal), BusWriter::maxMessageBytes);
            write(writer);
            if (!m_clients.send(client, writer.message(), writer.bytesWritten()) &&
                m_subscriptions.end(client)) {
                LOG4CPLUS_WARN(logger, "The client "
                                           << client
                                           << " doesn't read its signals: its subscriptions end");
            }
        }
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, "A change can't be sent: " << error.what());
    }
}

void ModelSignals::on_subscriptions_valueChanged(const Subscriptions::Names &clients,
                                                 const CMPath &path, const QVariant &value)
{
    emitTo("ValueChanged", clients, [&](BusWriter &signal) {
        signal.writeString(path.toString());
        signal.writeVariant(value);
    });
}

void ModelSignals::on_subscriptions_rowsChanged(const Subscriptions::Names &clients,
                                                const CMPath &path, const QStringList &changes,
                                                int first, int count)
{
    emitTo("RowsChanged", clients, [&](BusWriter &signal) {
        signal.writeString(path.toString());
        signal.writeStringList(changes);
        signal.writeInt32(first);
        signal.writeInt32(count);
    });
}

void ModelSignals::on_subscriptions_nodeChanged(const Subscriptions::Names &clients,
                                                const CMPath &path, bool published)
{
    emitTo("NodeChanged", clients, [&](BusWriter &signal) {
        signal.writeString(path.toString());
        signal.writeBoolean(published);
    });
}

void ModelSignals::on_inboxes_received(const std::string &client, const CMPath &inbox,
                                       const QVariant &value)
{
    emitTo("Received", {client}, [&](BusWriter &signal) {
        signal.writeString(inbox.toString());
        signal.writeVariant(value);
    });
}
