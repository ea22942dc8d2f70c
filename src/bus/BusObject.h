// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusHandles.h"
#include "bus/BusInterface.h"
#include "bus/BusMessage.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/// An object on the bus with one interface, whose members and signatures come from its XML. Its methods
/// are served from publish() until it is destroyed, which must happen before its connection is closed.
/// StandardCalls describes it to clients and reads its properties.
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

    /// Serves the object. Every method and every property must have been set.
    void publish();

    /// Whether a handler will get the call.
    bool serves(const BusMessage &call) const;

    const BusInterface &interface() const { return m_interface; }
    /// The properties, by name.
    const std::map<std::string, std::string, std::less<>> &constants() const { return m_constants; }

    /// A signal, to be sent to everyone or to one receiver.
    BusMessage createSignal(const char *name) const;

private:
    static int on_call(sd_bus_message *call, void *object, sd_bus_error *error);

    sd_bus *const m_bus; ///< owned by the connection
    const BusInterface &m_interface;
    std::map<std::string, Handler, std::less<>> m_handlers;
    std::map<std::string, std::string, std::less<>> m_constants;
    std::vector<sd_bus_vtable> m_table; ///< read by sd-bus until the slot ends
    BusSlot m_slot;
};
