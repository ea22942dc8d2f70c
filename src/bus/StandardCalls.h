// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusMessage.h"

#include <set>
#include <string>

class BusObject;

/// Replies to the calls that every program on a bus must understand, and to those that nothing serves.
/// sd-bus would do the same, but at once: nobody could decide when a reply is sent.
class StandardCalls
{
public:
    void add(const BusObject *object) { m_objects.insert(object); }
    void clear() { m_objects.clear(); }

    /// Whether an object handles the call. If not, reply() does.
    bool areServed(const BusMessage &call) const;

    /// The reply to a call that no object handles. Throws a BusError, which is then the reply.
    BusMessage reply(const BusMessage &call) const;

private:
    const BusObject *objectAt(const std::string &path) const;
    BusMessage describe(const BusMessage &call) const;
    BusMessage readProperty(const BusMessage &call) const;
    BusMessage readProperties(const BusMessage &call) const;
    [[noreturn]] void refuseToSet(const BusMessage &call) const;
    [[noreturn]] void refuse(const BusMessage &call) const;

    std::set<const BusObject *> m_objects;
};
