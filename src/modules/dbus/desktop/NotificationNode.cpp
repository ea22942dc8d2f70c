// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationNode.h"

namespace {
template <typename Setter, typename Value>
void setIf(bool isSet, TavoRoles &row, Setter setter, const Value &value)
{
    if (isSet) {
        (row.*setter)(value);
    }
}

TavoRoles textRow(const DesktopNotification &notification)
{
    TavoRoles row;
    row.setType(TavoRolesType::Text).setTitle(notification.text);
    const auto set = [&row](TavoRoles &(TavoRoles::*setter)(const QString &),
                            const QString &value) { setIf(!value.isEmpty(), row, setter, value); };
    set(&TavoRoles::setApplication, notification.application);
    set(&TavoRoles::setDesktopEntry, notification.desktopEntry);
    set(&TavoRoles::setMarkup, notification.markup);
    set(&TavoRoles::setIcon, notification.icon);
    setIf(!notification.imageSource.isEmpty(), row, &TavoRoles::setImage,
          TavoImage().setSource(notification.imageSource));
    set(&TavoRoles::setCategory, notification.category);
    if (notification.progress) {
        row.setValue(*notification.progress);
    }
    setIf(notification.isTransient, row, &TavoRoles::setTransient, true);
    return row;
}

QVector<MessageNode::Action> actionsOf(const DesktopNotification &notification)
{
    QVector<MessageNode::Action> actions;
    for (const DesktopNotification::Action &action : notification.actions) {
        actions.append(
            {action.key, action.label, notification.hasActionIcons ? action.key : QString()});
    }
    return actions;
}
} // namespace

CMPath NotificationNode::pathOf(quint32 id)
{
    static const CMPath notifications(QStringLiteral("/dbus/notifications"));
    return notifications + QString::number(id);
}

NotificationNode::NotificationNode(CMNodes *nodes, quint32 id)
    : MessageNode(nodes, pathOf(id))
{
}

void NotificationNode::show(const DesktopNotification &notification, const Bind &bind)
{
    MessageNode::show(notification.title, textRow(notification), actionsOf(notification), bind);
}
