// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "DbusWorker.h"

#include <QCoreApplication>

namespace {
const log4cplus::Logger logger = log4cplus::Logger::getInstance("Dbus");

/// If only the connection was lost, there is another one by then.
constexpr int maxBusAwayMs = 1000;

/// Whether the session bus has started the host to serve a call, and the module uses that bus.
bool isStartedBy(const QString &bus)
{
    const QByteArray starter = qgetenv("DBUS_STARTER_ADDRESS");
    const bool isSession = qgetenv("DBUS_STARTER_BUS_TYPE") == "session";
    return !starter.isEmpty() && isSession &&
           (bus == QLatin1String("session") || bus.toUtf8() == starter);
}

SoundAccess soundAccess(const DbusConfiguration::Sounds &sounds)
{
    return {sounds.schemes, sounds.folders, sounds.hosts};
}

NotifyCall::Timeouts timeouts(const DbusConfiguration &configuration)
{
    return {configuration.defaultTimeoutMs, configuration.criticalTimeoutMs};
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    LOG4CPLUS_DEBUG(logger, "Creating worker " << (name != nullptr ? name : ""));
    CMWorker *worker = new DbusWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}

DbusWorker::DbusWorker(const QVariantHash &config)
    : CMNodesWorker(config, QStringLiteral("Dbus"))
    , m_configuration(DbusConfiguration::fromHash(config))
    , m_bus(m_configuration.bus)
    , m_clients(m_bus, m_configuration.limits)
    , m_sounds(m_clients, nodes(), soundAccess(m_configuration.sounds))
    , m_inhibitions(m_clients)
    , m_model(m_bus, m_clients, nodes(), m_sounds, m_inhibitions)
{
    if (m_configuration.notifications) {
        m_notifications = std::make_unique<NotificationsInterface>(
            m_bus, m_clients, nodes(), m_sounds, m_inhibitions, m_configuration.sounds.theme,
            timeouts(m_configuration));
        tavoConnect(&m_model, &ModelInterface::messageCancelled, m_notifications.get(),
                    &NotificationsInterface::on_model_messageCancelled);
        m_model.setCloseAttended(
            [this](const CMPath &message) { return m_notifications->closeAttended(message); });
    }
    tavoConnect(&m_bus, &BusConnection::connected, this, &DbusWorker::on_bus_connected);
    tavoConnect(&m_bus, &BusConnection::lost, this, &DbusWorker::on_bus_lost);
    tavoConnect(&m_bus, &BusConnection::nameAcquired, this, &DbusWorker::on_bus_nameAcquired);
    tavoConnect(&m_bus, &BusConnection::nameTaken, this, &DbusWorker::on_bus_nameTaken);
    tavoConnect(&m_bus, &BusConnection::nameRefused, this, &DbusWorker::on_bus_nameRefused);
    m_busAwayTimer.setSingleShot(true);
    m_busAwayTimer.setInterval(maxBusAwayMs);
    tavoConnect(&m_busAwayTimer, &QTimer::timeout, this, &DbusWorker::on_busAwayTimer_timeout);
    m_bus.open();
}

QStringList DbusWorker::reconfigure(const QVariantHash &config)
{
    DbusConfiguration next = DbusConfiguration::fromHash(config);
    QStringList restartKeys;
    if (next.bus != m_configuration.bus) {
        restartKeys << QStringLiteral("bus");
        next.bus = m_configuration.bus;
    }
    if (next.notifications != m_configuration.notifications) {
        restartKeys << QStringLiteral("notifications");
        next.notifications = m_configuration.notifications;
    }
    m_configuration = next;
    m_clients.setLimits(next.limits);
    m_sounds.setAccess(soundAccess(next.sounds));
    if (m_notifications) {
        m_notifications->reconfigure(next.sounds.theme, timeouts(next));
    }
    return restartKeys;
}

void DbusWorker::on_bus_connected()
{
    m_busAwayTimer.stop();
    LOG4CPLUS_INFO(logger, "Connected to the bus: " << m_configuration.bus);
}

void DbusWorker::on_bus_lost(const QString &reason, bool isSilent)
{
    LOG4CPLUS_WARN(logger, "There is no bus, retrying: " << m_configuration.bus << ": " << reason
                                                         << "; the key \"bus\" may name another");
    if (isSilent) {
        m_busAwayTimer.stop(); // it hangs
    } else if (isStartedBy(m_configuration.bus)) {
        m_busAwayTimer.start();
    }
}

void DbusWorker::on_busAwayTimer_timeout()
{
    LOG4CPLUS_INFO(logger, "The bus that has started the host has ended, and so does the host");
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
}

void DbusWorker::on_bus_nameAcquired(const QString &name)
{
    LOG4CPLUS_INFO(logger, "Serving " << name);
}

void DbusWorker::on_bus_nameTaken(const QString &name)
{
    LOG4CPLUS_WARN(logger, "Another program serves " << name << ", waiting for it to end");
}

void DbusWorker::on_bus_nameRefused(const QString &name, const QString &reason)
{
    LOG4CPLUS_WARN(logger, "The bus doesn't let the host serve " << name << ": " << reason);
}
