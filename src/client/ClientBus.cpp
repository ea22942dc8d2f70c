// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/ClientBus.h"

#include "client/HostError.h"
#include "client/TavoClientError.h"
#include <core/base/connect.h>

#include <QTimer>

#include <algorithm>
#include <utility>

namespace {
constexpr int defaultTimeoutMs = 25000;

/// The timeout of requests to the bus itself, which replies at once.
constexpr int busTimeoutMs = 5000;

constexpr const char *hostName = "org.tavo.Model1";
} // namespace

const BusInterface &ClientBus::properties()
{
    static const BusInterface interface {
        BusInterface::model().path, "org.freedesktop.DBus.Properties"
    };
    return interface;
}

const BusInterface &ClientBus::bus()
{
    static const BusInterface interface {
        "/org/freedesktop/DBus", "org.freedesktop.DBus"
    };
    return interface;
}

ClientBus::ClientBus(const QString &bus)
    : m_connection(bus)
    , m_timeoutMs(defaultTimeoutMs)
{
    tavoConnect(&m_connection, &BusConnection::connected, this,
                &ClientBus::on_connection_connected);
    tavoConnect(&m_connection, &BusConnection::lost, this, &ClientBus::on_connection_lost);
    // Later, so that the owner can connect to the signals first.
    QMetaObject::invokeMethod(&m_connection, &BusConnection::open, Qt::QueuedConnection);
}

ClientBus::~ClientBus()
{
    m_isConnected = false;
    m_pending.failAll({CMErrors::noAnswer(), QStringLiteral("The client has ended")});
}

void ClientBus::on_connection_connected()
{
    m_isConnected = true;
    matchSignals(BusInterface::model(), &ClientBus::on_model_signal);
    if (m_followsMessages) {
        matchSignals(BusInterface::notifications(), &ClientBus::on_messages_signal);
    }
    match("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
              std::string(hostName) + "'",
          &ClientBus::on_owner_changed);
    followHost();
    for (const Request &request : std::exchange(m_held, {})) {
        sendNow(request);
    }
}

void ClientBus::on_connection_lost(const QString &reason, bool isSilent)
{
    m_busError = {isSilent ? TavoClientError::busTimedOut() : TavoClientError::noBus(), reason};
    const CMError error = m_isConnected
                              ? CMError(CMErrors::noAnswer(), QStringLiteral("The bus has gone"))
                              : m_busError;
    m_isConnected = false;
    m_owner.clear();
    m_matches.clear();
    setState(State::NoBus, reason);
    m_held.clear();
    m_pending.failAll(error);
}

void ClientBus::match(const std::string &rule, void (ClientBus::*handler)(const BusMessage &))
{
    m_matches.push_back(m_connection.addMatch(
        rule, [this, handler](const BusMessage &signal) { (this->*handler)(signal); }));
}

void ClientBus::matchSignals(const BusInterface &interface,
                             void (ClientBus::*handler)(const BusMessage &))
{
    match("type='signal',sender='" + std::string(hostName) + "',path='" + interface.path +
              "',interface='" + interface.name + "'",
          handler);
}

void ClientBus::followMessages()
{
    if (!std::exchange(m_followsMessages, true) && m_isConnected) {
        matchSignals(BusInterface::notifications(), &ClientBus::on_messages_signal);
    }
}

void ClientBus::followHost()
{
    const auto write = [](BusWriter &call) { call.writeString(QString::fromLatin1(hostName)); };
    const auto finish = [this](const Result<BusMessage, CMError> &reply) {
        const auto *error = std::get_if<CMError>(&reply);
        if (error == nullptr) {
            m_owner = BusReader(std::get<BusMessage>(reply)).readString().toStdString();
            setState(State::Available, {});
        } else if (error->name() == TavoClientError::busTimedOut()) {
            setState(State::NoBus, error->message().toString());
            followHost();
        } else if (m_isConnected) {
            setState(State::NoHost, noHostText());
        }
    };
    send(this, bus(), "GetNameOwner", write, finish, busTimeoutMs);
}

void ClientBus::on_owner_changed(const BusMessage &signal)
{
    if (!signal.isFromBus()) {
        return;
    }
    BusReader reader(signal);
    reader.readString(); // the name
    const QString before = reader.readString();
    const QString now = reader.readString();
    m_owner = now.toStdString();
    if (!before.isEmpty()) {
        setState(State::NoHost, noHostText());
    }
    if (!now.isEmpty()) {
        setState(State::Available, {});
    }
}

void ClientBus::setState(State state, const QString &reason)
{
    if (state == m_state) {
        m_reason = reason;
        return;
    }
    const bool isFirst = m_state == State::Untried;
    const bool wasAvailable = isAvailable();
    m_state = state;
    m_reason = reason;
    if (isFirst || wasAvailable != isAvailable()) {
        Q_EMIT availableChanged(isAvailable());
    }
}

bool ClientBus::isFromHost(const BusMessage &signal) const
{
    return signal.sender() == m_owner;
}

void ClientBus::on_model_signal(const BusMessage &signal)
{
    if (!isFromHost(signal)) {
        return;
    }
    const std::string member = signal.member();
    BusReader reader(signal);
    const CMPath path(reader.readString());
    if (member == "ValueChanged") {
        Q_EMIT valueChanged(path, reader.readVariant());
    } else if (member == "Received") {
        Q_EMIT received(path, reader.readVariant());
    } else if (member == "NodeChanged") {
        Q_EMIT nodeChanged(path, reader.readBoolean());
    } else if (member == "Dropped") {
        Q_EMIT dropped(path, reader.readUInt32());
    } else if (member == "RowsChanged") {
        const QStringList changes = reader.readStringList();
        const int first = reader.readInt32();
        const int count = reader.readInt32();
        Q_EMIT rowsChanged(path, changes, first, count);
    }
}

void ClientBus::on_messages_signal(const BusMessage &signal)
{
    if (!isFromHost(signal)) {
        return;
    }
    const std::string member = signal.member();
    BusReader reader(signal);
    const uint id = reader.readUInt32();
    if (member == "NotificationClosed") {
        Q_EMIT messageClosed(id, reader.readUInt32());
    } else if (member == "ActionInvoked") {
        Q_EMIT actionInvoked(id, reader.readString());
    }
}

void ClientBus::send(QObject *context, const BusInterface &interface, const char *method,
                     const Write &write, const Finish &finish)
{
    send(context, interface, method, write, finish, m_timeoutMs);
}

void ClientBus::send(QObject *context, const BusInterface &interface, const char *method,
                     const Write &write, const Finish &finish, int timeoutMs)
{
    const quint64 number = m_pending.add(context, finish, timeoutMs);
    const Request request{number, &interface, method, write};
    if (m_isConnected) {
        sendNow(request);
    } else if (m_state == State::Untried) {
        hold(request, timeoutMs);
    } else {
        m_pending.failLater(number, m_busError);
    }
}

void ClientBus::hold(const Request &request, int timeoutMs)
{
    m_held.push_back(request);
    QTimer::singleShot(timeoutMs, this, [this, number = request.number, timeoutMs] {
        const auto held = std::find_if(m_held.begin(), m_held.end(), [number](const Request &each) {
            return each.number == number;
        });
        if (held != m_held.end()) {
            m_held.erase(held);
            m_pending.failLater(number, silenceError(Silent::Bus, timeoutMs));
        }
    });
}

void ClientBus::sendNow(const Request &request)
{
    const BusInterface &interface = *request.interface;
    const char *service = &interface == &bus() ? interface.name.c_str() : hostName;
    try {
        BusWriter writer(m_connection.createCall(service, interface.path.c_str(),
                                                 interface.name.c_str(), request.method));
        request.write(writer);
        Q_ASSERT(interface.describes(writer.message()));
        m_connection.send(
            writer.message(), m_pending.timeLeft(request.number),
            [this, number = request.number](const BusMessage &reply) { finish(number, reply); });
    } catch (const BusError &error) {
        m_pending.failLater(request.number, ownError(error));
    }
}

void ClientBus::finish(quint64 number, const BusMessage &reply)
{
    // Until the bus has told us where the host is, the bus itself may be the silent one.
    const bool hasBusReplied = m_state == State::NoHost || m_state == State::Available;
    m_pending.finish(number, reply, hasBusReplied ? Silent::Host : Silent::Bus);
}
