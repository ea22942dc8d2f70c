// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusObject.h"

#include "bus/BusError.h"
#include "bus/BusObjects.h"
#include "bus/BusWriter.h"

#include <stdexcept>

namespace {
template <typename Values>
void require(const Values &values, const std::string &name)
{
    if (values.count(name) == 0) {
        throw std::logic_error("nothing serves " + name);
    }
}
} // namespace

BusObject::BusObject(sd_bus *bus, const BusInterface &interface)
    : m_bus(bus)
    , m_interface(interface)
{
}

BusObject::~BusObject()
{
    if (m_objects != nullptr) {
        m_objects->remove(this);
    }
}

void BusObject::setMethod(const std::string &name, const Handler &handler)
{
    m_handlers[name] = handler;
}

void BusObject::setConstant(const std::string &name, const std::string &value)
{
    setProperty(name, [text = QString::fromStdString(value)] { return QVariant(text); });
}

void BusObject::setProperty(const std::string &name, const Getter &getter)
{
    m_properties[name] = getter;
}

void BusObject::publish(BusObjects &objects)
{
    for (const BusInterface::Method &each : m_interface.methods) {
        require(m_handlers, each.name);
    }
    for (const BusInterface::Property &each : m_interface.properties) {
        require(m_properties, each.name);
    }
    m_objects = &objects;
    m_objects->add(this);
}

const BusObject::Handler *BusObject::handlerOf(const BusMessage &call) const
{
    const char *path = sd_bus_message_get_path(call.get());
    const char *interface = sd_bus_message_get_interface(call.get());
    const char *member = sd_bus_message_get_member(call.get());
    if (path == nullptr || interface == nullptr || member == nullptr || m_interface.path != path ||
        m_interface.name != interface) {
        return nullptr;
    }
    const BusInterface::Method *method = m_interface.method(member);
    const bool isServed = method != nullptr && call.hasSignature(method->in.c_str());
    return isServed ? &m_handlers.find(method->name)->second : nullptr;
}

BusMessage BusObject::createSignal(const char *name) const
{
    return createSignal(m_interface.name.c_str(), name);
}

BusMessage BusObject::createPropertyChange(const std::string &name) const
{
    BusWriter signal(createSignal("org.freedesktop.DBus.Properties", "PropertiesChanged"));
    signal.writeString(QString::fromStdString(m_interface.name));
    signal.openArray("{sv}");
    signal.openDictEntry("sv");
    signal.writeString(QString::fromStdString(name));
    signal.writeVariant(m_properties.at(name)());
    signal.close();
    signal.close();
    signal.writeStringList({});
    return signal.message();
}

BusMessage BusObject::createSignal(const char *interface, const char *name) const
{
    sd_bus_message *signal = nullptr;
    BusError::check(
        sd_bus_message_new_signal(m_bus, &signal, m_interface.path.c_str(), interface, name),
        "A signal can't be made");
    return BusMessage::adopt(signal);
}
