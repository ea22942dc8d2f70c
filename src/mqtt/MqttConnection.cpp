// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "mqtt/MqttConnection.h"

#include "mqtt/MqttNetwork.h"

MqttConnection::MqttConnection(const MqttSettings &settings, QObject *parent)
    : QObject(parent)
    , m_network(std::make_shared<MqttNetwork>(this, settings))
{
}

MqttConnection::~MqttConnection()
{
    stop();
}

void MqttConnection::setWill(const MqttMessage &will)
{
    m_network->setWill(will);
}

void MqttConnection::start()
{
    m_network->start();
}

void MqttConnection::stop()
{
    m_isConnected = false;
    m_network->stop();
}

void MqttConnection::subscribe(const QString &filter)
{
    m_network->subscribe(filter);
}

void MqttConnection::unsubscribe(const QString &filter)
{
    m_network->unsubscribe(filter);
}

int MqttConnection::publish(const MqttMessage &message)
{
    return m_isConnected ? m_network->publish(message) : -1;
}

void MqttConnection::reconnect(const QString &reason)
{
    m_network->endConnection(reason);
}
