// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Entrance.h"
#include <base/MessageNode.h>
#include <core/tavo.h>

#include <QHash>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVector>

/// Messages that wait together and are shown as one: "5 messages of Mail". The group's node lists them, the
/// newest first; activating the path of one opens it.
///
/// Owned by OpenItems, used in its thread. A group exists as long as it has members, and its node follows them
/// at once.
class MessageGroups : public QObject
{
    Q_OBJECT

public:
    struct Member
    {
        QString id; ///< the notification's
        TrString title;
        TavoNotificationItemPriority::Enum priority;
        int timeout;   ///< 0: until it is closed
        QString key{}; ///< in the group's node; given by the group
    };

    MessageGroups(CMNodes *nodes, Entrance &entrance);

    /// Closes the groups' messages. Nothing is emitted.
    ~MessageGroups() override;

    bool contains(const QString &key) const { return m_groups.contains(key); }

    /// The notifications in the group, in the order of their arrival.
    QStringList members(const QString &key) const;

    TavoNotificationItemPriority::Enum priority(const QString &key) const;

    /// Shows the members as one, together with those that the group has. The name is that of a new group.
    void add(const QString &key, const QString &name, QVector<Member> members);

    void change(const QString &key, const Member &member);

    /// Takes a member out, and closes the group's message if it was the last one.
    void remove(const QString &key, const QString &id);

    /// The display has reported an end, of a group or of something else.
    void displayEnded(const TavoNotificationDisplayEnded &ended);

    /// Whether this is the id of a request to show a group.
    bool isRequest(const QString &id) const { return m_requests.contains(id); }

    /// Nothing is displayed any more.
    void displayGone();

Q_SIGNALS:
    /// A group's message has ended, and the group with it. These were its members.
    void ended(const QStringList &members, TavoNotificationDisplayEnd::Enum end);

    /// A person wants to read the member by itself.
    void opened(const QString &member);

private Q_SLOTS:
    void on_member_activated(const CMSetDataRequest &request);

private:
    struct Group
    {
        QString name;
        QVector<Member> members{};
        MessageNode node{};
        QString request{}; ///< the id of the request to show it
        TavoNotificationItemPriority::Enum priority{};
        int timeout = 0;
    };
    using Groups = QMap<QString, Group>;

    void fill(Group &group);

    /// Requests the display again if the members want another priority or timeout.
    void adapt(const QString &key, Group &group);
    void request(const QString &key, Group &group);
    void end(const QString &request, TavoNotificationDisplayEnd::Enum end);

    CMNodes *m_nodes;
    Entrance &m_entrance;
    Groups m_groups;                    ///< by key
    QHash<QString, QString> m_requests; ///< keys, by the requests to show the groups
    quint64 m_lastNode = 0;
    quint64 m_lastMember = 0;
};
