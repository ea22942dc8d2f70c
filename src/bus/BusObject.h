// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusInterface.h"
#include "bus/BusMessage.h"

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

    /// Adds the object to those of its connection, which must outlive it. Every method and every property
    /// must have been set.
    void publish(BusObjects &objects);

    /// Null if the call is not one of the object's methods with the arguments that the XML gives it.
    const Handler *handlerOf(const BusMessage &call) const;

    const BusInterface &interface() const { return m_interface; }
    /// The properties, by name.
    const std::map<std::string, std::string, std::less<>> &constants() const { return m_constants; }

    /// A signal, to be sent to everyone or to one receiver.
    BusMessage createSignal(const char *name) const;

private:
    sd_bus *const m_bus; ///< owned by the connection
    const BusInterface &m_interface;
    std::map<std::string, Handler, std::less<>> m_handlers;
    std::map<std::string, std::string, std::less<>> m_constants;
    BusObjects *m_objects = nullptr; ///< once it is published
};
