// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "Clients.h"

#include "Refusals.h"
#include <bus/BusConnection.h>
#include <bus/BusError.h>
#include <bus/BusReader.h>
#include <bus/BusWriter.h>
#include <core/tavo.h>

#include <QSet>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <malloc.h>
#include <unistd.h>
#include <utility>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// One rule for all clients: the bus reports every name that loses its owner.
constexpr const char *vanishedRule =
    "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''";

/// How long a client's first calls wait for the bus to tell its user.
constexpr std::chrono::seconds userTimeout(25);

/// What clients have used is freed in small pieces, which the system does not get back by itself.
constexpr std::size_t maxUnusedBytes = 1 << 23;
constexpr std::chrono::seconds memoryPause(1);

/// A bus drops the signal that a client has left if too much waits for the host. Only clients' calls can be so
/// much, so the bus is asked who is there some time after a call, and not otherwise.
constexpr std::chrono::seconds checkPause(2);
constexpr std::chrono::seconds checkTimeout(5);

/// A user on whom more than this was spent in the last second or two need not be served at once.
constexpr std::chrono::milliseconds maxUserTime(100);

/// About how long the description of an object is. Other replies to standard calls are short.
constexpr std::size_t descriptionBytes = 1 << 13;
} // namespace

Clients::Clients(BusConnection &bus, const ClientLimits &limits)
    : m_bus(bus)
    , m_limits(limits)
    , m_quotas(limits)
    , m_turns(bus, m_quotas, m_limits,
              [this](const std::string &client) { return isReady(client); })
    , m_outbox(bus, m_quotas)
    , m_unread(bus, m_quotas, m_outbox, m_limits)
    , m_standardMethod{CallTurns::Effect::Reply,
                       [this](const BusMessage &call) { replyToStandardCall(call); }}
{
    tavoConnect(&m_bus, &BusConnection::connected, this, &Clients::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &Clients::on_bus_lost);
    tavoConnect(&m_turns, &CallTurns::left, this, &Clients::on_turns_left);
    tavoConnect(&m_moduleLoad, &ModuleLoad::fell, &m_turns, &CallTurns::resume);
    m_memoryTimer.setSingleShot(true);
    m_memoryTimer.setInterval(memoryPause);
    tavoConnect(&m_memoryTimer, &QTimer::timeout, this, &Clients::on_memoryTimer_timeout);
    m_checkTimer.setSingleShot(true);
    m_checkTimer.setInterval(checkPause);
    tavoConnect(&m_checkTimer, &QTimer::timeout, this, &Clients::on_checkTimer_timeout);
}

QString Clients::userOf(const std::string &client) const
{
    if (m_bus.isOfOneUser()) {
        return {};
    }
    const Quotas::UserId user = m_quotas.userOf(client);
    if (!user) {
        return QStringLiteral("unknown");
    }
    return *user == getuid() ? QString() : QString::number(*user);
}

bool Clients::isOfUser(const std::string &client, Quotas::UserId user) const
{
    return m_bus.isOfOneUser() || m_quotas.userOf(client) == user;
}

void Clients::setLimits(const ClientLimits &limits)
{
    m_limits = limits;
    m_quotas.setLimits(limits);
}

bool Clients::isReady(const std::string &client)
{
    // What calls cause waits for the bus, and so do the replies to other users behind it.
    const bool waitsForOthers = m_outbox.isBackedUp() && m_quotas.hasManyUsers() &&
                                m_quotas.timeOfUser(client) > maxUserTime;
    return !m_unread.isUndecided(client) && !m_moduleLoad.isFull(m_quotas.userOf(client)) &&
           !waitsForOthers && m_asked.count(client) == 0 && m_waiting.count(client) == 0;
}

bool Clients::goOn(const std::string &client)
{
    if (m_waiting.erase(client) == 0) {
        return false;
    }
    m_turns.resume();
    return true;
}

void Clients::receive(const BusMessage &call)
{
    // A bus adds the sender; without one there is nobody to reply to.
    const std::string client = call.sender();
    if (client.empty()) {
        return;
    }
    if (!m_checkTimer.isActive()) {
        m_checkTimer.start();
    }
    const bool isNew = !m_quotas.knows(client);
    const bool isAllowed = m_quotas.countRequest(client);
    if (isNew) {
        askUser(client);
    }
    if (!isAllowed) {
        refuse(call, Refusals::tooManyRequests(m_limits.requestsPerSecond));
    } else if (const BusObject::Handler *handler = m_objects.handlerOf(call)) {
        (*handler)(call);
    } else {
        add(call, m_standardMethod);
    }
}

void Clients::serve(BusObject &object, const char *method, const Handler &handler,
                    CallTurns::Effect effect)
{
    const auto served = std::make_shared<CallTurns::Method>(CallTurns::Method{effect, {}});
    served->handler = [this, handler, &method = *served](const BusMessage &call) {
        handle(call, method, handler);
    };
    object.setMethod(method, [this, served](const BusMessage &call) { add(call, *served); });
}

void Clients::askUser(const std::string &client)
{
    if (!m_bus.isOfOneUser()) {
        m_asked.insert(client);
    }
    const BusMessage call = m_bus.createCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                             "org.freedesktop.DBus", "GetConnectionUnixUser");
    BusWriter(call).writeString(QString::fromStdString(client));
    m_outbox.call(client, call, userTimeout, [this, client](const BusMessage &reply) {
        const auto error = reply.error();
        if (!error) {
            m_quotas.setUser(client, BusReader(reply).readUInt32());
            Q_EMIT userKnown();
        } else if (error->name() == SD_BUS_ERROR_LIMITS_EXCEEDED && m_quotas.knows(client)) {
            // Too many of our calls wait for the bus.
            askUser(client);
            return;
        }
        m_asked.erase(client);
        m_turns.resume();
    });
}

template <typename Action, typename Refusal>
void Clients::whenReading(const BusMessage &call, std::size_t bytes, const Action &action,
                          const Refusal &refusal)
{
    const std::string client = call.sender();
    if (m_unread.admit(client, bytes)) {
        run(client, call, action);
        return;
    }
    m_unread.decideLater(client, bytes, [this, call, action, refusal](bool isAdmitted) {
        if (isAdmitted) {
            run(call, action);
        } else {
            refuse(call, refusal(m_unread.refusal(call.sender())));
        }
    });
}

void Clients::replyToStandardCall(const BusMessage &call)
{
    run(call, [this](const BusMessage &standard) {
        const std::size_t bytes = standard.member() == "Introspect" ? descriptionBytes : 0;
        reply(standard, m_objects.reply(standard), bytes);
    });
}

void Clients::add(const BusMessage &call, CallTurns::Method &method)
{
    // A bus does not limit how many of these wait for the host.
    if (method.effect == CallTurns::Effect::Reply && !call.expectsReply()) {
        return;
    }
    const std::string client = call.sender();
    run(client, call, [&](const BusMessage &waiting) { m_turns.add(client, waiting, method); });
}

void Clients::handle(const BusMessage &call, CallTurns::Method &method, const Handler &handler)
{
    const auto action = [this, handler, &method](const BusMessage &handled) {
        try {
            handler(handled);
        } catch (const NotYet &) {
            const std::string client = handled.sender();
            m_turns.putBack(client, handled, method);
            m_waiting.insert(client);
        }
    };
    const auto refusal = [](const BusError &reason) { return reason; };
    whenReading(call, UnreadBytes::messageBytes, action, refusal);
}

void Clients::reply(const BusMessage &call, const BusMessage &reply)
{
    if (!call.expectsReply()) {
        return;
    }
    m_outbox.send(call.sender(), reply, UnreadBytes::messageBytes);
}

void Clients::reply(const BusMessage &call, const BusMessage &reply, std::size_t bytes)
{
    if (!call.expectsReply()) {
        return;
    }
    const auto action = [this, reply, bytes](const BusMessage &repliedTo) {
        const auto instead = [repliedTo] {
            return repliedTo.createErrorReply(Refusals::replyLeftOut(Refusals::busIsTooBusy()));
        };
        m_outbox.send(repliedTo.sender(), reply, bytes + UnreadBytes::messageBytes, instead);
    };
    whenReading(call, bytes, action, Refusals::replyLeftOut);
}

void Clients::refuseForCaught(const BusMessage &call)
{
    refuse(call, BusError::fromCaught());
}

void Clients::refuse(const BusMessage &call, const BusError &error)
{
    if (!call.expectsReply()) {
        return;
    }
    try {
        m_unread.sendError(call.sender(), error.message().size() + UnreadBytes::messageBytes,
                           [&] { return call.createErrorReply(error); });
    } catch (const BusError &failure) {
        LOG4CPLUS_WARN(logger, "A refusal can't be written: " << failure.what());
    }
}

bool Clients::send(const std::string &client, const BusMessage &signal, std::size_t bytes,
                   const Outbox::Instead &instead)
{
    if (!m_quotas.knows(client)) {
        return true;
    }
    if (!m_unread.admit(client, bytes + UnreadBytes::messageBytes)) {
        return false;
    }
    if (!signal.isSealed()) {
        signal.setReceiver(client);
    }
    m_outbox.send(client, signal, bytes + UnreadBytes::messageBytes, instead);
    return true;
}

void Clients::sendToAll(const std::string &client, const BusMessage &signal, std::size_t bytes)
{
    m_outbox.send(client, signal, bytes + UnreadBytes::messageBytes);
}

void Clients::flush(std::chrono::milliseconds timeout)
{
    m_outbox.sendAll();
    m_bus.flush(timeout);
}

void Clients::on_bus_connected()
{
    m_unread.start();
    m_calls = m_bus.handleCalls([this](const BusMessage &call) { receive(call); });
    m_vanished = m_bus.addMatch(vanishedRule,
                                [this](const BusMessage &message) { on_name_vanished(message); });
}

void Clients::on_bus_lost()
{
    m_checkTimer.stop();
    m_vanished.reset();
    m_calls.reset();
    m_turns.clear();
    m_waiting.clear();
    m_outbox.clear();
    m_asked.clear();
    for (const std::string &client : m_quotas.clients()) {
        forget(client);
    }
    // After the clients, because their end may still send messages to others.
    m_unread.stop();
}

void Clients::on_name_vanished(const BusMessage &message)
{
    // Called by the connection, which expects no exception.
    try {
        if (message.isFromBus()) {
            leave(BusReader(message).readString().toStdString());
        }
    } catch (const std::exception &error) {
        LOG4CPLUS_WARN(logger, "Failed to handle the end of a client: " << error.what());
    }
}

void Clients::leave(const std::string &client)
{
    m_asked.erase(client); // The bus no longer knows its user.
    if (m_turns.leave(client)) {
        forget(client);
    }
}

void Clients::on_checkTimer_timeout()
{
    if (!m_bus.isConnected()) {
        return;
    }
    try {
        const BusMessage call = m_bus.createCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                 "org.freedesktop.DBus", "ListNames");
        m_bus.send(call, checkTimeout, [this](const BusMessage &reply) { takeNames(reply); });
    } catch (const BusError &error) {
        LOG4CPLUS_DEBUG(logger, "Failed to ask the bus who is there: " << error.what());
    }
}

/// Each known client has called before this reply came, so one whose name is not in it has left.
void Clients::takeNames(const BusMessage &reply)
{
    if (reply.error() || !reply.isFromBus()) {
        m_checkTimer.start(); // the reply may have been dropped, too
        return;
    }
    const QStringList names = BusReader(reply).readStringList();
    const QSet<QString> present(names.begin(), names.end());
    for (const std::string &client : m_quotas.clients()) {
        if (!present.contains(QString::fromStdString(client))) {
            leave(client);
        }
    }
}

void Clients::on_turns_left(const std::string &client)
{
    forget(client);
}

void Clients::forget(const std::string &client)
{
    if (m_quotas.knows(client)) {
        Q_EMIT left(client);
        m_outbox.forget(client);
        m_unread.forget(client);
        m_quotas.forget(client);
        m_waiting.erase(client);
        if (!m_memoryTimer.isActive()) {
            m_memoryTimer.start();
        }
    }
}

void Clients::on_memoryTimer_timeout()
{
    if (mallinfo2().fordblks > maxUnusedBytes) {
        malloc_trim(0);
    }
}
