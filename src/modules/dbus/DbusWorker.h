// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "clients/ClientInhibitions.h"
#include "clients/Clients.h"
#include "clients/ClientSounds.h"
#include "DbusConfiguration.h"
#include "desktop/NotificationsInterface.h"
#include "model/ModelInterface.h"
#include <bus/BusConnection.h>
#include <core/tavo.h>

#include <QTimer>

#include <memory>

/// Serves the model on a message bus, for programs outside of the host.
///
/// Owned by the host, used in the thread that made it. The worker runs without a bus, too, and serves
/// its interfaces whenever the bus is there. But if the session bus has started the host, the host ends
/// when that bus has been away for 1 s: nothing else would stop it at the end of the session.
class DbusWorker : public CMNodesWorker, public CMReconfigurable
{
    Q_OBJECT

public:
    /// Throws a std::runtime_error that names the key when a value is invalid.
    explicit DbusWorker(const QVariantHash &config);

    /// What clients hold already stays, even if it is more than a new limit allows.
    QStringList reconfigure(const QVariantHash &config) override;

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost(const QString &reason, bool isSilent);
    void on_busAwayTimer_timeout();
    void on_bus_nameAcquired(const QString &name);
    void on_bus_nameTaken(const QString &name);
    void on_bus_nameRefused(const QString &name, const QString &reason);

private:
    DbusConfiguration m_configuration;
    BusConnection m_bus; ///< before all parts that use it
    Clients m_clients;
    ClientSounds m_sounds;
    ClientInhibitions m_inhibitions;
    ModelInterface m_model;
    std::unique_ptr<NotificationsInterface> m_notifications; ///< null when not served
    QTimer m_busAwayTimer; ///< runs while the bus is away that has started the host
};
