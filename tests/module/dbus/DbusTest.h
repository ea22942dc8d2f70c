// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include "support/LogCapture.h"
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

inline constexpr const char *accessDenied = "org.freedesktop.DBus.Error.AccessDenied";
inline constexpr const char *limitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";

/// The module, loaded from its library, on a private bus.
class DbusTest : public testing::Test
{
protected:
    explicit DbusTest(const QString &busSettings = {})
        : m_bus(busSettings)
    {
    }

    /// Loads the module and adds the address of the bus to the configuration.
    void load(QVariantHash config = {})
    {
        config.insert(QStringLiteral("bus"), m_bus.address());
        m_module = std::make_unique<LoadedModule>(MODULE_FILE, "dbus", config);
    }

    void unload() { m_module.reset(); }

    /// Waits until the module has acquired its name this many times.
    bool isServing(int times = 1)
    {
        return waitFor([&] { return log().count("Serving org.tavo.Model1") == times; },
                       std::chrono::seconds(20));
    }

    PrivateBus &bus() { return m_bus; }
    LogCapture &log() { return m_log; }

private:
    PrivateBus m_bus;
    LogCapture m_log{"Dbus"};
    std::unique_ptr<LoadedModule> m_module;
};
