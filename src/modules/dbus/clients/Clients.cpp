// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Clients.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
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

std::size_t ownAnswerBytes(const BusMessage &call)
{
    const char *interface = sd_bus_message_get_interface(call.get());
    const bool isDescription =
        interface != nullptr && std::strcmp(interface, "org.freedesktop.DBus.Introspectable") == 0;
    return isDescription ? descriptionBytes : UnreadBytes::messageBytes;
}

void sendTo(const std::string &client, const BusMessage &answer)
{
    try {
        answer.send();
    } catch (const BusError &error) {
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

bool Clients::pass(const BusMessage &call)
{
    // A bus adds the sender; without one there is nobody to reply to.
    const std::string client = call.sender();
    if (client.empty() || !m_unread.takeCall(client, ownAnswerBytes(call))) {
        return false;
    }
    m_quotas.countRequest(client);
    return true;
}

void Clients::handle(const BusMessage &call, const Handler &handler)
{
    const std::string client = call.sender();
    if (m_unread.take(client, 0)) {
        run(call, handler);
        return;
    }
    m_unread.hold(client, 0, [this, call, handler](UnreadBytes::Verdict verdict) {
        if (verdict == UnreadBytes::Verdict::Send) {
            run(call, handler);
        } else {
            refuseUnread(call, verdict);
        }
    });
}

void Clients::run(const BusMessage &call, const Handler &handler)
{
    try {
        handler(call);
    } catch (...) {
        refuse(call, BusError::fromCaught());
    }
}

void Clients::answer(const BusMessage &call, const BusMessage &answer, std::size_t bytes)
{
    const std::string client = call.sender();
    if (m_unread.take(client, bytes)) {
        sendTo(client, answer);
        return;
    }
    m_unread.hold(client, bytes, [this, call, answer](UnreadBytes::Verdict verdict) {
        if (verdict == UnreadBytes::Verdict::Send) {
            sendTo(call.sender(), answer);
        } else {
            refuseUnread(call, verdict);
        }
    });
}

void Clients::refuseUnread(const BusMessage &call, UnreadBytes::Verdict verdict)
{
    if (verdict == UnreadBytes::Verdict::Refuse) {
        refuse(call, BusError::limitExceeded(m_unread.refusal(call.sender())));
    }
}

void Clients::refuse(const BusMessage &call, const BusError &error)
{
    const std::string client = call.sender();
    m_unread.add(client, error.message().size());
    try {
        sendTo(client, call.createErrorReply(error));
    } catch (const BusError &failure) {
        LOG4CPLUS_WARN(logger, "A refusal can't be written: " << failure.what());
    }
}

bool Clients::send(const std::string &client, const BusMessage &signal, std::size_t bytes)
{
    if (!m_quotas.knows(client)) {
        return true;
    }
    if (!m_unread.takeSignal(client, bytes + UnreadBytes::messageBytes)) {
        return false;
    }
    signal.sendTo(client);
    return true;
}

void Clients::on_bus_connected()
{
    m_unread.start();
    m_filter = m_bus.createCallFilter([this](const BusMessage &call) { return pass(call); });
    m_vanished = m_bus.addMatch(vanishedRule,
                                [this](const BusMessage &message) { on_name_vanished(message); });
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

void Clients::on_name_vanished(const BusMessage &message)
{
    // Called by the connection, which doesn't expect anything to be thrown.
    try {
        if (message.isFromBus()) {
            forget(BusReader(message).readString().toStdString());
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
