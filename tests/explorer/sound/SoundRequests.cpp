// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundRequests.h"

#include "explorer/sound/SoundServices.h"

namespace SoundRequests {

CMPath revokePath()
{
    static const CMPath path = TavoNotificationsPath() + QStringLiteral("/player/revokeResources");
    return path;
}

QString name(int id)
{
    return {QChar('a' + id)};
}

QVariant enqueue(const QString &id, int priority, bool valid, bool responds)
{
    using Type = TavoNotificationPlayerItemType;
    // The kinds of player differ only in how they are made, so each name gets another kind.
    static const Type::Enum types[] = {Type::Uri, Type::Fake, Type::Data, Type::Stream};
    constexpr auto noType = Type::Enum(7);
    const int first = id.isEmpty() ? 0 : id.at(0).unicode() % 4;
    TavoNotificationPlayerItem item;
    item.setId(id)
        .setContent(QStringLiteral("sound"))
        .setType(valid ? types[first] : noType)
        .setPriority(TavoNotificationItemPriority::Enum(priority));
    if (responds) {
        item.setPlaybackResponsePath(SoundServices::responsePath());
    }
    return TavoValue().setNotificationPlayerItem(item).__variant();
}

QVariant cancel(const QString &id)
{
    return TavoValue().setString_(id).__variant();
}

QVariant revoke(int type, TavoPowerManagerResources::Enum resource)
{
    return TavoPowerManagerRevokeMessage()
        .setMessageType(TavoPowerManagerRevokeMessageType::Enum(type))
        .setRevokeResources({resource})
        .__variant();
}

} // namespace SoundRequests
