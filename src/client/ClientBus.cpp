// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/ClientBus.h"

#include "bus/BusVariant.h"
#include "client/HostError.h"
#include "client/TavoClientError.h"

#include <core/base/connect.h>

#include <QTimer>

#include <algorithm>

namespace {
constexpr int usualPatienceMs = 25000;

/// With the bus itself, which has nothing to do for an answer.
constexpr int busPatienceMs = 5000;

constexpr const char *hostName = "org.tavo.Model1";

bool isTheBus(const HostInterface &interface)
{
    return interface.name == std::string(s_busInterface.name);
}

QString readText(sdbus::Message &message)
{
    return BusVariant::readText(message);
}

CMPath readPath(sdbus::Message &message)
{
    return CMPath(readText(message));
}
} // namespace

ClientBus::ClientBus(const QString &bus)
    : m_connection(bus)
    , m_patienceMs(usualPatienceMs)
{
    tavoConnect(&m_connection, &BusConnection::connected, this,
                &ClientBus::on_connection_connected);
    tavoConnect(&m_connection, &BusConnection::lost, this, &ClientBus::on_connection_lost);
    // Whoever made this is to connect to its signals first.
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
    matchSignals(s_modelInterface, &ClientBus::on_model_signal);
    matchSignals(s_messagesInterface, &ClientBus::on_messages_signal);
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

void ClientBus::match(const std::string &rule, void (ClientBus::*handler)(sdbus::Message &))
{
    m_matches.push_back(m_connection.addMatch(
        rule, [this, handler](sdbus::Message &message) { (this->*handler)(message); }));
}

void ClientBus::matchSignals(const HostInterface &interface,
                             void (ClientBus::*handler)(sdbus::Message &))
{
    match("type='signal',sender='" + std::string(hostName) + "',path='" + interface.path +
              "',interface='" + interface.name + "'",
          handler);
}

void ClientBus::followHost()
{
    const auto write = [](sdbus::MethodCall &call) { call << std::string(hostName); };
    const auto finish = [this](sdbus::MethodReply *answer, const CMError &error) {
        if (answer != nullptr) {
            m_owner = readText(*answer).toStdString();
            setState(State::Available, {});
        } else if (error.name() == TavoClientError::busTimedOut()) {
            setState(State::NoBus, error.message().toString());
            followHost();
        } else if (m_isConnected) {
            setState(State::NoHost, noHostText());
        }
    };
    send(this, s_busInterface, "GetNameOwner", write, finish, busPatienceMs);
}

void ClientBus::on_owner_changed(sdbus::Message &message)
{
    if (!BusConnection::isFromBus(message)) {
        return;
    }
    readText(message); // the name
    const QString before = readText(message);
    const QString now = readText(message);
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

bool ClientBus::isFromHost(const sdbus::Message &signal) const
{
    return signal.getSender() == m_owner;
}

void ClientBus::on_model_signal(sdbus::Message &message)
{
    if (!isFromHost(message)) {
        return;
    }
    const std::string member = message.getMemberName();
    const CMPath path = readPath(message);
    if (member == "ValueChanged") {
        Q_EMIT valueChanged(path, BusVariant::read(message));
    } else if (member == "Received") {
        Q_EMIT received(path, BusVariant::read(message));
    } else if (member == "NodeChanged") {
        bool published = false;
        message >> published;
        Q_EMIT nodeChanged(path, published);
    } else if (member == "RowsChanged") {
        std::vector<std::string> names;
        std::int32_t first = 0;
        std::int32_t count = 0;
        message >> names >> first >> count;
        QStringList changes;
        for (const std::string &name : names) {
            changes.append(QString::fromStdString(name));
        }
        Q_EMIT rowsChanged(path, changes, first, count);
    }
}

void ClientBus::on_messages_signal(sdbus::Message &message)
{
    if (!isFromHost(message)) {
        return;
    }
    const std::string member = message.getMemberName();
    std::uint32_t id = 0;
    message >> id;
    if (member == "NotificationClosed") {
        std::uint32_t reason = 0;
        message >> reason;
        Q_EMIT messageClosed(id, reason);
    } else if (member == "ActionInvoked") {
        Q_EMIT actionInvoked(id, readText(message));
    }
}

void ClientBus::send(QObject *context, const HostInterface &interface, const char *method,
                     const Write &write, const Finish &finish)
{
    send(context, interface, method, write, finish, m_patienceMs);
}

void ClientBus::send(QObject *context, const HostInterface &interface, const char *method,
                     const Write &write, const Finish &finish, int patienceMs)
{
    const quint64 number = m_pending.add(context, finish, patienceMs);
    const Request request{number, interface, method, write};
    if (m_isConnected) {
        sendNow(request);
    } else if (m_state == State::Untried) {
        hold(request, patienceMs);
    } else {
        m_pending.failLater(number, m_busError);
    }
}

void ClientBus::hold(const Request &request, int patienceMs)
{
    m_held.push_back(request);
    QTimer::singleShot(patienceMs, this, [this, number = request.number, patienceMs] {
        const auto held = std::find_if(m_held.begin(), m_held.end(), [number](const Request &each) {
            return each.number == number;
        });
        if (held != m_held.end()) {
            m_held.erase(held);
            m_pending.failLater(number, silenceError(Silent::Bus, patienceMs));
        }
    });
}

void ClientBus::sendNow(const Request &request)
{
    try {
        sdbus::MethodCall call =
            m_connection.createCall(isTheBus(request.interface) ? s_busInterface.name : hostName,
                                    request.interface.path, request.interface.name, request.method);
        request.write(call);
        m_connection.send(
            call, m_pending.timeLeft(request.number),
            [this, number = request.number](sdbus::MethodReply &reply, const sdbus::Error *error) {
                answer(number, reply, error);
            });
    } catch (const sdbus::Error &error) {
        m_pending.failLater(request.number, ownError(error));
    }
}

void ClientBus::answer(quint64 number, sdbus::MethodReply &reply, const sdbus::Error *error)
{
    // Until the bus has told of the host, it has said nothing since the greeting.
    const bool hasBusAnswered = m_state == State::NoHost || m_state == State::Available;
    m_pending.answer(number, reply, error, hasBusAnswered ? Silent::Host : Silent::Bus);
}
