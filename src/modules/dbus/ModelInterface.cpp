// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "ModelInterface.h"

#include <bus/BusConnection.h>
#include <core/tavo/connect.h>

namespace {
constexpr const char *interfaceName = "org.tavo.Model1";
constexpr const char *objectPath = "/org/tavo/Model1";
} // namespace

ModelInterface::ModelInterface(BusConnection &bus)
    : m_bus(bus)
{
    m_bus.ownName(QStringLiteral("org.tavo.Model1"));
    tavoConnect(&m_bus, &BusConnection::connected, this, &ModelInterface::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &ModelInterface::on_bus_lost);
}

void ModelInterface::on_bus_connected()
{
    m_object = sdbus::createObject(m_bus.connection(), objectPath);
    m_object->registerProperty(interfaceName, "Version", "s", [](sdbus::PropertyGetReply &reply) {
        reply << std::string(TAVO_VERSION);
    });
    m_object->finishRegistration();
}

void ModelInterface::on_bus_lost()
{
    m_object.reset();
}
