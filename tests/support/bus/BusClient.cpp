// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/BusClient.h"

#include <stdexcept>

namespace {
constexpr std::chrono::seconds timeout(20);
constexpr const char *busName = "org.freedesktop.DBus";
} // namespace

std::string BusCall::errorName() const
{
    if (!waitForAnswer()) {
        return "no answer";
    }
    const auto error = m_state->reply->error();
    return error ? error->name() : std::string();
}

std::string BusCall::errorMessage() const
{
    return succeeds() || !isAnswered() ? std::string() : m_state->reply->error()->message();
}

BusReader BusCall::reader() const
{
    if (!succeeds()) {
        throw std::runtime_error("no good reply: " + errorName() + ": " + errorMessage());
    }
    return BusReader(*m_state->reply);
}

BusClient::BusClient(const QString &address)
    : m_connection(std::make_unique<BusConnection>(address))
{
    QObject::connect(m_connection.get(), &BusConnection::lost, &m_context, [this] { giveUp(); });
    m_connection->open();
    if (!waitFor([this] { return m_connection->isConnected(); }, timeout)) {
        throw std::runtime_error("a client can't connect to the bus");
    }
}

BusClient::~BusClient()
{
    leave();
}

void BusClient::takeName(const QString &name)
{
    constexpr std::uint32_t standInLine = 0;
    constexpr std::uint32_t owned = 1;
    const BusCall call = callBus("RequestName", [&](BusWriter &writer) {
        writer.writeString(name);
        writer.writeUInt32(standInLine);
    });
    if (call.reader().readUInt32() != owned) {
        throw std::runtime_error("another program has the name");
    }
}

void BusClient::releaseName(const QString &name)
{
    callBus("ReleaseName", [&](BusWriter &writer) { writer.writeString(name); }).reader();
}

BusClient &BusClient::setTarget(const std::string &service, const std::string &path,
                                const std::string &interface)
{
    m_service = service;
    m_path = path;
    m_interface = interface;
    return *this;
}

BusMessage BusClient::createCall(const std::string &method) const
{
    return m_connection->createCall(m_service.c_str(), m_path.c_str(), m_interface.c_str(),
                                    method.c_str());
}

BusCall BusClient::call(const std::string &method, const Write &write)
{
    BusWriter writer(createCall(method));
    write(writer);
    return send(writer.message());
}

BusCall BusClient::callBus(const char *method, const Write &write)
{
    BusWriter writer(m_connection->createCall(busName, "/org/freedesktop/DBus", busName, method));
    write(writer);
    return send(writer.message());
}

BusCall BusClient::send(const BusMessage &message)
{
    BusCall call;
    m_calls.push_back(call.m_state);
    m_connection->send(message, timeout,
                       [state = call.m_state](const BusMessage &reply) { state->reply = reply; });
    return call;
}

void BusClient::sendSignal(const BusInterface &interface, const char *name,
                           const std::string &receiver, const Write &write)
{
    BusWriter writer(m_connection->createObject(interface)->createSignal(name));
    write(writer);
    writer.message().setReceiver(receiver);
    writer.message().send();
}

void BusClient::serve(BusObject &object)
{
    object.publish(m_objects);
    m_served = m_connection->handleCalls([this](const BusMessage &call) {
        if (const BusObject::Handler *handler = m_objects.handlerOf(call)) {
            (*handler)(call);
        } else {
            m_objects.reply(call).send();
        }
    });
}

void BusClient::giveUp()
{
    m_signals.reset();
    m_served.reset();
    for (const auto &each : m_calls) {
        if (const auto state = each.lock()) {
            state->isLost = true;
        }
    }
    m_calls.clear();
}

void BusClient::leave()
{
    giveUp();
    m_connection.reset();
}
