// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusMessage.h"
#include "bus/BusObject.h"

#include <set>
#include <string>

/// The objects of a connection. Replies to the calls that every program on a bus must understand, and to
/// those that no object handles. sd-bus would do the same, but at once: nobody could decide when a reply
/// is sent.
class BusObjects
{
public:
    void add(const BusObject *object) { m_objects.insert(object); }
    void remove(const BusObject *object) { m_objects.erase(object); }

    /// Null if no object handles the call. Then reply() has the reply.
    const BusObject::Handler *handlerOf(const BusMessage &call) const;

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
