// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusObject.h"

#include "bus/BusError.h"
#include "bus/RawMessage.h"

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
} // namespace

BusObject::BusObject(sd_bus *bus, const char *path, const char *interface)
    : m_bus(bus)
    , m_path(path)
    , m_interface(interface)
    , m_table{start()}
{
}

void BusObject::addMethod(const char *name, const char *in, const Texts &inNames, const char *out,
                          const Texts &outNames, const Handler &handler)
{
    // Who may call is the bus's to decide.
    sd_bus_vtable method = entry(_SD_BUS_VTABLE_METHOD, SD_BUS_VTABLE_UNPRIVILEGED);
    method.x.method.member = name;
    method.x.method.signature = in;
    method.x.method.result = out;
    method.x.method.handler = answerCall;
    method.x.method.names = keepNames(inNames, outNames);
    m_table.push_back(method);
    m_handlers[name] = handler;
}

void BusObject::addSignal(const char *name, const char *signature, const Texts &names)
{
    sd_bus_vtable signal = entry(_SD_BUS_VTABLE_SIGNAL);
    signal.x.signal.member = name;
    signal.x.signal.signature = signature;
    signal.x.signal.names = keepNames(names, {});
    m_table.push_back(signal);
}

void BusObject::addConstant(const char *name, const std::string &value)
{
    sd_bus_vtable property = entry(_SD_BUS_VTABLE_PROPERTY, SD_BUS_VTABLE_PROPERTY_CONST);
    property.x.property.member = name;
    property.x.property.signature = "s";
    property.x.property.get = readConstant;
    m_table.push_back(property);
    m_constants[name] = value;
}

const char *BusObject::keepNames(const Texts &names, const Texts &moreNames)
{
    // Each with a null character behind it, and the text's own behind the last.
    std::string &result = m_names.emplace_back();
    for (const Texts *texts : {&names, &moreNames}) {
        for (const std::string &name : *texts) {
            result.append(name).push_back('\0');
        }
    }
    return result.c_str();
}

void BusObject::publish()
{
    m_table.push_back(entry(_SD_BUS_VTABLE_END));
    sd_bus_slot *slot = nullptr;
    BusErrors::check(sd_bus_add_object_vtable(m_bus, &slot, m_path.c_str(), m_interface.c_str(),
                                              m_table.data(), this),
                     "An object can't be published");
    m_slot.reset(slot);
}

sdbus::Signal BusObject::createSignal(const char *name) const
{
    sd_bus_message *raw = nullptr;
    BusErrors::check(
        sd_bus_message_new_signal(m_bus, &raw, m_path.c_str(), m_interface.c_str(), name),
        "A signal can't be made");
    return takeMessage<sdbus::Signal>(raw);
}

int BusObject::answerCall(sd_bus_message *call, void *object, sd_bus_error *error)
{
    const auto &handlers = static_cast<BusObject *>(object)->m_handlers;
    try {
        auto message = messageOf<sdbus::MethodCall>(call);
        handlers.find(sd_bus_message_get_member(call))->second(message);
        return 1;
    } catch (const sdbus::Error &refusal) {
        return sd_bus_error_set(error, refusal.getName().c_str(), refusal.getMessage().c_str());
    } catch (const std::exception &failure) {
        return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, failure.what());
    }
}

int BusObject::readConstant(sd_bus * /*bus*/, const char * /*path*/, const char * /*interface*/,
                            const char *name, sd_bus_message *answer, void *object,
                            sd_bus_error * /*error*/)
{
    const auto &constants = static_cast<BusObject *>(object)->m_constants;
    return sd_bus_message_append_basic(answer, SD_BUS_TYPE_STRING,
                                       constants.find(name)->second.c_str());
}
