// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusReader.h"
#include "bus/BusWriter.h"
#include "support/bus/BusClient.h"
#include <core/records/value.h>

#include <optional>

/// A host with one message on display, "Door", which it lets the display read when it is told to, each time anew.
class ScriptedHost
{
public:
    explicit ScriptedHost(const QString &bus)
        : m_client(bus)
        , m_calls(m_client.connection().handleCalls([this](const BusMessage &call) { take(call); }))
        , m_messages(m_client.connection().createObject(BusInterface::notifications()))
    {
        m_client.takeName(QStringLiteral("org.tavo.Model1"));
    }

    /// Whether the display has asked for the message.
    bool isRead() const { return m_preview.has_value(); }

    /// Whether the display has asked for its changes.
    bool isFollowed() const { return m_isFollowed; }

    void letRead()
    {
        BusWriter reply(m_preview->createReply());
        reply.writeString(QStringLiteral("Door"));
        reply.openArray("v");
        reply.close();
        reply.message().send();
        m_preview.reset();
    }

    /// Tells everyone that a notification has ended.
    void emitClosed(std::uint32_t id) const
    {
        constexpr std::uint32_t expired = 1;
        BusWriter signal(m_messages->createSignal("NotificationClosed"));
        signal.writeUInt32(id);
        signal.writeUInt32(expired);
        signal.message().send();
    }

private:
    void take(const BusMessage &call)
    {
        if (call.member() == "Preview") {
            m_preview = call;
        } else if (call.member() == "Subscribe") {
            BusReader reader(call);
            m_isFollowed = m_isFollowed || reader.readString() == QLatin1String("/door");
        } else if (call.member() == "GetValue" &&
                   BusReader(call).readString() ==
                       TavoNotificationDisplayCurrentPath().toString()) {
            const auto current = TavoNotificationDisplayCurrent()
                                     .setPath(CMPath(QStringLiteral("/door")))
                                     .setPriority(TavoNotificationItemPriority::Normal);
            BusWriter reply(call.createReply());
            reply.writeVariant(TavoValue().setDisplayCurrent(current).__variant());
            reply.message().send();
        }
    }

    BusClient m_client;
    std::optional<BusMessage> m_preview;
    bool m_isFollowed = false;
    const BusSlot m_calls;
    const std::unique_ptr<BusObject> m_messages;
};
