// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/PrivateBus.h"
#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include "support/scripted/ScriptedService.h"
#include "support/Text.h"
#include <client/TavoClient.h>
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

/// A client, and the module dbus with some nodes, on a private bus.
class ClientTest : public testing::Test
{
protected:
    /// Serves the model on the bus.
    void startHost(QVariantHash config = {})
    {
        config.insert("bus", m_bus.address());
        config.insert("notifications", false);
        m_module = std::make_unique<LoadedModule>(TAVO_DBUS_MODULE, "dbus", config);
    }

    void stopHost() { m_module.reset(); }

    /// A client that has found the host.
    TavoClient &connectedClient()
    {
        if (!m_client) {
            makeClient();
            EXPECT_TRUE(waitFor([this] { return m_client->isAvailable(); }))
                << m_client->unavailableReason().toStdString();
        }
        return *m_client;
    }

    TavoClient &makeClient()
    {
        m_client = std::make_unique<TavoClient>(m_bus.address());
        return *m_client;
    }

    /// Runs the event loop until the reply is finished. Returns whether it came and is not an error.
    template <typename T>
    static bool succeeds(const CMReply<T> &reply)
    {
        return waitFor([&] { return reply.isFinished(); }) && !reply.error().isError();
    }

    /// The error of the reply.
    template <typename T>
    static CMError errorOf(const CMReply<T> &reply)
    {
        EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }));
        return reply.error();
    }

    static CMPath path(const char *text) { return CMPath(QString::fromUtf8(text)); }

    PrivateBus m_bus;
    ScriptedService m_service{"Test"};
    std::unique_ptr<LoadedModule> m_module;
    std::unique_ptr<TavoClient> m_client;
};
