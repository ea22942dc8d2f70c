// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/bus/BusClient.h"

#include <stdexcept>

std::string BusCall::errorName() const
{
    if (!waitForAnswer()) {
        return "no answer";
    }
    return m_state->error ? m_state->error->getName() : std::string();
}

std::string BusCall::errorMessage() const
{
    return waitForAnswer() && m_state->error ? m_state->error->getMessage() : std::string();
}

sdbus::MethodReply &BusCall::answer() const
{
    if (!succeeds()) {
        throw std::runtime_error("no good answer: " + errorName() + ": " + errorMessage());
    }
    return *m_state->answer;
}

BusClient::BusClient(const QString &address)
    : m_bus(std::make_unique<ServedConnection>(address, [this] { giveUp(); }))
{
}

BusClient &BusClient::setTarget(const std::string &service, const std::string &object,
                                const std::string &interface)
{
    m_interface = interface;
    m_target = sdbus::createProxy(connection(), service, object);
    return *this;
}

BusCall BusClient::call(const std::string &method, const Append &append)
{
    sdbus::MethodCall message = m_target->createMethodCall(m_interface, method);
    append(message);
    BusCall call;
    m_target->callMethod(
        message, [state = call.m_state](sdbus::MethodReply &answer, const sdbus::Error *error) {
            if (error != nullptr) {
                state->error = *error;
            } else {
                state->answer = answer;
            }
        });
    return call;
}

void BusClient::giveUp()
{
    m_signals.reset();
    m_target.reset();
}

void BusClient::leave()
{
    giveUp();
    m_bus.reset();
}
