// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusMessage.h"

#include <QByteArray>

#include <string>
#include <string_view>
#include <vector>

/// An interface of an object on a bus, as its introspection XML defines it. The XML is the one place
/// where signatures are written: objects are served and calls are checked according to it.
struct BusInterface
{
    struct Method
    {
        std::string name;
        std::string in;
        std::string out;
    };
    struct Signal
    {
        std::string name;
        std::string signature;
    };
    struct Property
    {
        std::string name;
        std::string signature;
    };

    std::string path; ///< the object's
    std::string name;
    std::vector<Method> methods{};
    std::vector<Signal> signalList{};
    std::vector<Property> properties{};
    std::string xml{}; ///< the element of the interface alone

    /// Throws std::runtime_error for malformed XML.
    static BusInterface fromXml(const QByteArray &xml);

    /// Null if there is no such method.
    const Method *method(std::string_view member) const;

    /// Whether the call or signal has the arguments that the XML gives it. True for a member that the
    /// XML does not have.
    bool describes(const BusMessage &message) const;

    /// org.tavo.Model1
    static const BusInterface &model();

    /// org.freedesktop.Notifications
    static const BusInterface &notifications();
};
