// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "UnreadProbe.h"

#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>
#include <core/tavo.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

constexpr const char *busName = "org.freedesktop.DBus";
constexpr const char *busPath = "/org/freedesktop/DBus";

constexpr std::chrono::seconds timeout(25);

/// Whether an error of the bus means that it has no statistics for us.
bool meansNoStatistics(const std::string &error)
{
    static const std::string prefix = "org.freedesktop.DBus.Error.";
    return error == prefix + "UnknownMethod" || error == prefix + "UnknownInterface" ||
           error == prefix + "UnknownObject" || error == prefix + "NotSupported" ||
           error == prefix + "AccessDenied";
}

std::size_t readOutgoingBytes(const BusMessage &statistics)
{
    BusReader reader(statistics);
    reader.enterArray("{sv}");
    while (!reader.isAtEnd()) {
        reader.enterDictEntry("sv");
        if (reader.readString() == QLatin1String("OutgoingBytes")) {
            return std::size_t(reader.readIntegerVariant().value());
        }
        reader.skip();
        reader.leave();
    }
    throw std::runtime_error("no OutgoingBytes");
}
} // namespace

UnreadProbe::UnreadProbe(BusConnection &bus)
    : m_bus(bus)
{
}

bool UnreadProbe::ask(const std::string &client)
{
    if (!m_bus.isConnected()) {
        return false;
    }
    try {
        if (m_hasStatistics) {
            askBus(client);
        } else {
            askClient(client);
        }
        return true;
    } catch (const BusError &error) {
        // The bus has gone, and with it everything that was sent.
        LOG4CPLUS_DEBUG(logger, "What is unread can't be asked for: " << error.what());
        return false;
    }
}

void UnreadProbe::askBus(const std::string &client)
{
    // The bus handles this call after everything that was sent before, even if the client does not read.
    const BusMessage question = m_bus.createCall(
        busName, busPath, "org.freedesktop.DBus.Debug.Stats", "GetConnectionStats");
    BusWriter(question).writeString(QString::fromStdString(client));
    m_bus.send(question, timeout, [this, client](const BusMessage &reply) {
        std::optional<std::size_t> unreadBytes;
        try {
            const auto error = reply.error();
            if (!reply.isFromBus()) {
                // Only a reply of the bus itself counts.
            } else if (!error) {
                unreadBytes = readOutgoingBytes(reply);
            } else if (meansNoStatistics(error->name())) {
                doWithoutStatistics(error->message());
            }
        } catch (const std::exception &unexpected) {
            doWithoutStatistics(unexpected.what());
        }
        Q_EMIT answered(client, unreadBytes);
    });
}

void UnreadProbe::askClient(const std::string &client)
{
    m_bus.send(m_bus.createCall(client.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping"), timeout,
               [this, client](const BusMessage &reply) {
                   // An error reply may come from the bus or sd-bus in place of the client.
                   const bool isFromClient = reply.sender() == client;
                   Q_EMIT answered(client, isFromClient ? std::make_optional<std::size_t>(0)
                                                        : std::nullopt);
               });
}

void UnreadProbe::doWithoutStatistics(const std::string &reason)
{
    if (std::exchange(m_hasStatistics, false)) {
        LOG4CPLUS_INFO(logger, "The bus doesn't tell what clients haven't read, so that no answers "
                               "are refused for that: "
                                   << reason);
        Q_EMIT statisticsMissing();
    }
}
