// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/ClientBus.h"

#include "bus/BusVariant.h"
#include "client/HostError.h"
#include "client/TavoClientError.h"

#include <core/tavo/connect.h>

#include <chrono>

namespace {
constexpr int usualPatienceMs = 25000;

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

void ClientBus::on_connection_lost(const QString &reason)
{
    const CMError error = m_isConnected
                              ? CMError(CMErrors::noAnswer(), QStringLiteral("The bus has gone"))
                              : CMError(TavoClientError::noBus(), reason);
    m_isConnected = false;
    m_owner.clear();
    m_matches.clear();
    // Before anybody is told: what is asked for on that occasion can't be sent.
    const auto proxies = std::exchange(m_proxies, {});
    setState(State::NoBus, reason);
    m_held.clear();
    m_pending.failAll(error);
}

void ClientBus::match(const std::string &rule, void (ClientBus::*handler)(sdbus::Message &))
{
    m_matches.push_back(
        m_connection.connection().addMatch(rule, [this, handler](sdbus::Message &message) {
            try {
                (this->*handler)(message);
            } catch (const sdbus::Error &) {
                // A signal of another shape than the interface says is none of the host's.
            }
        }));
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
    const auto finish = [this](sdbus::MethodReply *answer, const CMError &) {
        if (answer != nullptr) {
            m_owner = readText(*answer).toStdString();
            setState(State::Available, {});
        } else {
            setState(State::NoHost, noHostText());
        }
    };
    send(this, s_busInterface, "GetNameOwner", write, finish);
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

sdbus::IProxy &ClientBus::proxyOf(const HostInterface &interface)
{
    auto &proxy = m_proxies[interface.name];
    if (!proxy) {
        proxy = sdbus::createProxy(m_connection.connection(),
                                   isTheBus(interface) ? s_busInterface.name : hostName,
                                   interface.path);
    }
    return *proxy;
}

void ClientBus::send(QObject *context, const HostInterface &interface, const char *method,
                     const Write &write, const Finish &finish)
{
    const quint64 number = m_pending.add(context, finish, m_patienceMs);
    const Request request{number, interface, method, write, m_patienceMs};
    if (m_isConnected) {
        sendNow(request);
    } else if (m_state == State::Untried) {
        m_held.push_back(request);
    } else {
        m_pending.failLater(number, CMError(TavoClientError::noBus(), m_reason));
    }
}

void ClientBus::sendNow(const Request &request)
{
    try {
        sdbus::IProxy &proxy = proxyOf(request.interface);
        sdbus::MethodCall call = proxy.createMethodCall(request.interface.name, request.method);
        request.write(call);
        const std::chrono::milliseconds patience(request.patienceMs);
        proxy.callMethod(
            call,
            [this, number = request.number](sdbus::MethodReply &reply, const sdbus::Error *error) {
                m_pending.answer(number, reply, error);
            },
            std::chrono::microseconds(patience).count());
    } catch (const sdbus::Error &error) {
        m_pending.failLater(request.number, ownError(error));
    }
}
