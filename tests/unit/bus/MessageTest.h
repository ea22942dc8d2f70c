// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/bus/BusClient.h"
#include "support/bus/PrivateBus.h"
#include "support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Messages that are written and read without being sent.
class MessageTest : public testing::Test
{
protected:
    /// A message to be written.
    static BusMessage message()
    {
        return client().connection().createCall("org.freedesktop.DBus", "/org", "org.tavo.Test",
                                                "Test");
    }

    /// Makes a written message readable.
    static void finish(const BusMessage &message)
    {
        EXPECT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
        EXPECT_GE(sd_bus_message_rewind(message.get(), 1), 0);
    }

    static QVariant roundTrip(const QVariant &value)
    {
        BusWriter writer(message());
        writer.writeVariant(value);
        finish(writer.message());
        return BusReader(writer.message()).readVariant();
    }

    /// Name and message of the BusError that the function throws; empty if it throws nothing.
    template <typename Function>
    static std::string errorOf(Function function)
    {
        try {
            function();
        } catch (const BusError &error) {
            return error.name() + ": " + error.message();
        }
        return {};
    }

    static std::string errorOfWriting(const QVariant &value)
    {
        return errorOf([&] { BusWriter(message()).writeVariant(value); });
    }

private:
    static BusClient &client()
    {
        static PrivateBus bus;
        static BusClient client(bus.address());
        return client;
    }
};
