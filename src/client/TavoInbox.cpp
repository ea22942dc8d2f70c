// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/TavoInbox.h"

#include "client/ClientBus.h"
#include "client/TavoClient.h"
#include <core/base/connect.h>

TavoInbox::TavoInbox(TavoClient *client, QObject *parent)
    : QObject(parent)
    , m_bus(client->m_bus.get())
{
    tavoConnect(m_bus.data(), &ClientBus::availableChanged, this,
                &TavoInbox::on_bus_availableChanged);
    tavoConnect(m_bus.data(), &ClientBus::received, this, &TavoInbox::on_bus_received);
    tavoConnect(m_bus.data(), &ClientBus::dropped, this, &TavoInbox::on_bus_dropped);
    if (m_bus->isAvailable()) {
        open();
    }
}

TavoInbox::~TavoInbox()
{
    if (m_path.isEmpty() || !m_bus) {
        return;
    }
    m_bus->send(
        m_bus, BusInterface::model(), "CloseInbox",
        [path = m_path.toString()](BusWriter &call) { call.writeString(path); },
        [](const Result<BusMessage, CMError> &) {});
}

void TavoInbox::on_bus_availableChanged(bool available)
{
    if (available) {
        open();
    } else if (!m_path.isEmpty()) {
        m_path = CMPath();
        Q_EMIT lost();
    }
}

void TavoInbox::open()
{
    m_bus->send(
        this, BusInterface::model(), "OpenInbox", [](BusWriter &) {},
        [this](const Result<BusMessage, CMError> &reply) {
            if (const auto *error = std::get_if<CMError>(&reply)) {
                // If the host has gone, the inbox is opened at the next one.
                if (m_bus->isAvailable()) {
                    Q_EMIT failed(*error);
                }
                return;
            }
            m_path = CMPath(BusReader(std::get<BusMessage>(reply)).readString());
            Q_EMIT opened(m_path);
        });
}

void TavoInbox::on_bus_received(const CMPath &inbox, const QVariant &value)
{
    if (inbox.isEmpty() || inbox != m_path) {
        return;
    }
    Q_EMIT received(value);
    const TavoNotificationPlayerResponse response =
        TavoValue(value.toHash()).notificationPlayerResponse();
    if (!response.isEmpty()) {
        Q_EMIT responded(response);
    }
}

void TavoInbox::on_bus_dropped(const CMPath &inbox, uint count)
{
    if (!inbox.isEmpty() && inbox == m_path) {
        Q_EMIT requestsDropped(count);
    }
}
