// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "bus/BusObjects.h"

#include "bus/BusError.h"
#include "bus/BusReader.h"
#include "bus/BusWriter.h"

#include <systemd/sd-id128.h>

namespace {
constexpr const char *peer = "org.freedesktop.DBus.Peer";
constexpr const char *introspectable = "org.freedesktop.DBus.Introspectable";
constexpr const char *properties = "org.freedesktop.DBus.Properties";

constexpr const char *documentType =
    "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
    "\"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n";

constexpr const char *standardInterfaces = R"(
  <interface name="org.freedesktop.DBus.Peer">
    <method name="Ping"/>
    <method name="GetMachineId">
      <arg name="machine_uuid" type="s" direction="out"/>
    </method>
  </interface>
  <interface name="org.freedesktop.DBus.Introspectable">
    <method name="Introspect">
      <arg name="xml_data" type="s" direction="out"/>
    </method>
  </interface>
  <interface name="org.freedesktop.DBus.Properties">
    <method name="Get">
      <arg name="interface_name" type="s" direction="in"/>
      <arg name="property_name" type="s" direction="in"/>
      <arg name="value" type="v" direction="out"/>
    </method>
    <method name="GetAll">
      <arg name="interface_name" type="s" direction="in"/>
      <arg name="props" type="a{sv}" direction="out"/>
    </method>
    <method name="Set">
      <arg name="interface_name" type="s" direction="in"/>
      <arg name="property_name" type="s" direction="in"/>
      <arg name="value" type="v" direction="in"/>
    </method>
    <signal name="PropertiesChanged">
      <arg name="interface_name" type="s"/>
      <arg name="changed_properties" type="a{sv}"/>
      <arg name="invalidated_properties" type="as"/>
    </signal>
  </interface>
)";

std::string stringOrEmpty(const char *text)
{
    return text != nullptr ? text : "";
}

std::string pathOf(const BusMessage &call)
{
    return stringOrEmpty(sd_bus_message_get_path(call.get()));
}

std::string interfaceOf(const BusMessage &call)
{
    return stringOrEmpty(sd_bus_message_get_interface(call.get()));
}

BusError unknownObject(const BusMessage &call)
{
    constexpr std::size_t maxShown = 200;
    return {SD_BUS_ERROR_UNKNOWN_OBJECT, "There is no object " + pathOf(call).substr(0, maxShown)};
}

BusError unknownProperty()
{
    return {SD_BUS_ERROR_UNKNOWN_PROPERTY, "There is no such property"};
}

/// The first name below a path that another path has; empty if that is not below it.
std::string childOf(const std::string &parent, const std::string &path)
{
    const std::string start = parent == "/" ? parent : parent + '/';
    if (path.compare(0, start.size(), start) != 0) {
        return {};
    }
    return path.substr(start.size(), path.find('/', start.size()) - start.size());
}

BusMessage machineId(const BusMessage &call)
{
    sd_id128_t id = {};
    BusError::check(sd_id128_get_machine(&id), "The machine's id can't be read");
    char text[SD_ID128_STRING_MAX];
    BusWriter reply(call.createReply());
    reply.writeString(QString::fromLatin1(sd_id128_to_string(id, text)));
    return reply.message();
}
} // namespace

const BusObject::Handler *BusObjects::handlerOf(const BusMessage &call) const
{
    for (const BusObject *object : m_objects) {
        if (const BusObject::Handler *handler = object->handlerOf(call)) {
            return handler;
        }
    }
    return nullptr;
}

BusMessage BusObjects::reply(const BusMessage &call) const
{
    const std::string interface = interfaceOf(call);
    const std::string member = call.member();
    const auto is = [&](const char *name, const char *method, const char *signature) {
        return interface == name && member == method && call.hasSignature(signature);
    };
    if (is(peer, "Ping", "")) {
        return call.createReply();
    }
    if (is(peer, "GetMachineId", "")) {
        return machineId(call);
    }
    if (is(introspectable, "Introspect", "")) {
        return describe(call);
    }
    if (objectAt(pathOf(call)) == nullptr) {
        throw unknownObject(call);
    }
    if (is(properties, "Get", "ss")) {
        return readProperty(call);
    }
    if (is(properties, "GetAll", "s")) {
        return readProperties(call);
    }
    if (is(properties, "Set", "ssv")) {
        refuseToSet(call);
    }
    refuse(call);
}

const BusObject *BusObjects::objectAt(const std::string &path) const
{
    for (const BusObject *object : m_objects) {
        if (object->interface().path == path) {
            return object;
        }
    }
    return nullptr;
}

BusMessage BusObjects::describe(const BusMessage &call) const
{
    const std::string path = pathOf(call);
    const BusObject *object = objectAt(path);
    std::set<std::string> children;
    for (const BusObject *each : m_objects) {
        children.insert(childOf(path, each->interface().path));
    }
    children.erase(std::string());
    if (object == nullptr && children.empty()) {
        throw unknownObject(call);
    }
    std::string xml = std::string(documentType) + "<node>" + standardInterfaces;
    if (object != nullptr) {
        xml += "  " + object->interface().xml + '\n';
    }
    for (const std::string &child : children) {
        xml += "  <node name=\"" + child + "\"/>\n";
    }
    BusWriter reply(call.createReply());
    reply.writeString(QString::fromStdString(xml + "</node>\n"));
    return reply.message();
}

BusMessage BusObjects::readProperty(const BusMessage &call) const
{
    BusReader reader(call);
    const std::string interface = reader.readString().toStdString();
    const BusObject &object = *objectAt(pathOf(call));
    const auto property = object.properties().find(reader.readString().toStdString());
    if (object.interface().name != interface || property == object.properties().end()) {
        throw unknownProperty();
    }
    BusWriter reply(call.createReply());
    reply.writeVariant(property->second());
    return reply.message();
}

BusMessage BusObjects::readProperties(const BusMessage &call) const
{
    const std::string interface = BusReader(call).readString().toStdString();
    const BusObject &object = *objectAt(pathOf(call));
    if (!interface.empty() && object.interface().name != interface) {
        throw BusError(SD_BUS_ERROR_UNKNOWN_INTERFACE, "There is no such interface");
    }
    BusWriter reply(call.createReply());
    reply.openArray("{sv}");
    for (const auto &[name, getter] : object.properties()) {
        reply.openDictEntry("sv");
        reply.writeString(QString::fromStdString(name));
        reply.writeVariant(getter());
        reply.close();
    }
    reply.close();
    return reply.message();
}

void BusObjects::refuseToSet(const BusMessage &call) const
{
    BusReader reader(call);
    const std::string interface = reader.readString().toStdString();
    const BusObject &object = *objectAt(pathOf(call));
    if (object.interface().name != interface ||
        object.properties().count(reader.readString().toStdString()) == 0) {
        throw unknownProperty();
    }
    throw BusError(SD_BUS_ERROR_PROPERTY_READ_ONLY, "The property can't be set");
}

void BusObjects::refuse(const BusMessage &call) const
{
    const std::string member = call.member();
    const BusInterface &interface = objectAt(pathOf(call))->interface();
    const BusInterface::Method *method =
        interfaceOf(call) == interface.name ? interface.method(member) : nullptr;
    if (method != nullptr) {
        throw BusError::invalidArguments(
            "The arguments of " + member + " have the signature '" +
            stringOrEmpty(sd_bus_message_get_signature(call.get(), 1)) + "' instead of '" +
            method->in + "'");
    }
    throw BusError(SD_BUS_ERROR_UNKNOWN_METHOD,
                   "There is no method " + member + " of the interface " + interfaceOf(call));
}
