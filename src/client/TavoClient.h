// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "client/export.h"
#include "client/TavoClientError.h"
#include <core/model/cmreply.h>
#include <core/records/cmpath.h>
#include <core/records/value.h>

#include <QObject>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <memory>

class ClientBus;

/// A node of the model, as a listing describes it.
struct TavoClientNode
{
    CMPath path;   ///< the node's path
    QString kind;  ///< "value", "list", "request", or "group" for a path with nodes only below it
    QString title; ///< for people; empty if the node has none
};

/// A node and its text, such as a message of the display.
struct TavoClientDescription : TavoClientNode
{
    QString text; ///< the title of the node's first row; empty for a node without rows
};

/// What a person sees of a list, such as a message of the display.
struct TavoClientPreview
{
    QString title;     ///< for people; empty if the node has none
    QVariantList rows; ///< the first ones
};

/// The model of a host in another process, over a message bus.
///
/// Neither requests nor connecting block. Lives in the thread that made it, whose event loop finishes
/// the replies and emits the signals.
///
/// A bus that does not respond within 5 seconds counts as absent and is tried again. When the host or
/// the bus goes away, the client waits for it and then renews subscriptions and inboxes. Changes made
/// meanwhile are not reported: read again on availableChanged(true).
///
/// Every request is finished once, at the latest when the client is destroyed. A request made before
/// the bus has been tried waits for that, up to the timeout. A later request that can't reach a host
/// fails with an error of TavoClientError. A bus that can start the host does so for a request.
///
/// Do not delete a client from within its own callbacks and signals: use deleteLater() there.
class TAVO_CLIENT_EXPORT TavoClient : public QObject
{
    Q_OBJECT

public:
    /// What changes: a value, the rows of a list, or the existence of a node.
    enum class Change { Value, Rows, Node };

    /// "session", "system", or the address of a bus. The client connects from the event loop.
    explicit TavoClient(const QString &bus = QStringLiteral("session"), QObject *parent = nullptr);
    ~TavoClient() override;

    /// Whether a host is on the bus.
    bool isAvailable() const;

    /// Why there is no host, in a sentence for people. Empty while there is one, and before the bus has
    /// been tried.
    QString unavailableReason() const;

    /// The version of the host.
    CMReply<QString> version();

    /// How long later requests wait for a reply; 25 seconds by default.
    void setTimeout(int milliseconds);

    /// Reads the value of a node.
    CMReply<QVariant> getValue(const CMPath &path);

    /// Sends a request to a node. The reply is the node's.
    CMReply<QVariant> call(const CMPath &path, const QVariant &value = {});
    /// The same with a record as its value.
    CMReply<QVariant> call(const CMPath &path, const TavoHash &record);
    /// The same with the fields of a record.
    CMReply<QVariant> call(const CMPath &path, const QVariantHash &fields);

    /// Up to `count` rows of a list from `first` on; -1 means all. What is too large for one message of the
    /// bus is read in parts: a list that changes meanwhile may miss a row, or have one twice. A row that is
    /// too large for any message is a record with the name and the message of the error (CMError).
    CMReply<QVariantList> rows(const CMPath &path, int first = 0, int count = -1);

    /// The title of a node and up to `count` of its first rows, in which strings end after `length`
    /// characters. For programs that show it to people: a message may be much longer than a screen.
    CMReply<TavoClientPreview> preview(const CMPath &path, int count, int length);

    /// The index of the first row that equals the value, or -1.
    CMReply<int> matchRow(const CMPath &path, const QVariant &row);

    // Sorted by path.
    /// The nodes directly below a path.
    CMReply<QVector<TavoClientNode>> list(const CMPath &path = {});
    /// All nodes at and below a path.
    CMReply<QVector<TavoClientNode>> tree(const CMPath &path = {});

    /// The nodes at the paths, in their order. Paths without a node are left out. What is too large for one
    /// message of the bus is read in parts; a node that is too large for any has its path only.
    CMReply<QVector<TavoClientDescription>> describe(const QVector<CMPath> &paths);

    /// Asks the node's owner to close it, as a user does. False if the owner does not listen for that.
    CMReply<bool> close(const CMPath &path);

    // Notifications:

    /// Queues a sound. Its start and end are reported to the item's response path, such as that of a
    /// TavoInbox. A looping sound ends with this client.
    CMReply<QVariant> enqueue(const TavoNotificationPlayerItem &item);
    /// Cancels a sound, queued or playing. The reply is empty.
    CMReply<QVariant> cancelSound(const QString &id);

    /// Queues a message. The reply is its path.
    CMReply<CMPath> open(const TavoNotificationDisplayItem &item);
    /// Removes a message, whose path open() gave. The reply is true.
    CMReply<QVariant> cancelMessage(const CMPath &path);

    /// Emits the signal for changes of this kind at the path, until unsubscribe(). There need not be a
    /// node at the path.
    void subscribe(const CMPath &path, Change change);
    /// Ends that. Does nothing if there is no such subscription.
    void unsubscribe(const CMPath &path, Change change);

Q_SIGNALS:
    /// A host has come or gone. Also emitted once when the first try finds none.
    void availableChanged(bool available);

    /// The node at the path has this value now.
    void valueChanged(const CMPath &path, const QVariant &value);
    /// The changes are named as in CMSubscribe. `first` is -1 and `count` 0 for changes that are not
    /// about certain rows.
    void rowsChanged(const CMPath &path, const QStringList &changes, int first, int count);
    /// A node has been published at the path, or has gone.
    void nodeChanged(const CMPath &path, bool published);

    /// The host left out this many changes of any kind at the path, because this client did not read fast
    /// enough. The subscriptions stay, and changes at the path are reported again from here on: read its
    /// present state.
    void changesDropped(const CMPath &path, uint count);

    /// The host refused a subscription, for instance because of a limit.
    void subscriptionFailed(const CMPath &path, const CMError &error);

private Q_SLOTS:
    void on_bus_availableChanged(bool available);
    void on_bus_dropped(const CMPath &path, uint count);

private:
    friend class TavoInbox;
    friend class TavoMessages;

    using Subscription = QPair<CMPath, Change>;

    void sendSubscription(const char *method, const Subscription &subscription);
    CMReply<QVector<TavoClientNode>> nodes(const char *method, const CMPath &path);

    std::unique_ptr<ClientBus> m_bus;
    QVector<Subscription> m_subscriptions;
};
