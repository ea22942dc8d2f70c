// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/TavoMessages.h"

#include "bus/BusVariant.h"
#include "client/ClientBus.h"
#include "client/TavoClient.h"

#include <core/base/connect.h>

#include <algorithm>
#include <map>

namespace {
/// The desktop knows three degrees of urgency. What lies beyond them stands in a hint of ours.
std::uint8_t urgencyOf(TavoNotificationItemPriority::Enum priority)
{
    constexpr int critical = 2;
    return std::uint8_t(std::clamp(int(priority), 0, critical));
}

void write(sdbus::MethodCall &call, const TavoMessage &message)
{
    constexpr std::uint32_t replacesNone = 0;
    BusVariant::appendText(call, message.application);
    call << replacesNone << std::string(); // no icon
    BusVariant::appendText(call, message.title);
    BusVariant::appendText(call, message.text.toHtmlEscaped());
    const std::map<std::string, sdbus::Variant> hints{
        {"urgency", sdbus::Variant(urgencyOf(message.priority))},
        {"x-tavo-priority", sdbus::Variant(std::int32_t(message.priority))}};
    call << std::vector<std::string>() << hints << std::int32_t(message.timeout);
}
} // namespace

TavoMessages::TavoMessages(TavoClient *client, QObject *parent)
    : QObject(parent)
    , m_bus(*client->m_bus)
{
    tavoConnect(&m_bus, &ClientBus::messageClosed, this, &TavoMessages::on_bus_messageClosed);
    tavoConnect(&m_bus, &ClientBus::actionInvoked, this, &TavoMessages::actionInvoked);
}

CMReply<uint> TavoMessages::show(const TavoMessage &message)
{
    const auto read = [](sdbus::MethodReply &answer) {
        std::uint32_t id = 0;
        answer >> id;
        return uint(id);
    };
    return m_bus.ask<uint>(
        s_messagesInterface, "Notify", [message](sdbus::MethodCall &call) { write(call, message); },
        read);
}

CMReply<bool> TavoMessages::close(uint id)
{
    return m_bus.ask<bool>(
        s_messagesInterface, "CloseNotification",
        [id](sdbus::MethodCall &call) { call << std::uint32_t(id); },
        [](sdbus::MethodReply &) { return true; });
}

CMReply<bool> TavoMessages::isDesktopServer()
{
    const auto ask = [this](const char *name) {
        return m_bus.ask<QString>(
            s_busInterface, "GetNameOwner",
            [name](sdbus::MethodCall &call) { call << std::string(name); },
            [](sdbus::MethodReply &answer) { return BusVariant::readText(answer); });
    };
    CMReply<bool> reply;
    const CMReply<QString> server = ask(s_messagesInterface.name);
    // Answers come in the order of their requests: the other is there then.
    ask(s_modelInterface.name).onFinished(&m_bus, [reply, server](const CMReply<QString> &host) {
        const CMError error = server.error().isError() ? server.error() : host.error();
        if (error.isError()) {
            reply.setError(error);
        } else {
            reply.setValue(server.value() == host.value());
        }
    });
    return reply;
}

void TavoMessages::on_bus_messageClosed(uint id, uint reason)
{
    const bool isKnown = reason >= uint(End::Expired) && reason <= uint(End::Closed);
    Q_EMIT closed(id, isKnown ? End(reason) : End::Unknown);
}
