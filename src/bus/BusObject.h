// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusHandles.h"

#include <sdbus-c++/sdbus-c++.h>

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// An object on the bus with one interface. It is served from publish() to its end, which has to
/// come before that of its connection.
///
/// What a handler throws is the answer; every other answer it sends itself, then or later.
class BusObject
{
public:
    using Handler = std::function<void(sdbus::MethodCall &call)>;
    using Texts = std::vector<std::string>;

    BusObject(sd_bus *bus, const char *path, const char *interface);
    BusObject(const BusObject &) = delete;
    BusObject &operator=(const BusObject &) = delete;

    void addMethod(const char *name, const char *in, const Texts &inNames, const char *out,
                   const Texts &outNames, const Handler &handler);
    void addSignal(const char *name, const char *signature, const Texts &names);

    /// A property that is a text and doesn't change.
    void addConstant(const char *name, const std::string &value);

    void publish();

    /// To be sent to everybody, unless it is given a destination.
    sdbus::Signal createSignal(const char *name) const;

private:
    static int answerCall(sd_bus_message *call, void *object, sd_bus_error *error);
    static int readConstant(sd_bus *bus, const char *path, const char *interface, const char *name,
                            sd_bus_message *answer, void *object, sd_bus_error *error);

    const char *keepNames(const Texts &names, const Texts &moreNames);

    sd_bus *const m_bus; ///< the connection's
    const std::string m_path;
    const std::string m_interface;
    std::map<std::string, Handler, std::less<>> m_handlers;
    std::map<std::string, std::string, std::less<>> m_constants;
    std::deque<std::string> m_names;    ///< of arguments, as the table points to them
    std::vector<sd_bus_vtable> m_table; ///< as sd-bus reads it as long as the slot is there
    BusSlot m_slot;
};
