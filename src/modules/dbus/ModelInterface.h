// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

#include <sdbus-c++/sdbus-c++.h>

#include <memory>

class BusConnection;

/// org.tavo.Model1: the model as clients on the bus see it.
///
/// Thread and owner: its worker's.
class ModelInterface : public QObject
{
    Q_OBJECT

public:
    explicit ModelInterface(BusConnection &bus);

private Q_SLOTS:
    void on_bus_connected();
    void on_bus_lost();

private:
    BusConnection &m_bus;
    std::unique_ptr<sdbus::IObject> m_object; ///< while connected
};
