// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "clients/Clients.h"
#include "clients/ClientSounds.h"
#include "DbusConfiguration.h"
#include "desktop/NotificationsInterface.h"
#include "model/ModelInterface.h"

#include <bus/BusConnection.h>
#include <core/tavo.h>

#include <memory>

/// The model on a message bus, for programs outside of the host.
///
/// Thread: the one that made it. Owner: the host. A bus that is away or goes stops nothing: the
/// interfaces are there again when it is.
class DbusWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    /// Throws a std::runtime_error that names the key for a configuration that it can't use.
    explicit DbusWorker(const QVariantHash &config);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost(const QString &reason);
    void on_bus_nameAcquired(const QString &name);
    void on_bus_nameTaken(const QString &name);
    void on_bus_nameRefused(const QString &name, const QString &reason);

private:
    const DbusConfiguration m_configuration;
    BusConnection m_bus; ///< first of the parts: the others stand on it
    Clients m_clients;
    ClientSounds m_sounds;
    ModelInterface m_model;
    std::unique_ptr<NotificationsInterface> m_notifications; ///< null where they are not served
};
