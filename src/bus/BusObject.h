// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusInterface.h"
#include "bus/BusMessage.h"

#include <QVariant>

#include <functional>
#include <map>
#include <string>

class BusObjects;

/// An object on the bus with one interface, whose members and signatures come from its XML. Its methods
/// are served from publish() until it is destroyed, which must happen before its connection is closed.
class BusObject
{
public:
    /// Handles a call: sends its reply, at once or later. An exception is sent as the error reply.
    using Handler = std::function<void(const BusMessage &call)>;

    /// The interface must outlive the object.
    BusObject(sd_bus *bus, const BusInterface &interface);
    BusObject(const BusObject &) = delete;
    BusObject &operator=(const BusObject &) = delete;
    ~BusObject();

    void setMethod(const std::string &name, const Handler &handler);

    /// A property that is a string and does not change.
    void setConstant(const std::string &name, const std::string &value);

    using Getter = std::function<QVariant()>;

    /// A property whose value is read for each call. createPropertyChange() announces a change.
    void setProperty(const std::string &name, const Getter &getter);

    /// Adds the object to those of its connection, which must outlive it. Every method and every property
    /// must have been set.
    void publish(BusObjects &objects);

    /// Null if the call is not one of the object's methods with the arguments that the XML gives it.
    const Handler *handlerOf(const BusMessage &call) const;

    const BusInterface &interface() const { return m_interface; }
    /// The properties, by name.
    const std::map<std::string, Getter, std::less<>> &properties() const { return m_properties; }

    /// A signal, to be sent to everyone or to one receiver.
    BusMessage createSignal(const char *name) const;

    /// The signal that a property has changed.
    BusMessage createPropertyChange(const std::string &name) const;

private:
    BusMessage createSignal(const char *interface, const char *name) const;

    sd_bus *const m_bus; ///< owned by the connection
    const BusInterface &m_interface;
    std::map<std::string, Handler, std::less<>> m_handlers;
    std::map<std::string, Getter, std::less<>> m_properties;
    BusObjects *m_objects = nullptr; ///< once it is published
};
