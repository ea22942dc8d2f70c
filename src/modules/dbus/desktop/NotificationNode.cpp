// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "NotificationNode.h"

#include <QUrl>

#include <algorithm>

namespace {
/// An action's key as one segment of a path, which must not be empty.
QString segmentOf(const QString &key)
{
    return key.isEmpty() ? QStringLiteral("%00")
                         : QString::fromLatin1(QUrl::toPercentEncoding(key));
}

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

TavoRoles actionRow(const DesktopNotification::Action &action, const CMPath &path, bool hasIcon)
{
    TavoRoles row;
    row.setType(TavoRolesType::Action).setTitle(action.label).setPath(path);
    setIf(action.key == QLatin1String("default"), row, &TavoRoles::setDefault, true);
    setIf(hasIcon, row, &TavoRoles::setIcon, action.key);
    return row;
}
} // namespace

CMPath NotificationNode::pathOf(quint32 id)
{
    static const CMPath notifications(QStringLiteral("/dbus/notifications"));
    return notifications + QString::number(id);
}

NotificationNode::NotificationNode(CMNodes *nodes, quint32 id)
    : m_nodes(nodes)
    , m_node(CMListRowsNode::create(nodes, pathOf(id)))
{
    static const auto rowsRoles =
        TavoRowsRoles().setType({TavoRowsRolesType::Title, TavoRowsRolesType::Path});
    m_node->setRowsRoles(rowsRoles);
}

void NotificationNode::show(const DesktopNotification &notification, const Bind &bind)
{
    disposeActions();
    m_node->setTitle(notification.title);
    QVector<TavoRoles> rows{textRow(notification)};
    for (const DesktopNotification::Action &action : notification.actions) {
        const auto hasKey = [&action](const Action &other) { return other.key == action.key; };
        if (std::any_of(m_actions.cbegin(), m_actions.cend(), hasKey)) {
            continue;
        }
        const CMPath path = m_node->path() + (QStringLiteral("actions/") + segmentOf(action.key));
        auto *node = CMActivateNode::create(m_nodes, path);
        node->setTitle(action.label);
        bind(node);
        m_actions.append({action.key, node});
        rows.append(actionRow(action, path, notification.hasActionIcons));
    }
    m_node->setRows(rows);
}

void NotificationNode::setImage(const TavoImage &image)
{
    QVector<TavoRoles> rows;
    for (int i = 0; i < m_node->rowsSize(); ++i) {
        rows.append(TavoRoles(m_node->getRow(i).toHash()));
    }
    rows.first().setImage(image);
    m_node->setRows(rows);
}

std::optional<QString> NotificationNode::actionAt(const CMPath &path) const
{
    const auto action =
        std::find_if(m_actions.begin(), m_actions.end(),
                     [&path](const Action &other) { return other.node->path() == path; });
    return action == m_actions.end() ? std::nullopt : std::make_optional(action->key);
}

void NotificationNode::dispose()
{
    disposeActions();
    m_node->dispose();
}

void NotificationNode::disposeActions()
{
    for (const Action &action : qAsConst(m_actions)) {
        action.node->dispose();
    }
    m_actions.clear();
}
