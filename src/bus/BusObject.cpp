// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusObject.h"

#include "bus/BusError.h"

#include <stdexcept>

namespace {
sd_bus_vtable entry(std::uint8_t type, std::uint64_t flags = 0)
{
    sd_bus_vtable result = {};
    result.type = type;
    result.flags = flags;
    return result;
}

sd_bus_vtable start()
{
    sd_bus_vtable result = entry(_SD_BUS_VTABLE_START);
    result.x.start.element_size = sizeof(sd_bus_vtable);
    result.x.start.features = _SD_BUS_VTABLE_PARAM_NAMES;
    result.x.start.vtable_format_reference = &sd_bus_object_vtable_format;
    return result;
}

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

BusObject::~BusObject() = default;

void BusObject::setMethod(const std::string &name, const Handler &handler)
{
    m_handlers[name] = handler;
}

void BusObject::setConstant(const std::string &name, const std::string &value)
{
    m_constants[name] = value;
}

void BusObject::publish()
{
    m_table = {start()};
    for (const BusInterface::Method &each : m_interface.methods) {
        require(m_handlers, each.name);
        // Every user may call: the policy of the bus decides.
        sd_bus_vtable method = entry(_SD_BUS_VTABLE_METHOD, SD_BUS_VTABLE_UNPRIVILEGED);
        method.x.method.member = each.name.c_str();
        method.x.method.signature = each.in.c_str();
        method.x.method.result = each.out.c_str();
        method.x.method.handler = on_call;
        method.x.method.names = each.argumentNames.c_str();
        m_table.push_back(method);
    }
    for (const BusInterface::Property &each : m_interface.properties) {
        require(m_constants, each.name);
    }
    m_table.push_back(entry(_SD_BUS_VTABLE_END));
    sd_bus_slot *slot = nullptr;
    BusError::check(sd_bus_add_object_vtable(m_bus, &slot, m_interface.path.c_str(),
                                             m_interface.name.c_str(), m_table.data(), this),
                    "An object can't be published");
    m_slot.reset(slot);
}

bool BusObject::serves(const BusMessage &call) const
{
    const char *path = sd_bus_message_get_path(call.get());
    const char *interface = sd_bus_message_get_interface(call.get());
    const char *member = sd_bus_message_get_member(call.get());
    if (path == nullptr || interface == nullptr || member == nullptr || m_interface.path != path ||
        m_interface.name != interface) {
        return false;
    }
    const BusInterface::Method *method = m_interface.method(member);
    return method != nullptr && call.hasSignature(method->in.c_str());
}

BusMessage BusObject::createSignal(const char *name) const
{
    sd_bus_message *signal = nullptr;
    BusError::check(sd_bus_message_new_signal(m_bus, &signal, m_interface.path.c_str(),
                                              m_interface.name.c_str(), name),
                    "A signal can't be made");
    return BusMessage::adopt(signal);
}

int BusObject::on_call(sd_bus_message *call, void *object, sd_bus_error *error)
{
    const auto &handlers = static_cast<BusObject *>(object)->m_handlers;
    try {
        handlers.find(sd_bus_message_get_member(call))->second(BusMessage(call));
        return 1;
    } catch (...) {
        return BusError::replyWithCaught(error);
    }
}
