// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Messages to write and read, without their being sent.
class MessageTest : public testing::Test
{
protected:
    /// A message that can be written.
    static sdbus::MethodCall message()
    {
        const auto target =
            sdbus::createProxy(client().connection(), "org.freedesktop.DBus", "/org");
        return target->createMethodCall("org.tavo.Test", "Test");
    }

    /// Makes a written message one that can be read.
    static void finish(sdbus::Message &message)
    {
        message.seal();
        message.rewind(true);
    }

    static QVariant roundTrip(const QVariant &value)
    {
        sdbus::MethodCall message = MessageTest::message();
        BusVariant::append(message, value);
        finish(message);
        return BusVariant::read(message);
    }

    /// The name and the text of what the function throws; empty when it doesn't.
    template <typename Function>
    static std::string errorOf(Function function)
    {
        try {
            function();
        } catch (const sdbus::Error &error) {
            return error.getName() + ": " + error.getMessage();
        }
        return {};
    }

    static std::string errorOfAppending(const QVariant &value)
    {
        sdbus::MethodCall message = MessageTest::message();
        return errorOf([&] { BusVariant::append(message, value); });
    }

private:
    static BusClient &client()
    {
        static PrivateBus bus;
        static BusClient client(bus.address());
        return client;
    }
};
