// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DesktopNotification.h"
#include "DisplayOrder.h"
#include "NotificationIds.h"

#include <core/tavo.h>

#include <QElapsedTimer>
#include <QHash>
#include <QObject>

/// The desktop notifications that are open: each is a node of its own, which the display is asked to
/// show by its path.
///
/// The node is a list: its title is the notification's, its first row the text, the others its
/// actions, each with the path of the node at which it is activated. All of them go when the
/// notification closes.
///
/// Thread and owner: its worker's. Nothing waits for the display: a notification is open once its
/// node is there, and what the display makes of it comes later.
///
/// Guarantees:
/// - every notification is closed once, and nothing is said of it afterwards;
/// - to open, change and close one costs the same among any number of others, but for moving their
///   places in one array.
class OpenNotifications : public QObject
{
    Q_OBJECT

public:
    /// Why a notification closed, in the numbers of the desktop's protocol.
    enum class Reason : quint32 {
        Expired = 1,
        Dismissed = 2, ///< by a person
        Closed = 3,    ///< by a request
        Undefined = 4  ///< the display doesn't take it, or has gone
    };

    explicit OpenNotifications(CMNodes *nodes);
    ~OpenNotifications() override;

    bool isOpen(quint32 id) const { return m_entries.contains(id); }
    int count() const { return m_entries.size(); }

    quint32 freeId();

    /// Opens a notification under an id that isn't open. Answers an error, with nothing opened, when
    /// there is no display.
    CMError open(quint32 id, const DesktopNotification &notification);

    /// Changes one that is open. The display goes on showing it, unless its priority or timeout
    /// changes: then it is queued as a new one.
    void replace(quint32 id, const DesktopNotification &notification);

    /// Closes it for that reason, which is reported before the call returns; false when it isn't open.
    bool close(quint32 id, Reason reason);

    static CMPath pathOf(quint32 id);

Q_SIGNALS:
    void closed(quint32 id, Reason reason);

    /// A person has chosen an action. The token lets a client raise a window; often empty.
    void actionInvoked(quint32 id, const QString &key, const QString &token);

private Q_SLOTS:
    void on_queue_rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);
    void on_queue_nodeChanged(const CMPath &path, bool published);
    void on_notification_rowsChanged(const CMPath &path, const QStringList &changes, int, int);
    void on_action_activated(const CMSetDataRequest &request);

private:
    struct Action
    {
        QString key;
        CMActivateNode *node; ///< the node set's
    };

    struct Entry
    {
        CMListRowsNode *node = nullptr; ///< the node set's
        QVector<Action> actions;
        quint32 number = 0; ///< of its last opening
        TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
        int timeout = 0;
        int shownMs = 0; ///< on display before its present showing there
        bool isResident = false;
        bool isAwaited = false; ///< the display hasn't answered the last opening
        bool isStale = false;   ///< priority or timeout changed meanwhile
    };
    using Entries = QHash<quint32, Entry>;

    void fill(Entry &entry, quint32 id, const DesktopNotification &notification);
    QVector<TavoRoles> publishActions(Entry &entry, quint32 id,
                                      const QVector<DesktopNotification::Action> &actions);
    void withdrawActions(Entry &entry);
    CMReply<QVariant> show(quint32 id, Entry &entry);
    void showAnew(quint32 id, Entry &entry);
    void on_open_finished(const DisplayOrder::Opening &opening, const CMVoidReply &reply);
    void remove(Entries::iterator entry, Reason reason);
    void withdraw(Entries::iterator entry);
    void displayInserted(int index);
    void displayRemoved(int index);
    Entries::iterator find(const DisplayOrder::Opening &opening);
    int headMs() const;

    CMNodes *m_nodes; ///< the worker's
    Entries m_entries;
    NotificationIds m_ids;
    quint32 m_numbers = 0; ///< given to openings so far
    DisplayOrder m_order;
    QElapsedTimer m_headTimer; ///< since the display has shown something else
};
