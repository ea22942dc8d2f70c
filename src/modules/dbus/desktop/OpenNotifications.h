// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DesktopNotification.h"
#include "ImageScaler.h"
#include "modules/dbus/clients/LeftMessages.h"
#include "NotificationIds.h"
#include "NotificationNode.h"
#include <base/AttentionItem.h>
#include <core/tavo.h>

#include <QHash>
#include <QMap>
#include <QObject>
#include <QUuid>

#include <memory>

/// The desktop notifications that are open, each a node of the model that the display is asked to
/// show.
///
/// Owned by the worker, used in its thread. Nothing waits for the display: a notification is open as
/// soon as its node is published, and the display replies later.
///
/// Guarantees:
/// - every notification is closed once, and nothing is reported of it afterwards;
/// - opening, changing and closing one costs the same however many others are open.
class OpenNotifications : public QObject
{
    Q_OBJECT

public:
    /// Why a notification closed, in the numbers of the desktop's protocol.
    enum class Reason : quint32 {
        Expired = 1,
        Dismissed = 2, ///< by a person
        Closed = 3,    ///< by a request
        Undefined = 4  ///< the display refused it, or has gone, or the module ends
    };

    explicit OpenNotifications(CMNodes *nodes);
    ~OpenNotifications() override;

    bool isOpen(quint32 id) const { return m_entries.contains(id); }
    int count() const { return m_entries.size(); }

    quint32 freeId();

    /// Opens a notification under an id that is not open. Without a display nothing is opened, and the
    /// error says so. If it has a sound, the id of requestOf() must be told the sound, or that there is
    /// none after all.
    CMError open(quint32 id, const DesktopNotification &notification, bool hasSound = false);

    /// The id under which the module for attention knows an open notification; empty without that module.
    QString requestOf(quint32 id) const;

    /// Changes one that is open. The display goes on showing it, unless its priority or timeout
    /// changes: then it is queued as a new one.
    void replace(quint32 id, const DesktopNotification &notification);

    /// Closes a notification, which is reported before the call returns; false when it is not open.
    bool close(quint32 id, Reason reason);

    /// Of a notification that is open.
    int timeoutOf(quint32 id) const { return m_entries[id].timeout; }
    TavoNotificationItemPriority::Enum priorityOf(quint32 id) const
    {
        return m_entries[id].priority;
    }

    /// Queues a notification anew, with the priority below, for the rest of its time on display.
    void giveWay(quint32 id);

    /// Closes all notifications, each of which is reported before the call returns.
    void closeAll(Reason reason);

    /// Closes the notification at the path if the module for attention shows it; false otherwise.
    bool closeAttended(const CMPath &path);

    /// A client has requested the display to close what is at the path. A notification there is closed,
    /// which is reported before the call returns, even if it is about to be queued anew.
    void takeCancel(const CMPath &path);

Q_SIGNALS:
    void closed(quint32 id, Reason reason);

    /// A person has chosen an action. The token lets the client raise a window; it may be empty.
    void actionInvoked(quint32 id, const QString &key, const QString &token);

    /// The module for attention has been asked about a notification.
    void attentionAsked(quint32 id, const CMReply<QVariant> &reply);

private Q_SLOTS:
    void on_display_ended(const CMPath &path, const QVariant &value);
    void on_queue_nodeChanged(const CMPath &path, bool published);
    void on_attention_nodeChanged(const CMPath &path, bool published);
    void on_attention_ended(const CMPath &path, const QVariant &value);
    void on_notification_rowsChanged(const CMPath &path, const QStringList &changes, int, int);
    void on_action_activated(const CMSetDataRequest &request);

private:
    struct Entry
    {
        NotificationNode node;
        QString request{}; ///< the id of the last request to show it
        quint64 state = 0; ///< the number of its last change by a client
        TavoNotificationItemPriority::Enum priority = TavoNotificationItemPriority::Normal;
        int timeout = 0;
        /// What the module for attention decides about; empty without it.
        std::shared_ptr<AttentionItem> item{};
        bool isAttended = false; ///< that module has the last request to show it
        bool isResident = false;
        bool isAwaited = false;  ///< the display has not replied to the last request
        bool isStale = false;    ///< priority or timeout have changed since that request
        bool isTelling = false;  ///< that module has not replied to tellChange()
        bool hasChanged = false; ///< since then
        bool givesWay = false;   ///< is queued anew when the display has removed it
    };
    using Entries = QMap<quint32, Entry>; // Clients can choose ids that have equal hashes.

    void fill(quint32 id, Entry &entry, const DesktopNotification &notification);
    void addImage(quint32 id, const Entry &entry, const ImageData &image);
    CMReply<QVariant> show(quint32 id, Entry &entry);
    CMReply<QVariant> requestDisplay(quint32 id, Entry &entry);
    CMReply<QVariant> askAttention(quint32 id, const CMPath &path, const AttentionItem &item);

    /// The entry's item for the module for attention, as the entry is now.
    static const AttentionItem &updatedItem(Entry &entry);
    void showAnew(quint32 id, Entry &entry);

    /// Tells the module for attention what the message says now: it may show it again after a restart.
    void tellChange(quint32 id, Entry &entry);
    void on_open_finished(quint32 id, const QString &request, const CMReply<QVariant> &reply);

    /// Closes the message of a notification, which ends because of this.
    static void hide(const Entry &entry, Reason reason, const QString &action = {});
    void remove(Entries::iterator entry, Reason reason);
    void withdraw(Entries::iterator entry);
    Entries::iterator find(quint32 id, const QString &request);

    CMNodes *m_nodes; ///< owned by the worker
    bool m_hasAttention;
    QHash<QString, quint32> m_attended; ///< ids of what the module for attention has not ended
    Entries m_entries;
    NotificationIds m_ids;
    /// Of the ids of requests. The module for attention keeps some of these when the host starts again.
    const QString m_requestPrefix =
        QStringLiteral("dbus-notification-%1-").arg(QUuid::createUuid().toString(QUuid::Id128));
    quint64 m_requests = 0; ///< to show a notification, so far
    quint64 m_states = 0;   ///< of all notifications, so far
    ImageScaler m_scaler;
};
