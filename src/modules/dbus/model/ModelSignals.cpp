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

/// How often a client is tried to be told what was left out. It is told soon after it reads again.
constexpr int reportIntervalMs = 250;
} // namespace

ModelSignals::ModelSignals(Clients &clients, const Subscriptions &subscriptions,
                           const Inboxes &inboxes)
    : m_clients(clients)
{
    m_timer.setInterval(reportIntervalMs);
    tavoConnect(&m_timer, &QTimer::timeout, this, &ModelSignals::on_timer_timeout);
    tavoConnect(&m_clients, &Clients::left, this, &ModelSignals::on_clients_left);
    tavoConnect(&subscriptions, &Subscriptions::valueChanged, this,
                &ModelSignals::on_subscriptions_valueChanged);
    tavoConnect(&subscriptions, &Subscriptions::rowsChanged, this,
                &ModelSignals::on_subscriptions_rowsChanged);
    tavoConnect(&subscriptions, &Subscriptions::nodeChanged, this,
                &ModelSignals::on_subscriptions_nodeChanged);
    tavoConnect(&inboxes, &Inboxes::received, this, &ModelSignals::on_inboxes_received);
}

void ModelSignals::setObject(const BusObject *object)
{
    m_object = object;
    m_dropped.clear();
}

void ModelSignals::emitTo(const char *signal, const Subscriptions::Names &clients,
                          const CMPath &path, const Write &write, bool isChange)
{
    if (!m_object) {
        return;
    }
    Subscriptions::Names receivers;
    for (const std::string &client : clients) {
        // Nothing follows on what was left out before the client has been told.
        if (hasDropped(client, path)) {
            drop(client, path);
        } else if (!isChange || !m_clients.isLate(client)) {
            receivers.push_back(client);
        } else if (drop(client, path)) {
            LOG4CPLUS_WARN(logger, "The bus takes the signals to "
                                       << client << " too slowly: some are left out");
        }
    }
    if (receivers.empty()) {
        return;
    }
    try {
        BusWriter writer(m_object->createSignal(signal), m_clients.limits().messageBytes);
        writer.writeString(path.toString());
        write(writer);
        if (receivers.size() > 1) {
            writer.message().seal();
        }
        for (const std::string &client : receivers) {
            send(client, path, writer.message(), writer.bytesWritten());
        }
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, "A change can't be sent: " << error.what());
        for (const std::string &client : receivers) {
            drop(client, path);
        }
    }
}

void ModelSignals::send(const std::string &client, const CMPath &path, const BusMessage &signal,
                        std::size_t bytes)
{
    const auto instead = [this, client, path] {
        const BusMessage dropped = createDropped(path, 1);
        dropped.setReceiver(client);
        return dropped;
    };
    if (!m_clients.send(client, signal, bytes, instead) && drop(client, path)) {
        LOG4CPLUS_WARN(logger,
                       "The client " << client << " doesn't read its signals: some are left out");
    }
}

bool ModelSignals::hasDropped(const std::string &client, const CMPath &path) const
{
    const auto dropped = m_dropped.find(client);
    return dropped != m_dropped.end() && dropped->second.count(path) > 0;
}

bool ModelSignals::drop(const std::string &client, const CMPath &path)
{
    const auto [dropped, isNew] = m_dropped.try_emplace(client);
    Counts &counts = dropped->second;
    const auto maxPaths =
        std::size_t(m_clients.limits().subscriptions) + std::size_t(m_clients.limits().inboxes);
    if (counts.size() < maxPaths || counts.count(path) > 0) {
        ++counts[path];
    }
    if (!m_timer.isActive()) {
        m_timer.start();
    }
    return isNew;
}

BusMessage ModelSignals::createDropped(const CMPath &path, quint32 count) const
{
    BusWriter writer(m_object->createSignal("Dropped"));
    writer.writeString(path.toString());
    writer.writeUInt32(count);
    return writer.message();
}

void ModelSignals::reportDropped(const std::string &client, Counts &counts)
{
    while (!counts.empty()) {
        const auto count = counts.begin();
        const BusMessage signal = createDropped(count->first, count->second);
        if (!m_clients.send(client, signal, 0)) {
            return;
        }
        counts.erase(count);
    }
}

void ModelSignals::on_timer_timeout()
{
    try {
        for (auto dropped = m_dropped.begin(); dropped != m_dropped.end();) {
            if (dropped->second.empty()) {
                LOG4CPLUS_INFO(logger,
                               "The client " << dropped->first << " reads its signals again");
                dropped = m_dropped.erase(dropped);
            } else {
                reportDropped(dropped->first, dropped->second);
                ++dropped;
            }
        }
    } catch (const BusError &error) {
        LOG4CPLUS_WARN(logger, "A change can't be sent: " << error.what());
    }
    if (m_dropped.empty()) {
        m_timer.stop();
    }
}

void ModelSignals::on_clients_left(const std::string &client)
{
    m_dropped.erase(client);
}

void ModelSignals::on_subscriptions_valueChanged(const Subscriptions::Names &clients,
                                                 const CMPath &path, const QVariant &value)
{
    emitTo("ValueChanged", clients, path, [&](BusWriter &signal) { signal.writeVariant(value); });
}

void ModelSignals::on_subscriptions_rowsChanged(const Subscriptions::Names &clients,
                                                const CMPath &path, const QStringList &changes,
                                                int first, int count)
{
    emitTo("RowsChanged", clients, path, [&](BusWriter &signal) {
        signal.writeStringList(changes);
        signal.writeInt32(first);
        signal.writeInt32(count);
    });
}

void ModelSignals::on_subscriptions_nodeChanged(const Subscriptions::Names &clients,
                                                const CMPath &path, bool published)
{
    emitTo("NodeChanged", clients, path,
           [&](BusWriter &signal) { signal.writeBoolean(published); });
}

void ModelSignals::on_inboxes_received(const std::string &client, const CMPath &inbox,
                                       const QVariant &value)
{
    emitTo(
        "Received", {client}, inbox, [&](BusWriter &signal) { signal.writeVariant(value); }, false);
}
