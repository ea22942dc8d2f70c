// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "client/TavoMessages.h"

#include "client/ClientBus.h"
#include "client/TavoClient.h"
#include <core/base/connect.h>

#include <algorithm>

namespace {
/// The desktop's interface knows only three urgencies. Our own hint carries the exact priority.
uchar urgencyOf(TavoNotificationItemPriority::Enum priority)
{
    constexpr int critical = 2;
    return uchar(std::clamp(int(priority), 0, critical));
}

void writeHint(BusWriter &call, const QString &name, const QVariant &value)
{
    call.openDictEntry("sv");
    call.writeString(name);
    call.writeVariant(value);
    call.close();
}

void write(BusWriter &call, const TavoMessage &message)
{
    constexpr std::uint32_t replacesNone = 0;
    call.writeString(message.application);
    call.writeUInt32(replacesNone);
    call.writeString(QString()); // no icon
    call.writeString(message.title);
    call.writeString(message.text.toHtmlEscaped());
    call.writeStringList({}); // no actions
    call.openArray("{sv}");
    writeHint(call, QStringLiteral("urgency"), QVariant::fromValue(urgencyOf(message.priority)));
    writeHint(call, QStringLiteral("x-tavo-priority"), int(message.priority));
    call.close();
    call.writeInt32(message.timeout);
}
} // namespace

TavoMessages::TavoMessages(TavoClient *client, QObject *parent)
    : QObject(parent)
    , m_bus(*client->m_bus)
{
    tavoConnect(&m_bus, &ClientBus::messageClosed, this, &TavoMessages::on_bus_messageClosed);
    tavoConnect(&m_bus, &ClientBus::actionInvoked, this, &TavoMessages::actionInvoked);
    m_bus.followMessages();
}

CMReply<uint> TavoMessages::show(const TavoMessage &message)
{
    const auto read = [](BusReader &reply) { return uint(reply.readUInt32()); };
    return m_bus.ask<uint>(
        BusInterface::notifications(), "Notify",
        [message](BusWriter &call) { write(call, message); }, read);
}

CMReply<bool> TavoMessages::close(uint id)
{
    return m_bus.ask<bool>(
        BusInterface::notifications(), "CloseNotification",
        [id](BusWriter &call) { call.writeUInt32(id); }, [](BusReader &) { return true; });
}

CMReply<bool> TavoMessages::isDesktopServer()
{
    const auto ask = [this](const BusInterface &interface) {
        return m_bus.ask<QString>(
            ClientBus::bus(), "GetNameOwner",
            [name = QString::fromStdString(interface.name)](BusWriter &call) {
                call.writeString(name);
            },
            [](BusReader &reply) { return reply.readString(); });
    };
    CMReply<bool> reply;
    const CMReply<QString> server = ask(BusInterface::notifications());
    // Replies come in the order of their requests, so the first one is finished by then.
    ask(BusInterface::model()).onFinished(&m_bus, [reply, server](const CMReply<QString> &host) {
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
