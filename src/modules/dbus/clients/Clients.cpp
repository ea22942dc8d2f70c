// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Clients.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <core/tavo.h>

#include <cstring>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// One rule for all clients: the bus tells of every name that nobody has any more.
constexpr const char *vanishedRule =
    "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''";

/// What the connection answers by itself is a few bytes, but for an object's description and values.
constexpr std::size_t descriptionBytes = 1 << 13;

std::size_t ownAnswerBytes(sd_bus_message *call)
{
    const char *interface = sd_bus_message_get_interface(call);
    const bool isDescription =
        interface != nullptr && std::strcmp(interface, "org.freedesktop.DBus.Introspectable") == 0;
    return isDescription ? descriptionBytes : UnreadBytes::messageBytes;
}

void sendTo(const std::string &client, const sdbus::MethodReply &answer)
{
    try {
        answer.send();
    } catch (const sdbus::Error &error) {
        LOG4CPLUS_WARN(logger, "An answer to " << client << " can't be sent: " << error.what());
    }
}
} // namespace

Clients::Clients(BusConnection &bus, const DbusConfiguration::Limits &limits)
    : m_bus(bus)
    , m_limits(limits)
    , m_quotas(limits)
    , m_unread(bus, limits)
{
    tavoConnect(&m_bus, &BusConnection::connected, this, &Clients::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &Clients::on_bus_lost);
}

bool Clients::pass(sd_bus_message *call)
{
    const char *sender = sd_bus_message_get_sender(call);
    if (sender == nullptr) {
        // No bus hands on such a call, and nobody could be answered.
        return false;
    }
    const std::string client = sender;
    if (!m_unread.takeCall(client, ownAnswerBytes(call))) {
        return false;
    }
    m_quotas.countRequest(client);
    return true;
}

void Clients::handle(sdbus::MethodCall &call, const Handler &handler)
{
    const std::string client = call.getSender();
    if (m_unread.take(client, 0)) {
        run(call, handler);
        return;
    }
    m_unread.hold(client, 0, [this, call, handler](UnreadBytes::Verdict verdict) mutable {
        if (verdict == UnreadBytes::Verdict::Send) {
            run(call, handler);
        } else {
            refuseUnread(call, verdict);
        }
    });
}

void Clients::run(sdbus::MethodCall &call, const Handler &handler)
{
    try {
        handler(call);
    } catch (const sdbus::Error &error) {
        refuse(call, error);
    } catch (const std::exception &error) {
        refuse(call, sdbus::Error("org.freedesktop.DBus.Error.Failed", error.what()));
    }
}

void Clients::answer(const sdbus::MethodCall &call, const sdbus::MethodReply &answer,
                     std::size_t bytes)
{
    const std::string client = call.getSender();
    if (m_unread.take(client, bytes)) {
        sendTo(client, answer);
        return;
    }
    m_unread.hold(client, bytes, [this, call, answer](UnreadBytes::Verdict verdict) {
        if (verdict == UnreadBytes::Verdict::Send) {
            sendTo(call.getSender(), answer);
        } else {
            refuseUnread(call, verdict);
        }
    });
}

void Clients::refuseUnread(const sdbus::MethodCall &call, UnreadBytes::Verdict verdict)
{
    if (verdict == UnreadBytes::Verdict::Refuse) {
        refuse(call, BusErrors::limitExceeded(m_unread.refusal(call.getSender())));
    }
}

void Clients::refuse(const sdbus::MethodCall &call, const sdbus::Error &error)
{
    const std::string client = call.getSender();
    m_unread.add(client, error.getMessage().size());
    try {
        sendTo(client, call.createErrorReply(error));
    } catch (const sdbus::Error &failure) {
        LOG4CPLUS_WARN(logger, "A refusal can't be written: " << failure.what());
    }
}

bool Clients::send(const std::string &client, sdbus::Signal &signal, std::size_t bytes)
{
    if (!m_quotas.knows(client)) {
        return true;
    }
    if (!m_unread.takeSignal(client, bytes + UnreadBytes::messageBytes)) {
        return false;
    }
    signal.setDestination(client);
    signal.send();
    return true;
}

void Clients::on_bus_connected()
{
    m_unread.start();
    m_filter = m_bus.createCallFilter([this](sd_bus_message *call) { return pass(call); });
    m_vanished = m_bus.addMatch(vanishedRule,
                                [this](sdbus::Message &message) { on_name_vanished(message); });
}

void Clients::on_bus_lost()
{
    m_vanished.reset();
    m_filter.reset();
    for (const std::string &client : m_quotas.clients()) {
        forget(client);
    }
    // What ends with its clients may still have been answered to others.
    m_unread.stop();
}

void Clients::on_name_vanished(sdbus::Message &message)
{
    // Called by the connection, which doesn't expect anything to be thrown.
    try {
        std::string name;
        message >> name;
        if (BusConnection::isFromBus(message)) {
            forget(name);
        }
    } catch (const std::exception &error) {
        LOG4CPLUS_WARN(logger, "A client that leaves can't be told: " << error.what());
    }
}

void Clients::forget(const std::string &client)
{
    if (m_quotas.knows(client)) {
        Q_EMIT left(client);
        m_quotas.forget(client);
    }
    m_unread.forget(client);
}
